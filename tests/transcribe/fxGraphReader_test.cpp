#include "kelvofxds/transcribe/fxGraphReader.h"

#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/transcribe/fxStdioStream.h"
#include "tests/support/graphBytes.h"
#include "tests/support/graphSteps.h"

namespace {

// Members of a few kinds, in the smallest records.
class Leaf : public fxXDRObj {
public:
    Leaf() { ++living; }
    Leaf(const Leaf&) = delete;
    Leaf& operator=(const Leaf&) = delete;
    ~Leaf() override {
        delete[] block;
        delete[] text;
        --living;
    }
    fxTypeObj& getTypeObj() const override;
    unsigned char xdr(fxTranscriber& t) override {
        version = t.objectVersion();
        return t.xdr(&value, 1) && t.xdr(&next, next, *nextType, this, nullptr) &&
               t.xdr(&block, expected) && t.xdr(&text);
    }
    static void* create(fxTypeObj&) { return new Leaf; }
    static void destroy(void* object) { delete static_cast<Leaf*>(object); }
    static unsigned char xdr(void* object, fxTranscriber& t) {
        return static_cast<Leaf*>(object)->Leaf::xdr(t);
    }

    int value = 0;
    Leaf* next = nullptr;
    short* block = nullptr;
    char* text = nullptr;
    unsigned int version = 0;

    inline static int living = 0;
    inline static unsigned int expected = 2;  // elements of blocks
    inline static fxTypeObj* nextType = nullptr;
};

fxTypeObj Leaf_type("Leaf", 3, Leaf::create, Leaf::destroy, Leaf::xdr);
fxTypeObj& Leaf::getTypeObj() const { return Leaf_type; }

fxTypeObj Abstract_type("GraphAbstract", 1, nullptr, nullptr, nullptr);
fxTypeObj NoMemory_type(
    "GraphNoMemory", 1, [](fxTypeObj&) -> void* { return nullptr; }, nullptr, nullptr);

class fxGraphReaderTest : public testing::Test {
protected:
    void SetUp() override {
        Leaf::nextType = &Leaf_type;
        Leaf::expected = 2;
    }
    void TearDown() override { EXPECT_EQ(0, Leaf::living); }
};

void releaseAll(Leaf* leaf) {
    while (leaf) {
        Leaf* const next = leaf->next;
        delete leaf;
        leaf = next;
    }
}

}  // namespace

TEST_F(fxGraphReaderTest, handMadeRecordsBecomeObjects) {
    for (const bool isBig : {false, true}) {
        SCOPED_TRACE(isBig ? "big-endian" : "little-endian");
        GraphBytes b(isBig);
        b.type(2, "Leaf", 3)
            .record(10, {1, 2, 3}, b.word(7))
            .record(11, {3})
            .record(3, {4, 4})
            .record(3, {5, 3})
            .record(5, {5, 3}, std::string("hi\0", 3))
            .record(6, {4, 4}, b.number(1, 2) + b.number(0x8001, 2))
            .record(10, {3, 2, 3}, b.word(8))
            .record(12, {1})
            .record(1)
            .record(1)
            .end();
        const GraphRead read = readGraph(b.str(), Leaf_type);

        ASSERT_EQ("", read.error);
        auto* leaf = static_cast<Leaf*>(read.object);
        EXPECT_EQ(7, leaf->value);
        EXPECT_EQ(3u, leaf->version);
        EXPECT_EQ(1, leaf->block[0]);
        EXPECT_EQ(-0x7FFF, leaf->block[1]);
        EXPECT_STREQ("hi", leaf->text);
        EXPECT_EQ(8, leaf->next->value);
        EXPECT_EQ(leaf, leaf->next->next);
        EXPECT_EQ(nullptr, leaf->next->block);
        delete leaf->next;
        delete leaf;
    }
}

TEST_F(fxGraphReaderTest, dataGoesOnInRecordsOfData) {
    GraphBytes b;
    b.type(2, "Leaf", 3)
        .record(10, {1, 2, 3}, std::string("\1\2", 2))
        .record(0, {}, std::string("\3", 1))
        .record(0, {}, std::string("\4", 1))
        .record(1)
        .record(1)
        .record(1)
        .end();
    const GraphRead read = readGraph(b.str(), Leaf_type);
    ASSERT_EQ("", read.error);
    EXPECT_EQ(0x04030201, static_cast<Leaf*>(read.object)->value);
    delete static_cast<Leaf*>(read.object);
}

// Each failure has its reason, and nothing is left.
TEST_F(fxGraphReaderTest, whatIsWrongIsSaid) {
    using Make = std::function<void(GraphBytes&)>;
    const auto leaf = [](GraphBytes& b) -> GraphBytes& {
        return b.type(2, "Leaf", 3).record(10, {1, 2, 3}, b.word(7));
    };
    const struct {
        const char* error;
        Make make;
    } cases[] = {
        {"offset 25, record 1: type \"Nobody\" is not registered",
         [](GraphBytes& b) {
             b.type(2, "Nobody").record(10, {1, 2, 1});
         }},
        {"offset 25, record 1: a record \"null pointer\" comes where the root should",
         [](GraphBytes& b) { b.record(1).end(); }},
        {"offset 25, record 1: there are no records of kind 16",
         [](GraphBytes& b) { b.record(16); }},
        {"offset 25, record 1: there are no records of kind 63",
         [](GraphBytes& b) { b.record(63); }},
        {"offset 40, record 2: the root is a \"Limb\", not a \"Leaf\"",
         [](GraphBytes& b) {
             b.type(2, "Limb").record(10, {1, 2, 1}).end();
         }},
        {"offset 49, record 2: type \"GraphAbstract\" is abstract",
         [](GraphBytes& b) {
             b.type(2, "GraphAbstract").record(10, {1, 2, 1}).end();
         }},
        {"offset 49, record 2: no \"GraphNoMemory\" can be made",
         [](GraphBytes& b) {
             b.type(2, "GraphNoMemory").record(10, {1, 2, 1}).end();
         }},
        {"offset 40, record 2: type \"Leaf\" has version 4; this program knows versions up to 3",
         [](GraphBytes& b) {
             b.type(2, "Leaf", 4).record(10, {1, 2, 4});
         }},
        {"offset 40, record 2: the version of object 1 is 2, not 3",
         [](GraphBytes& b) {
             b.type(2, "Leaf", 3).record(10, {1, 2, 2});
         }},
        {"offset 25, record 1: number 3 is not the next one",
         [](GraphBytes& b) {
             b.type(3, "Leaf", 3).record(10, {1, 3, 3});
         }},
        {"offset 40, record 2: number 1 is no type",
         [](GraphBytes& b) {
             b.type(2, "Leaf", 3).record(10, {1, 1, 3});
         }},
        {"offset 40, record 2: 3 bytes are left that \"Leaf\" does not read",
         [](GraphBytes& b) {
             b.type(2, "Leaf", 3).record(10, {1, 2, 3}, std::string(7, 'x')).record(1);
         }},
        {"offset 58, record 3: a record \"block of bytes\" comes where a pointer to an object "
         "should",
         [&](GraphBytes& b) {
             leaf(b).record(5, {3, 0});
         }},
        {"offset 59, record 4: a record \"pointer to an object\" comes where a pointer to a block "
         "should",
         [&](GraphBytes& b) { leaf(b).record(1).record(11, {3}); }},
        {"offset 57, record 3: a record \"null pointer\" comes where data should",
         [&](GraphBytes& b) {
             b.type(2, "Leaf", 3).record(10, {1, 2, 3}, "abc").record(1);
         }},
        {"offset 58, record 3: number 9 is no object",
         [&](GraphBytes& b) { leaf(b).record(12, {9}); }},
        {"offset 58, record 3: number 2 is no object",
         [&](GraphBytes& b) { leaf(b).record(12, {2}); }},
        {"offset 59, record 4: number 1 is no block",
         [&](GraphBytes& b) { leaf(b).record(1).record(4, {1}); }},
        {"offset 61, record 6: the checksum of the root is 60656663, not 60656662",
         [&](GraphBytes& b) { leaf(b).record(1).record(1).record(1).end(1); }},
        {"offset 65, record 6: 1 of the root's objects and blocks are missing",
         [&](GraphBytes& b) { leaf(b).record(11, {3}).record(1).record(1).end(); }},
        {"offset 65, record 6: object 1 comes twice",
         [&](GraphBytes& b) {
             leaf(b).record(11, {3}).record(1).record(1).record(10, {1, 2, 3}, b.word(1));
         }},
        {"offset 69, record 6: block 3 is a \"block of bytes\" where a \"block of shorts\" is "
         "expected",
         [&](GraphBytes& b) {
             leaf(b).record(1).record(3, {3, 4}).record(1).record(5, {3, 4}, "abcd");
         }},
        {"offset 81, record 7: block 3 has 2 bytes, its owner expects 4",
         [&](GraphBytes& b) {
             leaf(b).record(1).record(3, {3, 2}).record(1).record(6, {3, 2}, "ab").end();
         }},
        {"offset 82, record 7: the text of block 3 has no end",
         [&](GraphBytes& b) {
             leaf(b).record(1).record(1).record(3, {3, 3}).record(5, {3, 3}, "abc").end();
         }},
        {"offset 61, record 6: a record \"pointer to an object\" comes where a body should",
         [&](GraphBytes& b) { leaf(b).record(1).record(1).record(1).record(11, {3}); }},
        {"offset 61, record 6: a record \"data\" comes where a body should",
         [&](GraphBytes& b) { leaf(b).record(1).record(1).record(1).record(0); }},
        {"offset 25, record 1: the stream has no more roots", [](GraphBytes&) {}},
        {"offset 26, record 2: the stream ends here",
         [](GraphBytes& b) { b.raw(std::string(1, 0)); }},
        {"offset 25, record 1: the stream ends here", [](GraphBytes& b) { b.raw("\x4A"); }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.error);
        GraphBytes b;
        c.make(b);
        const bool isAny = b.str().find("GraphNo") != std::string::npos ||
                           b.str().find("GraphAbstract") != std::string::npos;
        const GraphRead read = readGraph(b.str(), isAny ? fxXDRObj_type : Leaf_type);
        EXPECT_EQ(nullptr, read.object);
        EXPECT_EQ(c.error, read.error);
        EXPECT_EQ(0, Leaf::living);
    }
}

TEST_F(fxGraphReaderTest, aHeaderThatNobodyKnowsFailsEachRead) {
    const struct {
        short shortMark;
        long longMark;
        const char* format;
        const char* error;
    } cases[] = {
        {0x1123, 0x33445566, "ieee", "the header has an unknown order of bytes"},
        {0x1122, 0x33445567, "ieee", "the header has an unknown order of bytes"},
        {0x1122, 0x33445566, "vax",
         "the header has an unknown format of floating-point numbers, \"vax\""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.error);
        const Held<> stream;
        fxGraphReader reader(stream.get(), c.shortMark, c.longMark, c.format);
        EXPECT_EQ(nullptr, reader.readObject(Leaf_type));
        EXPECT_STREQ(c.error, reader.lastError());
        EXPECT_EQ(0, reader.atEnd());
    }
}

TEST_F(fxGraphReaderTest, rootsStandOneBehindTheOther) {
    const Held<> stream;
    const auto writer = graphWriterOn(stream.get());
    Leaf leaf;
    leaf.next = &leaf;
    for (leaf.value = 1; leaf.value <= 3; ++leaf.value)
        ASSERT_EQ(1, writer->writeObject(&leaf, &leaf));
    const auto reader = graphReaderOn(stream.get());
    for (int value = 1; value <= 3; ++value) {
        auto* copy = static_cast<Leaf*>(reader->readObject(Leaf_type));
        ASSERT_NE(nullptr, copy) << reader->lastError();
        EXPECT_STREQ("", reader->lastError());
        EXPECT_EQ(value, copy->value);
        EXPECT_EQ(copy, copy->next);
        delete copy;
        EXPECT_EQ(0, reader->atEnd());
    }
    EXPECT_EQ(nullptr, reader->readObject(Leaf_type));
    EXPECT_EQ(1, reader->atEnd());
    EXPECT_STREQ("offset 160, record 19: the stream has no more roots", reader->lastError());
}

TEST_F(fxGraphReaderTest, identityCanBeKeptAcrossRoots) {
    const Held<> stream;
    const auto writer = graphWriterOn(stream.get());
    writer->keepIdentity(true);
    Leaf first;
    Leaf second;
    first.value = 1;
    second.value = 2;
    second.next = &first;
    ASSERT_EQ(1, writer->writeObject(&first, &first));
    ASSERT_EQ(1, writer->writeObject(&second, &second));
    ASSERT_EQ(1, writer->writeObject(&first, &first));
    const auto reader = graphReaderOn(stream.get());
    auto* a = static_cast<Leaf*>(reader->readObject(Leaf_type));
    auto* b = static_cast<Leaf*>(reader->readObject(Leaf_type));
    void* c = reader->readObject(fxXDRObj_type);
    ASSERT_TRUE(a && b) << reader->lastError();
    EXPECT_EQ(a, b->next);
    EXPECT_EQ(a, c);
    delete a;
    delete b;
}

TEST_F(fxGraphReaderTest, keepingIdentityMayBeSaidAgainAndTakenBack) {
    const auto streamOf = [](bool isSaidAgain, bool isTakenBack) {
        const Held<> stream;
        const auto writer = graphWriterOn(stream.get());
        Leaf leaf;
        writer->keepIdentity(true);
        EXPECT_EQ(1, writer->writeObject(&leaf, &leaf));
        if (isSaidAgain)
            writer->keepIdentity(true);
        if (isTakenBack)
            writer->keepIdentity(false);
        EXPECT_EQ(1, writer->writeObject(&leaf, &leaf));
        return std::string(stream->getBase(), stream->length());
    };
    EXPECT_EQ(streamOf(false, false), streamOf(true, false));
    EXPECT_LT(streamOf(true, false).size(), streamOf(true, true).size());
    EXPECT_EQ(streamOf(false, true), streamOf(true, true));
}

TEST_F(fxGraphReaderTest, limitsBoundARoot) {
    Leaf leaves[3];
    leaves[0].next = &leaves[1];
    leaves[1].next = &leaves[2];
    const std::string bytes = graphStreamOf(leaves[0]);
    const struct {
        unsigned int objects, bytes;
        const char* error;
    } cases[] = {
        {0, 0, ""},
        {3, 0, ""},
        {2, 0, "there are more than 2 objects"},
        {0, 91, ""},
        {0, 90, "the root has more than 90 bytes"},
        {0, 10, "the root has more than 10 bytes"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.objects << " objects, " << c.bytes << " bytes");
        const Held<> stream(static_cast<const void*>(bytes.data()),
                            static_cast<unsigned int>(bytes.size()));
        const auto reader = graphReaderOn(stream.get());
        reader->setLimits(c.objects, c.bytes);
        auto* leaf = static_cast<Leaf*>(reader->readObject(Leaf_type));
        EXPECT_EQ(c.error, withoutPlace(reader->lastError()));
        EXPECT_EQ(c.error[0] == '\0', leaf != nullptr);
        releaseAll(leaf);
        EXPECT_EQ(3, Leaf::living);
    }
}

// What is asked outside of a root is not asked of the next one.
TEST_F(fxGraphReaderTest, aCheckIsOfThePointerThatFollows) {
    Leaf leaf;
    leaf.next = &leaf;
    const std::string bytes = graphStreamOf(leaf);
    const Held<> stream(static_cast<const void*>(bytes.data()),
                        static_cast<unsigned int>(bytes.size()));
    const auto reader = graphReaderOn(stream.get());
    reader->checkNext([](fxXDRObj*) { return false; });
    auto* copy = static_cast<Leaf*>(reader->readObject(Leaf_type));
    EXPECT_NE(nullptr, copy) << reader->lastError();
    delete copy;
}

// A host's exception passes through: nothing is left, and the stream cannot be read on.
TEST_F(fxGraphReaderTest, anExceptionLeavesNothing) {
    struct Throwing : Leaf {
        static fxTypeObj& type() {
            static fxTypeObj record("GraphThrowing", 1, create, Leaf::destroy, transcribe);
            return record;
        }
        fxTypeObj& getTypeObj() const override { return type(); }
        static void* create(fxTypeObj&) { return new Throwing; }
        static unsigned char transcribe(void* object, fxTranscriber& t) {
            auto* self = static_cast<Throwing*>(object);
            if (!t.xdr(&self->value, 1))
                return 0;
            if (self->value == 13)
                throw 13;
            return 1;
        }
    };
    Leaf::nextType = &Throwing::type();
    Throwing bad;
    bad.value = 13;
    Leaf leaf;
    leaf.next = &bad;
    const Held<> stream;
    const auto writer = graphWriterOn(stream.get());
    EXPECT_THROW(writer->writeObject(&leaf, &leaf), int);
    EXPECT_STREQ("an exception ended the root", writer->lastError());
    EXPECT_EQ(25u, stream->length());
    bad.value = 14;
    ASSERT_EQ(1, writer->writeObject(&leaf, &leaf)) << writer->lastError();
    std::string bytes(stream->getBase(), stream->length());
    for (std::size_t i = 25; i < bytes.size(); ++i)
        bytes[i] = bytes[i] == 14 ? 13 : bytes[i];

    const Held<> damaged(static_cast<const void*>(bytes.data()),
                         static_cast<unsigned int>(bytes.size()));
    const auto reader = graphReaderOn(damaged.get());
    EXPECT_THROW(reader->readObject(Leaf_type), int);
    EXPECT_EQ(2, Leaf::living);
    EXPECT_EQ(nullptr, reader->readObject(Leaf_type));
    EXPECT_NE(std::string::npos,
              std::string(reader->lastError()).find("an exception ended the read"));
    EXPECT_EQ(0xFFFFFFFFu, reader->objectVersion());
}

// A text that claims much takes no memory before its bytes arrive.
TEST_F(fxGraphReaderTest, lengthsThatLieAreFoundOut) {
    GraphBytes b;
    b.type(2, "fxStr").record(10, {1, 2, 1}, b.word(0x7FFFFFFF) + "abc").end();
    const GraphRead read = readGraph(b.str(), fxStr_type);
    EXPECT_EQ(nullptr, read.object);
    EXPECT_EQ("offset 41, record 2: the stream ends here", read.error);
}

TEST_F(fxGraphReaderTest, aNameHasAnEnd) {
    GraphBytes b;
    b.type(2, std::string(64 * 1024, 'n'));
    EXPECT_EQ("offset 25, record 1: the name of a type has more than 65536 bytes",
              readGraph(b.str(), fxXDRObj_type).error);
}

TEST_F(fxGraphReaderTest, genericNamesAreWhatIsAskedFor) {
    fxIntArray numbers;
    for (int i = 0; i < 5; ++i)
        numbers.append(&i);
    const std::string bytes = graphStreamOf(numbers);

    const GraphRead asked = readGraph(bytes, fxIntArray_type);
    ASSERT_EQ("", asked.error);
    EXPECT_EQ(4, (*static_cast<fxIntArray*>(asked.object))[4]);
    delete static_cast<fxIntArray*>(asked.object);

    const GraphRead other = readGraph(bytes, fxDoubleArray_type);
    EXPECT_EQ(nullptr, other.object);
    EXPECT_EQ("a \"ARRAY\" cannot be read: its xdr returned 0", withoutPlace(other.error));
}

TEST_F(fxGraphReaderTest, readingAndWritingAtOnceIsRefused) {
    const Held<> stream;
    fxGraphReader reader(stream.get(), 0x1122, 0x33445566, "ieee");
    Leaf leaf;
    EXPECT_EQ(0, reader.writeObject(&leaf, &leaf));
    int value = 5;
    EXPECT_EQ(0, reader.xdr(&value, 1));
    EXPECT_EQ(5, value);
    EXPECT_STREQ("fxGraphReader", reader.className());
    EXPECT_EQ(1, reader.isReading());
    EXPECT_EQ(&reader, fxGraphReader::of(reader));
    fxGraphWriter writer(stream.get());
    EXPECT_EQ(nullptr, fxGraphReader::of(writer));
}

// A file is read from its buffer, a host's stream by as many bytes as are needed.
namespace {
class CountingStream : public fxMemoryStream {
public:
    using fxMemoryStream::fxMemoryStream;
    unsigned char getBytes(char* buffer, unsigned int n) override {
        ++calls;
        return fxMemoryStream::getBytes(buffer, n);
    }
    unsigned int calls = 0;
};
}  // namespace

TEST_F(fxGraphReaderTest, everyStreamIsReadUpToTheEndOfTheRoot) {
    Leaf leaf;
    leaf.value = 9;
    const std::string bytes = graphStreamOf(leaf) + "behind";
    const auto expectRest = [](fxStream* stream) {
        const auto reader = graphReaderOn(stream);
        auto* copy = static_cast<Leaf*>(reader->readObject(Leaf_type));
        ASSERT_NE(nullptr, copy) << reader->lastError();
        EXPECT_EQ(9, copy->value);
        delete copy;
        char rest[6];
        ASSERT_EQ(1, stream->getBytes(rest, sizeof rest));
        EXPECT_EQ("behind", std::string(rest, sizeof rest));
    };
    const void* at = bytes.data();
    const auto size = static_cast<unsigned int>(bytes.size());
    const Held<> memory(at, size);
    expectRest(memory.get());
    const Held<CountingStream> host(at, size);
    expectRest(host.get());
    EXPECT_LT(0u, host->calls);
    for (const int mode : {_IOFBF, _IOLBF, _IONBF}) {
        std::FILE* file = std::tmpfile();
        std::setvbuf(file, nullptr, mode, mode == _IONBF ? 0 : 64);
        std::fwrite(bytes.data(), 1, bytes.size(), file);
        std::rewind(file);
        const Held<fxStdioStream> stdio(file, fxStream::readStream);
        expectRest(stdio.get());
    }
}
