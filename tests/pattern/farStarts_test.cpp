// farStarts_test.cpp - searches in which the byte that a match begins with is far away.

#include <cstdlib>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/pattern/fxRegEngine.h"

// The same program searches again and again: it takes larger steps once a place was far.
TEST(farStarts, eachPlaceOfABytesIsFoundHoweverFar) {
    const struct {
        const char* pattern;
        const char* match;
    } cases[] = {{"x", "x"}, {"x.*z", "xyz"}, {"x+", "xxx"}, {"x|xy", "x"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.pattern);
        fxregexp* const program = fxregcomp(c.pattern);
        ASSERT_NE(nullptr, program);
        for (int round = 0; round < 2; ++round) {
            for (std::size_t before = 0; before < 9000; before += before < 100 ? 1 : 977) {
                for (const std::size_t behind : {0u, 1u, 70u, 3000u}) {
                    const std::string text =
                        std::string(before, 'a') + c.match + std::string(behind, 'b');
                    ASSERT_EQ(1, fxregexec(program, text.c_str())) << before;
                    ASSERT_EQ(static_cast<std::ptrdiff_t>(before),
                              program->startp[0] - text.c_str());
                }
                const std::string text(before + 5000, 'a');
                ASSERT_EQ(0, fxregexec(program, text.c_str())) << before;
            }
        }
        std::free(program);
    }
}
