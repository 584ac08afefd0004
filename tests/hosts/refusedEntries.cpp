// refusedEntries.cpp - a host whose operator new refuses: nothing is thrown at it by dictionaries
// and sets.

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <new>

#include "kelvofxds/containers/fxStrSet.h"
#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "tests/hosts/lastWords.h"
#include "tests/support/recordingTranscriber.h"

namespace {

bool refuses = false;

int failures = 0;

void expect(bool condition, const char* what) {
    if (condition)
        return;
    std::fprintf(stderr, "refusedEntries: %s\n", what);
    ++failures;
}

// The operations that read, which let nothing more be allocated once a key is
// there.
class Dictionary : public fxStrStrDictionary {
public:
    using fxStrStrDictionary::fxStrStrDictionary;
    unsigned char xdrValue(fxTranscriber& t, void* value) override {
        const unsigned char done = fxStrStrDictionary::xdrValue(t, value);
        refuses = true;
        return done;
    }
};

class Set : public fxStrSet {
public:
    using fxStrSet::fxStrSet;
    unsigned char xdrKey(fxTranscriber& t, void* key) override {
        const unsigned char done = fxStrSet::xdrKey(t, key);
        refuses = true;
        return done;
    }
};

// Whether `work` ends a process with the message about memory.
template <class Work>
bool endsOutOfMemory(Work work) {
    const LastWords words([&] {
        refuses = true;
        work();
    });
    return words.are("out of memory\n");
}

void makingInstances() {
    refuses = true;
    void* dictionary = fxStrStrDictionary::newInstance(fxStrStrDictionary_type);
    void* set = fxStrSet::newInstance(fxStrSet_type);
    refuses = false;
    expect(!dictionary, "a dictionary was made of nothing");
    expect(!set, "a set was made of nothing");
}

void adding() {
    fxStrStrDictionary dictionary;
    fxStrSet set;
    const fxStr key("key");
    expect(endsOutOfMemory([&] { dictionary.add(key, key); }), "add to a dictionary");
    expect(endsOutOfMemory([&] { dictionary.findCreate(key); }), "findCreate");
    expect(endsOutOfMemory([&] { set.add(key); }), "add to a set");
}

void reading() {
    RecordingTranscriber pairs(RecordingTranscriber::reader);
    pairs.give(2U).give(8U).give(8U).give(3U);
    pairs.giveStr("k").giveStr("v").give(1U).giveStr("l").giveStr("w").give(2U);
    pairs.calls.reserve(100);
    Dictionary dictionary(fxStrStrDictionary_type);
    expect(dictionary.doxdr(pairs) == 0, "a dictionary was read without memory");
    refuses = false;
    fxStrStrDictionaryIter iter(dictionary);
    expect(!iter.getKey(), "an entry was made of nothing");

    RecordingTranscriber keys(RecordingTranscriber::reader);
    keys.give(2U).give(8U).give(3U).giveStr("k").give(1U).giveStr("l").give(2U);
    keys.calls.reserve(100);
    Set set(fxStrSet_type);
    expect(set.doxdr(keys) == 0, "a set was read without memory");
    refuses = false;
}

}  // namespace

void* operator new(std::size_t size) {
    void* block = refuses ? nullptr : std::malloc(size);
    if (!block)
        throw std::bad_alloc();
    return block;
}

void operator delete(void* block) noexcept { std::free(block); }

void operator delete(void* block, std::size_t) noexcept { std::free(block); }

int main() {
    try {
        makingInstances();
        adding();
        reading();
    } catch (const std::bad_alloc&) {
        expect(false, "std::bad_alloc left the library");
    }
    return failures == 0 ? 0 : 1;
}
