// Holds docs/patterns.md to its word.

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/pattern/fxRegEngine.h"
#include "tests/support/compiled.h"

namespace {

std::string document() {
    std::ifstream in(KELVOFXDS_SOURCE_DIR "/docs/patterns.md");
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// The bytes of the dump. Each line is an offset, which has to be right, the
// bytes, and a comment behind a semicolon.
std::string dump() {
    std::string bytes;
    std::istringstream lines(document());
    bool inside = false;
    for (std::string line; std::getline(lines, line);) {
        if (line.compare(0, 3, "```") == 0) {
            inside = line == "```hexdump";
        } else if (inside) {
            EXPECT_EQ(bytes.size(), std::stoul(line.substr(0, 4), nullptr, 16)) << line;
            std::istringstream numbers(line.substr(4, line.find(';') - 4));
            for (std::string number; numbers >> number;)
                bytes += static_cast<char>(std::stoul(number, nullptr, 16));
        }
    }
    return bytes;
}

bool isInDocument(const std::string& text) { return document().find(text) != std::string::npos; }

}  // namespace

TEST(patternsDoc, theDumpIsWhatTheCompilerWrites) {
    const std::string bytes = dump();
    ASSERT_EQ(46U, bytes.size());
    const Compiled program = compiled("(a|b)*c");
    ASSERT_TRUE(program != nullptr);
    EXPECT_EQ(shown(bytes), shown(std::string(program->program, bytes.size())));
    EXPECT_EQ(0x29, program->must - program->program);
}

TEST(patternsDoc, theTableHasEveryOperation) {
    const struct {
        int value;
        const char* name;
    } operations[] = {{OP_END, "OP_END"},
                      {OP_BOL, "OP_BOL"},
                      {OP_EOL, "OP_EOL"},
                      {OP_ANY, "OP_ANY"},
                      {OP_ANYOF, "OP_ANYOF"},
                      {OP_ANYBUT, "OP_ANYBUT"},
                      {OP_BRANCH, "OP_BRANCH"},
                      {OP_BACK, "OP_BACK"},
                      {OP_EXACT, "OP_EXACT"},
                      {OP_NOTHING, "OP_NOTHING"},
                      {OP_STAR, "OP_STAR"},
                      {OP_PLUS, "OP_PLUS"},
                      {OP_WORDSTART, "OP_WORDSTART"},
                      {OP_WORDEND, "OP_WORDEND"}};
    for (const auto& operation : operations)
        EXPECT_TRUE(
            isInDocument("| " + std::to_string(operation.value) + " | `" + operation.name + "` |"))
            << operation.name;
    EXPECT_TRUE(isInDocument("| 21 to 29 | `OP_OPEN` + n |"));
    EXPECT_TRUE(isInDocument("| 31 to 39 | `OP_CLOSE` + n |"));
}

TEST(patternsDoc, everyMessageIsNamed) {
    for (const char* message : {"NULL argument",
                                "regexp too big",
                                "out of space",
                                "too many ()",
                                "unmatched ()",
                                "junk on end",
                                "*+ operand could be empty",
                                "nested *?+",
                                "?+* follows nothing",
                                "unmatched []",
                                "invalid [] range",
                                "trailing \\",
                                "internal urp",
                                "corrupted program",
                                "NULL parameter",
                                "corrupted pointers",
                                "memory corruption",
                                "internal foulup",
                                "damaged regexp fed to regsub",
                                "damaged match string",
                                "NULL parm to regsub"})
        EXPECT_TRUE(isInDocument("`" + std::string(message) + "`")) << message;
}
