#include "kelvofxds/core/fxVersion.h"

#include <cstring>
#include <string>

#include <gtest/gtest.h>

namespace {

std::string printedLine(int* result) {
    testing::internal::CaptureStdout();
    *result = libkelvofxds_print_verid();
    return testing::internal::GetCapturedStdout();
}

}  // namespace

TEST(fxVersion, lineHasTheNameIn33ColumnsThenVersionAndDate) {
    int printed = 0;
    const std::string line = printedLine(&printed);
    ASSERT_GT(line.size(), 34u);
    EXPECT_EQ("libkelvofxds" + std::string(21, ' '), line.substr(0, 33));
    EXPECT_EQ(' ', line[33]);

    // The rest is "VERSION (DATE)\n", neither of them with a blank.
    const std::string rest = line.substr(34);
    const std::size_t blank = rest.find(' ');
    ASSERT_NE(std::string::npos, blank);
    EXPECT_GT(blank, 0u);
    EXPECT_EQ(0u, rest.find_first_of("0123456789"));
    EXPECT_EQ('(', rest[blank + 1]);
    EXPECT_EQ(std::string::npos, rest.find(' ', blank + 1));
    EXPECT_GT(rest.size(), blank + 4);
    EXPECT_EQ(")\n", rest.substr(rest.size() - 2));
    EXPECT_EQ(line.size() - 1, line.find('\n'));
}

TEST(fxVersion, printReturnsTheNumberOfBytesPrinted) {
    int printed = 0;
    const std::string line = printedLine(&printed);
    EXPECT_EQ(static_cast<int>(line.size()), printed);
}

TEST(fxVersion, printWritesNothingToStandardError) {
    int printed = 0;
    testing::internal::CaptureStderr();
    printedLine(&printed);
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

TEST(fxVersion, sprintfMakesTheSameLineInTheBuffer) {
    int printed = 0;
    const std::string line = printedLine(&printed);
    char buffer[200];
    std::memset(buffer, 'x', sizeof buffer);
    const int result = libkelvofxds_sprintf_verid(buffer);
    EXPECT_EQ(static_cast<int>(line.size()), result);
    EXPECT_EQ(line, buffer);
    EXPECT_EQ('x', buffer[line.size() + 1]);
}

TEST(fxVersion, eachCallGivesTheSameLine) {
    int first = 0, second = 0;
    EXPECT_EQ(printedLine(&first), printedLine(&second));
    EXPECT_EQ(first, second);
}
