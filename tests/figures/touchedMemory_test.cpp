#include "tests/figures/touchedMemory.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <malloc.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <gtest/gtest.h>

#include "tests/support/inChild.h"

#ifdef __SANITIZE_ADDRESS__

bool TouchedMemory::isKnown() { return false; }
void TouchedMemory::prepare() {}
void TouchedMemory::begin() {}
std::size_t TouchedMemory::end() { return 0; }

#else

namespace {

const std::size_t pageSize = 4096;
const std::size_t largeSize = 2 * pageSize;  // from there on pages are counted
const std::size_t blockOverhead = 8;         // the heap's own words

// Nothing here may allocate: the heap calls it.

struct Block {
    char* at;
    std::size_t size;  // of a small one with the heap's own words
    bool isLarge;
};

// The blocks made since it began, by address.
struct Blocks {
    static const std::size_t places = 1 << 17;

    Block* find(void* at) {
        std::size_t place = hash(at);
        while (table[place].at && table[place].at != at)
            place = (place + 1) % places;
        return &table[place];
    }
    // The places behind a vacated one are filled again.
    void remove(Block* block) {
        block->at = nullptr;
        auto vacant = static_cast<std::size_t>(block - table);
        for (std::size_t next = (vacant + 1) % places; table[next].at; next = (next + 1) % places) {
            const Block moved = table[next];
            table[next].at = nullptr;
            *find(moved.at) = moved;
        }
    }
    static std::size_t hash(void* at) {
        return reinterpret_cast<std::uintptr_t>(at) / 8 * 40503 % places;
    }

    Block table[places];
};

Blocks blocks;
Blocks mapped;  // large ones that are mappings of their own, as long as they live
std::size_t mappedCount = 0;
bool isMeasuring = false;
std::size_t blockCount = 0;
std::size_t smallBytes = 0;  // in blocks that count as a whole
Block larges[256];           // the others
std::size_t largeCount = 0;
std::size_t peak = 0;

// What the system says of the mapping with `at`: pages that were read alone are the one page of
// zeros there, and not counted.
std::size_t residentMapping(std::uintptr_t at) {
    static char text[1 << 18];
    const int file = ::open("/proc/self/smaps", O_RDONLY);
    std::size_t length = 0;
    for (ssize_t n; (n = ::read(file, text + length, sizeof text - 1 - length)) > 0;)
        length += static_cast<std::size_t>(n);
    ::close(file);
    text[length] = '\0';
    bool isIn = false;
    for (const char* line = text; line && *line; line = std::strchr(line, '\n') + 1) {
        unsigned long start = 0;
        unsigned long stop = 0;
        unsigned long kib = 0;
        if (std::sscanf(line, "%lx-%lx ", &start, &stop) == 2)
            isIn = at >= start && at < stop;
        else if (isIn && std::sscanf(line, "Rss: %lu kB", &kib) == 1)
            return std::size_t{kib} * 1024;
    }
    std::abort();
}

std::size_t residentIn(const Block& block) {
    static unsigned char states[1 << 10];
    const std::uintptr_t start = reinterpret_cast<std::uintptr_t>(block.at) & ~(pageSize - 1);
    const std::uintptr_t end = reinterpret_cast<std::uintptr_t>(block.at) + block.size;
    std::size_t resident = 0;
    for (std::uintptr_t at = start; at < end; at += sizeof states * pageSize) {
        const std::size_t length = std::min<std::size_t>(end - at, sizeof states * pageSize);
        const std::size_t n = (length + pageSize - 1) / pageSize;
        if (::mincore(reinterpret_cast<void*>(at), length, states) != 0)
            std::abort();
        for (std::size_t i = 0; i < n; ++i)
            resident += (states[i] & 1) * pageSize;
    }
    const std::size_t few = 4 * pageSize;
    return resident < few ? resident : std::min(resident, residentMapping(start));
}

void notePeak() {
    std::size_t now = smallBytes;
    for (std::size_t i = 0; i < largeCount; ++i)
        now += residentIn(larges[i]);
    peak = std::max(peak, now);
}

// The heap's own words of a large one are in its first page.
Block blockAt(void* at) {
    const std::size_t size = ::malloc_usable_size(at);
    const bool isLarge = size >= largeSize;
    return {static_cast<char*>(at), isLarge ? size : size + blockOverhead, isLarge};
}

void noteMade(void* at) {
    if (!isMeasuring || !at)
        return;
    const Block block = blockAt(at);
    if (++blockCount > Blocks::places / 2 || largeCount == sizeof larges / sizeof larges[0])
        std::abort();
    *blocks.find(at) = block;
    if (!block.isLarge)
        smallBytes += block.size;
    else
        larges[largeCount++] = block;
    notePeak();
}

void noteEnded(void* at) {
    if (!isMeasuring || !at)
        return;
    notePeak();
    Block* const found = blocks.find(at);
    const Block block = *found;
    if (!block.at)
        return;  // made before
    --blockCount;
    blocks.remove(found);
    if (!block.isLarge) {
        smallBytes -= block.size;
        return;
    }
    Block* const last = larges + largeCount--;
    *std::find_if(larges, last, [at](const Block& b) { return b.at == at; }) = last[-1];
}

// The definitions that those below hide.
template <class Function>
Function* systemFunction(Function*& known, const char* name) {
    if (!known)
        known = reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
    if (!known)
        std::abort();
    return known;
}
void* (*systemMalloc)(std::size_t) = nullptr;
void* (*systemCalloc)(std::size_t, std::size_t) = nullptr;
void* (*systemRealloc)(void*, std::size_t) = nullptr;
void (*systemFree)(void*) = nullptr;
std::size_t (*systemUsableSize)(void*) = nullptr;

std::size_t usableSize(void* block) {
    if (mappedCount != 0) {
        const Block* const found = mapped.find(block);
        if (found->at)
            return found->size;
    }
    return systemFunction(systemUsableSize, "malloc_usable_size")(block);
}

bool isMapped(void* block) { return mappedCount != 0 && mapped.find(block)->at; }

// A large block of the heap could have pages that somebody else has touched.
void* newBlock(std::size_t size, bool isZero) {
    if (!isMeasuring || size < largeSize)
        return isZero ? systemFunction(systemCalloc, "calloc")(1, size)
                      : systemFunction(systemMalloc, "malloc")(size);
    const std::size_t length = (size + pageSize - 1) & ~(pageSize - 1);
    if (length + pageSize < size)
        return nullptr;
    // A page that cannot be used keeps it apart from its neighbours.
    void* const at = ::mmap(nullptr, length + pageSize, PROT_READ | PROT_WRITE,
                            MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (at == MAP_FAILED)
        return nullptr;
    ::mprotect(static_cast<char*>(at) + length, pageSize, PROT_NONE);
    if (++mappedCount > Blocks::places / 2)
        std::abort();
    *mapped.find(at) = {static_cast<char*>(at), length, true};
    return at;
}

void endBlock(void* block) {
    if (!isMapped(block)) {
        systemFunction(systemFree, "free")(block);
        return;
    }
    Block* const found = mapped.find(block);
    ::munmap(block, found->size + pageSize);
    mapped.remove(found);
    --mappedCount;
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) noexcept {
    void* const block = newBlock(size, false);
    noteMade(block);
    return block;
}

void* calloc(std::size_t n, std::size_t size) noexcept {
    if (size != 0 && n > 0x7FFFFFFF / size)
        return systemFunction(systemCalloc, "calloc")(n, size);
    void* const block = newBlock(n * size, true);
    noteMade(block);
    return block;
}

// While it is measured every block moves, and is there twice for a moment.
void* realloc(void* old, std::size_t size) noexcept {
    if (!isMeasuring && !isMapped(old))
        return systemFunction(systemRealloc, "realloc")(old, size);
    void* const block = malloc(size);
    if (!block)
        return nullptr;
    if (old)
        std::memcpy(block, old, std::min(size, usableSize(old)));
    free(old);
    return block;
}

void free(void* block) noexcept {
    noteEnded(block);
    if (block)
        endBlock(block);
}

// Together with the others, so that the library takes it for the same heap's.
std::size_t malloc_usable_size(void* block) noexcept { return block ? usableSize(block) : 0; }

}  // extern "C"

bool TouchedMemory::isKnown() { return true; }

void TouchedMemory::prepare() { ::prctl(PR_SET_THP_DISABLE, 1, 0, 0, 0); }

void TouchedMemory::begin() {
    if (blockCount != 0)
        std::memset(&blocks, 0, sizeof blocks);
    blockCount = smallBytes = largeCount = peak = 0;
    isMeasuring = true;
}

std::size_t TouchedMemory::end() {
    notePeak();
    isMeasuring = false;
    return peak;
}

#endif

// What it says of blocks of known sizes, in a process of its own.
namespace {
template <class Work>
std::string touchedBy(Work work) {
    return inChild([work] {
        TouchedMemory::prepare();
        TouchedMemory::begin();
        work();
        return std::to_string((TouchedMemory::end() + 4095) / 4096);
    });
}
volatile char sink;

std::string pages(unsigned int n) { return std::to_string(TouchedMemory::isKnown() ? n : 0); }
}  // namespace

TEST(figureMemory, countsWhatIsWritten) {
    static const unsigned int size = 1 << 26;
    EXPECT_EQ(pages(1), touchedBy([] {
                  auto* const block = static_cast<volatile char*>(std::malloc(100));
                  block[0] = 1;
              }));
    EXPECT_EQ(pages(0), touchedBy([] { std::free(std::calloc(size, 1)); }));
    EXPECT_EQ(pages(2), touchedBy([] {
                  auto* const block = static_cast<volatile char*>(std::calloc(size, 1));
                  block[size / 2] = 1;
                  block[size / 3] = 1;
                  std::free(const_cast<char*>(block));
              }));
    EXPECT_EQ(pages(0), touchedBy([] {
                  auto* const block = static_cast<volatile char*>(std::calloc(size, 1));
                  for (unsigned int i = 0; i < size; i += 4096)
                      sink = block[i];
                  std::free(const_cast<char*>(block));
              }))
        << "read alone";
    EXPECT_EQ(pages(100), touchedBy([] {
                  for (int i = 0; i < 9; ++i) {
                      void* const block = std::malloc(409600);
                      std::memset(block, 1, 409600);
                      sink = *static_cast<char*>(block);
                      std::free(block);
                  }
              }))
        << "the most at once";
}

TEST(figureMemory, countsWhatIsMovedAndManySmallBlocks) {
    EXPECT_EQ(pages(25), touchedBy([] {
                  for (int i = 0; i < 1000; ++i)
                      sink = *static_cast<char*>(std::memset(std::malloc(92), 1, 92));
              }));
    EXPECT_EQ(pages(2), touchedBy([] {
                  void* block = std::memset(std::malloc(2040), 1, 2040);
                  void* const other = std::malloc(8);
                  block = std::realloc(block, 4000);
                  sink = *static_cast<char*>(block);
                  std::free(block);
                  std::free(other);
              }))
        << "twice while it is moved";
}
