// docs/compatibility.md and the tests that pin deliberate behaviours name each other.

#include <cctype>
#include <regex>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/runProgram.h"

namespace {

// A suite or test as it is written in its source: instances of typed and parameterised tests have a
// number behind it, and the latter a name before it.
std::string withoutInstance(const std::string& name) {
    std::string plain = name;
    const std::size_t number = plain.rfind('/');
    if (number != std::string::npos && number + 1 < plain.size() &&
        std::isdigit(static_cast<unsigned char>(plain[number + 1])))
        plain.resize(number);
    const std::size_t prefix = plain.rfind('/');
    return prefix == std::string::npos ? plain : plain.substr(prefix + 1);
}

// Every test of this program, as "suite.test".
std::set<std::string> tests() {
    std::set<std::string> names;
    const testing::UnitTest& program = *testing::UnitTest::GetInstance();
    for (int i = 0; i < program.total_test_suite_count(); ++i) {
        const testing::TestSuite& suite = *program.GetTestSuite(i);
        for (int j = 0; j < suite.total_test_count(); ++j)
            names.insert(withoutInstance(suite.name()) + "." +
                         withoutInstance(suite.GetTestInfo(j)->name()));
    }
    return names;
}

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
    const std::set<std::string> existing = tests();
    const std::set<std::string> named = testsOfDocument();
    EXPECT_FALSE(named.empty());
    for (const std::string& name : named)
        EXPECT_EQ(1U, existing.count(name)) << name;
}

TEST(compatibility, everyDeliberateTestIsInTheTable) {
    const std::set<std::string> named = testsOfDocument();
    for (const std::string& name : tests()) {
        const bool isDeliberate = name.find(".deliberate") != std::string::npos;
        EXPECT_TRUE(!isDeliberate || named.count(name) == 1) << name;
    }
}
