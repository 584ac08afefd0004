// docs/reliability.md beside what measures the figures.

#include <regex>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/runProgram.h"

namespace {

std::set<std::string> figuresIn(const std::string& text, const char* pattern) {
    const std::regex figure(pattern);
    std::set<std::string> names;
    for (std::sregex_iterator at(text.begin(), text.end(), figure), end; at != end; ++at)
        names.insert((*at)[1]);
    return names;
}

}  // namespace

TEST(reliabilityDoc, hasARowForEachFigure) {
    const std::string script = bytesOf(KELVOFXDS_SOURCE_DIR "/tests/figures/goals.sh");
    const std::size_t start = script.find("in_order=\"");
    ASSERT_NE(std::string::npos, start);
    const std::string order = script.substr(start, script.find('"', start + 10) - start);
    const std::set<std::string> measured = figuresIn(order, "\\b([A-Z][0-9])\\b");
    EXPECT_LT(30u, measured.size());
    const std::string page = bytesOf(KELVOFXDS_SOURCE_DIR "/docs/reliability.md");
    EXPECT_EQ(measured, figuresIn(page, "\n\\| ([A-Z][0-9]) \\|"));
}
