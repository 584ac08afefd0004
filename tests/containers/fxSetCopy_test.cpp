// fxSetCopy_test.cpp - sets copied and assigned.

#include <csignal>
#include <cstdlib>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxSet.h"
#include "tests/support/dying.h"
#include "tests/support/recordingTranscriber.h"
#include "tests/support/testSet.h"

namespace {

// A set made from a temporary.
class FromTemporary : public fxSet {
public:
    explicit FromTemporary(const fxTmpSet& other) : fxSet(other) {}
    unsigned char xdrKey(fxTranscriber&, void*) override { return 0; }
};

}  // namespace

// Copying.

TEST(fxSetCopy, copyOfAnEmptySetHasNoBuckets) {
    TestSet original(7);
    original.count = 2;
    const TestSet copy(original);
    EXPECT_EQ(0u, copy.getNumBuckets());
    EXPECT_EQ(0u, copy.length());
    EXPECT_EQ(0, copy.count);
    EXPECT_EQ("", copy.contents());
    EXPECT_FALSE(copy.has(1));
    EXPECT_EQ(nullptr, copy.at(1));
}

TEST(fxSetCopy, chainsDecideWhetherASetIsEmpty) {
    TestSet original(7);
    original.put(1);
    original.drop(1);
    original.numItems = 3;
    EXPECT_EQ(0u, TestSet(original).getNumBuckets());
    original.numItems = 0;
}

TEST(fxSetCopy, temporaryIsTheCopyOfAnEmptySet) {
    const TestSet empty(7);
    const fxTmpSet temporary(empty);
    EXPECT_EQ(0u, temporary.getNumBuckets());
    EXPECT_EQ(0u, temporary.length());
    const fxTmpSet again(temporary);
    EXPECT_EQ(0u, again.getNumBuckets());
    const FromTemporary fromTemporary(temporary);
    EXPECT_EQ(0u, fromTemporary.getNumBuckets());
}

TEST(fxSetCopy, deliberateTemporaryCannotBeTranscribed) {
    const TestSet empty;
    fxTmpSet temporary(empty);
    for (auto direction : {RecordingTranscriber::writer, RecordingTranscriber::reader}) {
        RecordingTranscriber t(direction, "some bytes");
        char key[4] = {};
        EXPECT_EQ(0, temporary.xdrKey(t, key));
        EXPECT_EQ("", t.log());
    }
}

namespace {

// Some checkers handle the signal; here it has to end the process.
template <class Copy>
void copyAfterwards(Copy copy) {
    letEndUs(SIGFPE);
    copy();
}

}  // namespace

TEST(fxSetCopyDeathTest, deliberateCopyingAKeyDividesByZero) {
    TestSet s;
    s.put(1);
    EXPECT_EXIT(copyAfterwards([&] { const TestSet copy(s); }), testing::KilledBySignal(SIGFPE),
                "^$");
    EXPECT_EXIT(copyAfterwards([&] { const fxTmpSet copy(s); }), testing::KilledBySignal(SIGFPE),
                "^$");
    TestSet elsewhere(1000);
    elsewhere.put(999);
    EXPECT_EXIT(copyAfterwards([&] { const TestSet copy(elsewhere); }),
                testing::KilledBySignal(SIGFPE), "^$");
}

// A temporary has buckets once it has been read.
TEST(fxSetCopyDeathTest, deliberateCopyingATemporaryWithAKeyDividesByZero) {
    const auto copyOne = [] {
        const TestSet empty;
        fxTmpSet temporary(empty);
        RecordingTranscriber t(RecordingTranscriber::reader);
        t.give(0U).give(4U).give(3U);
        if (temporary.doxdr(t) && temporary.add("key"))
            const FromTemporary copy(temporary);
    };
    EXPECT_EXIT(copyAfterwards(copyOne), testing::KilledBySignal(SIGFPE), "^$");
}

TEST(fxSetCopyDeathTest, addingToATemporaryIsFatal) {
    const TestSet empty;
    fxTmpSet temporary(empty);
    EXPECT_EXIT(temporary.add("key"), testing::KilledBySignal(SIGABRT), "^fxXDRObj: no buckets\n$");
}

// Assigning.

TEST(fxSetCopy, assignmentToItselfDoesNothing) {
    TestSet s;
    s.put(1);
    fxSetIter iter(s);
    s.taken();
    const TestSet& self = s;
    s = self;
    EXPECT_EQ("", s.taken());
    EXPECT_EQ("1: 1", s.contents());
    EXPECT_EQ(1, TestSet::number(iter.getKey()));
}

namespace {

// Releases what an assignment has lost.
void release(TestSet& s, const std::vector<fxSetBucket*>& lost) {
    for (fxSetBucket* b : lost) {
        delete *static_cast<int**>(b->key);
        std::free(b->key);
        delete b;
        --s.keys;
    }
}

}  // namespace

TEST(fxSetCopy, deliberateAssignmentFromAnEmptySetLosesTheEntries) {
    TestSet s(5), empty(3);
    const std::vector<fxSetBucket*> lost = {s.put(7), s.put(2), s.put(4)};
    fxSetIter iter(s);
    s.taken();
    s = empty;
    EXPECT_EQ("", s.taken()) << "no key is ended";
    EXPECT_EQ(3, s.keys);
    EXPECT_EQ("", s.contents());
    EXPECT_EQ(0u, s.length());
    EXPECT_FALSE(s.has(7));
    EXPECT_EQ(nullptr, iter.getKey());
    release(s, lost);

    // It is still a set.
    EXPECT_EQ(5u, s.getNumBuckets());
    EXPECT_EQ(0u, s.iters.length());
    EXPECT_EQ(4u, s.keySize);
    s.put(12);
    EXPECT_EQ("2: 12", s.contents());
    ++iter;
    iter = s;
    EXPECT_EQ(12, TestSet::number(iter.getKey()));
}

TEST(fxSetCopyDeathTest, assignmentFromANonEmptySetIsFatal) {
    TestSet target, source(40);
    source.put(39);
    EXPECT_EXIT(target = source, testing::KilledBySignal(SIGABRT),
                "^fxSet::operator=: not usable on a non-empty set\n$");
}
