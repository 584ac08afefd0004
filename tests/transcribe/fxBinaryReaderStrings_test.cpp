// fxBinaryReaderStrings_test.cpp - blocks that become the buffers of strings.

#include <string>

#include <gtest/gtest.h>

#include "tests/support/binaryReading.h"

namespace {
// An object that is one string, whose block has number 3.
unsigned char xdrText(ScriptedObject& self, fxTranscriber& t) { return self.text.xdr(t); }

std::string textOf(unsigned int size) {
    return hex("02 02000000 'Obj' 00 | 4a 04 01000000 02000000 01000000") + host(size) +
           pointerTo(3);
}
}  // namespace

TEST(fxBinaryReaderStrings, stringTakesItsBlockAsItsBuffer) {
    const ReadScript script(xdrText);
    Reading r(textOf(4) + bytesBody(3, 4, hex("'abc' 00")));
    ScriptedObject* root = r.root();
    ASSERT_NE(nullptr, root);
    EXPECT_TRUE(root->text == "abc");
    EXPECT_EQ(root->text.c_str(), r.block(3));
    root->text.append("def");  // in the allocator's own terms
    EXPECT_TRUE(root->text == "abcdef");
}

TEST(fxBinaryReaderStrings, emptyStringIsItsSizeAlone) {
    const ReadScript script([](ScriptedObject& self, fxTranscriber& t) {
        return static_cast<unsigned char>(self.text.xdr(t) && t.xdr(self.numbers, 1));
    });
    Reading r(hex("02 02000000 'Obj' 00 | 4a 08 01000000 02000000 01000000") + host(1) + host(5));
    const ScriptedObject* root = r.root();
    ASSERT_NE(nullptr, root);
    EXPECT_TRUE(root->text == "");
    EXPECT_EQ(&fxStr::emptyString, root->text.c_str());
    EXPECT_EQ(5, root->numbers[0]);
}

TEST(fxBinaryReaderStrings, stringsOfAnArrayAreReadInTurn) {
    fxStr strings[4];
    const ReadScript script(
        [&strings](ScriptedObject&, fxTranscriber& t) { return t.xdr(strings, 4); });
    Reading r(hex("02 02000000 'Obj' 00 | 4a 04 01000000 02000000 01000000") + host(2) +
              hex("43 08 03000000 02000000") + host(1) + host(3) + hex("43 04 04000000 03000000") +
              host(1) + bytesBody(4, 3, hex("'bc' 00")) + bytesBody(3, 2, hex("'a' 00")));
    ASSERT_NE(nullptr, r.root());
    EXPECT_TRUE(strings[0] == "a" && strings[1] == "" && strings[2] == "bc" && strings[3] == "");
}

TEST(fxBinaryReaderStrings, stringArrayStopsAtTheFirstFailure) {
    fxStr strings[3] = {"", "", "z"};
    Reading r(hex("40 08") + host(1) + host(0));
    EXPECT_EQ(0, r.reader.xdr(strings, 3));
    EXPECT_TRUE(strings[2] == "z");
}

TEST(fxBinaryReaderStrings, stringOfSizeZeroFailsAndIsEmpty) {
    Reading r(hex("40 04") + host(0));
    fxStr text;
    EXPECT_FALSE(text.xdr(r.reader));
    EXPECT_TRUE(text == "");
}

TEST(fxBinaryReaderStrings, stringThatFailsIsEmpty) {
    const std::string tails[] = {"", hex("03 0300"), hex("04 03000000 00000000")};
    for (const std::string& tail : tails) {
        Reading r(hex("40 04") + host(7) + tail);
        fxStr text;
        EXPECT_FALSE(text.xdr(r.reader)) << dump(tail);
        EXPECT_TRUE(text == "");
    }
}

TEST(fxBinaryReaderStrings, stringThatWaitsCanBeDestroyed) {
    Reading r(hex("40 04") + host(7) + pointerTo(3));
    {
        fxStr text;
        EXPECT_TRUE(text.xdr(r.reader));
    }
    r.reader.reset();
}

TEST(fxBinaryReaderStrings, stringEndsWhereItsSizeSaysWhateverTheBlock) {
    const struct {
        unsigned int size;
        std::string block;
        std::string text;
    } cases[] = {
        {4, hex("'abc' 00"), "abc"},
        {4, "abcd", "abc"},                            // not NUL-terminated
        {4, "abcdefgh", "abc"},                        // longer
        {4, hex("'a' 00 'c' 00"), hex("'a' 00 'c'")},  // a NUL inside
        {6, "abc", hex("'abc' 00 00")},                // shorter
        {4, "", hex("00 00 00")},                      // nothing at all
        {4097, "a", "a" + std::string(4095, '\0')},    // as short as it may be
        {600, run(599) + '\0', run(599)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.size << " from " << c.block.size());
        const ReadScript script(xdrText);
        Reading r(textOf(c.size) +
                  bytesBody(3, static_cast<unsigned int>(c.block.size()), c.block));
        ScriptedObject* root = r.root();
        ASSERT_NE(nullptr, root);
        EXPECT_EQ(c.size - 1, root->text.length());
        EXPECT_EQ(dump(c.text), dump(std::string(root->text.c_str(), root->text.length())));
        EXPECT_EQ('\0', root->text.c_str()[c.size - 1]);
        root->text.append("more");
        EXPECT_EQ(c.size + 3, root->text.length());
    }
}

TEST(fxBinaryReaderStrings, stringFarLongerThanItsBlockGivesNull) {
    for (const unsigned int size : {4098u, 100000u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
        SCOPED_TRACE(size);
        const ReadScript script(xdrText);
        Reading r(textOf(size) + bytesBody(3, 1, "a"));
        EXPECT_EQ(nullptr, r.root());
        EXPECT_EQ(nullptr, r.reader.alreadyRead(3));
    }
}

TEST(fxBinaryReaderStrings, blockBecomesOneStringOnly) {
    fxStr second;
    const ReadScript script([&second](ScriptedObject& self, fxTranscriber& t) {
        return static_cast<unsigned char>(self.text.xdr(t) && second.xdr(t));
    });
    Reading r(hex("02 02000000 'Obj' 00 | 4a 04 01000000 02000000 01000000") + host(4) +
              hex("43 04 03000000 04000000") + host(4) + pointerTo(3) +
              bytesBody(3, 4, hex("'abc' 00")));
    EXPECT_EQ(nullptr, r.root());
    EXPECT_TRUE(second == "abc") << "the one that was awaited first";
}

TEST(fxBinaryReaderStrings, takenBlockIsNoStringAgain) {
    const ReadScript script(xdrText);
    Reading r(textOf(4) + bytesBody(3, 4, hex("'abc' 00")) + hex("40 04") + host(4) +
              hex("04 03000000 00000000"));
    ScriptedObject* root = r.root();
    ASSERT_NE(nullptr, root);
    fxStr second;
    EXPECT_FALSE(second.xdr(r.reader));
    EXPECT_TRUE(second == "");
    EXPECT_TRUE(root->text == "abc");
}

TEST(fxBinaryReaderStrings, blockIsNotSharedBetweenAStringAndAnArray) {
    const ReadScript script([](ScriptedObject& self, fxTranscriber& t) {
        return static_cast<unsigned char>(t.xdr(&self.blocks[0], 4) && self.text.xdr(t));
    });
    Reading r(objAndHead() + hex("43 04 03000000 04000000") + host(4) + pointerTo(3) +
              bytesBody(3, 4, hex("'abc' 00")));
    EXPECT_EQ(nullptr, r.root());
    ASSERT_EQ(1u, ReadScript::made().size());
    EXPECT_EQ(nullptr, ReadScript::made()[0]->blocks[0]);
}

TEST(fxBinaryReaderStrings, arraysBlockIsNoString) {
    Reading r(bytesBody(3, 4, hex("'abc' 00")) + hex("40 04") + host(4) +
              hex("04 03000000 00000000"));
    char* block = reinterpret_cast<char*>(r.root());
    fxStr text;
    EXPECT_FALSE(text.xdr(r.reader));
    EXPECT_TRUE(text == "");
    delete[] block;
}

// One number for two blocks that become strings: the second one is a block of
// its own, which its string may have although the first one is taken.
TEST(fxBinaryReaderStrings, numberUsedTwiceGivesEachStringABlockOfItsOwn) {
    const ReadScript script([](ScriptedObject& self, fxTranscriber& t) {
        return static_cast<unsigned char>(self.text.xdr(t) && xdrBlocks(1, 1)(self, t));
    });
    const auto object = [](unsigned int number, unsigned int other) {
        return hex("4a 04") + word(number) + hex("02000000 01000000") + host(4) + pointerTo(3) +
               pointerTo(other);
    };
    Reading r(hex("02 02000000 'Obj' 00") + object(1, 5) + bytesBody(5, 1, "x") +
              bytesBody(3, 4, hex("'abc' 00")) + object(2, 6) + bytesBody(3, 4, hex("'def' 00")) +
              bytesBody(6, 1, "y"));
    ScriptedObject* first = r.root();
    ScriptedObject* second = r.root();
    ASSERT_TRUE(first && second);
    EXPECT_TRUE(first->text == "abc");
    EXPECT_TRUE(second->text == "def");
    EXPECT_EQ(second->text.c_str(), r.block(3));
    first->text.append("!");
    second->text.append("?");
    EXPECT_TRUE(first->text == "abc!");
    EXPECT_TRUE(second->text == "def?");
    delete[] first->blocks[0];
    delete[] second->blocks[0];
}

// A string that has its block waits no more: what comes later under the number
// is a block like any other, which is freed as an array.
TEST(fxBinaryReaderStrings, laterBodyThatNoStringWaitsForIsAnArrays) {
    const ReadScript script(xdrText);
    Reading r(textOf(4) + bytesBody(3, 4, hex("'abc' 00")) + bytesBody(3, 2, "xy") + hex("40 04") +
              host(2) + hex("04 03000000 00000000"));
    const ScriptedObject* root = r.root();
    ASSERT_NE(nullptr, root);
    char* block = reinterpret_cast<char*>(r.root());
    ASSERT_NE(nullptr, block);
    EXPECT_EQ("xy", std::string(block, 2));
    fxStr text;
    EXPECT_FALSE(text.xdr(r.reader)) << "it is no string's";
    EXPECT_TRUE(root->text == "abc");
    delete[] block;
}
