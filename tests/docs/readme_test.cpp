// README.md: its example is examples/hello/hello.cpp and works, its folders and commands exist.

#include <filesystem>
#include <regex>
#include <set>
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

// What the first group of `pattern` matches in `text`.
std::set<std::string> allOf(const std::string& text, const char* pattern) {
    const std::regex expression(pattern);
    std::set<std::string> found;
    for (std::sregex_iterator match(text.begin(), text.end(), expression), end; match != end;
         ++match)
        found.insert((*match)[1]);
    return found;
}

// The commands in the help of ./dev, which are indented by two.
std::set<std::string> commandsOfHelp() {
    const std::string dev = bytesOf(sourceFolder + "dev");
    const std::size_t help = dev.find("usage: ./dev");
    return allOf(dev.substr(help, dev.find("EOF\n", help) - help), "\n  ([a-z]+) ");
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

TEST(readme, folderMapNamesFoldersThatAreThereAndEveryFolderOfTheLibrary) {
    const std::string readme = bytesOf(sourceFolder + "README.md");
    const std::size_t map = readme.find("| folder | what is in it |");
    ASSERT_NE(std::string::npos, map);
    const std::set<std::string> named =
        allOf(readme.substr(map, readme.find("\n\n", map) - map), "`([a-z/]+)/`");

    for (const std::string& folder : named)
        EXPECT_TRUE(std::filesystem::is_directory(sourceFolder + folder)) << folder;
    for (const auto& entry : std::filesystem::directory_iterator(sourceFolder + "kelvofxds")) {
        const std::string folder = "kelvofxds/" + entry.path().filename().string();
        EXPECT_TRUE(!entry.is_directory() || named.count(folder) == 1) << folder;
    }
}

TEST(readme, commandsThatTheDocumentsNameAreInTheHelp) {
    const std::set<std::string> commands = commandsOfHelp();
    EXPECT_LE(10U, commands.size());
    const char* const documents[] = {"README.md",
                                     "CHANGELOG.md",
                                     "docs/performance.md",
                                     "docs/patterns.md",
                                     "bench/report.sh",
                                     "bench/growth.sh",
                                     ".ci/run",
                                     "cmake/debianCross.cmake",
                                     "docs/install.md",
                                     "docs/abi-policy.md",
                                     "debian/rules"};
    for (const char* document : documents) {
        for (const std::string& named : allOf(bytesOf(sourceFolder + document), "\\./dev ([a-z]+)"))
            EXPECT_EQ(1U, commands.count(named)) << document << ": ./dev " << named;
    }
}

TEST(readme, commandsInTheHelpAreThoseThatDevKnows) {
    const std::string dev = bytesOf(sourceFolder + "dev");
    const std::size_t choice = dev.find("case $command in");
    ASSERT_NE(std::string::npos, choice);
    std::set<std::string> known;
    for (const std::string& labels : allOf(dev.substr(choice), "\n([a-z| -]+)\\) ")) {
        for (const std::string& label : allOf(labels + " ", "([a-z-]+) "))
            known.insert(label);
    }
    for (const char* help : {"-h", "--help"})
        EXPECT_EQ(1U, known.erase(help)) << help;
    EXPECT_EQ(commandsOfHelp(), known);
}
