// Records of other kinds, with other lengths, counts, sizes, numbers and types than they had, one
// at a time, in streams of both formats and both byte orders.

#include <sys/mman.h>

#include <climits>
#include <csignal>
#include <memory>
#include <string>
#include <vector>

#include "kelvofxds/containers/fxArrayOf.h"
#include "tests/figures/touchedMemory.h"
#include "tests/support/figure.h"
#include "tests/support/goldenStreams.h"
#include "tests/support/hostileReading.h"
#include "tests/support/recordChanges.h"
#include "tests/support/trialRunner.h"
#ifdef KELVOFXDS_FXDUMP
#include "tests/support/dumping.h"
#endif

namespace {

// --- objects with one member ---

std::vector<fxXDRObj*>& shelves() {
    static std::vector<fxXDRObj*> all;
    return all;
}

// What deletes them is known, whatever a stream says that they are.
template <class Content>
struct Shelf : fxXDRObj {
    Shelf() { shelves().push_back(this); }
    ~Shelf() override {
        auto& all = shelves();
        all.erase(std::remove(all.begin(), all.end(), static_cast<fxXDRObj*>(this)), all.end());
    }
    static fxTypeObj& type() {
        static fxTypeObj record(
            "Shelf", 1, [](fxTypeObj&) -> void* { return new Shelf; },
            [](void* object) { delete static_cast<Shelf*>(object); },
            [](void* object, fxTranscriber& t) { return static_cast<Shelf*>(object)->xdr(t); });
        return record;
    }
    fxTypeObj& getTypeObj() const override { return type(); }
    unsigned char xdr(fxTranscriber& t) override { return content.xdr(t) && t.xdr(&last, 1); }

    Content content;
    int last = 7;
};

struct Pair {
    unsigned char xdr(fxTranscriber& t) { return t.xdr(&number, 1) && text.xdr(t); }
    int number = 0;
    fxStr text;
};

void fill(fxStr& text) { text = "a text that is to be read"; }
void fill(fxStrSet& set) {
    for (const char* key : {"a", "b", "c"})
        set.add(key);
}
void fill(fxStrArray& array) {
    for (const char* text : {"first", "", "third"})
        array.append(text);
    array.setMaxLength(0);
}
void fill(fxStrStrDictionary& dictionary) { goldenStreams::fillDictionary<3>(dictionary); }
template <class T>
void fill(fxArrayOf<T>& array) {
    array.resize(3);
}
template <class Array>
void fill(Array& array) {
    using Element = std::remove_reference_t<decltype(array[0U])>;
    hostile::fill<Element>(array, 5);
}

// --- streams ---

struct Stream {
    RecordStream records;
    fxTypeObj& (*type)();
};

template <class Content>
void addShelf(std::vector<Stream>& all) {
    Shelf<Content> shelf;
    fill(shelf.content);
    const bool isBig = goldenStreams::hostIsBig();
    all.push_back({{goldenStreams::asStandard(shelf), false, isBig, false}, Shelf<Content>::type});
    all.push_back({{goldenStreams::asGraph(shelf), true, isBig, false}, Shelf<Content>::type});
}

template <class... Content>
void addShelves(std::vector<Stream>& all) {
    (addShelf<Content>(all), ...);
}

fxTypeObj& nodeType() { return hostile::Types::get().node; }

// All but the large ones are tried by every reader.
std::vector<Stream> smallStreams() {
    fxInitializeToolkit();
    std::vector<Stream> all;
    for (const auto& kind : goldenStreams::kinds) {
        for (const bool isBig : {false, true})
            all.push_back(
                {{goldenStreams::fileOf(kind, isBig), kind.isGraph, isBig, false}, kind.type});
    }
    all.push_back({{hostile::bigDictionaryStream(), false, true, false}, nodeType});
    all.push_back({{hostile::stringStream(), false, goldenStreams::hostIsBig(), false}, nodeType});
    all.push_back({{hostile::nodeStream(), false, goldenStreams::hostIsBig(), true}, nodeType});
    addShelves<fxStr, fxBoolArray, fxCharArray, fxShortArray, fxIntArray, fxLongArray, fxFloatArray,
               fxDoubleArray, fxUnsignedCharArray, fxUnsignedShortArray, fxUnsignedLongArray,
               fxStrArray, fxStrStrDictionary, fxStrSet, fxArrayOf<short>, fxArrayOf<fxStr>,
               fxArrayOf<Pair>, fxArrayOf<fxRef<Shelf<fxStr>>>>(all);
    return all;
}

// As long as what they claim: here a reader has something to multiply.
std::vector<Stream> largeStreams() {
    std::vector<Stream> all;
    const bool isBig = goldenStreams::hostIsBig();
    static Shelf<fxIntArray> ints;
    hostile::fill<int>(ints.content, 30000);
    all.push_back({{goldenStreams::asStandard(ints), false, isBig, false}, ints.type});
    all.push_back({{goldenStreams::asGraph(ints), true, isBig, false}, ints.type});
    static Shelf<fxStr> text;
    text.content = std::string(150000, 't').c_str();
    all.push_back({{goldenStreams::asStandard(text), false, isBig, false}, text.type});
    all.push_back({{goldenStreams::asGraph(text), true, isBig, false}, text.type});
    return all;
}

// --- reading ---

// What the children tell: the most by which a stream's measure was exceeded, and the most at all.
struct Told {
    long beyond;
    unsigned long most;
    unsigned long ofBytes;  // the length of that stream
};
Told& told() {
    static void* const shared =
        ::mmap(nullptr, sizeof(Told), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return *static_cast<Told*>(shared);
}

std::size_t inputLength;

void stopMeasuring() {
    const std::size_t touched = TouchedMemory::end();
    const long beyond = static_cast<long>(touched) - 65536 - 2 * static_cast<long>(inputLength);
    if (touched > told().most) {
        told().most = touched;
        told().ofBytes = inputLength;
    }
    told().beyond = std::max(told().beyond, beyond);
}

// Of a read that ends the process.
void stopMeasuringAndDie(int) { stopMeasuring(); }

fxTranscriber* standardReader(fxStream* stream) { return fxTranscriber::getReader(stream); }

// As the reader of graphs reads what the standard writer has written.
fxTranscriber* graphReader(fxStream* stream) {
    fxTranscriber::addTranscriber("fxBinaryWriter", fxGraphReader::forStandardStreams);
    return fxTranscriber::getReader(stream);
}

using MakeReader = fxTranscriber* (*)(fxStream*);

// Reads one root, uses what is known of it, and deletes that.
bool isRead(const Stream& stream, const std::string& bytes, MakeReader makeReader) {
    static fxTypeObj noCreate("NoCreate", 1, nullptr, nullptr, fxXDRObj::xdr);
    static fxTypeObj createsNone(
        "CreatesNone", 1, [](fxTypeObj&) -> void* { return nullptr; }, nullptr, fxXDRObj::xdr);
    hostile::Types::get().enter();
    fxTypeObj::registerType(&stream.type());
    hostile::made() = hostile::Made();
    shelves().clear();
    MemoryStream source(bytes);
    inputLength = bytes.size();
    std::signal(SIGABRT, stopMeasuringAndDie);
    TouchedMemory::prepare();
    TouchedMemory::begin();
    const std::unique_ptr<fxTranscriber> reader(makeReader(&source));
    const bool isComplete = reader && reader->readObject(stream.type());
    stopMeasuring();
    if (!isComplete)
        return false;
    if (!stream.records.isGraph && makeReader == standardReader)
        hostile::useAndDelete(hostile::made());
    const std::vector<fxXDRObj*> all = shelves();
    for (fxXDRObj* shelf : all)
        delete shelf;
    return true;
}

bool isShown([[maybe_unused]] const std::string& bytes) {
#ifdef KELVOFXDS_FXDUMP
    for (const fxdump::Show show : everyShow)
        hostile::sink = static_cast<unsigned int>(shown(show, bytes).out.size());
#endif
    return true;
}

// --- trials ---

struct Outcomes {
    unsigned long trials = 0;
    unsigned long bad = 0;

    void add(const TrialReport& report) {
        trials += report.trials();
        bad += report.failures.size();
        for (const std::string& failure : report.failures)
            std::printf("%s\n", failure.c_str());
    }
};

// Every `step`th change of the stream; the first streams do not decide which ones these are.
void tryChanges(const Stream& stream, unsigned long step, Outcomes& outcomes, MakeReader reader) {
    const std::vector<RecordChange> all = RecordChanges(stream.records).all();
    const unsigned long first = outcomes.trials % step;
    if (all.size() <= first)
        return;
    outcomes.add(runTrials(
        static_cast<unsigned int>((all.size() - first + step - 1) / step),
        [&](unsigned int i) {
            const std::string bytes = RecordChanges::changed(stream.records, all[first + i * step]);
            return reader ? isRead(stream, bytes, reader) : isShown(bytes);
        },
        hostile::isStatedMessage, 1024));
}

}  // namespace

TEST(figureH1, recordsOfOtherKindsAndSizesEndAsStated) {
    told() = Told{LONG_MIN, 0, 0};
    Outcomes outcomes;
    for (const Stream& stream : smallStreams()) {
        tryChanges(stream, figureSize(11, 499), outcomes, standardReader);
        if (!stream.records.isGraph)
            tryChanges(stream, figureSize(11, 499), outcomes, graphReader);
        tryChanges(stream, figureSize(41, 4999), outcomes, nullptr);
    }
    for (const Stream& stream : largeStreams())
        tryChanges(stream, figureSize(199, 4999), outcomes, standardReader);
    const std::string peak = TouchedMemory::isKnown() ? std::to_string(told().most) : "-";
    std::printf("most memory: %lu for %lu bytes; %ld beyond 65536 + twice the bytes\n", told().most,
                told().ofBytes, told().beyond);
    reportFigure(
        "H1", std::to_string(outcomes.trials) + ";" + std::to_string(outcomes.bad) + ";" + peak,
        "2000;0;65536+2x", outcomes.trials >= 2000 && outcomes.bad == 0 && told().beyond <= 0);
}

// What is stated of tables beyond that: a page an entry, however far apart these are.
TEST(figureH1, bucketsTakeAPageForEachEntry) {
    fxInitializeToolkit();
    const unsigned int n = 100;
    std::string bytes = hostHeader() +
                        hex("02 02000000 'DICT' 00 4a 10 01000000 02000000 01000000") + host(n) +
                        host(8) + host(8) + host(0x01000000);
    for (unsigned int i = 0; i < n; ++i)
        bytes += hex("40 0c") + host(1) + host(1) + host(i * 0x20000);
    const Stream stream = {{bytes, false, goldenStreams::hostIsBig(), false}, nodeType};
    told() = Told{LONG_MIN, 0, 0};
    const TrialReport report = runTrials(
        1, [&](unsigned int) { return isRead(stream, bytes, standardReader); },
        hostile::isStatedMessage);
    EXPECT_EQ(1U, report.values);
    const long pages = static_cast<long>(n) * 4096;
    EXPECT_LE(told().beyond, pages);
    EXPECT_EQ(TouchedMemory::isKnown(), told().most >= static_cast<unsigned long>(pages));
}
