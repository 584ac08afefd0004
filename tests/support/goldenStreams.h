// goldenStreams.h - streams of both formats, kept as hosts of both byte orders write them.
#pragma once

#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#include "kelvofxds/core/fxToolkit.h"
#include "tests/support/generatedGraphs.h"
#include "tests/support/hostileStreams.h"

/// Fifteen roots. Each is written here, byte for byte, as the file of this byte order in
/// tests/transcribe/golden has it; files of either order are read, and written again they are
/// that file, too. KELVOFXDS_GOLDEN names a folder to make the files of this order anew.
namespace goldenStreams {

struct Kind {
    const char* name;
    bool isGraph;
    bool hasFloats;  ///< Which standard streams have in the writer's order, for readers of either.
    std::string (*make)();
    fxTypeObj& (*type)();
    /// What a root that was read leads to ends with it.
    void (*end)(void* root);
};

inline bool hostIsBig() {
    const short one = 1;
    return *reinterpret_cast<const char*>(&one) == 0;
}

inline std::string fileOf(const Kind& kind, bool isBig) {
    std::ifstream in(std::string(KELVOFXDS_SOURCE_DIR "/tests/transcribe/golden/") + kind.name +
                         (isBig ? "_big.fx" : "_little.fx"),
                     std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}

// --- the roots ---

/// Keys of one dictionary or set, none of which share a bucket.
inline std::string keyOf(int i) { return std::string(1, static_cast<char>('a' + i)); }

template <int n>
void fillDictionary(fxStrStrDictionary& dictionary) {
    for (int i = 0; i < n; ++i)
        dictionary.add(keyOf(i).c_str(),
                       std::string(static_cast<unsigned int>(i) * 9, 'v').c_str());
}

template <int n>
std::string town() {
    return graphStreamOf(GeneratedTown(n, n).root());
}
template <int n>
void endTown(void* root) {
    ReadTown(static_cast<Person*>(root));
}

template <class Class>
std::string asGraph(Class& object) {
    return graphStreamOf(object);
}
template <class Class>
std::string asStandard(Class& object) {
    return hostile::written(object, object.getTypeObj());
}

template <int n, std::string (*write)(fxStrStrDictionary&)>
std::string dictionary() {
    fxStrStrDictionary words;
    fillDictionary<n>(words);
    return write(words);
}
template <int n, std::string (*write)(fxIntArray&)>
std::string ints() {
    fxIntArray array;
    hostile::fill<int>(array, n);
    return write(array);
}
template <int n, std::string (*write)(fxStrArray&)>
std::string strings() {
    fxStrArray array;
    for (int i = 0; i < n; ++i)
        array.append(std::string(static_cast<unsigned int>(i) * 5, 's').c_str());
    return write(array);
}
template <int n, std::string (*write)(fxStrSet&)>
std::string set() {
    fxStrSet keys;
    for (int i = 0; i < n; ++i)
        keys.add(keyOf(i).c_str());
    return write(keys);
}
template <int n>
std::string sample() {
    return hostile::sampleStream(n);
}
inline std::string household() {
    Household house;
    Person head;
    house.title = "a household";
    house.head = &head;
    hostile::fill<int>(house.numbers, 30);
    hostile::fill<double>(house.ratios, 10);
    house.names.append("Ada");
    house.phones.add("Ada", "1815");
    house.keys.add("door");
    return graphStreamOf(house);
}

// --- their types and ends ---

template <fxTypeObj* record>
fxTypeObj& typeOf() {
    return *record;
}
inline fxTypeObj& sampleType() { return hostile::Types::get().sample; }
template <class Class>
void endOf(void* root) {
    delete static_cast<Class*>(root);
}
inline void endHousehold(void* root) {
    delete static_cast<Household*>(root)->head;
    endOf<Household>(root);
}
inline void endSample(void* root) {
    auto* const s = static_cast<hostile::Sample*>(root);
    delete[] s->text;
    delete[] s->charBlock;
    delete[] s->shortBlock;
    delete[] s->longBlock;
    delete[] s->doubleBlock;
    delete[] s->floatBlock;
    delete[] s->counted;
    delete s;
    hostile::made() = hostile::Made();
}

#define FX_GOLDEN_CONTAINER(name, isGraph, made, Class) \
    { name, isGraph, false, made, typeOf<&Class##_type>, endOf<Class> }
inline const Kind kinds[] = {
    {"sample", false, true, sample<0>, sampleType, endSample},
    {"samplePair", false, true, sample<1>, sampleType, endSample},
    FX_GOLDEN_CONTAINER("empty", false, (dictionary<0, asStandard>), fxStrStrDictionary),
    FX_GOLDEN_CONTAINER("words", false, (dictionary<9, asStandard>), fxStrStrDictionary),
    FX_GOLDEN_CONTAINER("oneWord", false, (dictionary<1, asStandard>), fxStrStrDictionary),
    FX_GOLDEN_CONTAINER("ints", true, (ints<300, asGraph>), fxIntArray),
    FX_GOLDEN_CONTAINER("strings", false, (strings<12, asStandard>), fxStrArray),
    FX_GOLDEN_CONTAINER("set", false, (set<9, asStandard>), fxStrSet),
    {"townOf1", true, false, town<1>, typeOf<&Person_type>, endTown<1>},
    {"townOf5", true, false, town<5>, typeOf<&Person_type>, endTown<5>},
    {"townOf6", true, false, town<6>, typeOf<&Person_type>, endTown<6>},
    {"townOf30", true, false, town<30>, typeOf<&Person_type>, endTown<30>},
    {"household", true, false, household, typeOf<&Household_type>, endHousehold},
    FX_GOLDEN_CONTAINER("graphWords", true, (dictionary<9, asGraph>), fxStrStrDictionary),
    FX_GOLDEN_CONTAINER("graphStrings", true, (strings<12, asGraph>), fxStrArray),
};
#undef FX_GOLDEN_CONTAINER

/// Reads a root of this kind; null if it could not be read.
inline fxXDRObj* readFrom(fxStream* stream, const Kind& kind) {
    const std::unique_ptr<fxTranscriber> reader(fxTranscriber::getReader(stream));
    return reader ? static_cast<fxXDRObj*>(reader->readObject(kind.type())) : nullptr;
}

/// Writes such a root, with its header; true when the writer has handed over all of it.
inline bool writeTo(fxStream* stream, const Kind& kind, fxXDRObj& root) {
    struct Typed : fxXDRObj {
        explicit Typed(fxTypeObj& t) : record(&t) {}
        fxTypeObj& getTypeObj() const override { return *record; }
        fxTypeObj* record;
    } typed(kind.type());
    if (kind.isGraph)
        fxTranscriber::changeDefaultWriter(makeGraphWriter);
    const std::unique_ptr<fxTranscriber> writer(fxTranscriber::getWriter(stream));
    fxTranscriber::resetToDefaultWriter();
    return writer && writer->writeObject(&root, &typed) == 1;
}

/// Reads `bytes` and writes what comes of it again; "" if it could not be read.
inline std::string writtenAgain(const Kind& kind, const std::string& bytes) {
    const Held<> source(static_cast<const void*>(bytes.data()),
                        static_cast<unsigned int>(bytes.size()));
    fxXDRObj* const root = readFrom(source.get(), kind);
    if (!root)
        return "";
    const Held<> target;
    const bool isWritten = writeTo(target.get(), kind, *root);
    kind.end(root);
    return isWritten ? std::string(target->getBase(), target->length()) : "";
}

}  // namespace goldenStreams
