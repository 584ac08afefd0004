#include "kelvofxds/transcribe/fxGraphWriter.h"

#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/transcribe/fxStdioStream.h"
#include "tests/support/graphBytes.h"
#include "tests/support/graphSteps.h"

namespace {

// A sequence of calls, as its test says.
class Script : public fxXDRObj {
public:
    using Steps = unsigned char (*)(Script&, fxTranscriber&);
    explicit Script(Steps s = nullptr) : steps(s) {}
    fxTypeObj& getTypeObj() const override;
    unsigned char xdr(fxTranscriber& t) override { return !steps || steps(*this, t); }
    static void* create(fxTypeObj&) { return new Script; }
    static void destroy(void* object) { delete static_cast<Script*>(object); }
    static unsigned char xdr(void* object, fxTranscriber& t) {
        return static_cast<Script*>(object)->Script::xdr(t);
    }

    Steps steps;
    std::vector<char> bytes;
    char* block = nullptr;
    char* same = nullptr;
    Script* other = nullptr;
};

fxTypeObj Script_type("Script", 1, Script::create, Script::destroy, Script::xdr);
fxTypeObj& Script::getTypeObj() const { return Script_type; }

class Abstract : public fxXDRObj {
public:
    fxTypeObj& getTypeObj() const override;
};
fxTypeObj Abstract_type("WriterAbstract", 1, nullptr, nullptr, nullptr);
fxTypeObj& Abstract::getTypeObj() const { return Abstract_type; }

unsigned char none(Script&, fxTranscriber&) { return 1; }

}  // namespace

TEST(fxGraphWriter, aRootHasItsTypeItsBodyAndAChecksum) {
    Limb limb;
    limb.length = 0x01020304;
    limb.twin = &limb;
    const short one = 1;
    const bool isBig = *reinterpret_cast<const char*>(&one) == 0;
    GraphBytes b(isBig);
    b.type(2, "Limb").record(10, {1, 2, 1}, b.word(0x01020304)).record(12, {1}).end();
    EXPECT_EQ(b.str(), graphStreamOf(limb));
}

TEST(fxGraphWriter, aPayloadHasAtMost65536Bytes) {
    const struct {
        std::size_t size;
        std::vector<std::size_t> payloads;  // of the object's record and those of data
    } cases[] = {
        {0, {0}},
        {1, {1}},
        {255, {255}},
        {256, {256}},
        {4095, {4095}},
        {65535, {0, 65535}},
        {65536, {0, 65536}},
        {65537, {0, 65536, 1}},
        {200000, {0, 65536, 65536, 65536, 3392}},
        {70000, {0, 65536, 4464}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.size);
        Script script([](Script& s, fxTranscriber& t) {
            return t.xdr(s.bytes.data(), static_cast<unsigned int>(s.bytes.size()));
        });
        for (std::size_t i = 0; i < c.size; ++i)
            script.bytes.push_back(static_cast<char>(i * 7));
        const short one = 1;
        GraphBytes b(*reinterpret_cast<const char*>(&one) == 0);
        b.type(2, "Script");
        std::string rest(script.bytes.begin(), script.bytes.end());
        for (std::size_t i = 0; i < c.payloads.size(); ++i) {
            const std::string payload = rest.substr(0, c.payloads[i]);
            rest.erase(0, c.payloads[i]);
            if (i == 0)
                b.record(10, {1, 2, 1}, payload);
            else
                b.record(0, {}, payload);
        }
        b.end();
        EXPECT_EQ(b.str() == graphStreamOf(script), true);
    }
}

TEST(fxGraphWriter, aBlockIsAsLongAsTheLongestOfItsPointersSays) {
    Script script([](Script& s, fxTranscriber& t) {
        return static_cast<unsigned char>(t.xdr(&s.block, 2) && t.xdr(&s.same, 4) &&
                                          t.xdr(&s.block, 3));
    });
    char text[] = "abcd";
    script.block = script.same = text;
    const short one = 1;
    GraphBytes b(*reinterpret_cast<const char*>(&one) == 0);
    b.type(2, "Script").record(10, {1, 2, 1}).record(3, {3, 2}).record(4, {3}).record(4, {3});
    b.record(5, {3, 4}, "abcd").end();
    EXPECT_EQ(b.str(), graphStreamOf(script));
}

TEST(fxGraphWriter, whatCannotBeWrittenIsSaid) {
    const struct {
        const char* error;
        Script::Steps steps;
    } cases[] = {
        {"the xdr of the type \"Script\" returned 0",
         [](Script&, fxTranscriber&) -> unsigned char { return 0; }},
        {"a reader cannot make the abstract type \"WriterAbstract\"",
         [](Script&, fxTranscriber& t) {
             Abstract object;
             Abstract* pointer = &object;
             return t.xdr(&pointer, pointer, Abstract_type, nullptr, nullptr);
         }},
        {"a pointer to an object came without the object",
         [](Script& s, fxTranscriber& t) {
             Script* pointer = &s;
             return t.xdr(&pointer, nullptr, Script_type, nullptr, nullptr);
         }},
        {"an xdr has called writeObject",
         [](Script& s, fxTranscriber& t) { return t.writeObject(&s, &s); }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.error);
        Script script(c.steps);
        const Held<> stream;
        const auto writer = graphWriterOn(stream.get());
        EXPECT_EQ(0, writer->writeObject(&script, &script));
        EXPECT_STREQ(c.error, writer->lastError());
        // The stream has nothing of it, so others follow.
        EXPECT_EQ(25u, stream->length());
        script.steps = none;
        EXPECT_EQ(1, writer->writeObject(&script, &script));
        EXPECT_STREQ("", writer->lastError());
        const auto reader = graphReaderOn(stream.get());
        void* const copy = reader->readObject(Script_type);
        EXPECT_NE(nullptr, copy) << reader->lastError();
        delete static_cast<Script*>(copy);
    }
}

TEST(fxGraphWriter, anAbstractRootIsRefused) {
    Abstract object;
    const Held<> stream;
    const auto writer = graphWriterOn(stream.get());
    EXPECT_EQ(0, writer->writeObject(&object, &object));
    EXPECT_STREQ("a reader cannot make the abstract type \"WriterAbstract\"", writer->lastError());
    EXPECT_EQ(0, writer->writeObject(nullptr, nullptr));
}

TEST(fxGraphWriter, dataOutsideOfARootIsRefused) {
    const Held<> stream;
    fxGraphWriter writer(stream.get());
    int value = 1;
    EXPECT_EQ(0, writer.xdr(&value, 1));
    EXPECT_STREQ("nothing can be written outside of writeObject", writer.lastError());
    EXPECT_EQ(nullptr, writer.readObject(Script_type));
    EXPECT_EQ(0u, stream->length());
    EXPECT_STREQ("fxGraphWriter", writer.className());
    EXPECT_EQ(0, writer.isReading());
}

// Whatever the stream takes, the write fails unless it takes all.
TEST(fxGraphWriter, aStreamThatTakesLessFailsTheWrite) {
    Limb limb;
    limb.twin = &limb;
    const unsigned int size = static_cast<unsigned int>(graphStreamOf(limb).size());
    for (unsigned int room = 25; room < size; ++room) {
        SCOPED_TRACE(room);
        const Held<NarrowStream> stream(room);
        const auto writer = graphWriterOn(stream.get());
        EXPECT_EQ(0, writer->writeObject(&limb, &limb));
        EXPECT_STREQ("the stream does not take what is written", writer->lastError());
        // Nobody knows what it has taken.
        stream->room = 1000;
        EXPECT_EQ(0, writer->writeObject(&limb, &limb));
        EXPECT_STREQ("the stream does not take what is written", writer->lastError());
    }
}

TEST(fxGraphWriter, flushTellsWhetherTheFileHasIt) {
    Limb limb;
    const Held<fxStdioStream> full("/dev/full", fxStream::writeStream);
    const auto writer = graphWriterOn(full.get());
    ASSERT_TRUE(writer);
    EXPECT_EQ(1, writer->writeObject(&limb, &limb));  // it is in the file's buffer
    EXPECT_EQ(0, writer->flush());
    EXPECT_STREQ("the stream does not take what is written", writer->lastError());
}

// One variable, written many times.
TEST(fxGraphWriter, eachRootStandsAlone) {
    const Held<> stream;
    const auto writer = graphWriterOn(stream.get());
    Limb limb;
    unsigned int before = stream->length();
    unsigned int size = 0;
    for (limb.length = 0; limb.length < 3; ++limb.length) {
        ASSERT_EQ(1, writer->writeObject(&limb, &limb));
        const unsigned int more = stream->length() - before;
        EXPECT_EQ(limb.length == 0 ? more : size, more);
        size = more;
        before = stream->length();
    }
}
