// ownNew.cpp - a host with an operator new of its own, whose addresses are no
// multiples of 8. Exits with 0 when the library gives back all that it takes.
//
// A program of its own: its operators hold for the whole process.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <new>

#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/containers/fxVoidPtrDict.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/transcribe/fxBinaryReader.h"
#include "kelvofxds/transcribe/fxBinaryWriter.h"
#include "tests/support/heapCalls.h"
#include "tests/support/memoryStream.h"
#include "tests/support/streamBytes.h"

namespace {
const std::size_t offset = 4;
long objects = 0;  // from operator new, and not given back

// Not inlined: a compiler that sees both ends warns of free after new.
[[gnu::noinline]] void* allocate(std::size_t size) {
    char* block = static_cast<char*>(std::malloc(size + offset));
    if (!block)
        return nullptr;
    ++objects;
    return block + offset;
}

[[gnu::noinline]] void release(void* object) {
    if (!object)
        return;
    --objects;
    std::free(static_cast<char*>(object) - offset);
}
}  // namespace

void* operator new(std::size_t size) {
    void* object = allocate(size);
    if (!object)
        std::abort();
    return object;
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void operator delete(void* object) noexcept { release(object); }
void operator delete(void* object, std::size_t) noexcept { release(object); }
void operator delete[](void* object) noexcept { release(object); }
void operator delete[](void* object, std::size_t) noexcept { release(object); }

namespace {
// Each uses the library and says whether it answered right.

bool useStringDictionary() {
    fxStrStrDictionary d(3);
    for (int i = 0; i < 50; ++i)
        d.add(fxStr(i, "%d"), fxStr(i, "value %d"));
    for (int i = 0; i < 20; ++i)
        d.remove(fxStr(i, "%d"));
    return d.length() == 30;
}

bool useVoidPtrDictionary() {
    fxVoidPtrDict d(3);
    for (int i = 0; i < 50; ++i)
        d.add(fxStr(i, "%d"), &d);
    const fxStr key(7, "%d");
    std::free(d.fxDictionary::cut(&key));
    d.cleanup();
    return d.length() == 49;  // cleanup leaves the number
}

bool useTable() {
    fxBinaryOTDict table;
    for (unsigned int i = 0; i < 50; ++i)
        table.addInternal(&i, &i);
    table.removeAll();
    for (unsigned int i = 0; i < 50; ++i)
        table.addNew(i, i);
    const unsigned int removed = 7;
    table.remove(&removed);
    return table.length() == 49;
}

bool useWriter() {
    MemoryStream stream;
    fxBinaryWriter writer(&stream);
    char places[100];
    for (char& place : places)
        writer.recordIdForAddress(&place);
    if (writer.getTable().length() != 101)
        return false;
    writer.reset();
    for (char& place : places)
        writer.recordIdForAddress(&place);
    return writer.getTable().length() == 100;
}

bool useReader() {
    std::string bytes;
    for (unsigned int i = 0; i < 100; ++i)
        bytes += hex("45 01") + word(i) + word(1) + 'x';
    MemoryStream stream(bytes);
    fxBinaryReader reader(&stream, 0x1122, 0x33445566, "ieee");
    for (unsigned int i = 0; i < 100; ++i)
        delete[] static_cast<char*>(reader.readObject(fxXDRObj_type));
    return reader.getTable().length() == 100;
}
}  // namespace

int main() {
    const struct {
        bool (*use)();
        const char* name;
    } uses[] = {{useStringDictionary, "fxStrStrDictionary"},
                {useVoidPtrDictionary, "fxVoidPtrDict"},
                {useTable, "fxBinaryOTDict"},
                {useWriter, "fxBinaryWriter"},
                {useReader, "fxBinaryReader"}};
    int failures = 0;
    int* aligned = new int;
    if (reinterpret_cast<std::uintptr_t>(aligned) % 8 == 0) {
        std::fprintf(stderr, "operator new returns a multiple of 8\n");
        ++failures;
    }
    delete aligned;
    for (const auto& u : uses) {
        u.use();  // what is made once for all
        const long objectsBefore = objects, blocksBefore = heapCalls().blocks;
        if (!u.use() || objects != objectsBefore || heapCalls().blocks != blocksBefore) {
            std::fprintf(stderr, "%s: wrong, or keeps %ld objects, %ld blocks\n", u.name,
                         objects - objectsBefore, heapCalls().blocks - blocksBefore);
            ++failures;
        }
    }
    return failures == 0 ? 0 : 1;
}
