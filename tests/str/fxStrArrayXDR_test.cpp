#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/str/fxStrArray.h"
#include "kelvofxds/transcribe/fxStdioStream.h"
#include "kelvofxds/transcribe/fxTranscriber.h"
#include "tests/support/memory.h"

namespace {
using Calls = std::vector<std::string>;
using Texts = std::vector<std::string>;

// One number or text that a reading ScriptedTranscriber hands out.
struct Item {
    Item(unsigned int n) : number(n) {}
    Item(const char* s) : number(0), text(s) {}
    unsigned int number;
    std::string text;
};

// Notes the calls made on it. While reading it hands out its items, one a
// call, and fails when there are no more; it fails at call `failAt` anyway.
class ScriptedTranscriber : public fxTranscriber {
public:
    ScriptedTranscriber() {}
    explicit ScriptedTranscriber(std::vector<Item> script) : items(std::move(script)) {
        reading = 1;
    }

    unsigned char xdr(unsigned int* p, unsigned int n) override { return number("uint", p, n); }
    unsigned char xdr(unsigned short* p, unsigned int n) override { return number("ushort", p, n); }
    unsigned char xdr(char** block, unsigned int n) override {
        if (!goesOn(std::string("char* ") + (reading ? std::to_string(n) : std::string(*block, n))))
            return 0;
        if (reading) {
            *block = static_cast<char*>(std::malloc(n));
            std::memcpy(*block, items[calls.size() - 1].text.c_str(), n);
        }
        return 1;
    }

    // An array of strings has no use for these.
    void reset() override { other(); }
    unsigned char xdr(char*, unsigned int) override { return other(); }
    unsigned char xdr(unsigned char*, unsigned int) override { return other(); }
    unsigned char xdr(short*, unsigned int) override { return other(); }
    unsigned char xdr(long*, unsigned int) override { return other(); }
    unsigned char xdr(unsigned long*, unsigned int) override { return other(); }
    unsigned char xdr(float*, unsigned int) override { return other(); }
    unsigned char xdr(double*, unsigned int) override { return other(); }
    unsigned char xdr(fxStr*, unsigned int) override { return other(); }
    unsigned char xdr(unsigned char**, unsigned int) override { return other(); }
    unsigned char xdr(short**, unsigned int) override { return other(); }
    unsigned char xdr(unsigned short**, unsigned int) override { return other(); }
    unsigned char xdr(long**, unsigned int) override { return other(); }
    unsigned char xdr(unsigned long**, unsigned int) override { return other(); }
    unsigned char xdr(float**, unsigned int) override { return other(); }
    unsigned char xdr(double**, unsigned int) override { return other(); }
    unsigned char xdr(char**) override { return other(); }
    unsigned char xdr(unsigned char**) override { return other(); }
    unsigned char xdr(void*, fxXDRObj*, fxTypeObj&, fxXDRObj*, void*) override { return other(); }
    unsigned char xdr(fxTypeObj&, void*, void*) override { return other(); }
    void* readObject(fxTypeObj&) override { return other() ? this : nullptr; }
    unsigned char writeObject(void*, fxXDRObj*) override { return other(); }
    const char* className() const override { return "ScriptedTranscriber"; }

    Calls calls;
    unsigned int failAt = 0xFFFFFFFF;

private:
    bool goesOn(const std::string& call) {
        const std::size_t index = calls.size();
        calls.push_back(call);
        return index < failAt && (!reading || index < items.size());
    }

    template <class Number>
    unsigned char number(const char* name, Number* p, unsigned int n) {
        const bool good = goesOn(reading ? name : std::string(name) + " " + std::to_string(*p));
        EXPECT_EQ(1u, n);
        if (good && reading)
            *p = static_cast<Number>(items[calls.size() - 1].number);
        return good;
    }

    unsigned char other() {
        ADD_FAILURE() << "an unexpected call";
        return 0;
    }

    std::vector<Item> items;
};

fxStrArray arrayOf(std::initializer_list<const char*> texts) {
    fxStrArray array;
    for (const char* text : texts)
        array.append(fxStr(text));
    return array;
}

Texts textsOf(const fxStrArray& array) {
    Texts texts;
    for (unsigned int i = 0; i < array.length(); ++i)
        texts.push_back(std::string(array[i].c_str(), array[i].length()));
    return texts;
}

unsigned char readFresh(fxTranscriber& t, std::unique_ptr<fxStrArray>& array) {
    array.reset(static_cast<fxStrArray*>(fxStrArray::newInstance(fxStrArray_type)));
    return array->xdr(t);
}
}  // namespace

// Writing.

TEST(fxStrArrayXDR, writesLengthElementSizeAndStrings) {
    const struct {
        fxStrArray array;
        Calls calls;
    } cases[] = {
        {arrayOf({}), {"uint 0", "ushort 8"}},
        {arrayOf({"ab"}), {"uint 8", "ushort 8", "uint 3", std::string("char* ab\0", 9)}},
        {arrayOf({"", "a", ""}),
         {"uint 24", "ushort 8", "uint 1", "uint 2", std::string("char* a\0", 8), "uint 1"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(textsOf(c.array)));
        ScriptedTranscriber t;
        EXPECT_EQ(1, fxStrArray(c.array).xdr(t));
        EXPECT_EQ(c.calls, t.calls);
    }
}

TEST(fxStrArrayXDR, deliberateSpareCapacityIsNotWritten) {
    fxStrArray array = arrayOf({"a"});
    ASSERT_EQ(32u, array.getMaxLen());
    ScriptedTranscriber t;
    EXPECT_EQ(1, array.xdr(t));
    EXPECT_EQ((Calls{"uint 8", "ushort 8", "uint 2", std::string("char* a\0", 8)}), t.calls);
    EXPECT_EQ(32u, array.getMaxLen());
}

TEST(fxStrArrayXDR, writingStopsAtTheFirstFailure) {
    for (unsigned int failAt = 0; failAt < 6; ++failAt) {
        SCOPED_TRACE(failAt);
        fxStrArray array = arrayOf({"a", "", "c"});
        ScriptedTranscriber t;
        t.failAt = failAt;
        EXPECT_EQ(0, array.xdr(t));
        EXPECT_EQ(failAt + 1, t.calls.size());
        EXPECT_EQ((Texts{"a", "", "c"}), textsOf(array));
    }
}

// Reading.

TEST(fxStrArrayXDR, readsWhatWasWritten) {
    ScriptedTranscriber t({24U, 8U, 3U, "ab", 1U, 2U, "c"});
    std::unique_ptr<fxStrArray> array;
    EXPECT_EQ(1, readFresh(t, array));
    EXPECT_EQ((Calls{"uint", "ushort", "uint", "char* 3", "uint", "uint", "char* 2"}), t.calls);
    EXPECT_EQ((Texts{"ab", "", "c"}), textsOf(*array));
    EXPECT_EQ(&fxStr::emptyString, (*array)[1].c_str());
    EXPECT_EQ(24u, array->getLen());
    EXPECT_EQ(24u, array->getMaxLen()) << "the capacity is the length";
    EXPECT_EQ(8, array->getElemSize());
}

TEST(fxStrArrayXDR, readsAnEmptyArray) {
    ScriptedTranscriber t({0U, 8U});
    std::unique_ptr<fxStrArray> array;
    EXPECT_EQ(1, readFresh(t, array));
    EXPECT_EQ(0u, array->length());
    EXPECT_EQ(0u, array->getMaxLen());
    EXPECT_EQ(nullptr, array->at(0));
    array->append(fxStr("usable"));
    EXPECT_EQ(Texts{"usable"}, textsOf(*array));
}

TEST(fxStrArrayXDR, deliberateReadingLetsTheOldBlockGo) {
    fxStrArray array = arrayOf({"old", "strings"});
    void* const oldBlock = array.at(0);
    ScriptedTranscriber t({8U, 8U, 4U, "new"});
    EXPECT_EQ(1, array.xdr(t));
    EXPECT_EQ(Texts{"new"}, textsOf(array));
    EXPECT_NE(oldBlock, array.at(0));
    const fxStrArray old(8, 16, oldBlock);
    EXPECT_EQ((Texts{"old", "strings"}), textsOf(old)) << "nothing ended them";
}

// The one whose reading fails is there, empty; those after it are not.
TEST(fxStrArrayXDR, stringsReadBeforeAFailureStay) {
    const struct {
        unsigned int failAt;
        Texts texts;
    } cases[] = {{2, {""}}, {3, {""}}, {4, {"a", ""}}, {5, {"a", "", ""}}, {6, {"a", "", ""}}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.failAt);
        ScriptedTranscriber t({24U, 8U, 2U, "a", 1U, 2U, "c"});
        t.failAt = c.failAt;
        std::unique_ptr<fxStrArray> array;
        EXPECT_EQ(0, readFresh(t, array));
        EXPECT_EQ(c.failAt + 1, t.calls.size());
        EXPECT_EQ(c.texts, textsOf(*array));
        EXPECT_EQ(24u, array->getMaxLen());
        array->append("usable");
    }
}

namespace {
// Memory that holds no string has other bytes; strings that are made in another
// way than one by one in place are counted.
class WatchedStrArray : public fxStrArray {
public:
    void getmem() override {
        fxStrArray::getmem();
        std::memset(data, 0xA5, maxLen);
    }
    void createElements(void* at, unsigned int bytes) override {
        ++creations;
        fxStrArray::createElements(at, bytes);
    }
    std::string bytesOf(unsigned int i) const { return std::string(byteAt(8 * i), 8); }

    unsigned int creations = 0;
};
}  // namespace

TEST(fxStrArrayXDR, eachStringIsMadeInPlaceBeforeItIsRead) {
    const std::string raw(8, '\xA5');
    for (unsigned int failAt : {0xFFFFFFFFu, 4u, 2u}) {
        SCOPED_TRACE(failAt);
        ScriptedTranscriber t({24U, 8U, 2U, "a", 1U, 2U, "c"});
        t.failAt = failAt;
        WatchedStrArray array;
        EXPECT_EQ(failAt == 0xFFFFFFFF, array.xdr(t));
        EXPECT_EQ(0u, array.creations) << "no virtual operation makes them";
        EXPECT_NE(raw, array.bytesOf(0));
        EXPECT_EQ(failAt == 2, array.bytesOf(1) == raw);
        EXPECT_EQ(failAt != 0xFFFFFFFF, array.bytesOf(2) == raw);
    }
}

TEST(fxStrArrayXDR, failureBeforeTheStringsLeavesAnArrayThatCanBeDestroyed) {
    for (unsigned int failAt = 0; failAt < 2; ++failAt) {
        SCOPED_TRACE(failAt);
        ScriptedTranscriber t({80U, 8U});
        t.failAt = failAt;
        std::unique_ptr<fxStrArray> array;
        EXPECT_EQ(0, readFresh(t, array));
        EXPECT_EQ(failAt + 1, t.calls.size());
        EXPECT_EQ(nullptr, array->at(0));
    }
}

TEST(fxStrArrayXDR, failureBeforeTheStringsKeepsTheLengthWithinTheBlock) {
    for (unsigned int failAt = 0; failAt < 2; ++failAt) {
        SCOPED_TRACE(failAt);
        std::unique_ptr<fxStrArray> array(new fxStrArray(arrayOf({"a", "b"})));
        ScriptedTranscriber t({80U, 8U});
        t.failAt = failAt;
        EXPECT_EQ(0, array->xdr(t));
        EXPECT_LE(array->getLen(), array->getMaxLen());
        if (HasFailure())
            (void)array.release();  // its destructor would leave the block
    }
}

TEST(fxStrArrayXDR, otherElementSizesAndOddLengthsAreRefused) {
    const struct {
        unsigned int bytes, elemSize;
    } cases[] = {{16, 0}, {16, 4}, {16, 7}, {16, 9}, {16, 16}, {16, 65535},     {0, 4},
                 {0, 0},  {1, 8},  {7, 8},  {9, 8},  {12, 8},  {0xFFFFFFFF, 8}, {0xFFFFFFF8, 16}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.bytes << " bytes of " << c.elemSize);
        ScriptedTranscriber t({c.bytes, c.elemSize, 1U, 1U, 1U, 1U});
        std::unique_ptr<fxStrArray> array;
        EXPECT_EQ(0, readFresh(t, array));
        EXPECT_EQ(2u, t.calls.size()) << "no string is read";
        EXPECT_EQ(0u, array->length());
    }
}

TEST(fxStrArrayXDR, claimedLengthTakesNoMemoryBeforeItsStringsArrive) {
    const unsigned int claims[] = {8U << 20, 1U << 28, 1U << 30, 0x7FFFFFF8};
    for (const unsigned int claim : claims) {
        SCOPED_TRACE(claim);
        const std::size_t before = residentBytes();
        ScriptedTranscriber t({claim, 8U, 2U, "a", 1U, 2U, "c"});
        std::unique_ptr<fxStrArray> array;
        EXPECT_EQ(0, readFresh(t, array));
        EXPECT_LT(residentBytes() - before, std::size_t(16) << 20);
        EXPECT_LE(array->getLen(), array->getMaxLen());
    }
}

// Memory checkers complain of the mere request, so a child process makes it.
TEST(fxStrArrayXDRDeathTest, lengthThatCannotBeAllocatedIsRefused) {
    const auto check = [] {
        ScriptedTranscriber t({0xFFFFFFF8, 8U, 1U});
        std::unique_ptr<fxStrArray> array;
        EXPECT_EQ(0, readFresh(t, array));
        EXPECT_EQ(2u, t.calls.size()) << "no string is read";
        EXPECT_EQ(0u, array->length());
        array.reset();
        std::fflush(stdout);
        ::_exit(testing::Test::HasFailure() ? 1 : 0);
    };
    EXPECT_EXIT(check(), testing::ExitedWithCode(0), "");
}

TEST(fxStrArrayXDR, manyStringsAreReadWhereTheyStay) {
    const unsigned int n = 300000;
    std::vector<Item> items = {n * 8, 8U};
    for (unsigned int i = 0; i < n; ++i)
        items.emplace_back(1U);
    items.back() = Item(2U);
    items.emplace_back("z");
    ScriptedTranscriber t(items);
    std::unique_ptr<fxStrArray> array;
    EXPECT_EQ(1, readFresh(t, array));
    EXPECT_EQ(n, array->length());
    EXPECT_EQ(n * 8, array->getMaxLen());
    EXPECT_EQ("z", (*array)[n - 1]);
    EXPECT_EQ("", (*array)[n - 2]);
}

// By the type record.

TEST(fxStrArrayXDR, staticFormReturnsTheOutcomeAsAByte) {
    fxStrArray array = arrayOf({"a"});
    ScriptedTranscriber good;
    EXPECT_EQ(1, fxStrArray_type.xdr(&array, good));
    EXPECT_EQ(4u, good.calls.size());
    ScriptedTranscriber bad;
    bad.failAt = 3;
    EXPECT_EQ(0, fxStrArray_type.xdr(&array, bad));
}

TEST(fxStrArrayXDR, staticFormCallsTheMemberOfASubclass) {
    struct Sub : fxStrArray {
        unsigned char xdr(fxTranscriber& t) override {
            unsigned int extra = 77;
            return fxStrArray::xdr(t) && t.xdr(&extra, 1);
        }
    };
    std::unique_ptr<fxStrArray> array(new Sub);
    ScriptedTranscriber t;
    EXPECT_EQ(1, fxStrArray_type.xdr(array.get(), t));
    EXPECT_EQ((Calls{"uint 0", "ushort 8", "uint 77"}), t.calls);
}

// Through the binary format.

namespace {
template <class Value>
std::string host(Value value) {
    return std::string(reinterpret_cast<const char*>(&value), sizeof value);
}

// Framing is little-endian on every host.
std::string word(std::uint32_t value) {
    std::string bytes;
    for (int i = 0; i < 4; ++i)
        bytes += static_cast<char>(value >> (8 * i));
    return bytes;
}

std::string header() {
    return std::string("fxBinaryWriter\0ieee\0", 20) + host<std::int16_t>(0x1122) +
           host<std::int32_t>(0x33445566);
}

std::string record(unsigned int tag, const std::string& arguments, const std::string& payload) {
    std::string bytes(1, static_cast<char>(tag | (payload.empty() ? 0 : 0x40)));
    if (!payload.empty())
        bytes += static_cast<char>(payload.size());
    return bytes + arguments + payload;
}

std::string lengthAndSize(unsigned int bytes) {
    return host<std::uint32_t>(bytes) + host<std::uint16_t>(8);
}

std::string written(fxStrArray& array) {
    char* bytes = nullptr;
    std::size_t size = 0;
    std::unique_ptr<fxTranscriber> writer(fxTranscriber::getWriter(
        new fxStdioStream(::open_memstream(&bytes, &size), fxStream::writeStream)));
    EXPECT_EQ(1, writer->writeObject(&array, &array));
    writer.reset();
    const std::string result(bytes, size);
    std::free(bytes);
    return result;
}

std::unique_ptr<fxTranscriber> readerOf(std::string& bytes) {
    fxInitializeToolkit();
    return std::unique_ptr<fxTranscriber>(fxTranscriber::getReader(
        new fxStdioStream(::fmemopen(&bytes[0], bytes.size(), "r"), fxStream::readStream)));
}

std::string typeRecord() { return record(2, word(2) + std::string("ARRAY\0", 6), ""); }
}  // namespace

TEST(fxStrArrayXDR, streamHoldsLengthElementSizeAndTheTextsAsBlocks) {
    fxStrArray array = arrayOf({"ab", "", "c"});
    ASSERT_EQ(32u, array.getMaxLen());
    // Object 1 of type 2; blocks 3 and 4, of which the later comes first.
    const std::string expected =
        header() + typeRecord() +
        record(10, word(1) + word(2) + word(1), lengthAndSize(24) + host<std::uint32_t>(3)) +
        record(3, word(3) + word(3), host<std::uint32_t>(1) + host<std::uint32_t>(2)) +
        record(3, word(4) + word(2), "") + record(5, word(4) + word(2), std::string("c\0", 2)) +
        record(5, word(3) + word(3), std::string("ab\0", 3));
    EXPECT_EQ(testing::PrintToString(expected), testing::PrintToString(written(array)));
}

TEST(fxStrArrayXDR, streamOfAnEmptyArrayHoldsLengthAndElementSize) {
    fxStrArray array;
    array.setMaxLength(5);
    const std::string expected =
        header() + typeRecord() + record(10, word(1) + word(2) + word(1), lengthAndSize(0));
    EXPECT_EQ(testing::PrintToString(expected), testing::PrintToString(written(array)));
}

TEST(fxStrArrayXDR, streamIsReadBack) {
    const std::initializer_list<const char*> cases[] = {
        {}, {""}, {"a"}, {"", ""}, {"ab", "", "c"}, {"a", "b", "c", "d", "e", "f", "g", "h", "i"}};
    for (const auto& texts : cases) {
        fxStrArray array = arrayOf(texts);
        SCOPED_TRACE(testing::PrintToString(textsOf(array)));
        std::string bytes = written(array);
        const auto reader = readerOf(bytes);
        ASSERT_NE(nullptr, reader);
        std::unique_ptr<fxStrArray> copy(
            static_cast<fxStrArray*>(reader->readObject(fxStrArray_type)));
        ASSERT_NE(nullptr, copy);
        EXPECT_EQ(textsOf(array), textsOf(*copy));
        EXPECT_EQ(copy->getLen(), copy->getMaxLen()) << "capacity equal to length";
        EXPECT_EQ(&fxStrArray_type, &copy->getTypeObj());
        if (copy->length() != 0)
            (*copy)[0] = "a text that needs a longer buffer";
    }
}

TEST(fxStrArrayXDR, embeddedNulsAndLongTextsAreReadBack) {
    fxStrArray array;
    array.append(fxStr("a\0b", 3));
    array.append(fxStr(std::string(5000, 'x').c_str()));
    std::string bytes = written(array);
    const auto reader = readerOf(bytes);
    ASSERT_NE(nullptr, reader);
    std::unique_ptr<fxStrArray> copy(static_cast<fxStrArray*>(reader->readObject(fxStrArray_type)));
    ASSERT_NE(nullptr, copy);
    EXPECT_EQ(textsOf(array), textsOf(*copy));
}

TEST(fxStrArrayXDR, streamThatClaimsMoreThanItHoldsTakesNoMemory) {
    std::string bytes = header() + record(0, "", lengthAndSize(1U << 30)) +
                        record(0, "", host<std::uint32_t>(1) + host<std::uint32_t>(1));
    const auto reader = readerOf(bytes);
    ASSERT_NE(nullptr, reader);
    const std::size_t before = residentBytes();
    fxStrArray array;
    EXPECT_EQ(0, array.xdr(*reader));
    EXPECT_LT(residentBytes() - before, std::size_t(16) << 20);
}
