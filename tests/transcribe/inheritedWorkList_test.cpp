// inheritedWorkList_test.cpp - the work list that hosts' writers and readers inherit.

#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/transcribe/fxBinaryReader.h"
#include "kelvofxds/transcribe/fxBinaryWriter.h"
#include "tests/support/memoryStream.h"
#include "tests/support/scriptedObject.h"
#include "tests/support/streamBytes.h"

namespace {

// A host's class that looks at what it inherits.
struct HostsWriter : fxBinaryWriter {
    using fxBinaryWriter::fxBinaryWriter;

    std::vector<const void*> waiting() const {
        std::vector<const void*> addresses;
        for (unsigned int i = 0; i < workQueue.length(); ++i)
            addresses.push_back(item(i)->address);
        return addresses;
    }
    fxBinaryWriterItem* item(unsigned int i) const {
        return static_cast<fxBinaryWriterItem*>(workQueue[i]);
    }
    void drop(unsigned int i) {
        delete item(i);
        workQueue.remove(i, 1);
    }
    void put(fxBinaryWriterItem* item) {
        void* element = item;
        workQueue.append(&element);
    }
};

struct HostsReader : fxBinaryReader {
    explicit HostsReader(fxStream* s) : fxBinaryReader(s, 0x1122, 0x33445566, "ieee") {}

    std::vector<unsigned int> waiting() const {
        std::vector<unsigned int> numbers;
        for (unsigned int i = 0; i < workQueue.length(); ++i)
            numbers.push_back(static_cast<fxBinaryReaderItem*>(workQueue[i])->number);
        return numbers;
    }
    void drop(unsigned int i) {
        delete static_cast<fxBinaryReaderItem*>(workQueue[i]);
        workQueue.remove(i, 1);
    }
};

using Addresses = std::vector<const void*>;
using Numbers = std::vector<unsigned int>;

// Writes a root with a block and two links, and calls `look` behind each.
std::string writtenWhile(const std::function<void(HostsWriter& writer)>& look, char* block,
                         ScriptedObject& first, ScriptedObject& second) {
    MemoryStream stream;
    HostsWriter writer(&stream);
    ScriptedObject root(objType, [&](ScriptedObject& self, fxTranscriber& t) -> unsigned char {
        if (!t.xdr(&self.blocks[0], 3))
            return 0;
        look(writer);
        if (!self.xdrLink(t, 0))
            return 0;
        look(writer);
        if (!self.xdrLink(t, 1))
            return 0;
        look(writer);
        return 1;
    });
    root.blocks[0] = block;
    root.links[0] = &first;
    root.links[1] = &second;
    EXPECT_EQ(1, writer.writeObject(&root, &root));
    EXPECT_EQ(Addresses(), writer.waiting());
    return stream.written;
}

std::string pointers() {
    return hex(
        "02 02000000 'Obj' 00 | 0a 01000000 02000000 01000000 | 03 03000000 03000000"
        "0b 04000000 | 0b 05000000");
}
std::string body(unsigned int number) {
    return hex("0a") + word(number) + hex("02000000 01000000");
}
std::string blockBody() { return hex("45 03 03000000 03000000 'ab' 00"); }
}  // namespace

// Writing.

TEST(inheritedWorkList, writersOwnItemsWaitInItInOrder) {
    char block[3] = "ab";
    std::vector<Addresses> seen;
    ScriptedObject first(objType), second(objType);
    const auto look = [&](HostsWriter& writer) {
        seen.push_back(writer.waiting());
        const fxBinaryWriterItem* item = writer.item(0);
        EXPECT_EQ(1U, item->kind);
        EXPECT_EQ(3U, item->extra);
        EXPECT_EQ(static_cast<unsigned int>(fxOT_Bytes), item->blockTag);
    };
    const std::string bytes = writtenWhile(look, block, first, second);
    EXPECT_EQ((std::vector<Addresses>{{block}, {block, &first}, {block, &first, &second}}), seen);
    EXPECT_EQ(dump(pointers() + body(5) + body(4) + blockBody()), dump(bytes));
}

TEST(inheritedWorkList, itemsTakenByHandAreNotWritten) {
    char block[3] = "ab";
    for (unsigned int place : {0U, 1U, 2U}) {
        SCOPED_TRACE(place);
        ScriptedObject first(objType), second(objType);
        const auto drop = [place](HostsWriter& writer) {
            if (writer.waiting().size() == 3)
                writer.drop(place);
        };
        const std::string bodies[] = {blockBody(), body(4), body(5)};
        std::string expected = pointers();
        for (unsigned int i = 3; i-- > 0;)
            expected += i != place ? bodies[i] : "";
        EXPECT_EQ(dump(expected), dump(writtenWhile(drop, block, first, second)));
    }
}

TEST(inheritedWorkList, itemsPutByHandAreWritten) {
    char block[3] = "ab", other[] = "c";
    ScriptedObject first(objType), second(objType);
    const auto put = [&](HostsWriter& writer) {
        if (writer.waiting().size() == 1)
            writer.put(new fxBinaryWriterItem{1, other, 1, fxOT_Bytes});
    };
    EXPECT_EQ(
        dump(pointers() + body(5) + body(4) + hex("45 01 00000000 01000000 'c'") + blockBody()),
        dump(writtenWhile(put, block, first, second)));
}

TEST(inheritedWorkList, lastItemTakenByHandEndsTheObject) {
    char block[3] = "ab";
    MemoryStream stream;
    HostsWriter writer(&stream);
    writer.queue(new fxBinaryWriterItem{1, block, 3, fxOT_Bytes});
    writer.drop(0);
    EXPECT_EQ(nullptr, writer.pop());
    ScriptedObject root(objType);
    EXPECT_EQ(1, writer.writeObject(&root, &root));
}

TEST(inheritedWorkList, writersOwnItemsCanBePopped) {
    char block[3] = "ab";
    ScriptedObject first(objType), second(objType);
    const auto pop = [&](HostsWriter& writer) {
        if (writer.waiting().size() != 3)
            return;
        fxBinaryWriterItem* const last = writer.item(2);
        EXPECT_EQ(last, writer.pop());
        EXPECT_EQ(&second, last->address);
        delete last;
    };
    EXPECT_EQ(dump(pointers() + body(4) + blockBody()),
              dump(writtenWhile(pop, block, first, second)));
}

TEST(inheritedWorkList, failedObjectLeavesItsItemsInIt) {
    char block[3] = "ab";
    MemoryStream stream;
    HostsWriter writer(&stream);
    ScriptedObject root(objType, [](ScriptedObject& self, fxTranscriber& t) -> unsigned char {
        return t.xdr(&self.blocks[0], 3) && false;
    });
    root.blocks[0] = block;
    EXPECT_EQ(0, writer.writeObject(&root, &root));
    EXPECT_EQ(Addresses{block}, writer.waiting());
    writer.reset();
    EXPECT_EQ(Addresses(), writer.waiting());
}

// Reading.

namespace {
// Three block pointers and then, read on the way, their bodies and an object's.
std::string threePointers() {
    return hex("03 07000000 01000000 | 03 08000000 01000000 | 03 09000000 01000000");
}
std::string byteBody(unsigned int number, char c) {
    return hex("45 01") + word(number) + word(1) + std::string(1, c);
}
}  // namespace

TEST(inheritedWorkList, readersOwnItemsWaitInItInOrder) {
    MemoryStream stream(threePointers() + byteBody(9, 'c') + byteBody(8, 'b') + byteBody(7, 'a'));
    HostsReader reader(&stream);
    char* blocks[3] = {};
    std::vector<Numbers> seen;
    for (char*& block : blocks) {
        EXPECT_EQ(1, reader.xdr(&block, 1));
        seen.push_back(reader.waiting());
    }
    EXPECT_EQ((std::vector<Numbers>{{7}, {7, 8}, {7, 8, 9}}), seen);
    EXPECT_NE(nullptr, reader.readObject(objType));
    EXPECT_EQ(Numbers(), reader.waiting());
    for (unsigned int i = 0; i < 3; ++i) {
        ASSERT_NE(nullptr, blocks[i]);
        EXPECT_EQ("abc"[i], *blocks[i]);
        delete[] blocks[i];
    }
}

TEST(inheritedWorkList, itemsTakenByHandAreNotSet) {
    MemoryStream stream(threePointers() + byteBody(9, 'c') + byteBody(8, 'b') + byteBody(7, 'a'));
    HostsReader reader(&stream);
    char* blocks[3] = {};
    for (char*& block : blocks)
        EXPECT_EQ(1, reader.xdr(&block, 1));
    reader.drop(1);
    reader.queue(new fxBinaryReaderItem{reinterpret_cast<void**>(&blocks[1]), 8});
    reader.drop(1);
    EXPECT_EQ((Numbers{7, 8}), reader.waiting());
    EXPECT_NE(nullptr, reader.readObject(objType));
    EXPECT_EQ(nullptr, blocks[2]);
    ASSERT_NE(nullptr, blocks[1]);
    ASSERT_NE(nullptr, blocks[0]);
    EXPECT_EQ('b', *blocks[1]);
    EXPECT_EQ('a', *blocks[0]);
    delete[] static_cast<char*>(reader.alreadyRead(9));
    delete[] blocks[1];
    delete[] blocks[0];
}
