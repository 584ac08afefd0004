// Regular expressions: everything small beside the slow matcher.

#include <algorithm>
#include <string>

#include "tests/support/figure.h"
#include "tests/support/regexComparison.h"

namespace {

// Letters and what is none, and bytes that patterns have to escape.
Texts smallSubjects() {
    Texts subjects = textsUpTo("ab ", 4);
    for (const std::string& other : textsUpTo("a(-\n", 3))
        subjects.push_back(other);
    std::sort(subjects.begin(), subjects.end());
    subjects.erase(std::unique(subjects.begin(), subjects.end()), subjects.end());
    return subjects;
}

}  // namespace

TEST(figureX1, smallPatternsAndSubjectsGiveWhatTheSlowMatcherGives) {
    const unsigned long least = figureSize(50000000, 300000);
    takeRegErrors();
    const Texts subjects = smallSubjects();
    RegexComparison comparison;
    const unsigned int longest = isFullFigure() ? 5 : 3;
    for (unsigned int length = 0; length <= longest; ++length)
        comparison.compareAll(smallPatternBytes, length, subjects);
    // Repeated groups and loops within loops take some more bytes.
    for (unsigned int length = longest + 1; length <= longest + 2; ++length)
        comparison.compareAll("ab()|*+", length, subjects);
    comparison.print("small patterns");
    EXPECT_EQ(Messages(), takeRegErrors());
    reportFigure(
        "X1", std::to_string(comparison.pairs) + ";" + std::to_string(comparison.differences),
        std::to_string(least) + ";0", comparison.pairs >= least && comparison.differences == 0);
}
