// The writer gives references four bytes of arguments and the reader takes
// eight: what that does to graphs that hold any, and the other asymmetries
// between the two.

#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/transcribe/fxBinaryReader.h"
#include "kelvofxds/transcribe/fxBinaryWriter.h"
#include "tests/support/memoryStream.h"
#include "tests/support/scriptedObject.h"
#include "tests/support/streamBytes.h"

namespace {
using Script = ScriptedObject::Script;

std::string written(ScriptedObject& root) {
    MemoryStream stream;
    fxBinaryWriter writer(&stream);
    EXPECT_EQ(1, writer.writeObject(&root, &root));
    return stream.written;
}

// Reads `bytes` with objects that run `script`. Used in death tests too, so it
// frees nothing that the objects point to.
ScriptedObject* readBack(const std::string& bytes) {
    MemoryStream stream(bytes);
    fxBinaryReader reader(&stream, 0x1122, 0x33445566, "ieee");
    return static_cast<ScriptedObject*>(reader.readObject(objType));
}

#define EXPECT_FATAL(bytes, message) \
    EXPECT_EXIT(readBack(bytes), testing::KilledBySignal(SIGABRT), message)

unsigned char xdrTwoBlocks(ScriptedObject& self, fxTranscriber& t) {
    return t.xdr(&self.blocks[0], 4) && t.xdr(&self.blocks[1], 4);
}
unsigned char xdrOneLink(ScriptedObject& self, fxTranscriber& t) { return self.xdrLink(t, 0); }
unsigned char xdrTwoLinks(ScriptedObject& self, fxTranscriber& t) {
    return self.xdrLink(t, 0) && self.xdrLink(t, 1);
}
unsigned char xdrNothing(ScriptedObject&, fxTranscriber&) { return 1; }
}  // namespace

TEST(writtenThenMisread, scalarsStringsFirstBlocksAndNullObjectsAreReadBack) {
    const Script contents = [](ScriptedObject& self, fxTranscriber& t) {
        return static_cast<unsigned char>(t.xdr(self.numbers, 1) && self.text.xdr(t) &&
                                          t.xdr(&self.blocks[0], 4) && self.xdrLink(t, 0) &&
                                          t.xdr(self.numbers + 1, 1));
    };
    char block[] = {'a', 'b', 'c', 'd'};
    ScriptedObject root(objType, contents);
    root.numbers[0] = 5;
    root.numbers[1] = 6;
    root.text = "text";
    root.blocks[0] = block;
    const std::string bytes = written(root);

    const ReadScript script(contents);
    const ScriptedObject* read = readBack(bytes);
    ASSERT_NE(nullptr, read);
    EXPECT_TRUE(read->numbers[0] == 5 && read->numbers[1] == 6);
    EXPECT_TRUE(read->text == "text");
    EXPECT_EQ("abcd", std::string(read->blocks[0], 4));
    EXPECT_EQ(nullptr, read->links[0]);
    delete[] read->blocks[0];
}

TEST(writtenThenMisreadDeathTest, deliberateNullBlockPointer) {
    ScriptedObject root(objType, xdrTwoBlocks);
    const std::string bytes = written(root);
    const ReadScript script(xdrTwoBlocks);
    EXPECT_FATAL(bytes, "^format error\n$");
}

// The second word of the reference is 45 04 03 00, the head of the body that
// follows; what is left of it starts with a zero byte, a record of tag 0.
TEST(writtenThenMisreadDeathTest, deliberateSecondPointerToABlock) {
    char block[] = {'a', 'b', 'c', 'd'};
    ScriptedObject root(objType, xdrTwoBlocks);
    root.blocks[0] = root.blocks[1] = block;
    const std::string bytes = written(root);
    EXPECT_EQ(dump(hex("02 02000000 'Obj' 00 0a 01000000 02000000 01000000") +
                   hex("03 03000000 04000000 | 04 03000000 | 45 04 03000000 04000000 'abcd'")),
              dump(bytes));
    const ReadScript script(xdrTwoBlocks);
    EXPECT_FATAL(bytes, "^XXX baddest news\n$");
}

// Here the second word takes the head of the data record and half of its
// payload; the rest are two empty records, and the block's body passes for the
// data.
TEST(writtenThenMisread, deliberateSecondPointerToABlockMayEndInNull) {
    const Script contents = [](ScriptedObject& self, fxTranscriber& t) {
        return static_cast<unsigned char>(xdrTwoBlocks(self, t) && t.xdr(self.numbers, 1));
    };
    char block[] = {'a', 'b', 'c', 'd'};
    ScriptedObject root(objType, contents);
    root.blocks[0] = root.blocks[1] = block;
    const std::string bytes = written(root);
    const ReadScript script(contents);
    EXPECT_EQ(nullptr, readBack(bytes));
    ASSERT_EQ(1u, ReadScript::made().size());
    EXPECT_EQ("abcd", host(ReadScript::made()[0]->numbers[0]));
}

// The second word of the pointer is 0a 03 00 00, the head of the child's body.
TEST(writtenThenMisreadDeathTest, deliberateObjectPointerFollowedByARecord) {
    ScriptedObject child(objType, xdrOneLink);
    ScriptedObject root(objType, xdrOneLink);
    root.links[0] = &child;
    const std::string bytes = written(root);
    EXPECT_EQ(dump(hex("02 02000000 'Obj' 00 0a 01000000 02000000 01000000") +
                   hex("0b 03000000 | 0a 03000000 02000000 01000000 | 01")),
              dump(bytes));
    {
        const ReadScript script(xdrOneLink);
        EXPECT_FATAL(bytes, "^XXX baddest news\n$");
    }
    const ReadScript script(xdrTwoLinks);
    EXPECT_FATAL(bytes, "^XXX bad news!\n$") << "an object that reads on";
}

// The second word of the pointer is the first number; the payload that is left
// is the second number and four bytes of what follows.
TEST(writtenThenMisreadDeathTest, deliberateObjectPointerFollowedByData) {
    ScriptedObject child(objType, xdrNothing);
    ScriptedObject root(objType, [](ScriptedObject& self, fxTranscriber& t) {
        return static_cast<unsigned char>(self.xdrLink(t, 0) && t.xdr(self.numbers, 2));
    });
    root.links[0] = &child;
    root.numbers[0] = 0x01020304;
    root.numbers[1] = 0x05060708;
    const std::string bytes = written(root);
    EXPECT_EQ(dump(hex("02 02000000 'Obj' 00 0a 01000000 02000000 01000000 4b 08 03000000") +
                   host(0x01020304) + host(0x05060708) + hex("0a 03000000 02000000 01000000")),
              dump(bytes));
    const ReadScript script([](ScriptedObject& self, fxTranscriber& t) {
        const bool shifted = self.xdrLink(t, 0) && t.xdr(self.numbers, 2) &&
                             self.numbers[0] == 0x05060708 &&
                             host(self.numbers[1]) == hex("0a 03 00 00");
        return static_cast<unsigned char>(shifted);
    });
    EXPECT_FATAL(bytes, "^XXX baddest news\n$") << "not a failure of the object";
}

TEST(writtenThenMisreadDeathTest, deliberateObjectPointerOfANewType) {
    ScriptedObject child(subType);
    ScriptedObject root(objType, xdrOneLink);
    root.links[0] = &child;
    const std::string bytes = written(root);
    const ReadScript script(xdrOneLink);
    EXPECT_FATAL(bytes, "^XXX bad news!\n$");
}

TEST(writtenThenMisreadDeathTest, deliberateReferenceToAKnownObject) {
    ScriptedObject root(objType, xdrOneLink);
    root.links[0] = &root;
    const std::string bytes = written(root);
    EXPECT_EQ(dump(hex("02 02000000 'Obj' 00 0a 01000000 02000000 01000000 0c 01000000")),
              dump(bytes));
    const ReadScript script(xdrOneLink);
    EXPECT_FATAL(bytes, "^XXX error handling is missing\n$") << "the second word is missing";
}

TEST(writtenThenMisreadDeathTest, deliberateEmbeddedObjectAtTheEnd) {
    ScriptedObject part(
        subType, [](ScriptedObject& self, fxTranscriber& t) { return t.xdr(self.numbers, 2); });
    const Script contents = [&part](ScriptedObject& self, fxTranscriber& t) {
        return t.xdr(subType, &self, &part);
    };
    ScriptedObject root(objType, contents);
    const std::string bytes = written(root);
    const ReadScript script(contents);
    EXPECT_FATAL(bytes, "^XXX error handling is missing\n$");
}

TEST(writtenThenMisread, deliberateEmbeddedObjectsContentsAreShifted) {
    ScriptedObject part(
        subType, [](ScriptedObject& self, fxTranscriber& t) { return t.xdr(self.numbers, 2); });
    const Script contents = [&part](ScriptedObject& self, fxTranscriber& t) {
        return t.xdr(subType, &self, &part);
    };
    part.numbers[0] = 0x01020304;
    part.numbers[1] = 0x05060708;
    ScriptedObject root(objType, contents);
    const std::string bytes = written(root) + hex("0a 0b 0c 0d");
    const ReadScript script(contents);
    ASSERT_NE(nullptr, readBack(bytes));
    EXPECT_EQ(0x05060708, part.numbers[0]);
    EXPECT_EQ(dump(hex("0a 0b 0c 0d")), dump(host(part.numbers[1])));
}

TEST(writtenThenMisreadDeathTest, deliberateReferenceToAnEmbeddedObject) {
    const Script contents = [](ScriptedObject& self, fxTranscriber& t) {
        return t.xdr(objType, nullptr, &self);
    };
    ScriptedObject root(objType, contents);
    const std::string bytes = written(root);
    EXPECT_EQ(dump(hex("02 02000000 'Obj' 00 0a 01000000 02000000 01000000 0e 01000000")),
              dump(bytes));
    const ReadScript script(contents);
    EXPECT_FATAL(bytes, "^XXX error handling is missing\n$");
}

TEST(writtenThenMisreadDeathTest, deliberateMixedVersions) {
    MemoryStream out;
    {
        fxBinaryWriter writer(&out);
        ScriptedObject one(objType);
        ScriptedObject two(twoType);
        EXPECT_EQ(1, writer.writeObject(&one, &one));
        EXPECT_EQ(1, writer.writeObject(&two, &two));
        EXPECT_EQ(1, writer.writeObject(&one, &one));
    }
    const ReadScript script(xdrNothing);
    MemoryStream in(out.written);
    fxBinaryReader reader(&in, 0x1122, 0x33445566, "ieee");
    EXPECT_NE(nullptr, reader.readObject(objType));
    EXPECT_NE(nullptr, reader.readObject(objType));
    EXPECT_EXIT(reader.readObject(objType), testing::KilledBySignal(SIGABRT),
                "^XXX version error handling is missing\n$");
}
