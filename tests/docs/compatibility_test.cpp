// docs/compatibility.md and the tests that pin deliberate behaviours name each other.

#include <regex>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/runProgram.h"
#include "tests/support/testNames.h"

namespace {

// What the document's tables name as `suite.test` in their last column.
std::set<std::string> testsOfDocument() {
    const std::string document = bytesOf(KELVOFXDS_SOURCE_DIR "/docs/compatibility.md");
    const std::regex row("\\|([^|\n]*)\\|\n");
    const std::regex name("`([A-Za-z0-9_]+\\.[A-Za-z0-9_]+)`");
    std::set<std::string> names;
    for (std::sregex_iterator cell(document.begin(), document.end(), row), end; cell != end;
         ++cell) {
        const std::string text = (*cell)[1];
        for (std::sregex_iterator match(text.begin(), text.end(), name); match != end; ++match)
            names.insert((*match)[1]);
    }
    return names;
}

}  // namespace

TEST(compatibility, everyTestInTheTableExists) {
    const std::set<std::string> existing = testsOfThisProgram();
    const std::set<std::string> named = testsOfDocument();
    EXPECT_FALSE(named.empty());
    for (const std::string& name : named)
        EXPECT_EQ(1U, existing.count(name)) << name;
}

TEST(compatibility, everyDeliberateTestIsInTheTable) {
    const std::set<std::string> named = testsOfDocument();
    for (const std::string& name : testsOfThisProgram()) {
        const bool isDeliberate = name.find(".deliberate") != std::string::npos;
        EXPECT_TRUE(!isDeliberate || named.count(name) == 1) << name;
    }
}
