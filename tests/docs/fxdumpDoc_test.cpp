// Holds docs/fxdump.md to its word: its blocks are what fxdump says.

#ifdef KELVOFXDS_FXDUMP

#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/dumping.h"
#include "tests/support/runProgram.h"
#include "tests/support/streamSamples.h"

namespace {
std::string saysOfBook(const std::string& option) {
    std::string name = "fxdump";
    std::string file = "book";
    std::string word = option;
    char* arguments[] = {&name[0], &word[0], &file[0]};
    if (option.empty())
        arguments[1] = &file[0];
    std::string wrong;
    const fxdump::Options options = fxdump::parseOptions(option.empty() ? 2 : 3, arguments, wrong);
    EXPECT_EQ("", wrong);
    const std::string bytes = bookSample();
    fxdump::MemorySource source(bytes.data(), bytes.size());
    return shown(options, source, "book").out;
}
}  // namespace

TEST(fxdumpDoc, blocksAreWhatTheProgramSays) {
    const std::string document = bytesOf(KELVOFXDS_SOURCE_DIR "/docs/fxdump.md");
    const std::string start = "```text\n$ fxdump ";
    unsigned int blocks = 0;
    for (std::size_t at = 0; (at = document.find(start, at)) != std::string::npos; ++blocks) {
        at += start.size();
        const std::size_t end = document.find('\n', at);
        const std::string words = document.substr(at, end - at);
        const std::string option = words == "book" ? "" : words.substr(0, words.find(' '));
        const std::size_t fence = document.find("```\n", end);
        EXPECT_EQ(saysOfBook(option), document.substr(end + 1, fence - end - 1)) << option;
    }
    EXPECT_EQ(5u, blocks);
    const std::string start2 = "```json\n";
    const std::size_t json = document.find(start2) + start2.size();
    const std::string lines = document.substr(json, document.find("\n```", json) - json);
    EXPECT_NE(std::string::npos, saysOfBook("--json").find(lines));
}

TEST(fxdumpDoc, theBookIsSound) {
    EXPECT_EQ("", shown(fxdump::Show::verify, bookSample()).message);
}

// Every option is in the help, in the manual and in the document.
TEST(fxdumpDoc, namesEveryOption) {
    const std::string document = bytesOf(KELVOFXDS_SOURCE_DIR "/docs/fxdump.md");
    std::istringstream lines(fxdump::helpText);
    unsigned int options = 0;
    for (std::string line; std::getline(lines, line);) {
        if (line.compare(0, 4, "  --") != 0)
            continue;
        ++options;
        const std::string name = line.substr(2, line.find(' ', 2) - 2);
        if (name != "--help" && name != "--version") {
            EXPECT_NE(std::string::npos, document.find(name)) << name;
        }
    }
    EXPECT_EQ(8u, options);
}

#endif
