// vtable.h - which word of its class's table a virtual operation is called by.
#pragma once

#include <cstring>

/// What the ABI keeps in a pointer to a member function: 1 plus the byte
/// offset of a virtual operation's slot, or an address, which is even. On ARM,
/// where addresses may be odd, the 1 stands in the second word.
struct MemberPointerWords {
    template <class Pointer>
    explicit MemberPointerWords(Pointer pointer) {
        static_assert(sizeof pointer == sizeof words, "two words");
        std::memcpy(words, &pointer, sizeof words);
    }

    unsigned int words[2];
#ifdef __arm__
    static constexpr unsigned int marked = 1, mark = 0;
#else
    static constexpr unsigned int marked = 0, mark = 1;
#endif
};

/// Whether `pointer` names a virtual operation.
template <class Pointer>
bool isVirtual(Pointer pointer) {
    return MemberPointerWords(pointer).words[MemberPointerWords::marked] % 2 != 0;
}

/// The index, in words, of the virtual operation that `pointer` names. The
/// complete and deleting destructors take slots 0 and 1.
template <class Pointer>
unsigned int vtableWord(Pointer pointer) {
    return (MemberPointerWords(pointer).words[0] - MemberPointerWords::mark) / sizeof(void*);
}
