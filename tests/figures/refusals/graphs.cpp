// graphs.cpp - graphs of many parts of one kind, while memory is refused: each of the lists that
// transcribers keep grows while such parts are met.

#include <cstdlib>

#include "tests/figures/refusals/scenarios.h"

namespace {

class Grain : public fxXDRObj {
public:
    fxTypeObj& getTypeObj() const override;
    unsigned char xdr(fxTranscriber&) override { return 1; }
    static void* create(fxTypeObj&) { return made<Grain>(); }
    static void destroy(void* object) { delete static_cast<Grain*>(object); }
    static unsigned char xdr(void*, fxTranscriber&) { return 1; }
};
fxTypeObj Grain_type("RefusalsGrain", 1, Grain::create, Grain::destroy, Grain::xdr);
fxTypeObj& Grain::getTypeObj() const { return Grain_type; }

// Has so many of one kind that each list grows a few times.
const unsigned int many = 300;

class Heap : public fxXDRObj {
public:
    enum Kind { blocks, pointers, embedded, pointersAndEmbedded, longBlock };
    explicit Heap(Kind k = kind) : own(k) {
        for (unsigned int i = 0; i < many; ++i) {
            texts[i] = nullptr;
            grains[i] = &parts[i];
        }
    }
    fxTypeObj& getTypeObj() const override;
    unsigned char xdr(fxTranscriber& t) override {
        if (own == longBlock)
            return t.xdr(&texts[0], 100000);
        for (unsigned int i = 0; i < many; ++i) {
            if (own == blocks && !t.xdr(&texts[i], 5))
                return 0;
            const bool points = own == pointers || own == pointersAndEmbedded;
            if (points && !t.xdr(&grains[i], grains[i], Grain_type, nullptr, nullptr))
                return 0;
            if (own == embedded && !t.xdr(Grain_type, nullptr, &parts[i]))
                return 0;
        }
        for (unsigned int i = 0; own == pointersAndEmbedded && i < many; ++i) {
            if (!t.xdr(Grain_type, nullptr, &parts[i]))
                return 0;
        }
        return 1;
    }
    static void* create(fxTypeObj&) { return made<Heap>(); }
    static void destroy(void* object) { delete static_cast<Heap*>(object); }
    static unsigned char xdr(void* object, fxTranscriber& t) {
        return static_cast<Heap*>(object)->Heap::xdr(t);
    }

    inline static Kind kind = blocks;  // of those that are read
    Kind own;
    char* texts[many];
    Grain* grains[many];
    Grain parts[many];
};
fxTypeObj Heap_type("RefusalsHeap", 1, Heap::create, Heap::destroy, Heap::xdr);
fxTypeObj& Heap::getTypeObj() const { return Heap_type; }

const unsigned int kinds = Heap::longBlock + 1;
Heap* heaps[kinds];
fxMemoryStream* streams[kinds];

fxTranscriber* graphWriterOn(fxStream* stream) {
    fxTranscriber::changeDefaultWriter(makeGraphWriter);
    fxTranscriber* const writer = fxTranscriber::getWriter(stream);
    fxTranscriber::resetToDefaultWriter();
    return writer;
}

template <Heap::Kind kind>
void write() {
    fxTranscriber* const writer = graphWriterOn(made<fxMemoryStream>());
    if (writer)
        writer->writeObject(heaps[kind], heaps[kind]);
    delete writer;
}

template <Heap::Kind kind>
void read() {
    Heap::kind = kind;
    streams[kind]->rewind();
    fxTranscriber* const reader = fxTranscriber::getReader(streams[kind]);
    if (reader)
        reader->readObject(Heap_type);
    delete reader;
}

}  // namespace

void prepareGraphs() {
    for (unsigned int i = 0; i < kinds; ++i) {
        heaps[i] = new Heap(static_cast<Heap::Kind>(i));
        for (char*& text : heaps[i]->texts)
            text = static_cast<char*>(std::calloc(1, i == Heap::longBlock ? 100000 : 5));
        streams[i] = new fxMemoryStream;
        ++streams[i]->count;
        fxTranscriber* const writer = graphWriterOn(streams[i]);
        if (!writer || !writer->writeObject(heaps[i], heaps[i]))
            std::abort();
        delete writer;
    }
}

Scenarios ofGraphs() {
    return {
        {"writeBlocks", write<Heap::blocks>, usual},
        {"writePointers", write<Heap::pointers>, usual},
        {"writeEmbedded", write<Heap::embedded>, usual},
        {"writePointersAndEmbedded", write<Heap::pointersAndEmbedded>, usual},
        {"readBlocks", read<Heap::blocks>, usual},
        {"readPointers", read<Heap::pointers>, usual},
        {"readEmbedded", read<Heap::embedded>, usual},
        {"readPointersAndEmbedded", read<Heap::pointersAndEmbedded>, usual},
        {"readLongBlock", read<Heap::longBlock>, usual},
    };
}
