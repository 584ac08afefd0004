// hostileStreams.h - streams that can be read, to be changed by tests and fuzzers.
#pragma once

#include <string>

#include "tests/support/hostileTypes.h"
#include "tests/support/memoryStream.h"
#include "tests/support/streamBytes.h"

namespace hostile {

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
