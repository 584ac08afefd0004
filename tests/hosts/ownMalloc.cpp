// ownMalloc.cpp - a host that replaces malloc, calloc, realloc and free, and nothing else. Exits
// with 0 when the library keeps to their blocks and does without those that they refuse.
//
// A program of its own: its definitions hold for the whole process.

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/pattern/fxRegEngine.h"
#include "kelvofxds/transcribe/fxStdioStream.h"
#include "kelvofxds/transcribe/fxTranscriber.h"
#include "tests/hosts/growing.h"
#include "tests/hosts/lastWords.h"

namespace {

// In front of each block.
struct Header {
    std::size_t size;
    std::uint32_t mark;
    std::uint32_t unused;
    // What another malloc would take for the block's size: a little more.
    std::uint32_t otherSize;
};

const std::uint32_t inUse = 0x51A4E5ED;
const std::uint32_t released = 0xDEADB10C;
const std::size_t guardSize = 16;  // behind each block
const char guardByte = 0x5A;

const std::size_t heapSize = 256U << 20;
alignas(16) char heap[heapSize];  // not touched where it is not used
std::size_t heapUsed = 0;
std::size_t refusedFrom = SIZE_MAX;  // blocks of this size and above there are none

[[noreturn]] void complain(const char* what) {
    const ssize_t n = ::write(STDERR_FILENO, what, std::strlen(what));
    std::_Exit(n < 0 ? 3 : 2);
}

Header* headerOf(void* block) {
    return reinterpret_cast<Header*>(static_cast<char*>(block) - sizeof(Header));
}

void check(void* block) {
    if (static_cast<char*>(block) < heap || static_cast<char*>(block) >= heap + heapSize)
        complain("a block of another malloc is released\n");
    const Header* header = headerOf(block);
    if (header->mark != inUse)
        complain("a block is released that is not in use\n");
    for (std::size_t i = 0; i < guardSize; ++i) {
        if (static_cast<char*>(block)[header->size + i] != guardByte)
            complain("bytes behind a block were written\n");
    }
}

std::size_t roundedUp(std::size_t size, std::size_t unit) {
    return (size + unit - 1) / unit * unit;
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) noexcept {
    if (size >= refusedFrom || size > heapSize)
        return nullptr;
    const std::size_t start = roundedUp(heapUsed + sizeof(Header), 16);
    if (start + size + guardSize > heapSize)
        return nullptr;
    heapUsed = start + size + guardSize;
    char* block = heap + start;
    // The bit says that the block is a mapping of its own.
    const std::size_t usable = roundedUp(size, 8) + 8;
    const Header header = {size, inUse, 0, static_cast<std::uint32_t>((usable + 8) | 2)};
    std::memcpy(block - sizeof header, &header, sizeof header);
    std::memset(block + size, guardByte, guardSize);
    return block;
}

void free(void* block) noexcept {
    if (!block)
        return;
    check(block);
    headerOf(block)->mark = released;
    std::memset(block, 0xDD, headerOf(block)->size);
}

void* calloc(std::size_t n, std::size_t size) noexcept {
    std::size_t bytes;
    if (__builtin_mul_overflow(n, size, &bytes))
        return nullptr;
    void* block = malloc(bytes);
    if (block)
        std::memset(block, 0, bytes);
    return block;
}

void* realloc(void* old, std::size_t size) noexcept {
    if (!old)
        return malloc(size);
    check(old);
    void* block = malloc(size);
    if (!block)
        return nullptr;
    std::memcpy(block, old, size < headerOf(old)->size ? size : headerOf(old)->size);
    free(old);
    return block;
}

}  // extern "C"

namespace {

bool growsInItsBlocks() { return growing::failures() == 0; }

// Whether the process ends with its message when the next block is refused.
bool endsForLackOfMemory() {
    void (*const acts[])() = {
        [] { fxStr(1000u); },
        [] {
            refusedFrom = SIZE_MAX;
            fxStr s("a");
            refusedFrom = 1;
            for (;;)
                s.append('b');
        },
        [] {
            fxTempStr joined("a", 1, "b", 1);
            for (;;)
                joined.concat("c", 1);
        },
        [] {
            fxStackBuffer buffer;
            for (;;)
                buffer.addc('a');
        },
        [] { fxIntArray(10u); },
        [] { fxIntArray().resize(10); },
        [] { fxIntArray().expand(); },
        [] {
            fxIntArray array;
            array.setMaxLength(10);
        },
        [] {
            const fxStr text("text");
            fxStrArray array;
            array.append(text);
        },
    };
    for (const auto& act : acts) {
        refusedFrom = SIZE_MAX;
        const LastWords words([act] {
            refusedFrom = 1;
            act();
        });
        if (!words.are("out of memory\n")) {
            std::fprintf(stderr, "%u: %s\n", static_cast<unsigned int>(&act - acts), words.text);
            return false;
        }
    }
    return true;
}

// Objects for a stream are null then.
bool makesNoInstancesWithoutMemory() {
    refusedFrom = 1;
    void* const made[] = {fxStr::newInstance(fxStr_type), fxIntArray::newInstance(fxIntArray_type),
                          fxStrArray::newInstance(fxStrArray_type)};
    refusedFrom = SIZE_MAX;
    return !made[0] && !made[1] && !made[2];
}

const unsigned int manyInts = 100000;

bool readsNoArrayWithoutMemory() {
    fxInitializeToolkit();
    std::FILE* file = std::tmpfile();
    fxIntArray array(manyInts);
    for (unsigned int i = 0; i < manyInts; ++i)
        array[i] = static_cast<int>(i);
    auto* stream = new fxStdioStream(file, fxStream::writeStream);
    ++stream->count;
    fxTranscriber* writer = fxTranscriber::getWriter(stream);
    const bool written = array.xdr(*writer) != 0;
    delete writer;
    std::rewind(file);
    fxTranscriber* reader = fxTranscriber::getReader(new fxStdioStream(file, fxStream::readStream));
    fxIntArray read;
    refusedFrom = manyInts * sizeof(int);
    const bool isRefused = read.xdr(*reader) == 0;
    refusedFrom = SIZE_MAX;
    delete reader;
    return written && isRefused;
}

}  // namespace

namespace {

// A copy of what fxregcomp makes of `expression`.
fxregexp* moved(const char* expression, char* to) {
    fxregexp* made = fxregcomp(expression);
    const std::size_t size = headerOf(made)->size;
    std::memcpy(to, made, size);
    std::free(made);
    return reinterpret_cast<fxregexp*>(to);
}

// A short program stands where a long one stood, and nothing can be read behind it.
bool readsNoBytesBehindAProgram() {
    const std::size_t page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    void* const pages =
        ::mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED)
        return false;
    char* const end = static_cast<char*>(pages) + page;
    fxregexp* const made = fxregcomp(".");
    const std::size_t size = roundedUp(headerOf(made)->size, alignof(fxregexp));
    std::free(made);
    char* const place = end - size;

    bool isRight = fxregexec(moved("..............", place), "a long subject");
    ::mprotect(end, page, PROT_NONE);
    fxregexp* const brief = moved(".", place);
    isRight = isRight && fxregexec(brief, "x") && !fxregexec(brief, "");
    ::munmap(pages, 2 * page);
    return isRight;
}

}  // namespace

int main() {
    const struct {
        bool (*holds)();
        const char* complaint;
    } checks[] = {
        {growsInItsBlocks, "what grows is not what was put into it"},
        {endsForLackOfMemory, "the process does not end for lack of memory"},
        {makesNoInstancesWithoutMemory, "newInstance does not return null without memory"},
        {readsNoArrayWithoutMemory, "reading an array does not fail without memory"},
        {readsNoBytesBehindAProgram, "a program at an address of another is not run"},
    };
    int failures = 0;
    for (const auto& c : checks) {
        if (c.holds())
            continue;
        std::fprintf(stderr, "%s\n", c.complaint);
        ++failures;
    }
    return failures == 0 ? 0 : 1;
}
