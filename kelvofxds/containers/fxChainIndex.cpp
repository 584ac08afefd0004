// fxChainIndex.cpp - what all private indexes share. Separate containers may be used in separate
// threads, so everything here is guarded.

#include "kelvofxds/containers/fxChainIndexInternal.h"

#include <atomic>
#include <mutex>
#include <utility>

#include "kelvofxds/core/fxFreeListInternal.h"

// Blocks of slots. Their sizes are of one row, in which each is half as large
// again as the one before; of the first ones a block each is kept.

namespace {
// Nothing is kept where a checker could not tell what is kept from what lives.
#ifdef FX_ADDRESSES_ARE_WATCHED
const unsigned int keptSizes = 0;
#else
const unsigned int keptSizes = 16;  // up to 55 KiB
#endif
const unsigned int leastBytes = 128;
std::mutex blocks;  // guards what follows, not an atomic: checkers of threads can follow it
void* spares[keptSizes + 1];

// The place of the first size that holds `bytes`, which become that size.
unsigned int placeOfSize(unsigned int& bytes) {
    unsigned int size = leastBytes;
    unsigned int place = 0;
    for (; size < bytes && size < 0x80000000U; ++place)
        size += size / 2;
    bytes = size > bytes ? size : bytes;
    return place;
}

// Keeps `block` there; returns what was kept before.
void* exchanged(unsigned int place, void* block) {
    const std::lock_guard<std::mutex> guard(blocks);
    return std::exchange(spares[place], block);
}
}  // namespace

void* fxAllocateSlots(unsigned int& bytes) {
    const unsigned int place = placeOfSize(bytes);
    void* const spare = place < keptSizes ? exchanged(place, nullptr) : nullptr;
    return spare ? spare : std::malloc(bytes);
}

void fxFreeSlots(void* block, unsigned int bytes) {
    const unsigned int place = placeOfSize(bytes);
    if (block && place < keptSizes)
        block = exchanged(place, block);
    std::free(block);
}

// Numbers. One that is free leads to the next free one.

void* fxIndexOf[fxIndexNumber + 1U];

namespace {
std::mutex numbers;            // guards what follows
unsigned short firstFree = 0;  // given back last
unsigned short mostInUse = 0;  // since the process began
unsigned short nextFree[fxIndexNumber + 1U];
}  // namespace

unsigned short fxTakeIndexNumber() {
    const std::lock_guard<std::mutex> guard(numbers);
    unsigned short number = firstFree;
    if (number != 0)
        firstFree = nextFree[number];
    else if (mostInUse < fxIndexNumber)
        number = ++mostInUse;
    return number;
}

void fxReturnIndexNumber(unsigned short number) {
    const std::lock_guard<std::mutex> guard(numbers);
    fxIndexOf[number] = nullptr;
    nextFree[number] = firstFree;
    firstFree = number;
}

// Promises. They are never taken back.

namespace {
struct Promise {
    const void* table;  // the virtual table of a class
    const Promise* next;
};
std::atomic<const Promise*> promises{nullptr};
}  // namespace

bool fxHasPromised(const void* table) {
    const Promise* p = promises.load(std::memory_order_acquire);
    while (p && p->table != table)
        p = p->next;
    return p;
}

void fxNotePromise(const void* table) {
    if (fxHasPromised(table))
        return;
    auto* made = fxTryNew<Promise>(Promise{table, promises.load()});
    while (made && !promises.compare_exchange_weak(made->next, made)) {
    }
}
