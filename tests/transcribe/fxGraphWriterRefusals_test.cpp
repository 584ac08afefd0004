// fxGraphWriterRefusals_test.cpp - what graph writers refuse of sizes and of earlier roots, and of
// streams that stop taking bytes anywhere.

#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/transcribe/fxStdioStream.h"
#include "tests/support/graphBytes.h"
#include "tests/support/graphSteps.h"

namespace {

class Order : public GraphSteps<Order> {
public:
    fxTypeObj& getTypeObj() const override;
    Limb limb;
    Limb* pointer = nullptr;
    fxXDRObj* other = nullptr;
};

fxTypeObj Order_type("WrittenOrder", 1, Order::create, Order::destroy, Order::xdr);
fxTypeObj& Order::getTypeObj() const { return Order_type; }

class fxGraphWriterRefusals : public testing::Test {
protected:
    void TearDown() override { Order::steps = nullptr; }
};

const unsigned int tooMany = 0xFFFFFFFF;

unsigned char embed(fxTranscriber& t, Limb& limb) { return t.xdr(Limb_type, nullptr, &limb); }

}  // namespace

TEST_F(fxGraphWriterRefusals, sizesThatNoStreamCanSayAreRefused) {
    static char bytes[4] = {};
    static short shorts[2] = {};
    static long longs[2] = {};
    static float floats[2] = {};
    static double doubles[2] = {};
    const char* const inPlace = "there are too many elements in place";
    const char* const tooLong = "a block of 4294967295 bytes is too long";
    const struct {
        const char* error;
        Order::Steps steps;
    } cases[] = {
        {inPlace, [](Order&, fxTranscriber& t) { return t.xdr(shorts, tooMany); }},
        {inPlace,
         [](Order&, fxTranscriber& t) {
             return t.xdr(reinterpret_cast<unsigned short*>(shorts), tooMany);
         }},
        {inPlace, [](Order&, fxTranscriber& t) { return t.xdr(longs, tooMany / 4 + 1); }},
        {inPlace,
         [](Order&, fxTranscriber& t) {
             return t.xdr(reinterpret_cast<unsigned long*>(longs), tooMany);
         }},
        {inPlace, [](Order&, fxTranscriber& t) { return t.xdr(floats, tooMany); }},
        {inPlace, [](Order&, fxTranscriber& t) { return t.xdr(doubles, tooMany / 8 + 1); }},
        {tooLong,
         [](Order& o, fxTranscriber& t) {
             o.chars = bytes;
             return t.xdr(&o.chars, tooMany);
         }},
        {"a block of 2147483648 bytes is too long",
         [](Order& o, fxTranscriber& t) {
             o.bytes = reinterpret_cast<unsigned char*>(bytes);
             return t.xdr(&o.bytes, 0x80000000);
         }},
        {tooLong,
         [](Order& o, fxTranscriber& t) {
             o.shorts = shorts;
             return t.xdr(&o.shorts, tooMany);
         }},
        {tooLong,
         [](Order& o, fxTranscriber& t) {
             o.unsignedShorts = reinterpret_cast<unsigned short*>(shorts);
             return t.xdr(&o.unsignedShorts, tooMany);
         }},
        {tooLong,
         [](Order& o, fxTranscriber& t) {
             o.longs = longs;
             return t.xdr(&o.longs, tooMany);
         }},
        {tooLong,
         [](Order& o, fxTranscriber& t) {
             o.unsignedLongs = reinterpret_cast<unsigned long*>(longs);
             return t.xdr(&o.unsignedLongs, tooMany);
         }},
        {tooLong,
         [](Order& o, fxTranscriber& t) {
             o.floats = floats;
             return t.xdr(&o.floats, tooMany);
         }},
        {tooLong,
         [](Order& o, fxTranscriber& t) {
             o.doubles = doubles;
             return t.xdr(&o.doubles, tooMany);
         }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(&c - cases);
        Order::steps = c.steps;
        Order order;
        const Held<> stream;
        const auto writer = graphWriterOn(stream.get());
        EXPECT_EQ(0, writer->writeObject(&order, &order));
        EXPECT_STREQ(c.error, writer->lastError());
        EXPECT_EQ(25u, stream->length());
    }
}

// What a root writes that keeps the numbers of the root before.
TEST_F(fxGraphWriterRefusals, whatAnEarlierRootHasWrittenOtherwiseIsRefused) {
    static char text[] = "abcd";
    const struct {
        const char* error;
        Order::Steps steps[2];
    } cases[] = {
        {"a block of 4 bytes has been written with 2 already",
         {[](Order& o, fxTranscriber& t) { return t.xdr(&o.chars, 2); },
          [](Order& o, fxTranscriber& t) { return t.xdr(&o.chars, 4); }}},
        {"",
         {[](Order& o, fxTranscriber& t) { return t.xdr(&o.chars, 4); },
          [](Order& o, fxTranscriber& t) { return t.xdr(&o.chars, 2); }}},
        {"an embedded \"Limb\" was written by itself in an earlier root",
         {[](Order& o, fxTranscriber& t) {
              return t.xdr(&o.pointer, o.pointer, Limb_type, nullptr, nullptr);
          },
          [](Order& o, fxTranscriber& t) { return embed(t, o.limb); }}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.error);
        Order first;
        Order second;
        first.chars = second.chars = text;
        first.pointer = &second.limb;
        const Held<> stream;
        const auto writer = graphWriterOn(stream.get());
        writer->keepIdentity(true);
        Order::steps = c.steps[0];
        ASSERT_EQ(1, writer->writeObject(&first, &first)) << writer->lastError();
        const unsigned int length = stream->length();
        Order::steps = c.steps[1];
        EXPECT_EQ(c.error[0] == '\0', writer->writeObject(&second, &second));
        EXPECT_STREQ(c.error, writer->lastError());
        EXPECT_EQ(c.error[0] != '\0', stream->length() == length);
        // Forgotten, it can be written.
        writer->keepIdentity(false);
        EXPECT_EQ(1, writer->writeObject(&second, &second)) << writer->lastError();
    }
}

// As the part of a base class is, which its derived class transcribes, too.
TEST_F(fxGraphWriterRefusals, whatIsEmbeddedTwiceInOneBodyIsWrittenOnce) {
    Order::steps = [](Order& o, fxTranscriber& t) -> unsigned char {
        return embed(t, o.limb) && embed(t, o.limb) &&
               t.xdr(&o.pointer, o.pointer, Limb_type, nullptr, nullptr);
    };
    Order order;
    order.limb.length = 5;
    order.pointer = &order.limb;
    const short one = 1;
    GraphBytes b(*reinterpret_cast<const char*>(&one) == 0);
    b.type(2, "WrittenOrder").record(10, {1, 2, 1}).type(3, "Limb");
    b.record(13, {4}, b.word(5)).record(1).record(14, {4}).record(12, {4}).end();
    const std::string bytes = graphStreamOf(order);
    EXPECT_EQ(b.str(), bytes);

    const GraphRead read = readGraph(bytes, Order_type);

    ASSERT_NE(nullptr, read.object) << read.error;
    auto* const copy = static_cast<Order*>(read.object);
    EXPECT_EQ(5, copy->limb.length);
    EXPECT_EQ(&copy->limb, copy->pointer);
    delete copy;
}

// Long blocks go to the stream from where they lie, in pieces; so does what is long in place.
TEST_F(fxGraphWriterRefusals, aStreamThatStopsAnywhereFailsTheWrite) {
    static std::vector<char> much(70000);
    for (std::size_t i = 0; i < much.size(); ++i)
        much[i] = static_cast<char>(i * 7);
    static unsigned int blockSize;
    static unsigned int placeSize;
    Order::steps = [](Order& o, fxTranscriber& t) -> unsigned char {
        std::vector<char> place(placeSize);
        if (!t.isReading())
            place.assign(much.data(), much.data() + placeSize);
        return t.xdr(&o.chars, blockSize) && t.xdr(place.data(), placeSize) &&
               std::memcmp(place.data(), much.data(), placeSize) == 0 &&
               t.xdr(&o.other, o.other, fxXDRObj_type, nullptr, nullptr) && embed(t, o.limb);
    };
    const struct {
        unsigned int block, place;
    } cases[] = {{10, 10}, {4096, 5000}, {65536, 65537}, {70000, 70000}, {32700, 60}, {60, 32700}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.block << " and " << c.place << " bytes");
        blockSize = c.block;
        placeSize = c.place;
        Order order;
        Limb limb;
        order.chars = much.data();
        order.other = &limb;
        const std::string whole = graphStreamOf(order);
        const GraphRead read = readGraph(whole, Order_type);
        ASSERT_NE(nullptr, read.object) << read.error;
        auto* const copy = static_cast<Order*>(read.object);
        EXPECT_EQ(0, std::memcmp(copy->chars, much.data(), c.block));
        delete[] copy->chars;
        delete copy->other;
        delete copy;

        const auto size = static_cast<unsigned int>(whole.size());
        // All of the first bytes and of the last ones, and some between them.
        for (unsigned int room = 25;
             room<size; room += room> 200 && room + 10200 < size ? 9973 : 7) {
            const Held<NarrowStream> stream(room);
            const auto writer = graphWriterOn(stream.get());
            ASSERT_EQ(0, writer->writeObject(&order, &order)) << room;
            ASSERT_STREQ("the stream does not take what is written", writer->lastError());
        }
    }
}

// Each record of a long sequence may be the first that does not fit.
TEST_F(fxGraphWriterRefusals, aFullStreamFailsEachKindOfRecord) {
    static Limb limbs[2];
    static long longs[3];
    const struct {
        const char* name;
        Order::Steps steps;
    } cases[] = {
        {"nulls",
         [](Order& o, fxTranscriber& t) {
             fxXDRObj* none = nullptr;
             o.chars = nullptr;
             return t.xdr(&none, none, fxXDRObj_type, nullptr, nullptr);
         }},
        {"blocks",
         [](Order& o, fxTranscriber& t) {
             o.longs = longs;
             return t.xdr(&o.longs, 3);
         }},
        {"objects",
         [](Order& o, fxTranscriber& t) {
             o.pointer = &limbs[0];
             return t.xdr(&o.pointer, o.pointer, Limb_type, nullptr, nullptr);
         }},
        {"embedded", [](Order&, fxTranscriber& t) { return embed(t, limbs[1]); }},
        {"strings",
         [](Order&, fxTranscriber& t) {
             fxStr texts[2] = {"a", "b"};
             return t.xdr(texts, 2);
         }},
        {"words", [](Order&, fxTranscriber& t) { return t.xdr(longs, 3); }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Order::steps = [&](Order& o, fxTranscriber& t) -> unsigned char {
            for (unsigned int i = 0; i < 40000; ++i) {
                if (!c.steps(o, t))
                    return 0;
            }
            return 1;
        };
        Order order;
        for (const unsigned int room : {25U, 1000U, 33000U}) {
            const Held<NarrowStream> stream(room);
            const auto writer = graphWriterOn(stream.get());
            EXPECT_EQ(0, writer->writeObject(&order, &order));
            EXPECT_STREQ("the stream does not take what is written", writer->lastError());
            EXPECT_GE(room, stream->length());
            EXPECT_EQ(0, writer->flush());
        }
    }
}

TEST_F(fxGraphWriterRefusals, afterAFailureAnXdrWritesNothingMore) {
    static Limb limb;
    static unsigned int taken;
    Order::steps = [](Order& o, fxTranscriber& t) -> unsigned char {
        fxXDRObj* const none = nullptr;
        o.pointer = &limb;
        o.chars = nullptr;
        // It does not look at what the first failing call returns.
        static_cast<void>(t.xdr(&o.pointer, nullptr, Limb_type, nullptr, nullptr));
        int value = 0;
        fxStr text = "text";
        taken += t.xdr(&value, 1);
        taken += t.xdr(&text, 1);
        taken += t.xdr(&o.chars, 1);
        taken += t.xdr(&o.pointer, none, Limb_type, nullptr, nullptr);
        taken += embed(t, limb);
        return 1;
    };
    taken = 0;
    Order order;
    const Held<> stream;
    const auto writer = graphWriterOn(stream.get());
    EXPECT_EQ(0, writer->writeObject(&order, &order));
    EXPECT_STREQ("a pointer to an object came without the object", writer->lastError());
    EXPECT_EQ(0u, taken);
    EXPECT_EQ(25u, stream->length());
}

TEST_F(fxGraphWriterRefusals, flushIsWellWithStreamsThatHaveTakenAll) {
    Limb limb;
    const Held<> memory;
    const auto writer = graphWriterOn(memory.get());
    EXPECT_EQ(1, writer->writeObject(&limb, &limb));
    EXPECT_EQ(1, writer->flush());
    const Held<fxStdioStream> file("/dev/null", fxStream::writeStream);
    const auto another = graphWriterOn(file.get());
    EXPECT_EQ(1, another->writeObject(&limb, &limb));
    EXPECT_EQ(1, another->flush());
    EXPECT_STREQ("", another->lastError());
}
