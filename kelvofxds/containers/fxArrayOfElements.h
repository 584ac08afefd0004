// fxArrayOfElements.h - the virtual operations of fxArrayOf.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "kelvofxds/containers/fxArray.h"
#include "kelvofxds/containers/fxElementXDR.h"
#include "kelvofxds/core/fxFatal.h"
#include "kelvofxds/core/fxRef.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/transcribe/fxTranscriber.h"

/// Whether a T may be moved to other memory by its bytes alone. Trivially copyable ones
/// may, and strings and fxRefs. Specialise it for a structure made of such members: it is
/// moved faster then, in particular if it has strings, which know no other move than a
/// copy. What knows its own address, like std::string, may not.
template <class T>
struct fxMovesByBytes : std::is_trivially_copyable<T> {};
template <>
struct fxMovesByBytes<fxStr> : std::true_type {};
template <class T>
struct fxMovesByBytes<fxRef<T>> : std::true_type {};

/// The operations of fxArray on elements of T: what fxArrayOf<T>, which is to be used,
/// adds to it for callers who know an fxArray only.
template <class T>
class fxArrayOfElements : public fxArray {
public:
    const char* className() const override { return "ARRAY"; }
    fxTypeObj& getTypeObj() const override;  // fxArrayOf.h

    /// Moves the elements to a block of maxLen bytes, each by its own constructor.
    void getmem() override {
        if constexpr (fxMovesByBytes<T>::value) {
            fxArray::getmem();
        } else {
            void* const block = maxLen != 0 ? std::malloc(maxLen) : nullptr;
            if (!block && maxLen != 0) {
                if (data)
                    fxFatal("out of memory");
                return;
            }
            relocate(elements(), static_cast<T*>(block), std::min(len, maxLen) / elementSize);
            std::free(data);
            data = block;
        }
    }
    /// Makes room for half as many elements again, at least four.
    void expand() override {
        const unsigned int fewest = 4;
        setMaxLength(length() + std::max(fewest, length() / 2));
    }
    /// Elements are T(): numbers are 0.
    void createElements(void* at, unsigned int bytes) override {
        std::uninitialized_value_construct_n(static_cast<T*>(at), bytes / elementSize);
    }
    void destroyElements(void* at, unsigned int bytes) override {
        std::destroy_n(static_cast<T*>(at), bytes / elementSize);
    }
    void copyElements(const void* from, void* to, unsigned int bytes) const override {
        const T* const source = static_cast<const T*>(from);
        T* const target = static_cast<T*>(to);
        const unsigned int n = bytes / elementSize;
        if constexpr (std::is_trivially_copyable_v<T>)
            fxArray::copyElements(from, to, bytes);
        else if (target + n <= source || source + n <= target)
            std::uninitialized_copy_n(source, n, target);
        else
            copyOver(source, target, n);
    }
    /// By operator< where T has it; else elements that are equal by operator==, where T
    /// has that, are equal, and the rest goes by bytes.
    int compareElements(const void* a, const void* b) const override {
        const T& x = *static_cast<const T*>(a);
        const T& y = *static_cast<const T*>(b);
        if constexpr (hasLess<T>(0)) {
            return x < y ? -1 : static_cast<int>(y < x);
        } else {
            if constexpr (hasEqual<T>(0)) {
                if (x == y)
                    return 0;
            }
            return fxArray::compareElements(a, b);
        }
    }

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Woverloaded-virtual"  // fxArrayOf hides it, and calls it
    /// Transcribes the elements in use. 0 for elements that cannot be.
    unsigned char xdr(fxTranscriber& t) override {
        if constexpr (fxElementXDR<T>::kind() == fxElementXDR<T>::cannotBe)
            return 0;
        else if constexpr (fxElementXDR<T>::kind() == fxElementXDR<T>::asNumbers)
            return t.isReading() ? readNumbers(t) : writeNumbers(t);
        else
            return t.isReading() ? readElements(t) : writeElements(t);
    }
#pragma GCC diagnostic pop

protected:
    /// Of an element, in bytes.
    static constexpr unsigned short elementSize = static_cast<unsigned short>(sizeof(T));

    fxArrayOfElements() : fxArray(elementSize, 0U) { check(); }
    /// Adopts a block of that many bytes.
    fxArrayOfElements(unsigned int bytes, void* block) : fxArray(elementSize, bytes, block) {
        check();
    }

    /// The first element; null if there is none.
    T* elements() const { return static_cast<T*>(data); }

    /// Moves `n` elements into memory that holds none but, perhaps, some of these.
    static void relocate(T* from, T* to, unsigned int n) {
        if (to == from)
            return;
        if constexpr (fxMovesByBytes<T>::value) {
            if (n != 0)
                std::memmove(static_cast<void*>(to), static_cast<const void*>(from), n * sizeof(T));
        } else {
            for (unsigned int i = 0; i < n; ++i) {
                const unsigned int next = to > from ? n - 1 - i : i;
                ::new (static_cast<void*>(to + next)) T(std::move(from[next]));
                from[next].~T();
            }
        }
    }

private:
    static void check() {
        static_assert(sizeof(T) <= 0xFFFF, "fxArrayOf: elements have up to 65,535 bytes");
        static_assert(alignof(T) <= alignof(std::max_align_t),
                      "fxArrayOf: the elements lie in memory from malloc");
        static_assert(std::is_default_constructible_v<T> && std::is_copy_constructible_v<T>,
                      "fxArrayOf: elements are made without arguments, and copied");
    }

    template <class U>
    static constexpr auto hasLess(int)
        -> decltype(static_cast<bool>(std::declval<const U&>() < std::declval<const U&>())) {
        return true;
    }
    template <class U>
    static constexpr bool hasLess(long) {
        return false;
    }
    template <class U>
    static constexpr auto hasEqual(int)
        -> decltype(static_cast<bool>(std::declval<const U&>() == std::declval<const U&>())) {
        return true;
    }
    template <class U>
    static constexpr bool hasEqual(long) {
        return false;
    }

    // What is overwritten was copied by bytes, or will be: it is no element any more.
    static void copyOver(const T* source, T* target, unsigned int n) {
        for (unsigned int i = 0; i < n; ++i) {
            const unsigned int next = target > source ? n - 1 - i : i;
            T copy(source[next]);  // the two may be one place
            ::new (static_cast<void*>(target + next)) T(std::move(copy));
        }
    }

    // Numbers have the form that the library's arrays of numbers have: the bytes, the
    // size of one, all of them. Of others there are the count and a size of 0.

    static unsigned char numbers(fxTranscriber& t, T* first, unsigned int n) {
        if constexpr (std::is_same_v<T, bool> || std::is_same_v<T, signed char>)
            return t.xdr(reinterpret_cast<unsigned char*>(first), n);
        else
            return t.xdr(first, n);
    }

    unsigned char writeNumbers(fxTranscriber& t) {
        unsigned int bytes = len;
        unsigned short size = elementSize;
        return t.xdr(&bytes, 1) && t.xdr(&size, 1) &&
               (len == 0 || numbers(t, elements(), length()));
    }

    unsigned char readNumbers(fxTranscriber& t) {
        unsigned int bytes = 0;
        unsigned short size = 0;
        becomeEmpty();
        if (!t.xdr(&bytes, 1) || !t.xdr(&size, 1) || size != elementSize ||
            bytes % elementSize != 0 || !getEmptyBlock(bytes))
            return 0;
        if (bytes == 0)
            return 1;
        if (!numbers(t, elements(), bytes / elementSize))
            return 0;
        if constexpr (std::is_same_v<T, bool>) {
            auto* const first = static_cast<unsigned char*>(data);
            std::transform(first, first + bytes, elements(),
                           [](unsigned char byte) { return byte != 0; });
        }
        len = bytes;
        return 1;
    }

    unsigned char writeElements(fxTranscriber& t) {
        unsigned int n = length();
        unsigned short size = 0;
        if (!t.xdr(&n, 1) || !t.xdr(&size, 1))
            return 0;
        for (unsigned int i = 0; i < length(); ++i) {
            if (!fxElementXDR<T>::element(t, elements()[i]))
                return 0;
        }
        return 1;
    }

    // The reader notes where the elements are, so the block is there at once and never
    // moves; it is used as far as elements have arrived, and so far they are elements.
    unsigned char readElements(fxTranscriber& t) {
        unsigned int n = 0;
        unsigned short size = 0;
        becomeEmpty();
        if (!t.xdr(&n, 1) || !t.xdr(&size, 1) || size != 0 || n > 0xFFFFFFFF / elementSize ||
            !getEmptyBlock(n * elementSize))
            return 0;
        while (len < maxLen) {
            createElements(byteAt(len), elementSize);
            len += elementSize;
            if (!fxElementXDR<T>::element(t, elements()[length() - 1]))
                return 0;
        }
        return 1;
    }

    void becomeEmpty() {
        destroy();
        len = maxLen = 0;
        std::free(data);
        data = nullptr;
    }

    // What a stream asks for may be more than there is.
    bool getEmptyBlock(unsigned int bytes) {
        maxLen = bytes;
        getmem();
        if (!data)
            maxLen = 0;
        return data || bytes == 0;
    }
};
