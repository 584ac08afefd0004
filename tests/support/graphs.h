// graphs.h - classes such as a host writes, and graphs of them.
#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxStrSet.h"
#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/core/fxXDRObj.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/str/fxStrArray.h"
#include "kelvofxds/transcribe/fxGraphReader.h"
#include "kelvofxds/transcribe/fxGraphWriter.h"
#include "kelvofxds/transcribe/fxMemoryStream.h"

extern fxTypeObj Limb_type;
extern fxTypeObj Person_type;

/// An object that is embedded in persons, and that pointers lead to, too.
class Limb : public fxXDRObj {
public:
    Limb() { ++living; }
    Limb(const Limb&) = delete;
    Limb& operator=(const Limb&) = delete;
    ~Limb() override { --living; }
    const char* className() const override { return "Limb"; }
    fxTypeObj& getTypeObj() const override { return Limb_type; }
    unsigned char xdr(fxTranscriber& t) override {
        return t.xdr(&length, 1) && t.xdr(&twin, twin, Limb_type, this, nullptr);
    }
    static void* newInstance(fxTypeObj&) { return new Limb; }
    static void deleteInstance(void* object) { delete static_cast<Limb*>(object); }
    static unsigned char xdr(void* object, fxTranscriber& t) {
        return static_cast<Limb*>(object)->Limb::xdr(t);
    }

    int length = 0;
    Limb* twin = nullptr;  // not owned

    inline static int living = 0;
};

inline fxTypeObj Limb_type("Limb", 1, Limb::newInstance, Limb::deleteInstance, Limb::xdr);

/// An object with members of every kind. It owns none of the persons it points to.
class Person : public fxXDRObj {
public:
    Person() { ++living; }
    Person(const Person&) = delete;
    Person& operator=(const Person&) = delete;
    ~Person() override {
        delete[] shorts;
        delete[] doubles;
        delete[] text;
        --living;
    }
    const char* className() const override { return "Person"; }
    fxTypeObj& getTypeObj() const override { return Person_type; }
    unsigned char xdr(fxTranscriber& t) override {
        return t.xdr(&age, 1) && name.xdr(t) &&
               t.xdr(&mother, mother, Person_type, this, nullptr) &&
               t.xdr(&friends[0], friends[0], Person_type, this, nullptr) &&
               t.xdr(&friends[1], friends[1], Person_type, this, nullptr) &&
               t.xdr(Limb_type, nullptr, &arm) && t.xdr(&arms, arms, Limb_type, this, nullptr) &&
               t.xdr(&count, 1) && t.xdr(&shorts, count) && t.xdr(&doubles, 2) && t.xdr(&text) &&
               t.xdr(&weight, 1) && t.xdr(&height, 1) && t.xdr(&initial, 1) && t.xdr(&year, 1);
    }
    static void* newInstance(fxTypeObj&) { return new Person; }
    static void deleteInstance(void* object) { delete static_cast<Person*>(object); }
    static unsigned char xdr(void* object, fxTranscriber& t) {
        return static_cast<Person*>(object)->Person::xdr(t);
    }

    void setShorts(const std::vector<short>& values) {
        delete[] shorts;
        count = static_cast<unsigned int>(values.size());
        shorts = new short[count];
        std::memcpy(shorts, values.data(), count * sizeof(short));
    }
    void setText(const char* value) {
        delete[] text;
        text = new char[std::strlen(value) + 1];
        std::strcpy(text, value);
    }
    void setDoubles(double a, double b) {
        delete[] doubles;
        doubles = new double[2]{a, b};
    }

    int age = 0;
    fxStr name;
    Person* mother = nullptr;
    Person* friends[2] = {};
    Limb arm;
    Limb* arms = nullptr;  // somebody's arm, or one that is nobody's
    unsigned int count = 0;
    short* shorts = nullptr;
    double* doubles = nullptr;
    char* text = nullptr;
    float weight = 0;
    double height = 0;
    char initial = 0;
    short year = 0;

    inline static int living = 0;
};

inline fxTypeObj Person_type("Person", 1, Person::newInstance, Person::deleteInstance, Person::xdr);

/// A root with all of the library's containers.
class Household : public fxXDRObj {
public:
    Household() { ++living; }
    Household(const Household&) = delete;
    Household& operator=(const Household&) = delete;
    ~Household() override { --living; }
    const char* className() const override { return "Household"; }
    fxTypeObj& getTypeObj() const override;
    unsigned char xdr(fxTranscriber& t) override {
        return title.xdr(t) && numbers.xdr(t) && ratios.xdr(t) && names.xdr(t) && phones.xdr(t) &&
               keys.xdr(t) && t.xdr(&head, head, Person_type, this, nullptr) &&
               t.xdr(&array, array, fxShortArray_type, this, nullptr) && t.xdr(&last, 1);
    }
    static void* newInstance(fxTypeObj&) { return new Household; }
    static void deleteInstance(void* object) { delete static_cast<Household*>(object); }
    static unsigned char xdr(void* object, fxTranscriber& t) {
        return static_cast<Household*>(object)->Household::xdr(t);
    }

    fxStr title = "untitled";
    fxIntArray numbers;
    fxDoubleArray ratios;
    fxStrArray names;
    fxStrStrDictionary phones;
    fxStrSet keys;
    Person* head = nullptr;
    fxXDRObj* array = nullptr;
    int last = 0;

    inline static int living = 0;
};

inline fxTypeObj Household_type("Household", 1, Household::newInstance, Household::deleteInstance,
                                Household::xdr);
inline fxTypeObj& Household::getTypeObj() const { return Household_type; }

/// A stream that lives as long as the variable.
template <class Stream = fxMemoryStream>
class Held {
public:
    template <class... Arguments>
    explicit Held(Arguments... arguments) : stream(new Stream(arguments...)) {
        ++stream->count;
    }
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;
    ~Held() {
        if (--stream->count == 0)
            delete stream;
    }
    Stream* get() const { return stream; }
    Stream* operator->() const { return stream; }
    Stream& operator*() const { return *stream; }

private:
    Stream* stream;
};

/// What getWriter makes when graph writers are its default.
inline std::unique_ptr<fxGraphWriter> graphWriterOn(fxStream* stream) {
    fxTranscriber::changeDefaultWriter(makeGraphWriter);
    fxTranscriber* writer = fxTranscriber::getWriter(stream);
    fxTranscriber::resetToDefaultWriter();
    return std::unique_ptr<fxGraphWriter>(static_cast<fxGraphWriter*>(writer));
}

/// What getReader makes once the toolkit is initialised.
inline std::unique_ptr<fxGraphReader> graphReaderOn(fxStream* stream) {
    fxTranscriber::addTranscriber("fxGraphWriter", makeGraphReader);
    return std::unique_ptr<fxGraphReader>(
        static_cast<fxGraphReader*>(fxTranscriber::getReader(stream)));
}

/// The graph stream of one root.
inline std::string graphStreamOf(fxXDRObj& object) {
    const Held<> stream;
    const auto writer = graphWriterOn(stream.get());
    EXPECT_EQ(1, writer->writeObject(&object, &object)) << writer->lastError();
    return std::string(stream->getBase(), stream->length());
}

/// What a read ends with. The object is the caller's.
struct GraphRead {
    void* object;
    std::string error;
};

inline GraphRead readGraph(const std::string& bytes, fxTypeObj& type) {
    const Held<> stream(static_cast<const void*>(bytes.data()),
                        static_cast<unsigned int>(bytes.size()));
    const auto reader = graphReaderOn(stream.get());
    if (!reader)
        return {nullptr, "no reader"};
    void* const object = reader->readObject(type);
    return {object, reader->lastError()};
}

/// The same of a standard stream, read by a graph reader.
inline GraphRead readStandard(const std::string& bytes, fxTypeObj& type) {
    const Held<> stream(static_cast<const void*>(bytes.data()),
                        static_cast<unsigned int>(bytes.size()));
    fxTranscriber::addTranscriber("fxBinaryWriter", fxGraphReader::forStandardStreams);
    const std::unique_ptr<fxTranscriber> reader(fxTranscriber::getReader(stream.get()));
    fxTranscriber::addTranscriber("fxBinaryWriter", makeBinaryReader);
    void* const object = reader->readObject(type);
    return {object, static_cast<fxGraphReader&>(*reader).lastError()};
}
