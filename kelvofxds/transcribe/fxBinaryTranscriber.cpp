#include "kelvofxds/transcribe/fxBinaryTranscriber.h"

#include <new>

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
      typeName(nullptr) {}

fxBinaryTranscriber::~fxBinaryTranscriber() { freeItems(); }

fxBinaryOTDict& fxBinaryTranscriber::getTable() {
    if (fxObjectTable* entries = fxObjectTable::of(table))
        entries->show();
    return table;
}

void fxBinaryTranscriber::pushItem(void* item) {
    // The list can be as long as the graph, so it grows by doubling.
    if (workQueue.getLen() == workQueue.getMaxLen())
        workQueue.setMaxLength(workQueue.length() * 2 + 16);
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
