#include "kelvofxds/str/fxStackBuffer.h"

#include <csignal>
#include <cstddef>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/observe.h"

struct fxStackBufferLayout {
    static_assert(sizeof(fxStackBuffer) == 1016, "1000 bytes and four words");
    static_assert(offsetof(fxStackBuffer, inlineBuffer) == 0, "the inline bytes come first");
    static_assert(sizeof(fxStackBuffer::inlineBuffer) == 1000, "bytes");
    static_assert(offsetof(fxStackBuffer, next) == 1000, "where the next byte goes");
    static_assert(offsetof(fxStackBuffer, end) == 1004, "the end of the storage");
    static_assert(offsetof(fxStackBuffer, base) == 1008, "the start of the storage");
    static_assert(offsetof(fxStackBuffer, growIncrement) == 1012, "the increment comes last");
    static_assert(std::is_same<decltype(fxStackBuffer::growIncrement), unsigned int>::value, "");

    static bool isInline(const fxStackBuffer& b) { return b.base == b.inlineBuffer; }
    static const char* inlineBytes(const fxStackBuffer& b) { return b.inlineBuffer; }
    static unsigned int increment(const fxStackBuffer& b) { return b.growIncrement; }
    static bool isInOrder(const fxStackBuffer& b) { return b.base <= b.next && b.next <= b.end; }
};

namespace {
using Layout = fxStackBufferLayout;

static_assert(!std::is_polymorphic<fxStackBuffer>::value, "no virtual operations");
static_assert(!std::is_copy_assignable<fxStackBuffer>::value, "it would share the heap block");
static_assert(std::is_copy_constructible<fxStackBuffer>::value, "");
static_assert(std::is_default_constructible<fxStackBuffer>::value, "the increment is optional");
static_assert(
    std::is_same<decltype(std::declval<const fxStackBuffer&>().getBase()), const char*>::value,
    "the content is read-only");

std::string pattern(unsigned int n) {
    std::string bytes;
    for (unsigned int i = 0; i < n; ++i)
        bytes += static_cast<char>(i * 7 + i / 251);
    return bytes;
}

void putBytes(fxStackBuffer& buffer, const std::string& bytes) {
    buffer.put(bytes.data(), static_cast<unsigned int>(bytes.size()));
}

// Content and capacity, and what holds of every buffer.
void expectBuffer(const std::string& content, unsigned int capacity, const fxStackBuffer& b) {
    EXPECT_EQ(content, std::string(b.getBase(), b.length()));
    EXPECT_EQ(capacity, b.capacity());
    EXPECT_TRUE(Layout::isInOrder(b));
    EXPECT_EQ(capacity <= 1000, Layout::isInline(b));
    if (capacity > 1000) {
        EXPECT_TRUE(allocatedFor(b.getBase(), capacity));
    }
}
}  // namespace

// Construction

TEST(fxStackBuffer, startsEmptyAndInline) {
    const struct {
        unsigned int given, increment;
    } cases[] = {{0, 500},   {1, 1},       {499, 499},
                 {500, 500}, {2000, 2000}, {0xFFFFFFFFu, 0xFFFFFFFFu}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.given);
        const fxStackBuffer buffer(c.given);
        expectBuffer("", 1000, buffer);
        EXPECT_EQ(c.increment, Layout::increment(buffer));
        EXPECT_EQ(Layout::inlineBytes(buffer), buffer.getBase());
    }
    const fxStackBuffer buffer;
    expectBuffer("", 1000, buffer);
    EXPECT_EQ(500u, Layout::increment(buffer));
}

// addc

TEST(fxStackBuffer, addcAppendsBytesOfEveryValueWithoutATerminator) {
    fxStackBuffer buffer;
    std::string expected;
    for (int i = 0; i < 256; ++i) {
        buffer.addc(static_cast<char>(i));
        expected += static_cast<char>(i);
    }
    expectBuffer(expected, 1000, buffer);
}

TEST(fxStackBuffer, addcOnAFullBufferGrowsByTheIncrement) {
    const struct {
        unsigned int increment, length, capacity;
    } cases[] = {{0, 999, 1000},     {0, 1000, 1000},   {0, 1001, 1500}, {0, 1500, 1500},
                 {0, 1501, 2000},    {0, 2001, 2500},   {1, 1000, 1000}, {1, 1001, 1001},
                 {1, 1002, 1002},    {7, 1007, 1007},   {7, 1008, 1014}, {3000, 1001, 4000},
                 {3000, 4000, 4000}, {3000, 4001, 7000}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.length << " by " << c.increment);
        const std::string bytes = pattern(c.length);
        fxStackBuffer buffer(c.increment);
        for (char byte : bytes)
            buffer.addc(byte);
        expectBuffer(bytes, c.capacity, buffer);
    }
}

// put

TEST(fxStackBuffer, putGrowsByWhatDoesNotFitAndByTheIncrementAtLeast) {
    const struct {
        unsigned int increment, first, second, capacity;
    } cases[] = {
        {0, 0, 0, 1000},       {0, 0, 1, 1000},       {0, 0, 1000, 1000},   {0, 0, 1001, 1500},
        {0, 0, 1500, 1500},    {0, 0, 1501, 1501},    {0, 0, 2000, 2000},   {0, 0, 10000, 10000},
        {0, 600, 400, 1000},   {0, 600, 401, 1500},   {0, 600, 901, 1501},  {0, 1000, 1, 1500},
        {0, 1000, 500, 1500},  {0, 1000, 501, 1501},  {0, 1001, 499, 1500}, {0, 1001, 500, 2000},
        {0, 1001, 5000, 6001}, {1, 0, 1001, 1001},    {1, 0, 1010, 1010},   {1, 1000, 10, 1010},
        {4000, 0, 1001, 5000}, {4000, 0, 6000, 6000}, {0, 2000, 1, 2500}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message()
                     << c.first << " then " << c.second << " by " << c.increment);
        const std::string bytes = pattern(c.first + c.second);
        fxStackBuffer buffer(c.increment);
        putBytes(buffer, bytes.substr(0, c.first));
        putBytes(buffer, bytes.substr(c.first));
        expectBuffer(bytes, c.capacity, buffer);
    }
}

TEST(fxStackBuffer, smallPutsGrowOncePerIncrement) {
    fxStackBuffer buffer;
    std::string expected;
    std::vector<unsigned int> capacities = {buffer.capacity()};
    for (int i = 0; i < 1000; ++i) {
        buffer.put("abc", 3);
        expected += "abc";
        if (buffer.capacity() != capacities.back())
            capacities.push_back(buffer.capacity());
    }
    const std::vector<unsigned int> grown = {1000, 1500, 2000, 2500, 3000};
    EXPECT_EQ(grown, capacities);
    expectBuffer(expected, 3000, buffer);
}

TEST(fxStackBuffer, putOfNothingFromNullIsNothing) {
    fxStackBuffer buffer;
    buffer.put(nullptr, 0);
    expectBuffer("", 1000, buffer);
    putBytes(buffer, pattern(1000));
    buffer.put(nullptr, 0);
    expectBuffer(pattern(1000), 1000, buffer);
}

TEST(fxStackBuffer, putCanAppendTheBuffersOwnBytes) {
    const struct {
        unsigned int length, from, n, capacity;
    } cases[] = {{10, 0, 10, 1000},     {500, 0, 500, 1000},   {600, 0, 600, 1500},
                 {600, 100, 401, 1500}, {1000, 0, 1000, 2000}, {1000, 999, 1, 1500},
                 {1500, 0, 1500, 3000}, {1500, 1499, 1, 2000}, {1200, 100, 200, 1500}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.n << " from " << c.from << " of " << c.length);
        const std::string bytes = pattern(c.length);
        fxStackBuffer buffer;
        putBytes(buffer, bytes);
        buffer.put(buffer.getBase() + c.from, c.n);
        expectBuffer(bytes + bytes.substr(c.from, c.n), c.capacity, buffer);
    }
}

TEST(fxStackBuffer, addcAndPutMix) {
    fxStackBuffer buffer;
    putBytes(buffer, pattern(999));
    buffer.addc('x');
    expectBuffer(pattern(999) + "x", 1000, buffer);
    buffer.addc('y');
    buffer.put("zz", 2);
    expectBuffer(pattern(999) + "xyzz", 1500, buffer);
}

// grow

TEST(fxStackBuffer, deliberateGrowAddsToTheCapacityWhateverRoomThereIs) {
    const struct {
        unsigned int increment, length, n, capacity;
    } cases[] = {{0, 0, 0, 1500},      {0, 0, 1, 1500},      {0, 0, 499, 1500}, {0, 0, 500, 1500},
                 {0, 0, 501, 1501},    {0, 0, 3000, 4000},   {0, 10, 1, 1500},  {0, 1000, 1, 1500},
                 {1, 0, 0, 1001},      {1, 0, 1, 1001},      {1, 0, 2, 1002},   {0, 1001, 1, 2000},
                 {0, 1001, 600, 2100}, {3000, 5, 2999, 4000}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.n << " at " << c.length << " by " << c.increment);
        fxStackBuffer buffer(c.increment);
        putBytes(buffer, pattern(c.length));
        buffer.grow(c.n);
        expectBuffer(pattern(c.length), c.capacity, buffer);
    }
}

TEST(fxStackBuffer, growKeepsAddingToAHeapBlock) {
    fxStackBuffer buffer;
    putBytes(buffer, pattern(700));
    for (unsigned int capacity : {1500u, 2000u, 2500u}) {
        buffer.grow(1);
        expectBuffer(pattern(700), capacity, buffer);
    }
    putBytes(buffer, pattern(1800));
    expectBuffer(pattern(700) + pattern(1800), 2500, buffer);
}

TEST(fxStackBuffer, theFirstGrowthTakesAllInlineBytesAlong) {
    fxStackBuffer buffer;
    const std::string bytes = pattern(1000);
    putBytes(buffer, bytes);
    buffer.reset();
    buffer.put("new", 3);
    buffer.grow(1);
    EXPECT_EQ(3u, buffer.length());
    EXPECT_EQ("new" + bytes.substr(3), std::string(buffer.getBase(), 1000));
}

// Copies

TEST(fxStackBuffer, aCopyHasTheCapacityTheContentAndTheIncrement) {
    const struct {
        unsigned int increment, length, grown, capacity;
    } cases[] = {{0, 0, 0, 1000},     {0, 10, 0, 1000},    {0, 1000, 0, 1000}, {0, 1001, 0, 1500},
                 {0, 0, 1, 1500},     {0, 3, 1, 1500},     {0, 1500, 0, 1500}, {1, 1001, 0, 1001},
                 {77, 1077, 0, 1077}, {77, 5, 5000, 6000}, {0, 2000, 0, 2000}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.length << " of " << c.capacity);
        fxStackBuffer original(c.increment);
        putBytes(original, pattern(c.length));
        if (c.grown != 0)
            original.grow(c.grown);
        const fxStackBuffer copy(original);
        expectBuffer(pattern(c.length), c.capacity, copy);
        EXPECT_EQ(Layout::increment(original), Layout::increment(copy));
        EXPECT_NE(original.getBase(), copy.getBase());
        expectBuffer(pattern(c.length), c.capacity, original);
    }
}

TEST(fxStackBuffer, aCopyGrowsApartFromItsSource) {
    for (unsigned int length : {0u, 999u, 1000u, 1500u}) {
        SCOPED_TRACE(length);
        fxStackBuffer original(100);
        putBytes(original, pattern(length));
        fxStackBuffer copy(original);
        while (copy.length() < copy.capacity())
            copy.addc('c');
        const unsigned int full = copy.capacity();
        copy.addc('!');
        EXPECT_EQ(full + 100, copy.capacity());
        EXPECT_EQ(pattern(length) + std::string(full - length, 'c') + "!",
                  std::string(copy.getBase(), copy.length()));
        EXPECT_EQ(pattern(length), std::string(original.getBase(), original.length()));
    }
}

// Access

TEST(fxStackBuffer, resetEmptiesAndKeepsTheStorage) {
    fxStackBuffer buffer;
    buffer.put("abc", 3);
    buffer.reset();
    expectBuffer("", 1000, buffer);
    putBytes(buffer, pattern(1001));
    const char* block = buffer.getBase();
    buffer.reset();
    expectBuffer("", 1500, buffer);
    EXPECT_EQ(block, buffer.getBase());
    buffer.put("xy", 2);
    expectBuffer("xy", 1500, buffer);
}

// A capacity that no longer fits 32 bits

namespace {
const char* const tooLarge = "^fxStackBuffer: size too large\n$";
}  // namespace

TEST(fxStackBuffer, tryAddcAppendsAsAddcDoes) {
    fxStackBuffer buffer(7);
    for (unsigned int i = 0; i < 1010; ++i)
        ASSERT_TRUE(buffer.tryAddc(static_cast<char>(i)));
    EXPECT_EQ(1010u, buffer.length());
    EXPECT_EQ(1014u, buffer.capacity());
    for (unsigned int i = 0; i < 1010; ++i)
        ASSERT_EQ(static_cast<char>(i), buffer.getBase()[i]);
}

TEST(fxStackBuffer, tryAddcChangesNothingWithoutMemory) {
    for (unsigned int increment : {0xFFFFFFFFu, 0xE0000000u}) {
        fxStackBuffer buffer(increment);
        for (unsigned int i = 0; i < 1000; ++i)
            ASSERT_TRUE(buffer.tryAddc('x'));
        EXPECT_FALSE(buffer.tryAddc('y'));
        EXPECT_EQ(1000u, buffer.length());
        EXPECT_EQ(1000u, buffer.capacity());
        EXPECT_EQ('x', buffer.getBase()[999]);
    }
}

TEST(fxStackBufferDeathTest, growthPastTheAddressSpaceEndsTheProcess) {
    EXPECT_EXIT(
        {
            fxStackBuffer buffer;
            buffer.grow(0xFFFFFFFFu);
        },
        testing::KilledBySignal(SIGABRT), tooLarge);
    EXPECT_EXIT(
        {
            fxStackBuffer buffer;
            buffer.grow(0xFFFFFFFFu - 999);  // to exactly 2^32
        },
        testing::KilledBySignal(SIGABRT), tooLarge);
    EXPECT_EXIT(
        {
            fxStackBuffer buffer(0xFFFFFFFFu);
            buffer.grow(0);
        },
        testing::KilledBySignal(SIGABRT), tooLarge);
}

TEST(fxStackBufferDeathTest, addcPastTheAddressSpaceEndsTheProcess) {
    EXPECT_EXIT(
        {
            fxStackBuffer buffer(0xFFFFFFFFu);
            for (int i = 0; i < 1001; ++i)
                buffer.addc('x');
        },
        testing::KilledBySignal(SIGABRT), tooLarge);
}

TEST(fxStackBufferDeathTest, putPastTheAddressSpaceEndsTheProcess) {
    EXPECT_EXIT(
        {
            fxStackBuffer buffer(0xFFFFFFFFu);
            putBytes(buffer, pattern(1001));
        },
        testing::KilledBySignal(SIGABRT), tooLarge);
}

// A sanitizer's allocator says something of its own when it returns null.
TEST(fxStackBufferDeathTest, growthPastTheMemoryThereIsEndsTheProcess) {
    EXPECT_EXIT(
        {
            fxStackBuffer buffer;
            buffer.grow(0xF0000000u);
        },
        testing::KilledBySignal(SIGABRT), "out of memory\n$");
}
