#include "kelvofxds/transcribe/fxBinaryTranscriber.h"

#include <cstdlib>
#include <new>

#include "kelvofxds/transcribe/fxContentsInternal.h"
#include "kelvofxds/transcribe/fxObjectTableInternal.h"

fxBinaryTranscriber::fxBinaryTranscriber()
    : cursor(buffer),
      capacity(bufferSize),
      payloadCount(0),
      tag(fxOT_Data),
      arg1(0),
      arg2(0),
      arg3(0),
      arg4(0),
      typeName(nullptr) {
    fxContents::setTellsVersions(*this);
}

fxBinaryTranscriber::~fxBinaryTranscriber() { freeItems(); }

fxBinaryOTDict& fxBinaryTranscriber::getTable() {
    if (fxObjectTable* entries = fxObjectTable::of(table))
        entries->show();
    return table;
}

namespace {
// The list can be as long as the graph, so it grows by doubling.
unsigned int grown(const fxVoidPtrArray& list) { return list.length() * 2 + 16; }

bool isFull(const fxVoidPtrArray& list) { return list.getLen() == list.getMaxLen(); }
}  // namespace

// Volatile, or the compiler leaves both calls out.
bool fxBinaryTranscriber::hasMemory(unsigned int bytes) {
    void* volatile probe = std::malloc(bytes);
    const bool isThere = probe != nullptr;
    std::free(probe);
    return isThere;
}

// An array ends the process where there is no memory for it, so the same
// amount is asked for before.
bool fxBinaryTranscriber::hasRoomForItem() {
    return !isFull(workQueue) || hasMemory(grown(workQueue) * sizeof(void*));
}

void fxBinaryTranscriber::pushItem(void* item) {
    if (isFull(workQueue))
        workQueue.setMaxLength(grown(workQueue));
    workQueue.append(&item);
}

void* fxBinaryTranscriber::popItem() {
    const unsigned int n = workQueue.length();
    if (n == 0)
        return nullptr;
    void* item = workQueue[n - 1];
    workQueue.remove(n - 1, 1);
    return item;
}

// Items are plain records from new.
void fxBinaryTranscriber::freeItems() {
    while (void* item = popItem())
        ::operator delete(item);
}
