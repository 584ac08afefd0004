// fxArray.h - the untyped growable array under every array class.
#pragma once

#include "kelvofxds/core/fxSurprise.h"
#include "kelvofxds/core/fxXDRObj.h"

/// Elements of one fixed size, back to back in a single malloced block.
///
/// What an element means is left to six virtual operations that subclasses
/// override: here elements are plain bytes. Positions and counts of the
/// interface are in elements; `bytes` arguments, and the three lengths kept,
/// are in bytes. No position is checked: each must lie within the length, and
/// a count must not reach past it. Blocks returned by the raw_ operations
/// belong to the caller, who frees them with free() or hands them to the
/// adopting constructor of another array.
///
/// Growth is linear and exact: append(element) by four elements when the array
/// is full, insert(element) by one, the whole-array forms to the need, and
/// resize to the new size; only resize and setMaxLength shrink the block.
/// Running out of memory ends the process ("out of memory"), and so does a
/// size that does not fit a word ("fxArray: size too large"). An exception of a
/// subclass's element operation or getmem passes through and leaves the
/// elements as they were before; if resize has ended some of them by then, it
/// leaves the others.
/// Separate arrays may be used in separate threads.
/// Invariant: len <= maxLen; both are multiples of elemSize.
class FX_EXPORT fxArray : public fxXDRObj {
public:
    /// `n` elements of `elemSize` bytes that are not created yet; the
    /// subclass's constructor does that.
    fxArray(unsigned short elemSize, unsigned int n);
    /// A byte-wise copy without spare capacity; copyElements is not called.
    fxArray(const fxArray& other);
    /// Adopts `block`, `bytes` long, from malloc. The element size is the low
    /// 16 bits of `elemSize`.
    fxArray(unsigned int elemSize, unsigned int bytes, void* block);
    /// The form for newInstance: no block, filled by xdr.
    explicit fxArray(fxTypeObj& type);
    fxArray& operator=(const fxArray&) = delete;
    /// Frees the block. The destructor of each concrete class calls destroy()
    /// first.
    ~fxArray() override;

    const char* className() const override = 0;
    /// Makes the embedded-object call on itself, which transcribes nothing.
    /// Deliberate: it passes fxXDRObj_type, not fxArray_type.
    unsigned char xdr(fxTranscriber& t) override;
    fxTypeObj& getTypeObj() const override;

    /// Brings the block to maxLen bytes; frees it when that is 0. A first block
    /// that cannot be had is null; a block that cannot grow ends the process.
    /// What it adds to the block is zero behind the length; bytes that the block
    /// has already are left alone, so that a subclass may prepare them before it
    /// calls this or afterwards. In a host with a malloc of its own that cannot
    /// tell the size of a block, only a first block is zero when it is called
    /// by a subclass.
    virtual void getmem();
    /// Makes room for four more elements.
    /// Deliberate: growth is linear, not geometric.
    virtual void expand();
    /// Makes the elements in `bytes` bytes at `at`; does nothing here.
    virtual void createElements(void* at, unsigned int bytes);
    /// Ends the elements in `bytes` bytes at `at`; does nothing here.
    virtual void destroyElements(void* at, unsigned int bytes);
    /// Copies `bytes` bytes of elements into memory that holds none; the two
    /// may overlap. Here a memmove.
    virtual void copyElements(const void* from, void* to, unsigned int bytes) const;
    /// -1, 0 or 1 as the element at `a` sorts before, with or behind that at
    /// `b`. Deliberate: here by unsigned bytes in memory order, which for
    /// numbers is not their numeric order.
    virtual int compareElements(const void* a, const void* b) const;

    /// The virtual xdr, for the type record.
    static unsigned char xdr(void* object, fxTranscriber& t);

    /// Ends all elements; the fields stay. O(n).
    void destroy();
    /// Number of elements.
    FX_EXPORT unsigned int length() const { return len / elemSize; }

    /// Appends a copy of `*elem`, which may be an element of this array.
    /// Amortised over four elements. fxAppend(array, value) of <kelvofxds/std.h> appends a value.
    FX_TAKES_ADDRESS void append(const void* elem);
    /// Appends copies of all of `other`'s elements; `other` may be this array.
    void append(const fxArray& other);
    /// Inserts a copy of `*elem` before position `index`. An element of this
    /// array is read after the elements behind `index` have moved. O(n).
    FX_TAKES_ADDRESS void insert(const void* elem, unsigned int index);
    /// Inserts copies of all of `other`'s elements before `index`.
    void insert(const fxArray& other, unsigned int index);
    /// Ends and removes `n` elements from `start` on. Capacity stays. O(n).
    void remove(unsigned int start, unsigned int n);
    /// Makes the length and the capacity `n`, creating or ending elements
    /// at the end.
    void resize(unsigned int n);
    /// Makes the capacity `n` elements, or the length if that is more.
    void setMaxLength(unsigned int n);
    /// Exchanges two elements byte-wise. O(elemSize).
    /// Deliberate: elements of over 1024 bytes are exchanged through a
    /// malloced block that is never freed.
    void swap(unsigned int i, unsigned int j);

    /// Position of the first element from `start` on that compares equal to
    /// `*elem`, or 0xFFFFFFFF. O(n). contains(array, value) of <kelvofxds/std.h> looks for a value.
    FX_TAKES_ADDRESS unsigned int find(const void* elem, unsigned int start = 0) const;

    /// Sorts by compareElements, `n` elements from `start` on.
    /// Deliberate: the pivot's final placement copies the temporary over two
    /// elements instead of exchanging them, so elements are overwritten; the
    /// temporary starts out as zero bytes. Only an fxStrArray is sorted by true
    /// exchanges, and a class derived from it that keeps one of its element
    /// operations or its xdr. The call's depth does not depend on the order of the
    /// elements. O(n log n) whatever the order, unless a subclass compares: it is
    /// asked step by step, O(n^2) for elements in order.
    ///
    /// So it is not the sort of an array of numbers: fxSort(array) of <kelvofxds/std.h> is,
    /// and loses none. With KELVOFXDS_WARN_SURPRISES, using this one is a warning.
    FX_SURPRISING(
        "qsort compares bytes in memory and overwrites elements; "
        "fxSort(array) of <kelvofxds/std.h> sorts by value")
    void qsort(unsigned int start, unsigned int n);
    /// The same for the whole array.
    FX_SURPRISING(
        "qsort compares bytes in memory and overwrites elements; "
        "fxSort(array) of <kelvofxds/std.h> sorts by value")
    void qsort();

    /// A copy of elements, all of them, `n` from `start` on, the first or the
    /// last `n`, in a malloced block; null when there are none. O(n).
    void* raw_copy() const;
    void* raw_extract(unsigned int start, unsigned int n) const;
    void* raw_head(unsigned int n) const;
    void* raw_tail(unsigned int n) const;
    /// Moves the elements out: they leave the array without being ended.
    void* raw_cut(unsigned int start, unsigned int n);

    // Access.

    /// Address of element `index`; valid until the next growth.
    void* at(unsigned int index) { return byteAt(index * elemSize); }
    const void* at(unsigned int index) const { return byteAt(index * elemSize); }
    unsigned int getMaxLen() const { return maxLen; }        ///< Capacity in bytes.
    unsigned int getLen() const { return len; }              ///< Bytes in use.
    unsigned short getElemSize() const { return elemSize; }  ///< Bytes per element.

protected:
    friend struct fxArrayLayout;  // tests/containers/fxArray_test.cpp

    /// Sorts the elements `lo` to `hi`; `temp` has room for one.
    void qsortInternal(unsigned int lo, unsigned int hi, void* temp);

    /// Becomes a copy of `other`, capacity included: its raw_copy, brought to
    /// that capacity with spare bytes that are zero. The elements are copied by
    /// `other`, since of this array only the base may exist. Requires: no block
    /// yet.
    void copyFrom(const fxArray& other);

    /// Transcribes the length in bytes, the element size and then, while
    /// writing, as many elements as the capacity holds; while reading, as many
    /// as the length does. Returns 1 on success. A failed read leaves an array
    /// that is good for nothing but destruction.
    template <class Element>
    unsigned char xdrElements(fxTranscriber& t);
    /// The same in graph streams, which have the elements in use alone.
    template <class Element>
    unsigned char writeElements(fxTranscriber& t);
    template <class Element>
    unsigned char readElements(fxTranscriber& t);

    /// Address of the byte at `offset` in the block.
    char* byteAt(unsigned int offset) const { return static_cast<char*>(data) + offset; }

    void* data;               // owned, from malloc; null when nothing is allocated
    unsigned int maxLen;      // capacity in bytes
    unsigned int len;         // bytes in use
    unsigned short elemSize;  // bytes per element

private:
    unsigned int bytesOf(unsigned int n) const;
    void bringBlock(unsigned int from);
    void setCapacity(unsigned int bytes);
    void setCapacity(unsigned int bytes, unsigned int from);
    void endFrom(unsigned int bytes);
    void insertCopies(const void* from, unsigned int offset, unsigned int bytes);
    void* copied(const void* from, unsigned int bytes) const;
    unsigned int partition(unsigned int lo, unsigned int hi, void* temp, bool exchangePivot);
    void exchange(unsigned int i, unsigned int j, void* temp);
    void closeGap(unsigned int offset, unsigned int bytes);
};

/// The record of fxArray, "fxArray", version 1; abstract.
extern FX_EXPORT fxTypeObj fxArray_type;
