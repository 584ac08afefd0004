// fxIndexing_test.cpp - how the index beside chains compares texts: all of each, and no more.

#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxIndexedInternal.h"
#include "tests/support/pageEnd.h"

TEST(fxIndexing, textsAreAlikeWhenEveryByteIs) {
    PageEnd first(4096), second(4096);
    for (unsigned int n = 0; n < 70; ++n) {
        const std::string text(n, 'x');
        EXPECT_TRUE(fxIndexing::areAlike(first.put(text), second.put(text), n)) << n;
        for (unsigned int place = 0; place < n; ++place) {
            std::string other = text;
            other[place] = 'y';
            EXPECT_FALSE(fxIndexing::areAlike(first.put(text), second.put(other), n))
                << n << ", " << place;
        }
    }
}

TEST(fxIndexing, aTextsOwnLengthCountsOrItsFirstZero) {
    const fxStr text("needle");
    EXPECT_TRUE(fxIndexing::textsAreAlike(text, fxStr("needle")));
    EXPECT_FALSE(fxIndexing::textsAreAlike(text, fxStr("needles")));
    EXPECT_FALSE(fxIndexing::textsAreAlike(fxStr("needles"), text));
    EXPECT_FALSE(fxIndexing::textsAreAlike(text, fxStr()));
    EXPECT_TRUE(fxIndexing::textsAreAlike(fxStr("a\0b", 3), fxStr("a\0c", 3)));
    EXPECT_TRUE(fxIndexing::textsAreAlike(fxStr("a\0b", 3), fxStr("a")));
}
