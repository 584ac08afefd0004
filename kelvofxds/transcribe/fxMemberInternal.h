// fxMemberInternal.h - what writers and readers do with members that are pointers.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

/// The word that stands for an address.
inline std::uint32_t fxWordOf(const void* address) {
    return reinterpret_cast<std::uint32_t>(address);
}

// Bytes, since a member may be a pointer of another type than the one it came as:
// an int* comes as a long*.

inline void* fxPointerIn(const void* member) {
    void* address = nullptr;
    std::memcpy(&address, member, sizeof address);
    return address;
}

inline void fxSetPointer(void* member, void* address) {
    std::memcpy(member, &address, sizeof address);
}

/// Bytes of a text with its NUL.
inline unsigned int fxSizeWithNul(const char* text) {
    return static_cast<unsigned int>(std::strlen(text)) + 1;
}

/// What no size in bytes is.
inline constexpr unsigned int fxTooLong = 0xFFFFFFFF;

/// Bytes of `n` elements; fxTooLong when they exceed a word.
template <class Element>
unsigned int fxBytesOf(unsigned int n) {
    return n <= fxTooLong / sizeof(Element) ? n * static_cast<unsigned int>(sizeof(Element))
                                            : fxTooLong;
}

// The two families of memory: an fxStr frees its buffer with free, any other
// owner of a block with delete[].

/// Null when there is no memory.
inline char* fxAllocateBlock(bool forString, std::size_t size) {
    void* memory = forString ? std::malloc(size) : ::operator new[](size, std::nothrow);
    return static_cast<char*>(memory);
}

inline void fxFreeBlock(bool forString, char* block) {
    if (forString)
        std::free(block);
    else
        ::operator delete[](block);
}
