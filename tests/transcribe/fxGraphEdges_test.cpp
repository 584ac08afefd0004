// fxGraphEdges_test.cpp - what graph transcribers refuse, with the reason, and what they take of
// every type of block and element.

#include <cstdlib>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/transcribe/fxGraphReader.h"
#include "kelvofxds/transcribe/fxGraphWriter.h"
#include "kelvofxds/transcribe/fxMemoryStream.h"
#include "tests/support/graphBytes.h"
#include "tests/support/graphSteps.h"
#include "tests/support/heapCalls.h"

namespace {

class Edge : public GraphSteps<Edge> {
public:
    fxTypeObj& getTypeObj() const override;
    unsigned char* text = nullptr;
    fxStr strings[2];
    Edge* other = nullptr;
};

fxTypeObj Edge_type("Edge", 1, Edge::create, Edge::destroy, Edge::xdr);
fxTypeObj& Edge::getTypeObj() const { return Edge_type; }

// Another record of the same name.
fxTypeObj newerEdge("Edge", 2, Edge::create, Edge::destroy, Edge::xdr);

std::string longName(70000, 'n');
fxTypeObj longNamed(longName.c_str(), 1, Edge::create, Edge::destroy, Edge::xdr);

const unsigned int n = 3;

// Pointers are set when the target arrives, which may be later: they are handed over in place.
unsigned char allBlocks(Edge& e, fxTranscriber& t) {
    return t.xdr(&e.chars, n) && t.xdr(&e.bytes, n) && t.xdr(&e.shorts, n) &&
           t.xdr(&e.unsignedShorts, n) && t.xdr(&e.longs, n) && t.xdr(&e.unsignedLongs, n) &&
           t.xdr(&e.floats, n) && t.xdr(&e.doubles, n) && t.xdr(&e.text) && t.xdr(e.strings, 2);
}

template <class Element>
Element* threeOf(Element first) {
    auto* all = new Element[n];
    for (unsigned int i = 0; i < n; ++i)
        all[i] = static_cast<Element>(first + static_cast<Element>(i));
    return all;
}

template <class Element>
void expectSame(Element* a, Element* b) {
    ASSERT_NE(nullptr, b);
    EXPECT_NE(a, b);
    for (unsigned int i = 0; i < n; ++i)
        EXPECT_EQ(a[i], b[i]) << i;
    delete[] a;
    delete[] b;
}

}  // namespace

TEST(fxGraphEdges, blocksOfEveryTypeComeBack) {
    Edge::steps = allBlocks;
    Edge edge;
    edge.chars = threeOf<char>('a');
    edge.bytes = threeOf<unsigned char>(200);
    edge.shorts = threeOf<short>(-2);
    edge.unsignedShorts = threeOf<unsigned short>(65000);
    edge.longs = threeOf<long>(-70000);
    edge.unsignedLongs = threeOf<unsigned long>(4000000000UL);
    edge.floats = threeOf<float>(0.5F);
    edge.doubles = threeOf<double>(0.25);
    edge.text = reinterpret_cast<unsigned char*>(::strdup("text"));
    edge.strings[0] = "first";
    edge.strings[1] = "second";
    const Held<> stream;
    const auto writer = graphWriterOn(stream.get());
    ASSERT_EQ(1, writer->writeObject(&edge, &edge)) << writer->lastError();
    const auto reader = graphReaderOn(stream.get());

    auto* const copy = static_cast<Edge*>(reader->readObject(Edge_type));

    ASSERT_NE(nullptr, copy) << reader->lastError();
    expectSame(edge.chars, copy->chars);
    expectSame(edge.bytes, copy->bytes);
    expectSame(edge.shorts, copy->shorts);
    expectSame(edge.unsignedShorts, copy->unsignedShorts);
    expectSame(edge.longs, copy->longs);
    expectSame(edge.unsignedLongs, copy->unsignedLongs);
    expectSame(edge.floats, copy->floats);
    expectSame(edge.doubles, copy->doubles);
    EXPECT_STREQ("text", reinterpret_cast<char*>(copy->text));
    std::free(edge.text);
    delete[] copy->text;
    EXPECT_EQ(fxStr("first"), copy->strings[0]);
    EXPECT_EQ(fxStr("second"), copy->strings[1]);
    delete copy;
    Edge::steps = nullptr;
}

TEST(fxGraphEdges, whatAWriterRefusesItSays) {
    const struct {
        std::string error;
        Edge::Steps steps;
    } cases[] = {
        {"there are two types \"Edge\", of versions 1 and 2",
         [](Edge&, fxTranscriber& t) {
             Edge other;
             Edge::steps = nullptr;  // the other has nothing in it
             return t.xdr(newerEdge, nullptr, &other);
         }},
        {"the name of the type \"" + longName.substr(0, 80) + "...\" is too long",
         [](Edge&, fxTranscriber& t) {
             Edge other;
             Edge::steps = nullptr;  // the other has nothing in it
             return t.xdr(longNamed, nullptr, &other);
         }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.error);
        Edge::steps = c.steps;
        Edge edge;
        const Held<> stream;
        const auto writer = graphWriterOn(stream.get());
        EXPECT_EQ(0, writer->writeObject(&edge, &edge));
        EXPECT_EQ(c.error, writer->lastError());
    }
    Edge::steps = nullptr;
}

TEST(fxGraphEdges, rootsThatFailBeforeTheStreamHasAnythingHaveNeverBeen) {
    Edge edge;
    const std::string alone = graphStreamOf(edge);
    const Held<> stream;
    const auto writer = graphWriterOn(stream.get());
    for (unsigned int i = 0; i < 3; ++i) {
        Edge::steps = [](Edge&, fxTranscriber&) -> unsigned char { return 0; };
        EXPECT_EQ(0, writer->writeObject(&edge, &edge));
        EXPECT_STREQ("the xdr of the type \"Edge\" returned 0", writer->lastError()) << i;
        Edge::steps = nullptr;
        EXPECT_EQ(1, writer->flush());
    }
    EXPECT_EQ(1, writer->writeObject(&edge, &edge));
    EXPECT_EQ(alone, std::string(stream->getBase(), stream->length()));
}

// Objects of earlier roots can be pointed to, and not be embedded.
TEST(fxGraphEdges, noObjectOfAnEarlierRootIsEmbedded) {
    for (const std::uint32_t embedded : {1U, 3U}) {
        GraphBytes bytes;
        bytes.type(2, "Edge").record(10, {1, 2, 1}).record(11, {3}).record(10, {3, 2, 1});
        bytes.record(1).end().record(0).record(10, {4, 2, 1}).record(13, {embedded}).end();
        const Held<> stream(static_cast<const void*>(bytes.str().data()),
                            static_cast<unsigned int>(bytes.str().size()));
        const auto reader = graphReaderOn(stream.get());
        Edge::steps = [](Edge& e, fxTranscriber& t) {
            return t.xdr(&e.other, e.other, Edge_type, &e, nullptr);
        };
        auto* const first = static_cast<Edge*>(reader->readObject(Edge_type));
        ASSERT_NE(nullptr, first) << reader->lastError();
        Edge::steps = [](Edge&, fxTranscriber& t) {
            Edge inner;
            return t.xdr(Edge_type, nullptr, &inner);
        };
        EXPECT_EQ(nullptr, reader->readObject(Edge_type));
        EXPECT_NE(nullptr, std::strstr(reader->lastError(), "belongs to an earlier root"))
            << reader->lastError();
        delete first->other;
        delete first;
        Edge::steps = nullptr;
    }
}

TEST(fxGraphEdges, withoutAStreamNothingIsWrittenOrRead) {
    Edge edge;
    fxGraphWriter writer(nullptr);
    EXPECT_EQ(0, writer.writeObject(&edge, &edge));
    EXPECT_STREQ("there is no stream", writer.lastError());
    fxGraphReader reader(nullptr, 0x1122, 0x33445566, "ieee");
    EXPECT_EQ(nullptr, reader.readObject(Edge_type));
    EXPECT_NE(nullptr, std::strstr(reader.lastError(), "there is no stream"));
}

TEST(fxGraphEdges, aReaderReadsOnly) {
    const Held<> stream;
    fxGraphReader reader(stream.get(), 0x1122, 0x33445566, "ieee");
    Edge edge;
    EXPECT_EQ(0, reader.writeObject(&edge, &edge));
    EXPECT_STREQ("fxGraphReader", reader.className());
    EXPECT_EQ(0u, stream->length());
}

TEST(fxGraphEdges, anXdrMayFailTheReadWithItsReason) {
    Edge edge;
    const Held<> stream;
    ASSERT_EQ(1, graphWriterOn(stream.get())->writeObject(&edge, &edge));
    const auto reader = graphReaderOn(stream.get());
    Edge::steps = [](Edge&, fxTranscriber& t) {
        return fxGraphReader::of(t)->fail("the number is %d", 7);
    };
    EXPECT_EQ(nullptr, reader->readObject(Edge_type));
    Edge::steps = nullptr;
    EXPECT_NE(nullptr, std::strstr(reader->lastError(), "the number is 7")) << reader->lastError();
}

TEST(fxGraphEdges, anXdrMayNotReadAnotherRoot) {
    Edge edge;
    const Held<> stream;
    ASSERT_EQ(1, graphWriterOn(stream.get())->writeObject(&edge, &edge));
    const auto reader = graphReaderOn(stream.get());
    Edge::steps = [](Edge&, fxTranscriber& t) -> unsigned char {
        return t.readObject(Edge_type) != nullptr;
    };
    EXPECT_EQ(nullptr, reader->readObject(Edge_type));
    Edge::steps = nullptr;
    EXPECT_NE(nullptr, std::strstr(reader->lastError(), "an xdr has called readObject"))
        << reader->lastError();
}

TEST(fxGraphEdges, aWriterThatIsResetWritesObjectsAnew) {
    Edge edge;
    const Held<> stream;
    const auto writer = graphWriterOn(stream.get());
    ASSERT_EQ(1, writer->writeObject(&edge, &edge));
    const unsigned int once = stream->length();
    writer->reset();
    ASSERT_EQ(1, writer->writeObject(&edge, &edge));
    EXPECT_LT(once, stream->length());
    const auto reader = graphReaderOn(stream.get());
    for (unsigned int i = 0; i < 2; ++i) {
        auto* const copy = static_cast<Edge*>(reader->readObject(Edge_type));
        EXPECT_NE(nullptr, copy) << reader->lastError();
        delete copy;
        reader->reset();
    }
}

#ifndef __SANITIZE_ADDRESS__
namespace {

const unsigned int many = 3000;
char blocks[many];

// Meets blocks when there is no memory any more; ends with 0 if the call that fails says so.
template <unsigned int before>
unsigned char metWithoutMemory(Edge&, fxTranscriber& t) {
    auto& writer = static_cast<fxGraphWriter&>(t);
    for (unsigned int i = 0; i < many; ++i) {
        if (i == before)
            refuseBlocksFrom(0);
        char* block = blocks + i;
        const bool isDone = t.xdr(&block, 1) != 0;
        if (isDone != (writer.lastError()[0] == '\0'))
            std::_Exit(2);
        if (!isDone)
            std::_Exit(std::strcmp(writer.lastError(), "there is no memory for what was met"));
    }
    std::_Exit(3);
}

void writeWithoutMemory(const Edge::Steps& steps) {
    Edge::steps = steps;
    Edge edge;
    const Held<> stream;
    graphWriterOn(stream.get())->writeObject(&edge, &edge);
}

}  // namespace

// What is known of the blocks grows in several tables, each of which may be the one that cannot.
TEST(fxGraphEdgesDeathTest, aBlockWithoutMemoryFailsTheCall) {
    for (auto* const steps :
         {metWithoutMemory<0>, metWithoutMemory<20>, metWithoutMemory<40>, metWithoutMemory<60>,
          metWithoutMemory<100>, metWithoutMemory<200>, metWithoutMemory<300>,
          metWithoutMemory<500>, metWithoutMemory<700>, metWithoutMemory<1000>})
        EXPECT_EXIT(writeWithoutMemory(steps), testing::ExitedWithCode(0), "");
}
#endif
