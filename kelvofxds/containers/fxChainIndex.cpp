// fxChainIndex.cpp - what all private indexes share.

#include "kelvofxds/containers/fxChainIndexInternal.h"

#include <sys/random.h>

#include <chrono>
#include <utility>

#include "kelvofxds/containers/fxPrivateHashInternal.h"
#include "kelvofxds/core/fxFreeListInternal.h"

// The seed.

fxHashSeed fxPrivateSeed;

void fxChooseSeed() {
    static bool chosen = false;
    if (chosen)
        return;
    chosen = true;
    if (getrandom(&fxPrivateSeed, sizeof fxPrivateSeed, GRND_NONBLOCK) ==
        static_cast<ssize_t>(sizeof fxPrivateSeed))
        return;
    // A system that has no such call, or not enough to give yet.
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
    std::uint64_t state =
        static_cast<std::uint64_t>(now) ^
        std::uint64_t(reinterpret_cast<std::uintptr_t>(&state)) * 0x9E3779B97F4A7C15U;
    std::uint32_t words[4];
    for (std::uint32_t& word : words) {
        state = state * 6364136223846793005U + 1442695040888963407U;
        word = static_cast<std::uint32_t>(state >> 32);
    }
    std::memcpy(&fxPrivateSeed, words, sizeof fxPrivateSeed);
}

// Blocks of slots. Their sizes are of one row, in which each is half as large
// again as the one before; of the first ones a block each is kept.

namespace {
// Nothing is kept where a checker could not tell what is kept from what lives.
const unsigned int keptSizes = fxMostKept != 0 ? 16 : 0;  // up to 55 KiB
const unsigned int leastBytes = 128;
void* spares[16];

// The place of the first size that holds `bytes`, which become that size.
unsigned int placeOfSize(unsigned int& bytes) {
    unsigned int size = leastBytes;
    unsigned int place = 0;
    for (; size < bytes && size < 0x80000000U; ++place)
        size += size / 2;
    bytes = size > bytes ? size : bytes;
    return place;
}
}  // namespace

void* fxAllocateSlots(unsigned int& bytes) {
    const unsigned int place = placeOfSize(bytes);
    void* spare = place < keptSizes ? std::exchange(spares[place], nullptr) : nullptr;
    return spare ? spare : std::malloc(bytes);
}

void fxFreeSlots(void* block, unsigned int bytes) {
    const unsigned int place = placeOfSize(bytes);
    if (block && place < keptSizes)
        std::swap(spares[place], block);
    std::free(block);
}

// Numbers. One that is free leads to the next free one.

void* fxIndexOf[fxIndexNumber + 1U];

namespace {
unsigned short firstFree = 0;  // given back last
unsigned short mostInUse = 0;  // since the process began
unsigned short nextFree[fxIndexNumber + 1U];
}  // namespace

unsigned short fxEnterIndex(void* index) {
    unsigned short number = firstFree;
    if (number != 0)
        firstFree = nextFree[number];
    else if (mostInUse < fxIndexNumber)
        number = ++mostInUse;
    if (number != 0)
        fxIndexOf[number] = index;
    return number;
}

void fxLeaveIndex(unsigned short number) {
    fxIndexOf[number] = nullptr;
    nextFree[number] = firstFree;
    firstFree = number;
}

// Promises.

namespace {
const void** promised = nullptr;  // virtual tables
unsigned int numPromised = 0;
}  // namespace

bool fxHasPromised(const void* table) {
    for (unsigned int i = 0; i < numPromised; ++i) {
        if (promised[i] == table)
            return true;
    }
    return false;
}

void fxNotePromise(const void* table) {
    const unsigned int step = 8;
    if (fxHasPromised(table))
        return;
    if (numPromised % step == 0) {
        void* grown = std::realloc(promised, (numPromised + step) * sizeof *promised);
        if (!grown)
            return;
        promised = static_cast<const void**>(grown);
    }
    promised[numPromised++] = table;
}
