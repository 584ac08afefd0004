// refusedMemory.cpp - a host whose memory runs out at ever later places while a
// stream is read. Exits with 0 when each such read fails: none ends the
// process, and nothing is thrown.

#include <dlfcn.h>
#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/core/fxXDRObj.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/transcribe/fxBinaryReader.h"
#include "tests/support/memoryStream.h"
#include "tests/support/streamBytes.h"

namespace {
const long plenty = 1L << 30;

long left = plenty;  // bytes that may still be had
unsigned int refused = 0;

template <class Function>
Function* systemFunction(const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

bool refuses(std::size_t size) {
    if (static_cast<long>(size) <= left)
        return false;
    ++refused;
    return true;
}

void* had(void* block) {
    left -= static_cast<long>(malloc_usable_size(block));
    return block;
}
}  // namespace

extern "C" {

void* malloc(std::size_t size) noexcept {
    static auto* const system = systemFunction<void*(std::size_t)>("malloc");
    return refuses(size) ? nullptr : had(system(size));
}

void* calloc(std::size_t n, std::size_t size) noexcept {
    static auto* const system = systemFunction<void*(std::size_t, std::size_t)>("calloc");
    return refuses(n * size) ? nullptr : had(system(n, size));
}

void* realloc(void* block, std::size_t size) noexcept {
    static auto* const system = systemFunction<void*(void*, std::size_t)>("realloc");
    const std::size_t before = malloc_usable_size(block);
    if (size > before && refuses(size - before))
        return nullptr;
    left += static_cast<long>(before);
    return had(system(block, size));
}

void free(void* block) noexcept {
    static auto* const system = systemFunction<void(void*)>("free");
    left += static_cast<long>(malloc_usable_size(block));
    system(block);
}

}  // extern "C"

namespace {
std::string bytesBody(unsigned int number, const std::string& bytes) {
    return hex("c5") + word(static_cast<unsigned int>(bytes.size())) + word(number) +
           word(static_cast<unsigned int>(bytes.size())) + bytes;
}

// Pointers to blocks and a string, then their bodies and an object. There are
// more than the work list begins with, and blocks that arrive in pieces.
const unsigned int pointers = 100;

std::string input() {
    std::string bytes;
    for (unsigned int i = 0; i < pointers; ++i)
        bytes += hex("03") + word(100 + i) + word(4);
    bytes += hex("40 04") + host(4) + hex("03") + word(3) + word(4);
    bytes += bytesBody(3, hex("'abc' 00"));
    for (unsigned int i = pointers; i-- > 0;)
        bytes += bytesBody(100 + i, run(i % 50 == 0 ? 100000 : 100));
    return bytes + hex("02 02000000 'fxStr' 00 | 4a 04 01000000 02000000 01000000") + host(1);
}

// What came of a read.
struct Outcome {
    unsigned int blocks;  // that arrived
    bool text, object;
};

Outcome readAll(MemoryStream& stream, fxBinaryReader& reader, fxStr& text, char** blocks) {
    Outcome outcome = {0, false, false};
    for (unsigned int i = 0; i < pointers; ++i) {
        if (!reader.xdr(&blocks[i], 1))
            return outcome;
    }
    if (!text.xdr(reader) || !reader.readObject(fxStr_type))
        return outcome;
    for (unsigned int i = 0; i < pointers; ++i)
        outcome.blocks += blocks[i] != nullptr;
    outcome.text = text == "abc";
    void* object = reader.readObject(fxStr_type);
    outcome.object = object != nullptr;
    fxStr_type.destroy(object);
    return stream.left() == 0 ? outcome : Outcome{0, false, false};
}

// Reads with so many bytes of memory. `shown` says whether the reader keeps the table
// that it shows as well. Returns whether the result is right: all of it when nothing
// was refused.
bool readWith(long memory, bool shown) {
    static const std::string bytes = input();
    static char* blocks[pointers];
    for (char*& block : blocks)
        block = nullptr;
    MemoryStream stream(bytes);
    fxBinaryReader reader(&stream, 0x1122, 0x33445566, "ieee");
    fxStr text;
    if (shown)
        reader.getTable();
    const unsigned int before = refused;
    left = memory;
    const Outcome outcome = readAll(stream, reader, text, blocks);
    left = plenty;
    for (const char* block : blocks)
        delete[] block;
    // What only saves time may be refused.
    const bool complete = outcome.blocks == pointers && outcome.text && outcome.object;
    return complete || refused != before;
}

// One object, whose type and number are all that memory is needed for.
bool readObjectWith(long memory, bool shown) {
    MemoryStream stream(hex("02 02000000 'fxStr' 00 | 4a 04 01000000 02000000 01000000") + host(1));
    fxBinaryReader reader(&stream, 0x1122, 0x33445566, "ieee");
    if (shown)
        reader.getTable();
    const unsigned int before = refused;
    left = memory;
    void* object = reader.readObject(fxStr_type);
    left = plenty;
    fxStr_type.destroy(object);
    return object || refused != before;
}

// Items that the host queues itself, also in a class of its own; all lead to the root.
bool readQueuedWith(long memory, bool derived) {
    struct HostsReader : fxBinaryReader {
        using fxBinaryReader::fxBinaryReader;
    };
    static void* fields[pointers];
    static fxBinaryReaderItem* items[pointers];
    for (unsigned int i = 0; i < pointers; ++i) {
        fields[i] = nullptr;
        items[i] = new fxBinaryReaderItem{&fields[i], 3};
    }
    MemoryStream stream(bytesBody(3, hex("'abc' 00")));
    fxBinaryReader own(&stream, 0x1122, 0x33445566, "ieee");
    HostsReader hosts(&stream, 0x1122, 0x33445566, "ieee");
    fxBinaryReader& reader = derived ? hosts : own;
    const unsigned int before = refused;
    left = memory;
    for (fxBinaryReaderItem* item : items)
        reader.queue(item);
    const void* root = reader.readObject(fxStr_type);
    left = plenty;
    bool complete = root != nullptr;
    for (const void* field : fields)
        complete = complete && field == root;
    delete[] static_cast<char*>(reader.alreadyRead(3));
    return root ? complete : refused != before;
}

// Whether `read` gives the right result with any amount of memory.
bool isRight(bool read(long memory, bool variant), long step, long enough) {
    for (const bool variant : {false, true}) {
        const unsigned int before = refused;
        for (long memory = 0; memory < enough; memory += step) {
            if (read(memory, variant))
                continue;
            std::fprintf(stderr, "wrong result with %ld bytes of memory\n", memory);
            return false;
        }
        const unsigned int atLast = refused;
        if (atLast == before || !read(plenty / 2, variant) || refused != atLast) {
            std::fprintf(stderr, "%u refusals\n", refused - before);
            return false;
        }
    }
    return true;
}
}  // namespace

int main() {
    fxInitializeToolkit();
    return isRight(readObjectWith, 4, 8000) && isRight(readQueuedWith, 4, 8000) &&
                   isRight(readWith, 200, 400000)
               ? 0
               : 1;
}
