// fxFreeListInternal.h - memory for small objects that come and go often.
#pragma once

#include <cstddef>
#include <new>

#include "kelvofxds/core/fxCheckedInternal.h"
#include "kelvofxds/core/fxMemoryInternal.h"

// Under AddressSanitizer nothing is kept: it could not tell what is kept from
// what lives. gcc defines a macro for it, clang answers a question.
#if defined(__SANITIZE_ADDRESS__)
#define FX_ADDRESSES_ARE_WATCHED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define FX_ADDRESSES_ARE_WATCHED 1
#endif
#endif

/// How many objects or blocks of a kind are kept for later: as many as a busy
/// pass of the loop may queue, or more once that has happened.
struct fxMostKept {
#ifdef FX_ADDRESSES_ARE_WATCHED
    static constexpr bool isAny = false;
    static unsigned int get() { return 0; }
    static void follow(unsigned int) {}
#else
    static constexpr bool isAny = true;
    static unsigned int get() { return most; }
    static void follow(unsigned int inUse) {
        if (inUse > most)
            most = inUse;
    }

private:
    inline static unsigned int most = 4096;
#endif
};

/// A bounded list of freed blocks of one size, for class-level operator new
/// and delete of objects that live for the length of a message.
///
/// Constant-initialised, single-threaded. Other sizes, which are those of
/// derived classes, go to the global operators.
template <std::size_t blockSize>
class fxFreeList {
public:
    /// A block that must exist.
    void* allocate(std::size_t size) {
        void* block = tryAllocate(size);
        if (!block)
            fxOutOfMemory();
        return block;
    }

    /// Null if there is no memory.
    void* tryAllocate(std::size_t size) noexcept {
        if (size != blockSize || !first)
            return ::operator new(size, std::nothrow);
        Node* node = first;
        first = node->next;
        --length;
        return reinterpret_cast<char*>(node) - linkAt;
    }

    void release(void* block, std::size_t size) noexcept {
        if (!block || size != blockSize || length >= fxMostKept::get()) {
            ::operator delete(block);
            return;
        }
        first = new (static_cast<char*>(block) + linkAt) Node{first};
        ++length;
    }

private:
    struct Node {
        Node* next;
    };
#ifdef KELVOFXDS_CHECKED
    // Behind what stands in the place of a deleted object, a table and a count.
    static constexpr std::size_t linkAt = 2 * sizeof(void*);
#else
    static constexpr std::size_t linkAt = 0;
#endif
    static_assert(blockSize >= linkAt + sizeof(Node), "a freed block holds its link");

    Node* first = nullptr;
    unsigned int length = 0;
};
