// hostileTypes.h - classes to read from bytes that nobody vouches for.
#pragma once

#include <vector>

#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/transcribe/fxTranscriber.h"

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

}  // namespace hostile
