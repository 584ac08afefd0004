#include "kelvofxds/transcribe/fxTranscriber.h"

#include <cstddef>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/containers/fxVoidPtrDict.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/core/fxXDRObj.h"
#include "kelvofxds/str/fxStr.h"
#include "tests/support/memoryStream.h"
#include "tests/support/vtable.h"

#pragma GCC diagnostic ignored "-Winvalid-offsetof"

struct fxTranscriberLayout {
    static_assert(offsetof(fxTranscriber, reading) == 8, "behind table and count");
    static_assert(sizeof(fxTranscriber::reading) == 1, "a flag of 8 bits");
    static_assert(offsetof(fxTranscriber, stream) == 12, "after the flag");
    static_assert(sizeof(fxTranscriber) == 16, "nothing else");
};

static_assert(std::is_base_of<fxRCObj, fxTranscriber>::value, "reference-counted");
static_assert(std::is_abstract<fxTranscriber>::value, "slots 3 to 27 are abstract");
static_assert(!std::is_copy_constructible<fxTranscriber>::value, "it has an identity");
static_assert(!std::is_copy_assignable<fxTranscriber>::value, "it has an identity");

namespace {
// A user's transcriber: it implements the abstract slots and nothing else, and
// remembers what it was asked for.
class Recorder : public fxTranscriber {
public:
    explicit Recorder(fxStream* s = nullptr, unsigned char isReader = 0) {
        flagAtStart = reading;
        streamAtStart = stream;
        reading = isReader;
        if (s)
            holdStream(s);
    }

    void reset() override {}
    unsigned char xdr(char* p, unsigned int n) override { return note("char*", p, n); }
    unsigned char xdr(unsigned char* p, unsigned int n) override { return note("uchar*", p, n); }
    unsigned char xdr(short* p, unsigned int n) override { return note("short*", p, n); }
    unsigned char xdr(unsigned short* p, unsigned int n) override { return note("ushort*", p, n); }
    unsigned char xdr(long* p, unsigned int n) override { return note("long*", p, n); }
    unsigned char xdr(unsigned long* p, unsigned int n) override { return note("ulong*", p, n); }
    unsigned char xdr(float* p, unsigned int n) override { return note("float*", p, n); }
    unsigned char xdr(double* p, unsigned int n) override { return note("double*", p, n); }
    unsigned char xdr(fxStr* p, unsigned int n) override { return note("fxStr*", p, n); }
    unsigned char xdr(char** p, unsigned int n) override { return note("char**", p, n); }
    unsigned char xdr(unsigned char** p, unsigned int n) override { return note("uchar**", p, n); }
    unsigned char xdr(short** p, unsigned int n) override { return note("short**", p, n); }
    unsigned char xdr(unsigned short** p, unsigned int n) override {
        return note("ushort**", p, n);
    }
    unsigned char xdr(long** p, unsigned int n) override { return note("long**", p, n); }
    unsigned char xdr(unsigned long** p, unsigned int n) override { return note("ulong**", p, n); }
    unsigned char xdr(float** p, unsigned int n) override { return note("float**", p, n); }
    unsigned char xdr(double** p, unsigned int n) override { return note("double**", p, n); }
    unsigned char xdr(char** p) override { return note("text", p, 0); }
    unsigned char xdr(unsigned char** p) override { return note("utext", p, 0); }
    unsigned char xdr(void* field, fxXDRObj*, fxTypeObj&, fxXDRObj*, void*) override {
        return note("object", field, 0);
    }
    unsigned char xdr(fxTypeObj& type, void* previous, void* address) override {
        lastType = &type;
        lastPrevious = previous;
        return note("embedded", address, 0);
    }
    void* readObject(fxTypeObj&) override { return nullptr; }
    unsigned char writeObject(void*, fxXDRObj*) override { return 0; }
    const char* className() const override { return "Recorder"; }

    using fxTranscriber::xdr;

    unsigned char result = 1;
    std::string lastCall;
    void* lastAddress = nullptr;
    unsigned int lastCount = 0;
    fxTypeObj* lastType = nullptr;
    void* lastPrevious = nullptr;
    std::vector<std::string> calls;
    unsigned char flagAtStart;
    fxStream* streamAtStart;

private:
    unsigned char note(const char* name, void* p, unsigned int n) {
        lastCall = name;
        lastAddress = p;
        lastCount = n;
        calls.push_back(name);
        return result;
    }
};

using Flag = unsigned char;
template <class... Args>
unsigned int wordOfXdr() {
    return vtableWord(static_cast<Flag (fxTranscriber::*)(Args...)>(&fxTranscriber::xdr));
}
}  // namespace

TEST(fxTranscriber, slotsFollowTheTwoDestructorsInTheStatedOrder) {
    EXPECT_EQ(2u, vtableWord(&fxTranscriber::reset));
    EXPECT_EQ(3u, (wordOfXdr<char*, unsigned int>()));
    EXPECT_EQ(4u, (wordOfXdr<unsigned char*, unsigned int>()));
    EXPECT_EQ(5u, (wordOfXdr<short*, unsigned int>()));
    EXPECT_EQ(6u, (wordOfXdr<unsigned short*, unsigned int>()));
    EXPECT_EQ(7u, (wordOfXdr<long*, unsigned int>()));
    EXPECT_EQ(8u, (wordOfXdr<unsigned long*, unsigned int>()));
    EXPECT_EQ(9u, (wordOfXdr<float*, unsigned int>()));
    EXPECT_EQ(10u, (wordOfXdr<double*, unsigned int>()));
    EXPECT_EQ(11u, (wordOfXdr<fxStr*, unsigned int>()));
    EXPECT_EQ(12u, (wordOfXdr<char**, unsigned int>()));
    EXPECT_EQ(13u, (wordOfXdr<unsigned char**, unsigned int>()));
    EXPECT_EQ(14u, (wordOfXdr<short**, unsigned int>()));
    EXPECT_EQ(15u, (wordOfXdr<unsigned short**, unsigned int>()));
    EXPECT_EQ(16u, (wordOfXdr<long**, unsigned int>()));
    EXPECT_EQ(17u, (wordOfXdr<unsigned long**, unsigned int>()));
    EXPECT_EQ(18u, (wordOfXdr<float**, unsigned int>()));
    EXPECT_EQ(19u, (wordOfXdr<double**, unsigned int>()));
    EXPECT_EQ(20u, (wordOfXdr<char**>()));
    EXPECT_EQ(21u, (wordOfXdr<unsigned char**>()));
    EXPECT_EQ(22u, (wordOfXdr<void*, fxXDRObj*, fxTypeObj&, fxXDRObj*, void*>()));
    EXPECT_EQ(23u, (wordOfXdr<fxTypeObj&, void*, void*>()));
    EXPECT_EQ(24u, vtableWord(&fxTranscriber::readObject));
    EXPECT_EQ(25u, vtableWord(&fxTranscriber::writeObject));
    EXPECT_EQ(26u, vtableWord(&fxTranscriber::className));
    EXPECT_EQ(27u, (wordOfXdr<int*, unsigned int>()));
    EXPECT_EQ(28u, (wordOfXdr<unsigned int*, unsigned int>()));
    EXPECT_EQ(29u, (wordOfXdr<int**, unsigned int>()));
    EXPECT_EQ(30u, (wordOfXdr<unsigned int**, unsigned int>()));
}

TEST(fxTranscriber, startsWritingWithoutAStreamAndWithCountZero) {
    const Recorder recorder;
    EXPECT_EQ(0, recorder.flagAtStart);
    EXPECT_EQ(nullptr, recorder.streamAtStart);
    EXPECT_EQ(0, recorder.count);
    EXPECT_EQ(0, recorder.isReading());
    EXPECT_EQ(nullptr, recorder.getStream());
}

TEST(fxTranscriber, readingFlagCanBeReadByTheObjectsTranscribed) {
    EXPECT_EQ(1, Recorder(nullptr, 1).isReading());
    EXPECT_EQ(0, Recorder(nullptr, 0).isReading());
}

TEST(fxTranscriber, holdsItsStreamAndReleasesItWhenDestroyed) {
    MemoryStream stream;
    {
        const Recorder recorder(&stream);
        EXPECT_EQ(&stream, recorder.getStream());
        EXPECT_EQ(2, stream.count);
    }
    EXPECT_EQ(1, stream.count);
}

TEST(fxTranscriber, lastHolderDeletesTheStream) {
    bool deleted = false;
    auto* stream = new MemoryStream;
    stream->count = 0;
    stream->deleted = &deleted;
    {
        const Recorder recorder(stream);
        EXPECT_EQ(1, stream->count);
        EXPECT_FALSE(deleted);
    }
    EXPECT_TRUE(deleted);
}

TEST(fxTranscriber, streamIsDeletedAtExactlyZeroOnly) {
    MemoryStream stream;
    {
        const Recorder recorder(&stream);
        stream.count = 0;
    }
    EXPECT_EQ(-1, stream.count);
}

TEST(fxTranscriber, intFormsAreTheLongFormsWithTheSameArguments) {
    Recorder recorder;
    int value = 0;
    unsigned int unsignedValue = 0;
    int* block = &value;
    unsigned int* unsignedBlock = &unsignedValue;
    for (const int result : {1, 0, 7}) {
        SCOPED_TRACE(result);
        recorder.result = static_cast<unsigned char>(result);

        EXPECT_EQ(result, recorder.xdr(&value, 11));
        EXPECT_EQ("long*", recorder.lastCall);
        EXPECT_EQ(&value, recorder.lastAddress);
        EXPECT_EQ(11u, recorder.lastCount);

        EXPECT_EQ(result, recorder.xdr(&unsignedValue, 12));
        EXPECT_EQ("ulong*", recorder.lastCall);
        EXPECT_EQ(&unsignedValue, recorder.lastAddress);
        EXPECT_EQ(12u, recorder.lastCount);

        EXPECT_EQ(result, recorder.xdr(&block, 13));
        EXPECT_EQ("long**", recorder.lastCall);
        EXPECT_EQ(&block, recorder.lastAddress);
        EXPECT_EQ(13u, recorder.lastCount);

        EXPECT_EQ(result, recorder.xdr(&unsignedBlock, 14));
        EXPECT_EQ("ulong**", recorder.lastCall);
        EXPECT_EQ(&unsignedBlock, recorder.lastAddress);
        EXPECT_EQ(14u, recorder.lastCount);
    }
    EXPECT_EQ(12u, recorder.calls.size()) << "one call each";
}

TEST(fxTranscriber, deliberateContainerBasesPassTheGenericRecordAndTheirOwnAddressTwice) {
    Recorder recorder;
    fxVoidPtrArray array;
    fxVoidPtrDict dictionary(1);
    for (fxXDRObj* object : {static_cast<fxXDRObj*>(&array), static_cast<fxXDRObj*>(&dictionary)}) {
        EXPECT_EQ(1, object->xdr(recorder));
        EXPECT_EQ("embedded", recorder.lastCall);
        EXPECT_EQ(&fxXDRObj_type, recorder.lastType);
        EXPECT_EQ(object, recorder.lastPrevious);
        EXPECT_EQ(object, recorder.lastAddress);
    }
    recorder.result = 0;
    EXPECT_EQ(0, array.xdr(recorder));
    EXPECT_EQ(0, dictionary.xdr(recorder));
}

TEST(fxTranscriber, stringIsItsLengthAndAPointerToThatManyChars) {
    Recorder writer;
    fxStr text("abc");
    EXPECT_TRUE(text.xdr(writer));
    EXPECT_EQ((std::vector<std::string>{"ulong*", "char**"}), writer.calls);
    EXPECT_EQ(4u, writer.lastCount) << "with the NUL";

    writer.calls.clear();
    fxStr empty;
    EXPECT_TRUE(empty.xdr(writer));
    EXPECT_EQ((std::vector<std::string>{"ulong*"}), writer.calls);

    writer.calls.clear();
    writer.result = 0;
    EXPECT_FALSE(text.xdr(writer));
    EXPECT_EQ((std::vector<std::string>{"ulong*"}), writer.calls) << "the first failure ends it";
}
