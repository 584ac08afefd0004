// fxGraphCalls_test.cpp - calls that an xdr may make of graph transcribers, the orders of bytes
// that readers know, and entries that are read in part.

#include <cstdlib>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxDictionary.h"
#include "tests/support/graphBytes.h"
#include "tests/support/graphSteps.h"
#include "tests/support/heapCalls.h"
#include "tests/support/misuse.h"

namespace {

class Caller : public GraphSteps<Caller> {
public:
    fxTypeObj& getTypeObj() const override;
    int value = 0;
    Limb limb;
    fxXDRObj* object = nullptr;
    char* text = nullptr;
    unsigned char* unsignedText = nullptr;
};

fxTypeObj Caller_type("GraphCaller", 1, Caller::create, Caller::destroy, Caller::xdr);
fxTypeObj& Caller::getTypeObj() const { return Caller_type; }

class fxGraphCalls : public testing::Test {
protected:
    void TearDown() override { Caller::steps = nullptr; }
};

GraphBytes callerWith(const std::string& payload, bool isBig = false) {
    GraphBytes b(isBig);
    b.type(2, "GraphCaller").record(10, {1, 2, 1}, payload);
    return b;
}

unsigned char embed(fxTranscriber& t, Limb& limb) { return t.xdr(Limb_type, nullptr, &limb); }

}  // namespace

// Roots end with what they have; only then a transcriber is reset or keeps less.
TEST_F(fxGraphCalls, resetWithinARootDoesNothing) {
    Caller::steps = [](Caller& c, fxTranscriber& t) -> unsigned char {
        t.reset();
        if (!t.isReading())
            static_cast<fxGraphWriter&>(t).keepIdentity(false);
        return t.xdr(&c.value, 1) && t.xdr(&c.object, c.object, Caller_type, nullptr, nullptr);
    };
    Caller caller;
    caller.value = 7;
    caller.object = &caller;
    const Held<> stream;
    const auto writer = graphWriterOn(stream.get());
    writer->keepIdentity(true);
    ASSERT_EQ(1, writer->writeObject(&caller, &caller)) << writer->lastError();
    ASSERT_EQ(1, writer->writeObject(&caller, &caller)) << writer->lastError();
    const auto reader = graphReaderOn(stream.get());
    for (int i = 0; i < 2; ++i) {
        auto* const copy = static_cast<Caller*>(reader->readObject(Caller_type));
        ASSERT_NE(nullptr, copy) << reader->lastError();
        EXPECT_EQ(7, copy->value);
        EXPECT_EQ(copy, copy->object);
        delete copy;
    }
}

TEST_F(fxGraphCalls, nothingIsWrittenOfNoObject) {
    Caller caller;
    const Held<> stream;
    const auto writer = graphWriterOn(stream.get());
    EXPECT_EQ(0, writer->writeObject(nullptr, &caller));
    EXPECT_EQ(0, writer->writeObject(&caller, nullptr));
    EXPECT_EQ(25u, stream->length());
}

// As in objects whose part the caller has transcribed already.
TEST_F(fxGraphCalls, theSameAddressAgainIsNothing) {
    Caller::steps = [](Caller& c, fxTranscriber& t) { return t.xdr(Limb_type, &c.limb, &c.limb); };
    Caller caller;
    const std::string bytes = graphStreamOf(caller);
    EXPECT_EQ(callerWith("").end().str().size(), bytes.size());
    const GraphRead read = readGraph(bytes, Caller_type);
    EXPECT_NE(nullptr, read.object) << read.error;
    delete static_cast<Caller*>(read.object);
}

TEST_F(fxGraphCalls, afterAFailureAnXdrReadsNothingMore) {
    static unsigned int taken;
    taken = 0;
    Caller::steps = [](Caller& c, fxTranscriber& t) -> unsigned char {
        // It does not look at what the first failing call returns.
        static_cast<void>(t.xdr(&c.chars, 1));
        fxStr string;
        taken += t.xdr(&c.value, 1);
        taken += t.xdr(&string, 1);
        taken += t.xdr(&c.chars, 1);
        taken += t.xdr(&c.bytes, 1);
        taken += t.xdr(&c.shorts, 1);
        taken += t.xdr(&c.unsignedShorts, 1);
        taken += t.xdr(&c.longs, 1);
        taken += t.xdr(&c.unsignedLongs, 1);
        taken += t.xdr(&c.floats, 1);
        taken += t.xdr(&c.doubles, 1);
        taken += t.xdr(&c.text);
        taken += t.xdr(&c.unsignedText);
        taken += t.xdr(&c.object, c.object, Caller_type, nullptr, nullptr);
        taken += embed(t, c.limb);
        return 1;
    };
    GraphBytes b = callerWith("");
    b.record(11, {3});
    for (int i = 0; i < 20; ++i)
        b.record(1);
    const GraphRead read = readGraph(b.end().str(), Caller_type);
    EXPECT_EQ(nullptr, read.object);
    EXPECT_EQ("a record \"pointer to an object\" comes where a pointer to a block should",
              withoutPlace(read.error));
    EXPECT_EQ(0u, taken);
}

TEST_F(fxGraphCalls, moreElementsThanThereCanBeFailTheRead) {
    static short shorts[2];
    static long longs[2];
    static double doubles[2];
    const Caller::Steps cases[] = {
        [](Caller&, fxTranscriber& t) { return t.xdr(shorts, 0x80000000); },
        [](Caller&, fxTranscriber& t) { return t.xdr(longs, 0x40000000); },
        [](Caller&, fxTranscriber& t) { return t.xdr(doubles, 0x20000000); },
    };
    for (const auto& steps : cases) {
        Caller::steps = steps;
        const GraphRead read = readGraph(callerWith("").end().str(), Caller_type);
        EXPECT_EQ(nullptr, read.object);
        EXPECT_EQ("a \"GraphCaller\" cannot be read: its xdr returned 0", withoutPlace(read.error));
    }
}

TEST_F(fxGraphCalls, dataThatEndsInAnotherRecordFailsTheRead) {
    static char place[20];
    Caller::steps = [](Caller&, fxTranscriber& t) { return t.xdr(place, 20); };
    GraphBytes b = callerWith("abcd");
    b.raw(std::string("\x40\x10", 2) + "efgh");  // a record of 16 bytes of data, 4 of which come
    const GraphRead read = readGraph(b.str(), Caller_type);
    EXPECT_EQ(nullptr, read.object);
    EXPECT_EQ("the stream ends here", withoutPlace(read.error));
}

// Where the bytes of a writer's numbers lie, the marks of the header show.
TEST_F(fxGraphCalls, numbersComeFromWritersOfEachOrder) {
    const short one = 1;
    const bool isBig = *reinterpret_cast<const char*>(&one) == 0;
    const struct {
        short shortMark;
        long longMark;
        unsigned int places[4];  // of the bytes of a long, as they lie in its memory here
        bool areDoublesSwapped;
    } cases[] = {
        {0x1122, 0x33445566, {0, 1, 2, 3}, false},
        {0x2211, 0x44336655, {1, 0, 3, 2}, false},
        {0x1122, 0x55663344, {2, 3, 0, 1}, false},
        {0x2211, 0x66554433, {3, 2, 1, 0}, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.longMark);
        const auto asWritten = [&c](const void* number, unsigned int size) {
            const char* const from = static_cast<const char*>(number);
            std::string bytes(size, '\0');
            for (unsigned int i = 0; i < size; ++i) {
                const unsigned int word = c.areDoublesSwapped ? size / 4 - 1 - i / 4 : i / 4;
                bytes[i] = from[4 * word + c.places[i % 4]];
            }
            return bytes;
        };
        static long number;
        static double real;
        static short little;
        Caller::steps = [](Caller&, fxTranscriber& t) -> unsigned char {
            return t.xdr(&number, 1) && t.xdr(&real, 1) && t.xdr(&little, 1);
        };
        const long written = 0x01020304;
        const double half = -1.2345678;
        const bool areSwapped = c.shortMark != 0x1122;
        const std::string shorts(areSwapped != isBig ? "\x12\x34" : "\x34\x12", 2);
        GraphBytes b(isBig);
        b.raw('\x42' + std::string("\4") + std::string("\2\0\0\0", 4) + "GraphCaller" + '\0');
        const std::uint32_t version = 1;
        b.raw(asWritten(&version, 4));
        b.record(10, {1, 2, 1}, asWritten(&written, 4) + asWritten(&half, 8) + shorts).end();
        const std::string records = b.str().substr(25);
        const Held<> stream(static_cast<const void*>(records.data()),
                            static_cast<unsigned int>(records.size()));
        fxGraphReader reader(stream.get(), c.shortMark, c.longMark, "ieee");
        void* const object = reader.readObject(Caller_type);
        ASSERT_NE(nullptr, object) << reader.lastError();
        EXPECT_EQ(written, number);
        EXPECT_EQ(half, real);
        EXPECT_EQ(0x1234, little);
        delete static_cast<Caller*>(object);
    }
}

namespace {

// Maps ints to limbs; nobody but the host knows what an entry is.
class Limbs : public fxDictionary {
public:
    Limbs() : fxDictionary(sizeof(int), sizeof(Limb*), 7) {}
    ~Limbs() override { cleanup(); }
    const char* className() const override { return "Limbs"; }
    unsigned int hashKey(const void* key) const override {
        return static_cast<unsigned int>(*static_cast<const int*>(key));
    }
    int compareKeys(const void* a, const void* b) const override {
        return std::memcmp(a, b, sizeof(int));
    }
    void copyKey(const void* from, void* to) const override { std::memcpy(to, from, sizeof(int)); }
    void copyValue(const void* from, void* to) const override {
        std::memcpy(to, from, sizeof(Limb*));
    }
    void createValue(void* value) const override { std::memset(value, 0, sizeof(Limb*)); }
    unsigned char xdrKey(fxTranscriber& t, void* key) override {
        return t.xdr(static_cast<int*>(key), 1);
    }
    unsigned char xdrValue(fxTranscriber& t, void* value) override {
        return t.xdr(value, *static_cast<Limb**>(value), Limb_type, nullptr, nullptr);
    }
};

class Shelf : public fxXDRObj {
public:
    fxTypeObj& getTypeObj() const override;
    unsigned char xdr(fxTranscriber& t) override { return limbs.doxdr(t); }
    static void* create(fxTypeObj&) { return new Shelf; }
    static void destroy(void* object) { delete static_cast<Shelf*>(object); }
    static unsigned char xdr(void* object, fxTranscriber& t) {
        return static_cast<Shelf*>(object)->Shelf::xdr(t);
    }
    Limbs limbs;
};
fxTypeObj Shelf_type("GraphShelf", 1, Shelf::create, Shelf::destroy, Shelf::xdr);
fxTypeObj& Shelf::getTypeObj() const { return Shelf_type; }

}  // namespace

// The reader has noted where in an entry a pointer goes: the entry stays until the read has ended.
TEST_F(fxGraphCalls, entriesThatAreReadInPartLeaveNothing) {
    Limb limbs[5];
    Shelf shelf;
    for (int i = 0; i < 5; ++i) {
        Limb* limb = &limbs[i];
        shelf.limbs.addInternal(&i, &limb);
    }
    const std::string whole = graphStreamOf(shelf);
    for (std::size_t n = 25; n < whole.size(); ++n) {
        SCOPED_TRACE(n);
        const GraphRead read = readGraph(whole.substr(0, n), Shelf_type);
        ASSERT_EQ(nullptr, read.object);
        ASSERT_NE("", read.error);
        ASSERT_EQ(5, Limb::living);
    }
    const GraphRead read = readGraph(whole, Shelf_type);
    ASSERT_NE(nullptr, read.object) << read.error;
    auto* const copy = static_cast<Shelf*>(read.object);
    EXPECT_EQ(5u, copy->limbs.length());
    for (int i = 0; i < 5; ++i)
        delete *static_cast<Limb**>(copy->limbs.find(&i));
    delete copy;
}

// Memory is taken by readers of graphs alone, and within a root.
TEST_F(fxGraphCalls, othersThanReadersOfARootTakeNoMemory) {
    static unsigned char taken;
    taken = 2;
    Caller::steps = [](Caller&, fxTranscriber& t) -> unsigned char {
        void* const block = std::malloc(10);
        taken = t.freeOnFailure(block);
        if (!taken)
            std::free(block);
        return !t.isReading();  // the read fails, and frees it
    };
    Caller caller;
    const Held<> stream;
    const auto writer = graphWriterOn(stream.get());
    ASSERT_EQ(1, writer->writeObject(&caller, &caller)) << writer->lastError();
    EXPECT_EQ(0, taken);
    const auto reader = graphReaderOn(stream.get());
    char block[10];
    EXPECT_EQ(0, reader->freeOnFailure(block));
    EXPECT_EQ(nullptr, reader->readObject(Caller_type));
    EXPECT_EQ(1, taken);

    const std::string bytes(stream->getBase(), stream->length());
    readGraph(bytes, Caller_type);
    const long before = heapCalls().blocks;
    readGraph(bytes, Caller_type);
    EXPECT_EQ(before, heapCalls().blocks);
}

TEST_F(fxGraphCalls, textsOfBothTypesNeedTheirEnd) {
    const Caller::Steps steps[] = {
        [](Caller& c, fxTranscriber& t) { return t.xdr(&c.text); },
        [](Caller& c, fxTranscriber& t) { return t.xdr(&c.unsignedText); }};
    for (const Caller::Steps& text : steps) {
        Caller::steps = text;
        GraphBytes whole = callerWith(""), cut = callerWith("");
        whole.record(3, {3, 3}).record(5, {3, 3}, std::string("ab\0", 3)).end();
        cut.record(3, {3, 3}).record(5, {3, 3}, "abc").end();
        const GraphRead read = readGraph(whole.str(), Caller_type);
        EXPECT_EQ("", read.error);
        if (auto* const caller = static_cast<Caller*>(read.object)) {
            delete[] caller->text;
            delete[] caller->unsignedText;
            delete caller;
        }
        const GraphRead refused = readGraph(cut.str(), Caller_type);
        EXPECT_EQ("the text of block 3 has no end", withoutPlace(refused.error));
        EXPECT_EQ(nullptr, refused.object);
    }
}

TEST_F(fxGraphCalls, twoPointersToABlockLeadToOne) {
    Caller::steps = [](Caller& c, fxTranscriber& t) -> unsigned char {
        return t.xdr(&c.chars, 4) && t.xdr(&c.bytes, 4) && t.xdr(&c.text);
    };
    Caller caller;
    char text[] = "abc";
    caller.chars = caller.text = text;
    caller.bytes = reinterpret_cast<unsigned char*>(text);
    const GraphRead read = readGraph(graphStreamOf(caller), Caller_type);
    ASSERT_NE(nullptr, read.object) << read.error;
    auto* const copy = static_cast<Caller*>(read.object);
    EXPECT_STREQ("abc", copy->chars);
    EXPECT_EQ(copy->chars, copy->text);
    EXPECT_EQ(copy->chars, reinterpret_cast<char*>(copy->bytes));
    delete[] copy->chars;
    delete copy;
}

// What has no way to end stays with the host that has made it.
TEST_F(fxGraphCalls, objectsWithoutAnEndStayAfterAFailure) {
    Caller made;
    static Caller* toGive;
    toGive = &made;
    static fxTypeObj endless(
        "GraphEndless", 1, [](fxTypeObj&) -> void* { return toGive; }, nullptr, Caller::xdr);
    Caller::steps = [](Caller& c, fxTranscriber& t) { return t.xdr(&c.value, 1); };
    GraphBytes b;
    b.type(2, "GraphEndless").record(10, {1, 2, 1}, b.word(7)).end(1);
    const GraphRead read = readGraph(b.str(), endless);
    EXPECT_EQ(nullptr, read.object);
    EXPECT_EQ(7, made.value);
}

TEST(fxGraphCallsDeathTest, whatIsEmbeddedHasAnAddress) {
    const Misuse table[] = {
        {"no object to embed", [] {},
         [] {
             const Held<> stream;
             fxGraphWriter writer(stream.get());
             Caller other;
             writer.xdr(Caller_type, &other, nullptr);
         },
         "fxGraphWriter::xdr: address is null"},
    };
    expectStops(table);
}
