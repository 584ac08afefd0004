// docs/reference/: every public class has an example there. The program made of them runs them and
// compares what they print with what they say; it is a test of its own, reference_examples.

#include <algorithm>
#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/runProgram.h"

namespace {
const std::string sourceFolder = KELVOFXDS_SOURCE_DIR "/";

using Names = std::set<std::string>;

std::string textOf(const std::filesystem::path& path) {
    return path.extension() == ".h" || path.extension() == ".cpp" ? bytesOf(path.string()) : "";
}

// What the first group of `pattern` matches at the beginnings of lines.
Names allOf(const std::string& text, const char* pattern) {
    const std::regex expression(pattern);
    Names names;
    std::istringstream lines(text);
    std::smatch match;
    for (std::string line; std::getline(lines, line);) {
        if (std::regex_search(line, match, expression, std::regex_constants::match_continuous))
            names.insert(match[1]);
    }
    return names;
}

// `text` less what is in a namespace: nobody is to name that.
std::string outside(const std::string& text) {
    std::string kept;
    long depth = 0;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (depth == 0 && line.compare(0, 10, "namespace ") != 0)
            kept += line + "\n";
        else
            depth += std::count(line.begin(), line.end(), '{') -
                     std::count(line.begin(), line.end(), '}');
    }
    return kept;
}

// The classes that the public headers of each folder define. Those of headers ...Std.h, which
// kelvofxds/std.h includes, make a group of their own.
std::map<std::string, Names> publicClasses() {
    std::map<std::string, Names> classes;
    for (const auto& folder : std::filesystem::directory_iterator(sourceFolder + "kelvofxds")) {
        if (!folder.is_directory())
            continue;
        for (const auto& file : std::filesystem::directory_iterator(folder)) {
            const std::string name = file.path().filename().string();
            const bool isPublic =
                file.path().extension() == ".h" && name.find("Internal.h") == std::string::npos;
            const bool isStd = name.find("Std.h") != std::string::npos;
            if (isPublic)
                classes[isStd ? "std" : folder.path().filename().string()].merge(
                    allOf(outside(textOf(file.path())),
                          "(?:class|struct) (?:FX_EXPORT )?(\\w+) ?(?:: |\\{).*"));
        }
    }
    return classes;
}

unsigned int linesBetween(const std::string& text, const std::string& mark) {
    const std::size_t begin = text.find(mark + "\n");
    const std::size_t end = text.find(mark + "\n", begin + 1);
    if (begin == std::string::npos || end == std::string::npos)
        return 0;
    unsigned int lines = 0;
    for (std::size_t at = begin; (at = text.find('\n', at + 1)) < end;)
        ++lines;
    return lines;
}
}  // namespace

TEST(reference, everyPublicClassHasAShortExample) {
    const std::map<std::string, Names> folders = publicClasses();
    EXPECT_LE(8u, folders.size());
    for (const auto& [folder, classes] : folders) {
        const std::string examples = bytesOf(sourceFolder + "docs/reference/" + folder + ".cpp");
        const Names shown = allOf(examples, "EXAMPLE\\((\\w+)\\)");
        EXPECT_FALSE(classes.empty()) << folder;
        for (const std::string& name : classes) {
            SCOPED_TRACE(name + " in docs/reference/" + folder + ".cpp");
            EXPECT_EQ(1u, shown.count(name)) << "has no EXAMPLE";
            const unsigned int lines = linesBetween(examples, "//! [" + name + "]");
            EXPECT_LE(2u, lines) << "is not between two marks";
            EXPECT_GE(14u, lines) << "is too long";
        }
        for (const std::string& name : shown)
            EXPECT_EQ(1u, classes.count(name)) << name << " is no class of " << folder;
    }
}

// The alias that the filter puts into the comment on a class is the one in the configuration.
TEST(reference, thePageOfAClassOpensWithItsExample) {
    EXPECT_NE(std::string::npos, bytesOf(sourceFolder + "docs/doxygenFilter.awk").find("@opens{"));
    const std::string configuration = bytesOf(sourceFolder + "docs/Doxyfile.in");
    for (const char* part : {"\"opens{4}=", "#include <\\2>", "@snippet{trimleft} \\3.cpp \\1"})
        EXPECT_NE(std::string::npos, configuration.find(part)) << part;
    const std::string layout = bytesOf(sourceFolder + "docs/doxygenLayout.xml");
    const std::size_t page = layout.find("<class>");
    EXPECT_LT(layout.find("<detaileddescription", page), layout.find("<inheritancegraph", page));
}
