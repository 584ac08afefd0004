// fxFreeListInternal.h - memory for small objects that come and go often.
#pragma once

#include <cstddef>
#include <new>

/// A bounded list of freed blocks of one size, for class-level operator new
/// and delete of objects that live for the length of a message.
///
/// Constant-initialised, single-threaded. Other sizes, which are those of
/// derived classes, go to the global operators; so does everything under
/// AddressSanitizer, which could not tell a freed block from a live one.
template <std::size_t blockSize>
class fxFreeList {
public:
    void* allocate(std::size_t size) {
        if (size != blockSize || !first)
            return ::operator new(size);
        Node* block = first;
        first = block->next;
        --length;
        return block;
    }

    void release(void* block, std::size_t size) {
        if (!block || size != blockSize || length == limit()) {
            ::operator delete(block);
            return;
        }
        first = new (block) Node{first};
        ++length;
    }

private:
    struct Node {
        Node* next;
    };
    static_assert(blockSize >= sizeof(Node), "a freed block holds its link");

    // As many blocks as a busy pass of the loop may queue.
    static constexpr unsigned int limit() {
#ifdef __SANITIZE_ADDRESS__
        return 0;
#else
        return 4096;
#endif
    }

    Node* first = nullptr;
    unsigned int length = 0;
};
