// Reads whatever bytes it is given and uses what comes of it.
//
// Inputs that begin with an 'r' say how the records of a good stream are changed.
// Those that begin with an 'f' are whole streams, as they begin with the
// reader's name, and so are those behind an 'S', whose root should be a set; of
// the others the first byte chooses a container and the rest are the records to
// read it from.

#include <sanitizer/allocator_interface.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "fuzz/blocks.h"
#include "fuzz/options.h"
#include "fuzz/records.h"
#include "fuzz/rejection.h"
#include "kelvofxds/containers/fxStrSet.h"
#include "tests/support/hostileReading.h"
#include "tests/support/hostileStreams.h"
#include "tests/support/script.h"

/// Failed reads leave what they made allocated, as they are meant to. It is
/// freed below without regard to how it was allocated.
FUZZ_OPTIONS(FUZZ_READER_OPTIONS ":alloc_dealloc_mismatch=0")

namespace {
// The blocks that are allocated while an input is read. It must not allocate
// any itself.
class Allocations {
public:
    void add(const volatile void* block) {
        if (!active || !block || count == limit)
            return;
        if (noted == limit)
            forgetFreed();
        places[placeOf(block)] = block;
        ++count;
        order[noted++] = block;
    }

    // The places behind a vacated one are filled again, so that look-ups do
    // not end early.
    void remove(const volatile void* block) {
        if (!active || !block || !places[placeOf(block)])
            return;
        std::size_t vacant = placeOf(block);
        places[vacant] = nullptr;
        --count;
        for (std::size_t next = (vacant + 1) % size; places[next]; next = (next + 1) % size) {
            const volatile void* moved = places[next];
            places[next] = nullptr;
            places[placeOf(moved)] = moved;
        }
    }

    void freeAll() {
        for (std::size_t i = 0; i < noted; ++i) {
            const volatile void* const block = order[i];
            if (!places[placeOf(block)])
                continue;
            remove(block);
            active = false;
            std::free(const_cast<void*>(block));
            active = true;
        }
        noted = 0;
        active = false;
    }

    bool active = false;

private:
    static const std::size_t size = 1 << 16;
    static const std::size_t limit = size / 2;  // what exceeds it is lost

    // Where `block` is, or would be put.
    std::size_t placeOf(const volatile void* block) const {
        std::size_t place = (reinterpret_cast<std::uintptr_t>(block) * 0x9E3779B1U >> 12) % size;
        while (places[place] && places[place] != block)
            place = (place + 1) % size;
        return place;
    }

    void forgetFreed() {
        noted = 0;
        for (const volatile void* const block : places) {
            if (block)
                order[noted++] = block;
        }
    }

    const volatile void* places[size] = {};
    std::size_t count = 0;
    // What was added, freed since or not, so that not all places need be looked at.
    const volatile void* order[limit] = {};
    std::size_t noted = 0;
};

Allocations allocations;

void noteMalloc(const volatile void* block, std::size_t) { allocations.add(block); }
void noteFree(const volatile void* block) { allocations.remove(block); }

// The sets that were made for the present input.
std::vector<fxStrSet*> sets;

fxTypeObj& setType() {
    static fxTypeObj type(
        "SET", 1,
        [](fxTypeObj& record) -> void* {
            sets.push_back(static_cast<fxStrSet*>(fxStrSet::newInstance(record)));
            return sets.back();
        },
        nullptr, fxStrSet::xdr);
    return type;
}

std::string setStream(int n) {
    fxStrSet set(7);
    for (int i = 0; i < n; ++i)
        set.add(i == 0 ? fxStr() : fxStr(i * 7919, "%x"));
    return "S" + hostile::written(set, setType());
}

// The records alone, as a set that is read in place takes them.
std::string setRecords() {
    fxStrSet set(3);
    for (const char* key : {"", "A", "B"})
        set.add(key);
    MemoryStream out;
    fxBinaryWriter writer(&out);
    set.xdr(writer);
    writer.flush();
    return "s" + out.written;
}

const std::vector<std::string>& seeds() {
    static const std::vector<std::string> streams = {hostile::sampleStream(2),
                                                     hostile::dictionaryStream(4),
                                                     hostile::arrayStream(6),
                                                     hostile::stringStream(),
                                                     hostile::bigDictionaryStream(),
                                                     hostile::nodeStream(),
                                                     setStream(5),
                                                     setRecords()};
    return streams;
}

// Walking ever so many empty buckets is slow; such sets are not even deleted.
const unsigned int manyBuckets = 1U << 12;
bool isAbandoned(const fxStrSet& set) { return set.getNumBuckets() > manyBuckets; }

void use(fxStrSet& set) {
    unsigned int known = 0;
    for (fxStrSetIter iter(set); iter.key(); ++iter) {
        known += set.contains(*iter.key());
        fxStr copied(*iter.key());
        hostile::use(copied);
    }
    hostile::sink = known;
    MemoryStream out;
    fxBinaryWriter writer(&out);
    hostile::sink = writer.writeObject(&set, &set);
    fxStrSet other(3);
    other |= set;
    if (set.getNumBuckets() == 0)
        return;  // nothing can be added
    set.add("added");
    set &= other;
    fxStrSetIter iter(set);
    if (iter.key())
        set.remove(fxStr(*iter.key()));
    const fxSet& self = set;
    set |= self;
    set -= self;
    set -= other;
}

// Uses the sets that come of a stream whose root could be read.
void readSets(const std::string& bytes) {
    fxInitializeToolkit();
    MemoryStream stream(bytes);
    std::unique_ptr<fxTranscriber> reader(fxTranscriber::getReader(&stream));
    const bool complete = reader && reader->readObject(setType());
    reader.reset();
    if (!complete)
        return;
    for (fxStrSet* set : sets) {
        if (isAbandoned(*set))
            continue;
        use(*set);
        delete set;
    }
}

void read(const std::string& bytes) {
    if (bytes.empty())
        return;
    const std::string rest = bytes.substr(1);
    switch (bytes[0]) {
        case 'f':
            hostile::readAndUse(bytes);
            break;
        case 'a': {
            fxDoubleArray array;
            if (hostile::readInPlace(rest, array))
                hostile::use<double>(array);
            break;
        }
        case 'd': {
            auto* dictionary = new fxStrStrDictionary;
            hostile::readInPlace(rest, *dictionary);
            if (!hostile::isAbandoned(*dictionary))
                delete dictionary;
            break;
        }
        case 's': {
            auto* set = new fxStrSet;
            hostile::readInPlace(rest, *set);
            if (!isAbandoned(*set))
                delete set;
            break;
        }
        case 'S':
            readSets(rest);
            break;
    }
}

// What stands before the records of one of the streams above.
std::size_t headSize(const std::string& bytes) {
    const std::size_t mark = bytes[0] == 'f' ? 0 : 1;
    return bytes[0] == 's' ? mark : mark + hostHeader().size();
}

fuzz::Records recordsOf(const std::string& bytes) {
    return fuzz::Records(bytes, headSize(bytes), fuzz::Records::read);
}

void readChanged(Script script) {
    fuzz::Records records = recordsOf(seeds()[script.byte() % seeds().size()]);
    records.change(script);
    read(records.bytes());
}

// What was made for an input is deleted or abandoned; its lists must not
// outlive the blocks that they are kept in.
void forgetWhatWasMade() {
    hostile::made() = hostile::Made();
    std::vector<fxStrSet*>().swap(sets);
}

bool isStated(const char* message) {
    return fuzz::isOutOfMemory(message) || hostile::isStatedMessage(std::string(message) + "\n");
}
}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzz::isStated = isStated;
    hostile::abandonManyBuckets = true;
    hostile::manyBuckets = manyBuckets;
    // Whatever is made once is made before allocations are counted.
    for (const std::string& seed : seeds()) {
        require(recordsOf(seed).bytes() == seed);
        read(seed);
    }
    forgetWhatWasMade();
    fuzz::limitBlocks(1 << 18);
    __sanitizer_install_malloc_and_free_hooks(noteMalloc, noteFree);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    allocations.active = true;
    fuzz::reachesEnd([=] {
        if (size != 0 && *data == 'r')
            readChanged(Script(data + 1, size - 1));
        else
            read(std::string(reinterpret_cast<const char*>(data), size));
    });
    forgetWhatWasMade();
    allocations.freeAll();
    return 0;
}
