// The example of the first screen of README.md is examples/hello/hello.cpp, and it works.

#include <string>

#include <gtest/gtest.h>

#include "tests/support/runProgram.h"

namespace {
const std::string sourceFolder = KELVOFXDS_SOURCE_DIR "/";

// The text of the first block fenced as C++.
std::string firstExample(const std::string& markdown) {
    const std::string start = "```cpp\n";
    const std::size_t begin = markdown.find(start);
    if (begin == std::string::npos)
        return "";
    const std::size_t end = markdown.find("```", begin + start.size());
    return markdown.substr(begin + start.size(), end - begin - start.size());
}
}  // namespace

TEST(readme, exampleIsTheProgramThatIsBuilt) {
    EXPECT_EQ(bytesOf(sourceFolder + "examples/hello/hello.cpp"),
              firstExample(bytesOf(sourceFolder + "README.md")));
}

#ifdef KELVOFXDS_HELLO
TEST(readme, examplePrintsWhatItReadBack) {
    const TemporaryFolder folder;
    Program hello{KELVOFXDS_HELLO};
    hello.workingFolder = folder.path();

    const ProgramResult result = hello.run({});

    EXPECT_EQ(0, result.status);
    EXPECT_EQ("The capital of Peru is Lima.\n", result.out);
    EXPECT_EQ("", result.err);
}
#endif
