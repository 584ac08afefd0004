// vtable.h - which word of its class's table a virtual operation is called by.
#pragma once

#include <cstring>

/// The index, in words, of the virtual operation that `pointer` names, read
/// from the member pointer itself: the ABI stores 1 plus the byte offset of
/// the slot there. The complete and deleting destructors take slots 0 and 1.
template <class Pointer>
unsigned int vtableWord(Pointer pointer) {
    unsigned int word;
    std::memcpy(&word, &pointer, sizeof word);
    return (word - 1) / sizeof(void*);
}
