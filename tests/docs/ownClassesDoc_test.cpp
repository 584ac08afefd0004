// docs/own-classes.md: its example is examples/stations and works, its other code is in the
// sources, and what it says of the checks is what they say.

#include <string>

#include <gtest/gtest.h>

#include "tests/support/runProgram.h"

namespace {
const std::string sourceFolder = KELVOFXDS_SOURCE_DIR "/";

// The texts of the blocks fenced as C++.
std::vector<std::string> codeOf(const std::string& markdown) {
    const std::string start = "```cpp\n";
    std::vector<std::string> blocks;
    for (std::size_t at = markdown.find(start); at != std::string::npos;
         at = markdown.find(start, at)) {
        at += start.size();
        blocks.push_back(markdown.substr(at, markdown.find("```", at) - at));
    }
    return blocks;
}

std::string document() { return bytesOf(sourceFolder + "docs/own-classes.md"); }
}  // namespace

TEST(ownClassesDoc, exampleIsTheProgramThatIsBuilt) {
    const auto blocks = codeOf(document());
    ASSERT_EQ(2U, blocks.size());
    EXPECT_EQ(bytesOf(sourceFolder + "examples/stations/stations.cpp"), blocks[0]);
}

TEST(ownClassesDoc, versionsAreShownAsTheContactBookHasThem) {
    const std::string source = bytesOf(sourceFolder + "examples/contacts/contact.cpp");
    const auto blocks = codeOf(document());
    ASSERT_EQ(2U, blocks.size());
    EXPECT_NE(std::string::npos, source.find(blocks[1])) << blocks[1];
}

TEST(ownClassesDoc, messagesAreThoseOfTheChecks) {
    const std::string text = document();
    const struct {
        const char* file;
        const char* message;
    } cases[] = {
        {"kelvofxds/transcribe/fxXDRMembers.h", " is missing in the class"},
        {"kelvofxds/transcribe/fxXDRMembers.h", " has no public default constructor, or is "},
        {"kelvofxds/transcribe/fxXDRMembers.h", "the class is not derived from fxXDRObj"},
        {"kelvofxds/containers/fxArrayOf.h", "fxArrayOf: to be transcribed, elements are "},
        {"kelvofxds/transcribe/fxXDRMembers.cpp", ": a pointer is not null in a new object"},
        {"kelvofxds/transcribe/fxXDRMembers.cpp", ": fxXDRObj is not at the start of the object"},
        {"kelvofxds/transcribe/fxGraphObjects.cpp", "which its pointer's owner does not expect"},
    };
    for (const auto& c : cases) {
        EXPECT_NE(std::string::npos, bytesOf(sourceFolder + c.file).find(c.message)) << c.message;
        EXPECT_NE(std::string::npos, text.find(c.message)) << c.message;
    }
}

#ifdef KELVOFXDS_STATIONS
TEST(ownClassesDoc, examplePrintsWhatItReadBack) {
    const TemporaryFolder folder;
    Program stations{KELVOFXDS_STATIONS};
    stations.workingFolder = folder.path();

    const ProgramResult result = stations.run({});

    EXPECT_EQ(0, result.status);
    EXPECT_EQ("North, South at 25, and again North\n", result.out);
    EXPECT_EQ("", result.err);
    EXPECT_NE(std::string::npos, document().find("North, South at 25, and again North"));
}
#endif
