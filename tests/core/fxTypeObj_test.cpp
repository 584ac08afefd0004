#include "kelvofxds/core/fxTypeObj.h"

#include <cstddef>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxStrSet.h"
#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/containers/fxTypedArraysInternal.h"
#include "kelvofxds/containers/fxVoidPtrDict.h"
#include "kelvofxds/core/fxXDRObj.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/str/fxStrArray.h"
#include "tests/support/recordingTranscriber.h"

static_assert(sizeof(fxTypeObj) == 20, "five words");
static_assert(offsetof(fxTypeObj, name) == 0, "fields in order");
static_assert(offsetof(fxTypeObj, version) == 4, "fields in order");
static_assert(offsetof(fxTypeObj, create) == 8, "fields in order");
static_assert(offsetof(fxTypeObj, destroy) == 12, "fields in order");
static_assert(offsetof(fxTypeObj, xdr) == 16, "fields in order");
static_assert(!std::is_polymorphic<fxTypeObj>::value, "no base, no table");
static_assert(std::is_trivially_destructible<fxTypeObj>::value,
              "records may be used while the process ends");

namespace {

// What this file's static initialisers, which run before main, could find.
const fxTypeObj* const earlyXDRObj = fxTypeObj::findType("fxXDRObj");
const fxTypeObj* const earlyStr = fxTypeObj::findType("fxStr");
const fxTypeObj* const earlyArray = fxTypeObj::findType("fxArray");
const fxTypeObj* const earlyDictionary = fxTypeObj::findType("fxDictionary");
const fxTypeObj* const earlyArrayTag = fxTypeObj::findType("ARRAY");
const fxTypeObj* const earlyDictTag = fxTypeObj::findType("DICT");

// A record of the host's own, registered by a static initialiser as well.
void* hostCreate(fxTypeObj&) { return new int(7); }
void hostDestroy(void* object) { delete static_cast<int*>(object); }
unsigned char hostXdr(void*, fxTranscriber&) { return 1; }
fxTypeObj hostRecord("fxTypeObj_test host", 5, hostCreate, hostDestroy, hostXdr);
const fxTypeObj* const earlyHostRecord = fxTypeObj::findType("fxTypeObj_test host");

// While one of these lives there is no registry, unless somebody makes one.
class WithoutRegistry {
public:
    WithoutRegistry() : saved(fxTypeObj::knownTypes) { fxTypeObj::knownTypes = nullptr; }
    WithoutRegistry(const WithoutRegistry&) = delete;
    WithoutRegistry& operator=(const WithoutRegistry&) = delete;
    ~WithoutRegistry() {
        delete fxTypeObj::knownTypes;
        fxTypeObj::knownTypes = saved;
    }

private:
    fxVoidPtrDict* saved;
};

struct RecordRow {
    const char* global;
    fxTypeObj& record;
    const char* name;
    void* (*create)(fxTypeObj&);
    void (*destroy)(void*);
    unsigned char (*xdr)(void*, fxTranscriber&);
};

#define ROW(Class, name) \
    { #Class "_type", Class##_type, name, Class::newInstance, Class::deleteInstance, Class::xdr }
#define ABSTRACT_ROW(Class, name) \
    { #Class "_type", Class##_type, name, nullptr, nullptr, Class::xdr }

#define ARRAY_ROW(Class, Element) ROW(Class, "ARRAY"),

const RecordRow rows[] = {ROW(fxXDRObj, "fxXDRObj"),
                          ROW(fxStr, "fxStr"),
                          ABSTRACT_ROW(fxArray, "fxArray"),
                          ABSTRACT_ROW(fxDictionary, "fxDictionary"),
                          ABSTRACT_ROW(fxSet, "fxSet"),
                          FX_TYPED_ARRAYS(ARRAY_ROW) ROW(fxStrStrDictionary, "DICT"),
                          ROW(fxStrSet, "SET"),
                          ROW(fxStrArray, "ARRAY")};

}  // namespace

// The library's records.

TEST(fxTypeObj, recordsHaveNameVersionAndFunctionsAsListed) {
    for (const RecordRow& row : rows) {
        SCOPED_TRACE(row.global);
        EXPECT_STREQ(row.name, row.record.name);
        EXPECT_EQ(1u, row.record.version);
        EXPECT_EQ(row.create, row.record.create);
        EXPECT_EQ(row.destroy, row.record.destroy);
        EXPECT_EQ(row.xdr, row.record.xdr);
    }
}

TEST(fxTypeObj, createMakesAnInstanceThatDestroyFrees) {
    for (const RecordRow& row : rows) {
        SCOPED_TRACE(row.global);
        if (!row.record.create || &row.record == &fxStr_type)
            continue;
        void* object = row.record.create(row.record);
        ASSERT_NE(nullptr, object);
        EXPECT_EQ(0, static_cast<fxXDRObj*>(object)->count);
        EXPECT_EQ(&row.record, &static_cast<fxXDRObj*>(object)->getTypeObj());
        row.record.destroy(object);
        row.record.destroy(nullptr);
    }
}

TEST(fxTypeObj, createMakesAnEmptyString) {
    void* string = fxStr_type.create(fxStr_type);
    ASSERT_NE(nullptr, string);
    EXPECT_EQ(&fxStr::emptyString, static_cast<fxStr*>(string)->c_str());
    fxStr_type.destroy(string);
    fxStr_type.destroy(nullptr);
}

TEST(fxTypeObj, recordsAreRegisteredBeforeMain) {
    EXPECT_EQ(&fxXDRObj_type, earlyXDRObj);
    EXPECT_EQ(&fxStr_type, earlyStr);
    EXPECT_EQ(&fxArray_type, earlyArray);
    EXPECT_EQ(&fxDictionary_type, earlyDictionary);
    EXPECT_EQ(&fxStrStrDictionary_type, earlyDictTag);
    EXPECT_EQ(&hostRecord, earlyHostRecord);
}

TEST(fxTypeObj, deliberateTheArrayTagIsTheArrayRecordConstructedLast) {
    EXPECT_EQ(&fxStrArray_type, earlyArrayTag);
    EXPECT_EQ(&fxStrArray_type, fxTypeObj::findType("ARRAY"));
}

TEST(fxTypeObj, theDictTagIsTheStringDictionary) {
    EXPECT_EQ(&fxStrStrDictionary_type, fxTypeObj::findType("DICT"));
}

TEST(fxTypeObj, abstractRecordsCannotCreate) {
    for (const char* name : {"fxArray", "fxDictionary"}) {
        SCOPED_TRACE(name);
        const fxTypeObj* record = fxTypeObj::findType(name);
        ASSERT_NE(nullptr, record);
        EXPECT_EQ(nullptr, record->create);
        EXPECT_EQ(nullptr, record->destroy);
        EXPECT_NE(nullptr, record->xdr);
    }
}

// Finding.

TEST(fxTypeObj, findTypeWantsTheExactName) {
    EXPECT_EQ(&fxStr_type, fxTypeObj::findType("fxStr"));
    for (const char* name : {"fxstr", "FXSTR", "fxSt", "fxStrX", "fxStr ", " fxStr", "array",
                             "fxIntArray", "fxStrStrDictionary", "", "no such type"}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(nullptr, fxTypeObj::findType(name));
    }
}

TEST(fxTypeObj, findTypeTakesAString) {
    fxStr known("fxXDRObj"), unknown("fxXDRObject"), empty;
    EXPECT_EQ(&fxXDRObj_type, fxTypeObj::findType(known));
    EXPECT_EQ(nullptr, fxTypeObj::findType(unknown));
    EXPECT_EQ(nullptr, fxTypeObj::findType(empty));
    EXPECT_STREQ("fxXDRObj", known.c_str());
}

// "a" hashes to 2^27, which is 4 modulo 31. "a", NUL, ">" hashes to
// 0xF0030800, which is 4 as well, and the two compare alike by strcmp.
TEST(fxTypeObj, nulsInANameCount) {
    const WithoutRegistry none;
    fxTypeObj record("a", 1, nullptr, nullptr, hostXdr);
    fxStr plain("a"), sameBucket("a\0>", 3), otherBucket("a\0?", 3), trailing("a\0", 2);
    EXPECT_EQ(&record, fxTypeObj::findType(plain));
    EXPECT_EQ(nullptr, fxTypeObj::findType(sameBucket));
    EXPECT_EQ(nullptr, fxTypeObj::findType(otherBucket));
    EXPECT_EQ(nullptr, fxTypeObj::findType(trailing));
}

TEST(fxTypeObj, lookUpDoesNotMakeTheRegistry) {
    const WithoutRegistry none;
    fxStr name("fxStr");
    EXPECT_EQ(nullptr, fxTypeObj::findType("fxStr"));
    EXPECT_EQ(nullptr, fxTypeObj::findType(name));
    EXPECT_EQ(nullptr, fxTypeObj::knownTypes);
}

// Registering.

TEST(fxTypeObj, constructorStoresTheFieldsAndRegisters) {
    EXPECT_STREQ("fxTypeObj_test host", hostRecord.name);
    EXPECT_EQ(5u, hostRecord.version);
    EXPECT_EQ(&hostRecord, fxTypeObj::findType("fxTypeObj_test host"));

    void* object = hostRecord.create(hostRecord);
    RecordingTranscriber t(RecordingTranscriber::writer);
    EXPECT_EQ(7, *static_cast<int*>(object));
    EXPECT_EQ(1, hostRecord.xdr(object, t));
    hostRecord.destroy(object);
}

TEST(fxTypeObj, constructorMakesTheRegistryWithItsDefaultSize) {
    const WithoutRegistry none;
    fxTypeObj record("first", 1, hostCreate, hostDestroy, hostXdr);
    ASSERT_NE(nullptr, fxTypeObj::knownTypes);
    EXPECT_EQ(31u, fxTypeObj::knownTypes->getNumBuckets());
    EXPECT_EQ(1u, fxTypeObj::knownTypes->length());
    EXPECT_EQ(&record, fxTypeObj::findType("first"));
}

TEST(fxTypeObj, registerTypeMakesTheRegistry) {
    const WithoutRegistry none;
    fxTypeObj::registerType(&fxStr_type);
    ASSERT_NE(nullptr, fxTypeObj::knownTypes);
    EXPECT_EQ(31u, fxTypeObj::knownTypes->getNumBuckets());
    EXPECT_EQ(&fxStr_type, fxTypeObj::findType("fxStr"));
    EXPECT_EQ(nullptr, fxTypeObj::findType("fxXDRObj"));
}

TEST(fxTypeObj, registryMapsTheNameToTheRecordsAddress) {
    const WithoutRegistry none;
    fxTypeObj record("mapped", 1, nullptr, nullptr, hostXdr);
    void** value = fxTypeObj::knownTypes->find("mapped");
    ASSERT_NE(nullptr, value);
    EXPECT_EQ(&record, *value);
}

TEST(fxTypeObj, theNameIsNotCopied) {
    const WithoutRegistry none;
    const char name[] = "on the stack";
    fxTypeObj record(name, 1, nullptr, nullptr, hostXdr);
    EXPECT_EQ(name, record.name);
}

TEST(fxTypeObj, deliberateALaterRecordReplacesAnEarlierOneSilently) {
    const WithoutRegistry none;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    fxTypeObj first("twice", 1, nullptr, nullptr, hostXdr);
    const fxTypeObj* foundFirst = fxTypeObj::findType("twice");
    fxTypeObj second("twice", 2, nullptr, nullptr, hostXdr);
    const fxTypeObj* foundSecond = fxTypeObj::findType("twice");
    fxTypeObj::registerType(&first);
    const fxTypeObj* foundLast = fxTypeObj::findType("twice");
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
    EXPECT_EQ("", testing::internal::GetCapturedStdout());

    EXPECT_EQ(&first, foundFirst);
    EXPECT_EQ(&second, foundSecond);
    EXPECT_EQ(&first, foundLast);
    EXPECT_EQ(1u, fxTypeObj::knownTypes->length());
}

TEST(fxTypeObj, registeringBeforeReadingChoosesWhatATagStandsFor) {
    fxTypeObj::registerType(&fxIntArray_type);
    EXPECT_EQ(&fxIntArray_type, fxTypeObj::findType("ARRAY"));
    fxTypeObj::registerType(&fxStrArray_type);
    EXPECT_EQ(&fxStrArray_type, fxTypeObj::findType("ARRAY"));
}

TEST(fxTypeObj, aNullNameIsTheEmptyName) {
    const WithoutRegistry none;
    fxTypeObj record(nullptr, 1, nullptr, nullptr, hostXdr);
    EXPECT_EQ(&record, fxTypeObj::findType(""));
    EXPECT_EQ(&record, fxTypeObj::findType(static_cast<const char*>(nullptr)));
}
