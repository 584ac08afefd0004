// fxByteSort.cpp - what the stated steps of a sort do to bytes, without most of the steps.
//
// The final placement of a pivot overwrites two elements with the temporary. So after an exchange,
// which leaves something not less than the pivot in the temporary, all that is in front of the
// pivot's place is less or equal, starts with the temporary as the next pivot, and ends up as
// copies of it: the steps strip one element after the other, here it is filled at once. What is
// behind the place goes through the steps. Runs in order are stripped at once too, and when the
// scans have looked at every element some times, a tree of extremes does the looking: exchanges
// are no more than elements, and every step strips one.

#include <cstdint>
#include <cstring>

#include "kelvofxds/containers/fxArraySortInternal.h"
#include "kelvofxds/containers/fxExtremesInternal.h"
#include "kelvofxds/containers/fxPendingRangesInternal.h"

namespace {

inline std::uint8_t ordered(std::uint8_t word) { return word; }
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
inline std::uint16_t ordered(std::uint16_t word) { return __builtin_bswap16(word); }
inline std::uint32_t ordered(std::uint32_t word) { return __builtin_bswap32(word); }
inline std::uint64_t ordered(std::uint64_t word) { return __builtin_bswap64(word); }
#else
inline std::uint16_t ordered(std::uint16_t word) { return word; }
inline std::uint32_t ordered(std::uint32_t word) { return word; }
inline std::uint64_t ordered(std::uint64_t word) { return word; }
#endif

// Elements of a word's size, as numbers whose order is that of the bytes.
template <class Word>
class Words {
public:
    using Value = Word;

    Words(void* all, unsigned int, void* temporary)
        : block(static_cast<char*>(all)), temp(temporary), carriedWord(load(temporary)) {}
    Words(const Words&) = delete;
    Words& operator=(const Words&) = delete;
    ~Words() { store(temp, carriedWord); }

    static bool less(Value a, Value b) { return a < b; }
    Value at(unsigned int i) const { return load(block + i * sizeof(Word)); }
    Value carried() const { return carriedWord; }
    void place(unsigned int i) { store(block + i * sizeof(Word), carriedWord); }
    void exchange(unsigned int i, unsigned int j) {
        carriedWord = at(i);
        std::memcpy(block + i * sizeof(Word), block + j * sizeof(Word), sizeof(Word));
        place(j);
    }

private:
    static Value load(const void* from) {
        Word word;
        std::memcpy(&word, from, sizeof word);
        return ordered(word);
    }
    static void store(void* to, Value value) {
        const Word word = ordered(value);
        std::memcpy(to, &word, sizeof word);
    }

    char* block;
    void* temp;
    Value carriedWord;  // what the temporary holds
};

// Where an element of any size is.
struct Bytes {
    const char* start;
    unsigned int size;
};

class Blocks {
public:
    using Value = Bytes;

    Blocks(void* all, unsigned int elemSize, void* temporary)
        : block(static_cast<char*>(all)), temp(static_cast<char*>(temporary)), size(elemSize) {}

    static bool less(Value a, Value b) { return std::memcmp(a.start, b.start, a.size) < 0; }
    Value at(unsigned int i) const { return {block + i * size, size}; }
    Value carried() const { return {temp, size}; }
    void place(unsigned int i) { std::memcpy(block + i * size, temp, size); }
    void exchange(unsigned int i, unsigned int j) {
        std::memcpy(temp, block + i * size, size);
        std::memcpy(block + i * size, block + j * size, size);
        std::memcpy(block + j * size, temp, size);
    }

private:
    char* block;
    char* temp;
    unsigned int size;
};

template <class Elements>
class ByteSort {
public:
    ByteSort(Elements& elements, unsigned int lo, unsigned int hi)
        : e(elements), all{lo, hi}, looksLeft(looks * (std::uint64_t(hi) - lo + 1)) {}

    void run() {
        Range range = all;
        for (;;) {
            if (!hasMore(range)) {
                if (pending.isEmpty())
                    return;
                range = pending.taken();
            }
        }
    }

private:
    using Range = fxPendingRanges::Range;
    using Value = typename Elements::Value;

    static const unsigned int looks = 16;  // at each element before the tree is made
    static const unsigned int fewElements = 64;

    static bool less(Value a, Value b) { return Elements::less(a, b); }

    // Takes one step on `range`, or several at once, and makes it what is next
    // within it. False when that is nothing.
    bool hasMore(Range& range) {
        if (endsInFill(range)) {
            fill(range.lo, range.hi);
            return false;
        }
        if (!extremes.isMade()) {
            if (isDescending(range))
                return strippedFromBothEnds(range);
            account(std::uint64_t(range.hi) - range.lo + 1);
        }
        bool exchanged = false;
        const unsigned int place =
            extremes.isMade() ? partitionByTree(range, exchanged) : partition(range, exchanged);
        const Range front = {range.lo, place};
        const bool filled = exchanged || !less(e.carried(), e.at(range.lo));
        e.place(place);
        if (filled)
            fill(front.lo, front.hi);
        else
            placeFirst(front);
        if (place == range.lo && !extremes.isMade())
            stripAscending(range);
        else
            range.lo = place < range.hi ? place + 1 : place;
        const bool hasBehind = range.lo < range.hi;
        if (filled || front.hi - front.lo < 2)
            return hasBehind;
        if (hasBehind)
            pending.add(range.lo, range.hi);
        range = {front.lo, front.hi - 1};
        return true;
    }

    // Counts `n` looks at elements, and has the tree made when they are many.
    void account(std::uint64_t n) {
        if (looksLeft >= n) {
            looksLeft -= n;
            return;
        }
        looksLeft = UINT64_MAX;  // also when there is no memory for the tree
        if (all.hi - all.lo >= fewElements)
            extremes.make(e, all.lo, all.hi);
    }

    void fill(unsigned int lo, unsigned int hi) {
        for (unsigned int i = lo; i <= hi; ++i)
            e.place(i);
        if (extremes.isMade())
            extremes.changed(lo, hi);
    }

    // The placement where the front is not filled: it goes on with the carried
    // element as its pivot.
    void placeFirst(const Range& front) {
        e.place(front.lo);
        if (extremes.isMade()) {
            extremes.changed(front.lo, front.lo);
            extremes.changed(front.hi, front.hi);
        }
    }

    // Whether the pivot is what is carried and nothing is larger: nothing else
    // can come into the temporary then.
    bool endsInFill(const Range& range) {
        const Value carried = e.carried();
        if (less(e.at(range.lo), carried) || less(carried, e.at(range.lo)))
            return false;
        const auto isLarger = [&](const Value& value) { return less(carried, value); };
        if (extremes.isMade())
            return extremes.next(range.lo, range.hi, isLarger) == extremes.none;
        unsigned int i = range.lo;
        while (i < range.hi && !isLarger(e.at(i + 1)))
            ++i;
        account(i - range.lo);
        return i == range.hi;
    }

    // The scan down needs no bound: the pivot stops it.
    unsigned int partition(const Range& range, bool& exchanged) {
        const Value pivot = e.at(range.lo);
        unsigned int i = range.lo, j = range.hi + 1;
        for (;;) {
            while (i < range.hi && less(e.at(++i), pivot)) {
            }
            while (less(pivot, e.at(--j))) {
            }
            if (i >= j)
                return j;
            e.exchange(i, j);
            exchanged = true;
        }
    }

    unsigned int partitionByTree(const Range& range, bool& exchanged) {
        const Value pivot = e.at(range.lo);
        unsigned int i = range.lo, j = range.hi + 1;
        for (;;) {
            i = extremes.next(i, range.hi, [&](const Value& v) { return !less(v, pivot); });
            if (i == extremes.none)
                i = range.hi;
            j = extremes.previous(j, [&](const Value& v) { return !less(pivot, v); });
            if (i >= j)
                return j;
            e.exchange(i, j);
            exchanged = true;
            extremes.changed(i, i);
            extremes.changed(j, j);
        }
    }

    // Goes on behind the first element, which was the least, and behind all
    // that follow and are less than everything behind them: each is overwritten
    // alone. The last element is no range of its own.
    void stripAscending(Range& range) {
        unsigned int start = range.hi;  // of what is left over
        for (unsigned int k = range.hi, least = k; k > range.lo + 1;) {
            if (less(e.at(--k), e.at(least)))
                least = k;
            else
                start = k;
        }
        for (unsigned int k = range.lo + 1; k < start; ++k)
            e.place(k);
        account(range.hi - range.lo);
        range.lo = start;
    }

    bool isDescending(const Range& range) {
        unsigned int i = range.lo;
        while (i < range.hi && less(e.at(i + 1), e.at(i)))
            ++i;
        account(i - range.lo);
        return i == range.hi && range.lo < range.hi && !extremes.isMade();
    }

    // The first element is the greatest and goes to the end, both are
    // overwritten, and while the temporary is less than the others, so is the
    // first again, alone.
    bool strippedFromBothEnds(Range& range) {
        unsigned int lo = range.lo, hi = range.hi;
        for (;;) {
            e.place(lo);
            e.place(hi);
            if (hi - lo < 2)
                return false;
            --hi;
            if (!less(e.carried(), e.at(hi)))
                break;
            ++lo;
            if (lo == hi)
                return false;
        }
        range = {lo, hi};
        return true;
    }

    Elements& e;
    const Range all;
    fxPendingRanges pending;
    fxExtremes<Elements> extremes;
    std::uint64_t looksLeft;
};

template <class Elements>
void sortAs(void* block, unsigned int size, unsigned int lo, unsigned int hi, void* temp) {
    Elements elements(block, size, temp);
    ByteSort<Elements>(elements, lo, hi).run();
}

}  // namespace

void fxSortBytes(void* block, unsigned int size, unsigned int lo, unsigned int hi, void* temp) {
    if (size == 1)
        sortAs<Words<std::uint8_t>>(block, size, lo, hi, temp);
    else if (size == 2)
        sortAs<Words<std::uint16_t>>(block, size, lo, hi, temp);
    else if (size == 4)
        sortAs<Words<std::uint32_t>>(block, size, lo, hi, temp);
    else if (size == 8)
        sortAs<Words<std::uint64_t>>(block, size, lo, hi, temp);
    else
        sortAs<Blocks>(block, size, lo, hi, temp);
}
