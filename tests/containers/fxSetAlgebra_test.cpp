// fxSetAlgebra_test.cpp - sets united, intersected and subtracted.

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <cstdio>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxSet.h"
#include "tests/support/dying.h"
#include "tests/support/testSet.h"

TEST(fxSetAlgebra, unionAddsEveryKeyOfTheOther) {
    TestSet s(5), other(3);
    for (int key : {2, 7})
        s.put(key);
    for (int key : {7, 4, 1})
        other.put(key);
    s.taken();
    fxSet& result = s |= other;
    // The other's chains are 1: 1 4 7.
    EXPECT_EQ("copyKey:1 copyKey:4", s.taken());
    EXPECT_EQ("1: 1 2: 7 2 4: 4", s.contents());
    EXPECT_EQ(4u, s.length());
    EXPECT_EQ(&s, &result);
    EXPECT_EQ("1: 1 4 7", other.contents());
    EXPECT_EQ("copyKey:7 copyKey:4 copyKey:1", other.taken());
}

TEST(fxSetAlgebra, intersectionKeepsTheKeysThatTheOtherContains) {
    TestSet s(5), other(3);
    for (int key : {2, 7, 12, 17, 3, 4})
        s.put(key);
    for (int key : {12, 2, 3, 99})
        other.put(key);
    const fxSetBucket *kept12 = s.entry(12), *kept2 = s.entry(2);
    s.taken();
    fxSet& result = s &= other;
    EXPECT_EQ("destroyKey:17 destroyKey:7 destroyKey:4", s.taken());
    EXPECT_EQ("2: 12 2 3: 3", s.contents());
    EXPECT_EQ(3u, s.length());
    EXPECT_EQ(3, s.keys);
    EXPECT_EQ(&s, &result);
    EXPECT_EQ(kept12, s.entry(12)) << "what stays, stays in place";
    EXPECT_EQ(kept2, s.entry(2));
    EXPECT_EQ(4u, other.length());
}

TEST(fxSetAlgebra, differenceRemovesEveryKeyOfTheOther) {
    TestSet s(5), other(3);
    for (int key : {2, 7, 12, 3})
        s.put(key);
    for (int key : {12, 3, 99, 2})
        other.put(key);
    s.taken();
    fxSet& result = s -= other;
    // The other's chains are 0: 99 3 12 2: 2.
    EXPECT_EQ("destroyKey:3 destroyKey:12 destroyKey:2", s.taken());
    EXPECT_EQ("2: 7", s.contents());
    EXPECT_EQ(1u, s.length());
    EXPECT_EQ(&s, &result);
    EXPECT_EQ(4u, other.length());
}

TEST(fxSetAlgebra, unionThenDifferenceLeavesNoKeyOfTheOther) {
    TestSet s(5), other(7);
    for (int key = 0; key < 30; ++key)
        s.put(key);
    for (int key = 20; key < 60; ++key)
        other.put(key);
    s |= other;
    EXPECT_EQ(60u, s.length());
    s -= other;
    EXPECT_EQ(20u, s.length());
    for (int key = 0; key < 60; ++key)
        EXPECT_EQ(key < 20, s.has(key)) << key;
}

TEST(fxSetAlgebra, algebraWithItself) {
    TestSet s(5);
    for (int key : {2, 7, 12, 3})
        s.put(key);
    s.taken();
    const fxSet& self = s;
    s |= self;
    s &= self;
    EXPECT_EQ("", s.taken());
    EXPECT_EQ("2: 12 7 2 3: 3", s.contents());
    s -= self;
    EXPECT_EQ("destroyKey:12 destroyKey:7 destroyKey:2 destroyKey:3", s.taken());
    EXPECT_EQ("", s.contents());
    EXPECT_EQ(0u, s.length());
}

TEST(fxSetAlgebra, algebraWithAnEmptySet) {
    for (bool withoutBuckets : {false, true}) {
        SCOPED_TRACE(withoutBuckets);
        TestSet s(5), empty(3), none(fxSet_type);
        const TestSet& other = withoutBuckets ? none : empty;
        s.put(2);
        s.put(7);
        s |= other;
        s -= other;
        EXPECT_EQ("2: 7 2", s.contents());
        s &= other;
        EXPECT_EQ("", s.contents());
        s |= other;
        s &= other;
        s -= other;
        EXPECT_EQ(0u, s.length());
    }
}

TEST(fxSetAlgebra, aSetWithoutBucketsStaysEmpty) {
    TestSet s(fxSet_type), other(5), empty(3);
    other.put(2);
    s &= other;
    s -= other;
    s |= empty;
    EXPECT_EQ(0u, s.getNumBuckets());
    EXPECT_EQ(0u, s.length());
}

TEST(fxSetAlgebraDeathTest, aUnionThatAddsWithoutBucketsIsFatal) {
    TestSet s(fxSet_type), other(5);
    other.put(2);
    EXPECT_EXIT(s |= other, testing::KilledBySignal(SIGABRT), "^fxXDRObj: no buckets\n$");
}

// The operators that are not implemented.

namespace {

struct Outcome {
    std::string output;
    int status;
};

// What a child writes to standard output, a pipe that is written to in blocks,
// and how it ends.
template <class Work>
Outcome outcomeInChild(Work work) {
    Outcome outcome{"", 0};
    int ends[2];
    if (::pipe(ends) != 0)
        return outcome;
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        static char block[BUFSIZ];
        std::setvbuf(stdout, block, _IOFBF, sizeof block);
        letEndUs(SIGABRT);
        ::dup2(ends[1], STDOUT_FILENO);
        ::close(ends[0]);
        ::close(ends[1]);
        work();
        ::_exit(0);
    }
    ::close(ends[1]);
    char bytes[256];
    for (ssize_t n; (n = ::read(ends[0], bytes, sizeof bytes)) > 0;)
        outcome.output.append(bytes, static_cast<std::size_t>(n));
    ::close(ends[0]);
    ::waitpid(child, &outcome.status, 0);
    return outcome;
}

void expectRefusal(const Outcome& outcome, const std::string& line) {
    EXPECT_EQ(line + "\n", outcome.output);
    ASSERT_TRUE(WIFSIGNALED(outcome.status));
    EXPECT_EQ(SIGABRT, WTERMSIG(outcome.status));
}

}  // namespace

TEST(fxSetAlgebraDeathTest, deliberateOperatorsThatReturnASetAbort) {
    TestSet s, other;
    expectRefusal(outcomeInChild([&] { s | other; }),
                  "Unimplemented operator overloading is called!  fxTmpSet operator|(fxSet const "
                  "&)");
    expectRefusal(outcomeInChild([&] { s& other; }),
                  "Unimplemented operator overloading is called!  fxTmpSet operator&(fxSet const "
                  "&)");
    expectRefusal(outcomeInChild([&] { s - other; }),
                  "Unimplemented operator overloading is called!  fxTmpSet operator-(fxSet const "
                  "&)");
}

TEST(fxSetAlgebraDeathTest, deliberateOperatorsAbortBeforeAnyKeyIsCopied) {
    TestSet s, other;
    s.put(1);
    other.put(1);
    expectRefusal(outcomeInChild([&] {
                      letEndUs(SIGFPE);
                      s | other;
                  }),
                  "Unimplemented operator overloading is called!  fxTmpSet operator|(fxSet const "
                  "&)");
}
