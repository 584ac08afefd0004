// hostileReading.h - reading bytes that nobody vouches for, and using the result.
#pragma once

#include <cctype>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/transcribe/fxBinaryWriter.h"
#include "tests/support/memoryStream.h"
#include "tests/support/streamBytes.h"

namespace hostile {

class Sample;
class Node;

/// Every instance that a reader made, by class. Object pointers cannot be told
/// apart by what they point to, so nothing is touched that is not listed here.
struct Made {
    std::vector<Sample*> samples;
    std::vector<Node*> nodes;
    std::vector<fxStrStrDictionary*> dictionaries;
    std::vector<fxIntArray*> arrays;
    std::vector<fxStr*> strings;
    std::vector<fxXDRObj*> others;
};

inline Made& made() {
    static Made instances;
    return instances;
}

/// Keeps what is computed from being optimised away.
inline volatile unsigned int sink;

inline void use(fxStr& text) {
    sink = text.hash() + text.length() + static_cast<unsigned int>(compare(text, "m"));
    sink = static_cast<unsigned char>(text[text.length()]) + text.next(0, 'a') +
           text.skipR(text.length(), " ");
    fxStr copied(text);
    text.append("tail");
    text.insert("head", 0);
    text.lower();
    text.remove(0, 4);
    sink = copied == text;
    unsigned int position = 0;
    const fxStr first = text.token(position, ' ');
    text.resize(text.length() + 3);
    text = first;
}

template <class Element>
unsigned int foldBytes(const Element* elements, unsigned int n) {
    unsigned int sum = 0;
    for (unsigned int i = 0; i < n * sizeof(Element); ++i)
        sum += reinterpret_cast<const unsigned char*>(elements)[i];
    return sum;
}

template <class Element, class Array>
void use(Array& array) {
    const unsigned int n = array.length();
    for (unsigned int i = 0; i < n; ++i)
        sink = foldBytes(&array[i], 1);
    MemoryStream out;
    fxBinaryWriter writer(&out);
    sink = array.xdr(writer);
    // Elements of another size than the class's are the stream's own idea.
    if (array.getElemSize() != sizeof(Element))
        return;
    const Element element = Element();
    array.append(&element);
    array.insert(&element, array.length() / 2);
    sink = array.find(&element);
    array.qsort();
    Array copied(array);
    array.remove(0, 1);
    array.resize(array.length() + 2);
    sink = copied.length();
}

inline void use(fxStrStrDictionary& dictionary) {
    // Walking ever so many empty buckets is slow, but nothing else.
    if (dictionary.getNumBuckets() > 1U << 20)
        return;
    unsigned int entries = 0;
    for (fxStrStrDictionaryIter iter(dictionary); iter.key(); ++iter, ++entries) {
        sink = dictionary.find(*iter.key()) != nullptr;
        use(*iter.value());
    }
    sink = entries;
    MemoryStream out;
    fxBinaryWriter writer(&out);
    sink = writer.writeObject(&dictionary, &dictionary);
    dictionary.add("added", "value");
    dictionary.findCreate("created").append("text");
    dictionary.remove("added");
    dictionary.remove("absent");
    fxStrStrDictionaryIter iter(dictionary);
    if (iter.key())
        dictionary.remove(fxStr(*iter.key()));
}

/// A user's object with something of everything the writer and the reader
/// agree on.
class Sample : public fxXDRObj {
public:
    unsigned char xdr(fxTranscriber& t) override {
        return t.xdr(&flag, 1) && t.xdr(shorts, 2) && t.xdr(longs, 2) && t.xdr(&f, 1) &&
               t.xdr(&d, 1) && name.xdr(t) && t.xdr(list, 3) && t.xdr(&text) &&
               t.xdr(&charBlock, charCount) && t.xdr(&shortBlock, shortCount) &&
               t.xdr(&longBlock, longCount) && t.xdr(&doubleBlock, doubleCount) &&
               t.xdr(&floatBlock, floatCount) && t.xdr(&link, link, getTypeObj(), this, nullptr) &&
               t.xdr(&countedLength, 1) && t.xdr(&counted, countedLength) && pairs.xdr(t) &&
               ints.xdr(t) && halves.xdr(t) && reals.xdr(t) && bytes.xdr(t) && t.xdr(&last, 1);
    }
    fxTypeObj& getTypeObj() const override;

    static const unsigned int charCount = 300;
    static const unsigned int shortCount = 5;
    static const unsigned int longCount = 4;
    static const unsigned int doubleCount = 3;
    static const unsigned int floatCount = 2;

    char flag = 0;
    short shorts[2] = {0, 0};
    long longs[2] = {0, 0};
    float f = 0;
    double d = 0;
    fxStr name;
    fxStr list[3];
    char* text = nullptr;
    char* charBlock = nullptr;
    short* shortBlock = nullptr;
    long* longBlock = nullptr;
    double* doubleBlock = nullptr;
    float* floatBlock = nullptr;
    fxXDRObj* link = nullptr;
    unsigned int countedLength = 0;
    long* counted = nullptr;
    fxStrStrDictionary pairs;
    fxIntArray ints;
    fxShortArray halves;
    fxDoubleArray reals;
    fxUnsignedCharArray bytes;
    long last = 0;
};

/// An object with pointers, embedded in another or not.
class Node : public fxXDRObj {
public:
    unsigned char xdr(fxTranscriber& t) override;
    fxTypeObj& getTypeObj() const override;

    /// The embedded part.
    struct Part {
        long value = 0;
        fxStr text;
    };

    long number = 0;
    fxXDRObj* a = nullptr;
    fxXDRObj* b = nullptr;
    fxStr text;
    Part part;
};

template <class Class>
Class* note(std::vector<Class*>& list, void* instance) {
    list.push_back(static_cast<Class*>(instance));
    return list.back();
}

inline unsigned char xdrPart(void* p, fxTranscriber& t) {
    auto& part = *static_cast<Node::Part*>(p);
    return t.xdr(&part.value, 1) && part.text.xdr(t);
}

/// Type records that list what they make. Some take the library's names.
class Types {
public:
    static Types& get() {
        static Types types;
        return types;
    }

    /// Registers the records for good: for processes that do nothing else.
    void enter() {
        for (fxTypeObj* record : {&dictionary, &array, &string, &plain})
            fxTypeObj::registerType(record);
    }

private:
    // Making the records registers them.
    Types() {
        for (fxTypeObj* record : former)
            fxTypeObj::registerType(record);
    }

    fxTypeObj* const former[4] = {fxTypeObj::findType("DICT"), fxTypeObj::findType("ARRAY"),
                                  fxTypeObj::findType("fxStr"), fxTypeObj::findType("fxXDRObj")};

public:
    fxTypeObj sample{"Sample", 1,
                     [](fxTypeObj&) -> void* { return note(made().samples, new Sample); }, nullptr,
                     [](void* p, fxTranscriber& t) { return static_cast<Sample*>(p)->xdr(t); }};
    fxTypeObj node{"Node", 1, [](fxTypeObj&) -> void* { return note(made().nodes, new Node); },
                   nullptr,
                   [](void* p, fxTranscriber& t) { return static_cast<Node*>(p)->xdr(t); }};
    fxTypeObj dictionary{"DICT", 1,
                         [](fxTypeObj& type) -> void* {
                             return note(made().dictionaries,
                                         fxStrStrDictionary::newInstance(type));
                         },
                         nullptr, fxStrStrDictionary::xdr};
    fxTypeObj array{
        "ARRAY", 1,
        [](fxTypeObj& type) -> void* { return note(made().arrays, fxIntArray::newInstance(type)); },
        nullptr, fxIntArray::xdr};
    fxTypeObj string{
        "fxStr", 1,
        [](fxTypeObj& type) -> void* { return note(made().strings, fxStr::newInstance(type)); },
        nullptr, fxStr::xdr};
    fxTypeObj plain{
        "fxXDRObj", 1,
        [](fxTypeObj& type) -> void* { return note(made().others, fxXDRObj::newInstance(type)); },
        nullptr, fxXDRObj::xdr};
    fxTypeObj part{"Part", 1, nullptr, nullptr, xdrPart};
};

inline fxTypeObj& Sample::getTypeObj() const { return Types::get().sample; }
inline fxTypeObj& Node::getTypeObj() const { return Types::get().node; }

inline unsigned char Node::xdr(fxTranscriber& t) {
    return t.xdr(&number, 1) && t.xdr(&a, a, getTypeObj(), this, nullptr) &&
           t.xdr(&b, b, getTypeObj(), this, nullptr) && text.xdr(t) &&
           t.xdr(Types::get().part, this, &part) && t.xdr(&number, 1);
}

inline void use(Sample& s) {
    for (fxStr* text : {&s.name, &s.list[0], &s.list[1], &s.list[2]})
        use(*text);
    use(s.pairs);
    use<int>(s.ints);
    use<short>(s.halves);
    use<double>(s.reals);
    use<unsigned char>(s.bytes);
    sink = static_cast<unsigned int>(s.text ? std::strlen(s.text) : 0);
    if (s.charBlock)
        sink = foldBytes(s.charBlock, Sample::charCount);
    if (s.shortBlock)
        sink = foldBytes(s.shortBlock, Sample::shortCount);
    if (s.longBlock)
        sink = foldBytes(s.longBlock, Sample::longCount);
    if (s.doubleBlock)
        sink = foldBytes(s.doubleBlock, Sample::doubleCount);
    if (s.floatBlock)
        sink = foldBytes(s.floatBlock, Sample::floatCount);
    for (unsigned int i = 0; s.counted && i < s.countedLength; ++i)
        sink = static_cast<unsigned int>(s.counted[i]);
}

inline void use(Node& n) {
    use(n.text);
    use(n.part.text);
    for (const Node* other : made().nodes)
        sink = other == n.a || other == n.b;
}

/// Uses what has been made so far and deletes it.
inline void useAndDelete(Made& all) {
    std::set<char*> blocks;  // pointers may share their blocks
    for (Sample* s : all.samples) {
        use(*s);
        for (void* block : {static_cast<void*>(s->text), static_cast<void*>(s->charBlock),
                            static_cast<void*>(s->shortBlock), static_cast<void*>(s->longBlock),
                            static_cast<void*>(s->doubleBlock), static_cast<void*>(s->floatBlock),
                            static_cast<void*>(s->counted)})
            blocks.insert(static_cast<char*>(block));
    }
    for (char* block : blocks)
        delete[] block;
    for (Sample* s : all.samples)
        delete s;
    for (Node* n : all.nodes)
        use(*n);
    for (Node* n : all.nodes)
        delete n;
    for (fxStrStrDictionary* d : all.dictionaries) {
        use(*d);
        delete d;
    }
    for (fxIntArray* a : all.arrays) {
        use<int>(*a);
        delete a;
    }
    for (fxStr* text : all.strings) {
        use(*text);
        delete text;
    }
    for (fxXDRObj* object : all.others)
        delete object;
}

/// Reads up to `roots` roots from the stream that `bytes` are. If there is one,
/// uses all that was made for it and those after it, and returns true. Takes
/// over the library's type names: for child processes and fuzzers.
inline bool readAndUse(const std::string& bytes, int roots = 3) {
    fxInitializeToolkit();
    Types::get().enter();
    made() = Made();
    Made complete;
    bool any = false;
    {
        MemoryStream stream(bytes);
        fxTranscriber* reader = fxTranscriber::getReader(&stream);
        if (!reader)
            return false;
        // What a failing root made stays with the reader, unfinished.
        for (int i = 0; i < roots && reader->readObject(Types::get().sample); ++i) {
            any = true;
            complete = made();
        }
        delete reader;
    }
    useAndDelete(complete);
    return any;
}

/// Reads `bytes`, records without a header, as the contents of objects that
/// the caller made. Returns true when all of them could be read.
inline bool readInPlace(const std::string& bytes, fxXDRObj& object) {
    MemoryStream stream(bytes);
    fxTranscriber* reader = makeBinaryReader(&stream, 0x1122, 0x33445566, "ieee");
    const bool read = object.xdr(*reader) != 0;
    delete reader;
    return read;
}

/// True for the text of one of the messages that reading may end with.
inline bool isStatedMessage(const std::string& text) {
    static const char* const whole[] = {"Whoops!\n",
                                        "format error\n",
                                        "XXX bad news!\n",
                                        "XXX new base for old base\n",
                                        "XXX old base previously unseen\n",
                                        "XXX version error handling is missing\n",
                                        "XXX error handling is missing\n",
                                        "XXX baddest news\n"};
    for (const char* message : whole) {
        if (text == message)
            return true;
    }
    static const struct {
        const char* start;
        const char* end;
        bool digits;  // hexadecimal ones between the two, not just anything
    } parts[] = {{"Unknown transcriber type \"", "\"\n", false},
                 {"unknown type ", "\n", false},
                 {"fxBinaryReader: unsupported floating point format ", "\n", false},
                 {"fxBinaryReader: unknown short ordering ", "\n", true},
                 {"fxBinaryReader: unknown long ordering ", "\n", true}};
    for (const auto& p : parts) {
        const std::size_t fixed = std::strlen(p.start) + std::strlen(p.end);
        if (text.size() < fixed || text.compare(0, std::strlen(p.start), p.start) != 0 ||
            text.compare(text.size() - std::strlen(p.end), std::string::npos, p.end) != 0)
            continue;
        const std::string between = text.substr(std::strlen(p.start), text.size() - fixed);
        if (!p.digits)
            return true;
        return !between.empty() && between.size() <= 8 &&
               between.find_first_not_of("0123456789abcdef") == std::string::npos;
    }
    return false;
}

// Streams to start from. The types are the library's own names, so the bytes
// do not depend on whether the records above are registered.

inline std::string written(fxXDRObj& object, fxTypeObj& type) {
    struct Typed : fxXDRObj {
        explicit Typed(fxTypeObj& t) : record(&t) {}
        fxTypeObj& getTypeObj() const override { return *record; }
        fxTypeObj* record;
    } typed(type);
    MemoryStream stream;
    fxTranscriber* writer = fxTranscriber::getWriter(&stream);
    writer->writeObject(&object, &typed);
    delete writer;
    return stream.written;
}

inline void fill(fxStrStrDictionary& dictionary, int n) {
    for (int i = 0; i < n; ++i)
        dictionary.add(fxStr(i * 7919, "%x"), i % 4 == 0 ? fxStr() : fxStr(i, "value %d"));
}

template <class Element, class Array>
void fill(Array& array, int n) {
    for (int i = 0; i < n; ++i) {
        const auto element = static_cast<Element>(i * 37 - 5);
        array.append(&element);
    }
    array.setMaxLength(0);
}

/// A sample with `n` pairs in its dictionary.
inline std::string sampleStream(int n) {
    Sample s;
    std::string text = "a text";
    std::string chars = run(Sample::charCount);
    short shorts[Sample::shortCount] = {1, -2, 3, -4, 5};
    long longs[Sample::longCount] = {6, -7, 8, -9};
    double doubles[Sample::doubleCount] = {1.5, -2.5, 3.5};
    float floats[Sample::floatCount] = {4.5f, -5.5f};
    long counted[3] = {10, 11, 12};
    s.flag = 1;
    s.shorts[1] = 2;
    s.longs[0] = 3;
    s.f = 4;
    s.d = 5;
    s.name = "a name that is long enough to be looked at";
    s.list[0] = "first";
    s.list[2] = "third";
    s.text = &text[0];
    s.charBlock = &chars[0];
    s.shortBlock = shorts;
    s.longBlock = longs;
    s.doubleBlock = doubles;
    s.floatBlock = floats;
    s.countedLength = 3;
    s.counted = counted;
    fill(s.pairs, n);
    fill<int>(s.ints, 20);
    fill<short>(s.halves, 15);
    fill<double>(s.reals, 6);
    fill<unsigned char>(s.bytes, 70);
    s.last = 13;
    return written(s, Types::get().sample);
}

inline std::string dictionaryStream(int n) {
    fxStrStrDictionary dictionary(7);
    fill(dictionary, n);
    return written(dictionary, Types::get().dictionary);
}

inline std::string arrayStream(int n) {
    fxIntArray array;
    fill<int>(array, n);
    return written(array, Types::get().array);
}

/// Two dictionaries from a big-endian host.
inline std::string bigDictionaryStream() {
    return bigHeader() +
           hex("02 02000000 'DICT' 00 4a 14 01000000 02000000 01000000"
               "00000002 00000008 00000008 00000003 00000002 | 43 04 03000000 02000000 00000002"
               "43 08 04000000 02000000 00000001 00000002"
               "43 08 05000000 02000000 00000001 00000002"
               "45 02 05000000 02000000 'A' 00 | 45 02 04000000 02000000 'x' 00"
               "45 02 03000000 02000000 'B' 00"
               "4a 10 06000000 02000000 01000000 00000000 00000008 00000008 0000001f");
}

inline std::string stringStream() {
    return hostHeader() + hex("02 02000000 'fxStr' 00 4a 04 01000000 02000000 01000000") +
           host(12) + hex("03 03000000 0c000000 | 45 0c 03000000 0c000000 'hello world' 00") +
           hex("02 04000000 'fxXDRObj' 00 0a 05000000 04000000 01000000");
}

/// A record with fewer than 256 bytes of payload.
inline std::string record(unsigned int tag, const std::string& arguments,
                          const std::string& payload = std::string()) {
    std::string bytes(1, static_cast<char>(payload.empty() ? tag : tag | 0x40));
    if (!payload.empty())
        bytes += static_cast<char>(payload.size());
    return bytes + arguments + payload;
}

/// Nodes in the reader's own framing: root, child and grandchild that point
/// back, to themselves and to each other.
inline std::string nodeStream() {
    // The second pointer's record also carries the size of the text.
    const auto node = [](unsigned int number, unsigned int tagA, unsigned int a, unsigned int tagB,
                         unsigned int b) {
        const std::string argumentsB = tagB == 1 ? std::string() : word(b) + word(0);
        return record(10, word(number) + word(2) + word(1), host(number)) +
               record(tagA, word(a) + word(0)) + record(tagB, argumentsB, host(3)) +
               record(3, word(number + 80) + word(3)) +
               record(13, word(number + 50) + word(0), host(9) + host(1) + host(number));
    };
    const auto text = [](unsigned int number) {
        return record(5, word(number + 80) + word(3), hex("'ab' 00"));
    };
    // The root's text is awaited first, then its pointers, the last one first.
    return hostHeader() + hex("02 02000000 'Node' 00") + node(1, 11, 3, 11, 4) + text(1) +
           node(4, 12, 1, 12, 4) + text(4) + node(3, 11, 5, 12, 4) + text(3) +
           node(5, 12, 3, 1, 0) + text(5);
}

}  // namespace hostile
