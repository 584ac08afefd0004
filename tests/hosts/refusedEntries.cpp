// refusedEntries.cpp - a host whose operator new refuses: nothing is thrown at it by dictionaries
// and sets.

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "kelvofxds/containers/fxStrSet.h"
#include "kelvofxds/containers/fxStrStrDictionary.h"
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

// Whether `work` ends a child with the message about memory.
template <class Work>
bool endsOutOfMemory(Work work) {
    int ends[2];
    if (::pipe(ends) != 0)
        return false;
    const pid_t child = ::fork();
    if (child == 0) {
        std::signal(SIGABRT, SIG_DFL);
        ::dup2(ends[1], STDERR_FILENO);
        refuses = true;
        work();
        ::_exit(0);
    }
    ::close(ends[1]);
    char text[100] = "";
    std::size_t length = 0;
    for (ssize_t n = 1; n > 0 && length < sizeof text - 1; length += static_cast<std::size_t>(n)) {
        n = ::read(ends[0], text + length, sizeof text - 1 - length);
        if (n < 0)
            break;
    }
    ::close(ends[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT &&
           std::strcmp(text, "out of memory\n") == 0;
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
