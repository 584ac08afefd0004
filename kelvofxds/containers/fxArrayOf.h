// fxArrayOf.h - an array of elements of a type of your own.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <new>
#include <utility>

#include "kelvofxds/containers/fxArrayOfElements.h"
#include "kelvofxds/containers/fxElementXDR.h"
#include "kelvofxds/core/fxFatal.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/transcribe/fxTranscriber.h"

/// Elements of type T, back to back: numbers, structures, strings, objects, pointers,
/// fxRefs, without a definition for any of them. T is made without arguments and copied;
/// moving one throws nothing. The library's own arrays of numbers and strings are the
/// better choice where their form in streams or their growth is asked for.
///
/// Elements are made, copied, moved and ended by T's own functions, also when the array
/// grows; trivially copyable ones go by bytes. find and qsort compare by operator<, if T
/// has it; see compareElements. Appending is amortised O(1). The operations here replace
/// those of fxArray that move bytes: through an fxArray&, do not insert, remove, swap,
/// cut or sort elements that own something or know their own address.
///
/// xdr transcribes the elements in use, never spare ones: numbers all at once, classes
/// with FX_XDR_MEMBERS as parts with a version of their own, other classes by their own
/// xdr(fxTranscriber&), pointers and fxRefs by fxXdrPointer and fxXdrRef. Any other T does
/// not compile where xdr is called; written as an object of its own, such an array fails.
/// A failed read leaves the elements that arrived. In streams it is "ARRAY", and its
/// record is not the one that answers to that name.
template <class T>
class fxArrayOf : public fxArrayOfElements<T> {
    using Base = fxArrayOfElements<T>;
    using Base::elements;
    using Base::elementSize;
    using Base::relocate;

public:
    fxArrayOf() = default;
    /// `n` new elements.
    explicit fxArrayOf(unsigned int n) { this->resize(n); }
    fxArrayOf(const fxArrayOf& other) : Base() { append(other); }
    fxArrayOf(fxArrayOf&& other) noexcept : Base() { exchange(other); }
    /// Adopts `block`, from malloc, with elements of T in `bytes` bytes.
    fxArrayOf(unsigned int /*elemSize*/, unsigned int bytes, void* block) : Base(bytes, block) {}
    fxArrayOf& operator=(const fxArrayOf& other) {
        fxArrayOf copy(other);
        exchange(copy);
        return *this;
    }
    /// The same for another one, or one that is given up.
    fxArrayOf& operator=(fxArrayOf&& other) noexcept {
        fxArrayOf moved(std::move(other));
        exchange(moved);
        return *this;
    }
    ~fxArrayOf() override { this->destroy(); }

    /// A copy of `value`, or itself, goes to the end, or before position `index`. It may
    /// be an element of this array.
    void append(const T& value) { add(value); }
    void append(T&& value) { add(std::move(value)); }
    void insert(const T& value, unsigned int index) { insertMoved(T(value), index); }
    void insert(T&& value, unsigned int index) { insertMoved(T(std::move(value)), index); }
    /// Copies of all of `other`'s elements; `other` may be this array.
    void append(const fxArrayOf& other) {
        const unsigned int bytes = other.len;
        makeRoom(other.length());
        this->copyElements(other.data, this->byteAt(this->len), bytes);
        this->len += bytes;
    }
    /// Inserts copies of the elements of `other`.
    void insert(const fxArrayOf& other, unsigned int index) {
        fxArrayOf copy(other);
        makeRoom(copy.length());
        relocate(elements() + index, elements() + index + copy.length(), this->length() - index);
        relocate(copy.elements(), elements() + index, copy.length());
        this->len += copy.len;
        copy.len = 0;
    }

    /// As fxArray has them.
    void remove(unsigned int start, unsigned int n) {
        this->destroyElements(elements() + start, n * elementSize);
        closeGap(start, n);
    }
    /// Lets both change places.
    void swap(unsigned int i, unsigned int j) {
        using std::swap;
        if (i != j)
            swap(elements()[i], elements()[j]);
    }
    /// The index of the first element from `start` on that is equal, or fxArray's not-found value.
    unsigned int find(const T& value, unsigned int start = 0) const {
        return fxArray::find(&value, start);
    }

    /// Sorts by compareElements, the whole array or `n` elements from `start` on; what
    /// is equal keeps its order. O(n log n), with memory for half of the elements.
    void qsort() { qsort(0, this->length()); }
    void qsort(unsigned int start, unsigned int n) {
        std::stable_sort(
            elements() + start, elements() + start + n,
            [this](const T& a, const T& b) { return this->compareElements(&a, &b) < 0; });
    }

    /// cut moves its elements out; the others copy.
    fxArrayOf cut(unsigned int start, unsigned int n) {
        const unsigned int bytes = n * elementSize;
        return fxArrayOf(elementSize, bytes, raw_cut(start, n));
    }
    /// A copy of the `n` elements from `start` on; the caller's.
    fxArrayOf extract(unsigned int start, unsigned int n) const {
        return fxArrayOf(elementSize, n * elementSize, this->raw_extract(start, n));
    }
    /// A copy of the first `n` elements.
    fxArrayOf head(unsigned int n) const { return extract(0, n); }
    /// A copy of the last `n` elements.
    fxArrayOf tail(unsigned int n) const { return extract(this->length() - n, n); }
    /// As fxArray's: the block of the elements taken out, which the caller ends and frees.
    void* raw_cut(unsigned int start, unsigned int n) {
        if (n == 0)
            return nullptr;
        void* const block = std::malloc(n * sizeof(T));
        if (!block)
            fxFatal("out of memory");
        relocate(elements() + start, static_cast<T*>(block), n);
        closeGap(start, n);
        return block;
    }

    /// Transcribes this array as a part of the object that calls it.
    template <int = 0>
    unsigned char xdr(fxTranscriber& t) {
        static_assert(fxElementXDR<T>::kind() != fxElementXDR<T>::cannotBe,
                      "fxArrayOf: to be transcribed, elements are numbers, pointers to objects, "
                      "fxRefs, or of a class with a member xdr(fxTranscriber&)");
        return Base::xdr(t);
    }

    // For pointers to such arrays.

    /// The record of arrays of T: "ARRAY", version 1.
    static fxTypeObj& classType();
    /// A new empty array, owned by the caller; null if there is no memory.
    static void* newInstance(fxTypeObj&) { return new (std::nothrow) fxArrayOf; }
    static void deleteInstance(void* array) { delete static_cast<fxArrayOf*>(array); }
    static unsigned char xdr(void* array, fxTranscriber& t) {
        return fxXdrContents(classType(), array, t, [](void* self, fxTranscriber& inner) {
            return static_cast<fxArrayOf*>(self)->Base::xdr(inner);
        });
    }

    // Access. Valid until the next growth.

    /// The element at `index`, which is below length().
    T& operator[](unsigned int index) { return elements()[index]; }
    /// The element at `index`, which is below length().
    const T& operator[](unsigned int index) const { return elements()[index]; }
    /// The first element, for loops over a range.
    T* begin() { return elements(); }
    /// Behind the last element.
    T* end() { return elements() + this->length(); }
    /// The first element, for loops over a range.
    const T* begin() const { return elements(); }
    /// Behind the last element.
    const T* end() const { return elements() + this->length(); }

private:
    void makeRoom(unsigned int n) {
        if (this->maxLen - this->len < n * elementSize)
            this->setMaxLength(this->length() + n);
    }

    template <class Value>
    void add(Value&& value) {
        if (this->len == this->maxLen) {
            T copy(std::forward<Value>(value));  // it may be an element, which moves
            this->expand();
            ::new (static_cast<void*>(end())) T(std::move(copy));
        } else {
            ::new (static_cast<void*>(end())) T(std::forward<Value>(value));
        }
        this->len += elementSize;
    }

    void insertMoved(T&& value, unsigned int index) {
        if (this->len == this->maxLen)
            this->expand();
        relocate(elements() + index, elements() + index + 1, this->length() - index);
        ::new (static_cast<void*>(elements() + index)) T(std::move(value));
        this->len += elementSize;
    }

    // The `n` elements from `start` on have ended.
    void closeGap(unsigned int start, unsigned int n) {
        relocate(elements() + start + n, elements() + start, this->length() - start - n);
        this->len -= n * elementSize;
    }

    void exchange(fxArrayOf& other) noexcept {
        std::swap(this->data, other.data);
        std::swap(this->maxLen, other.maxLen);
        std::swap(this->len, other.len);
    }
};

template <class T>
fxTypeObj& fxArrayOfElements<T>::getTypeObj() const {
    return fxArrayOf<T>::classType();
}

template <class T>
fxTypeObj& fxArrayOf<T>::classType() {
    // Which array an "ARRAY" becomes that nobody has asked for stays as it was.
    struct Record {
        Record()
            : before(fxTypeObj::findType("ARRAY")),
              type("ARRAY", 1, newInstance, deleteInstance, fxArrayOf::xdr) {
            if (before)
                fxTypeObj::registerType(before);
        }
        fxTypeObj* before;
        fxTypeObj type;
    };
    static Record record;
    return record.type;
}
