// objectVersion_test.cpp - which version of a class its xdr is told.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/graphBytes.h"
#include "tests/support/graphs.h"
#include "tests/support/recordingTranscriber.h"

namespace {

// A base, a member and a class, each of which has a version of its own and had
// fewer members before.
struct Part : fxXDRObj {
    fxTypeObj& getTypeObj() const override;
    unsigned char xdr(fxTranscriber& t) override {
        version = t.objectVersion();
        return t.xdr(&old, 1) && (version < 7 || t.xdr(&added, 1));
    }
    static void* create(fxTypeObj&) { return new Part; }
    static void destroy(void* object) { delete static_cast<Part*>(object); }
    static unsigned char xdr(void* object, fxTranscriber& t) {
        return static_cast<Part*>(object)->Part::xdr(t);
    }
    int old = 1;
    int added = 2;
    unsigned int version = 0;
};
fxTypeObj Part_type("VersionedPart", 7, Part::create, Part::destroy, Part::xdr);
fxTypeObj& Part::getTypeObj() const { return Part_type; }

struct Whole : Part {
    fxTypeObj& getTypeObj() const override;
    unsigned char xdr(fxTranscriber& t) override {
        before = t.objectVersion();
        const unsigned char isDone = t.xdr(Part_type, nullptr, static_cast<Part*>(this)) &&
                                     t.xdr(Part_type, nullptr, &member) &&
                                     (t.objectVersion() < 20261122 || t.xdr(&late, 1));
        after = t.objectVersion();
        return isDone;
    }
    static void* create(fxTypeObj&) { return new Whole; }
    static void destroy(void* object) { delete static_cast<Whole*>(object); }
    static unsigned char xdr(void* object, fxTranscriber& t) {
        return static_cast<Whole*>(object)->Whole::xdr(t);
    }
    Part member;
    int late = 3;
    unsigned int before = 0;
    unsigned int after = 0;
};
// A date: greater than a byte.
fxTypeObj Whole_type("VersionedWhole", 20261122, Whole::create, Whole::destroy, Whole::xdr);
fxTypeObj& Whole::getTypeObj() const { return Whole_type; }

void expectOwnVersions(const Whole& whole) {
    EXPECT_EQ(20261122u, whole.before);
    EXPECT_EQ(20261122u, whole.after);
    EXPECT_EQ(7u, whole.version);
    EXPECT_EQ(7u, whole.member.version);
}

}  // namespace

TEST(objectVersion, isTheClassesOwnWhileWriting) {
    Whole inGraph;
    graphStreamOf(inGraph);
    expectOwnVersions(inGraph);

    Whole inStandard;
    const Held<> stream;
    const std::unique_ptr<fxTranscriber> writer(fxTranscriber::getWriter(stream.get()));
    ASSERT_EQ(1, writer->writeObject(&inStandard, &inStandard));
    inStandard.version = 7;  // such streams leave out what begins where the object does
    expectOwnVersions(inStandard);
    EXPECT_EQ(0xFFFFFFFFu, writer->objectVersion());
}

TEST(objectVersion, isTheStreamsOwnWhileReading) {
    Whole whole;
    whole.old = 10;
    whole.added = 11;
    whole.member.old = 12;
    whole.late = 13;
    const GraphRead read = readGraph(graphStreamOf(whole), Whole_type);
    ASSERT_EQ("", read.error);
    const std::unique_ptr<Whole> copy(static_cast<Whole*>(read.object));
    expectOwnVersions(*copy);
    EXPECT_EQ(10, copy->old);
    EXPECT_EQ(11, copy->added);
    EXPECT_EQ(12, copy->member.old);
    EXPECT_EQ(13, copy->late);
}

TEST(objectVersion, ofAnOlderStreamIsOlderForEachPart) {
    GraphBytes b;
    b.type(2, "VersionedWhole", 5).record(10, {1, 2, 5});
    b.type(3, "VersionedPart", 6).record(13, {4}, b.word(10)).record(13, {5}, b.word(12)).end();
    const GraphRead read = readGraph(b.str(), Whole_type);
    ASSERT_EQ("", read.error);
    const std::unique_ptr<Whole> copy(static_cast<Whole*>(read.object));
    EXPECT_EQ(5u, copy->before);
    EXPECT_EQ(5u, copy->after);
    EXPECT_EQ(6u, copy->version);
    EXPECT_EQ(6u, copy->member.version);
    EXPECT_EQ(10, copy->old);
    EXPECT_EQ(2, copy->added);
    EXPECT_EQ(12, copy->member.old);
    EXPECT_EQ(3, copy->late);
}

TEST(objectVersion, ofAStreamFromTheFutureIsAFailure) {
    GraphBytes b;
    b.type(2, "VersionedWhole", 5).record(10, {1, 2, 5});
    b.type(3, "VersionedPart", 8).record(13, {4}, b.word(10) + b.word(1)).end();
    const GraphRead read = readGraph(b.str(), Whole_type);
    EXPECT_EQ(nullptr, read.object);
    EXPECT_EQ(
        "offset 87, record 4: type \"VersionedPart\" has version 8; this program knows "
        "versions up to 7",
        read.error);
}

TEST(objectVersion, isTheGreatestOnATranscriberThatDoesNotTell) {
    RecordingTranscriber t(RecordingTranscriber::writer);
    EXPECT_EQ(0xFFFFFFFFu, t.objectVersion());
    Whole whole;
    EXPECT_EQ(1, fxXdrContents(Whole_type, &whole, t, [](void* object, fxTranscriber& inner) {
                  static_cast<Whole*>(object)->before = inner.objectVersion();
                  return static_cast<unsigned char>(1);
              }));
    EXPECT_EQ(20261122u, whole.before);
    EXPECT_EQ(0xFFFFFFFFu, t.objectVersion());
}
