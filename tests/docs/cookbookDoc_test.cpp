// docs/cookbook.md and docs/surprises.md: their lists of contents are those of what follows, the
// recipes are short, and what one page links to on the other is there. What the code prints is held
// by tests/docs/snippets.

#include <cctype>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/runProgram.h"

namespace {
const std::string docs = KELVOFXDS_SOURCE_DIR "/docs/";

// The name by which a heading is linked to.
std::string anchorOf(const std::string& heading) {
    std::string anchor;
    for (const char c : heading) {
        if (c == ' ' || c == '-')
            anchor += '-';
        else if (c == '_' || std::isalnum(static_cast<unsigned char>(c)))
            anchor += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return anchor;
}

struct Page {
    explicit Page(const std::string& name);

    std::vector<std::string> headings[4];  // by level, the text
    std::vector<std::string> contents;     // "text#anchor" of the links to the page itself
    std::set<std::string> anchors;
    std::vector<std::pair<std::string, unsigned int>> code;  // its heading, and its lines
};

Page::Page(const std::string& name) {
    std::istringstream in(bytesOf(docs + name));
    const std::regex entry("(?:-|[0-9]+\\.) \\[(.*)\\]\\(#(.*)\\)"), heading("(#+) (.*)");
    std::smatch match;
    std::string last;
    bool isInside = false, counts = false;
    for (std::string line; std::getline(in, line);) {
        if (line.compare(0, 3, "```") == 0) {
            isInside = !isInside;
            counts = isInside && line == "```cpp";
            if (counts)
                code.emplace_back(last, 0);
        } else if (isInside) {
            if (counts && !line.empty() && line[0] != '#')
                ++code.back().second;
        } else if (std::regex_match(line, match, entry)) {
            contents.push_back(match[1].str() + "#" + match[2].str());
        } else if (std::regex_match(line, match, heading)) {
            last = match[2];
            headings[match[1].length()].push_back(last);
            EXPECT_TRUE(anchors.insert(anchorOf(last)).second) << last;
        }
    }
}

std::vector<std::string> linksTo(const std::vector<std::string>& headings) {
    std::vector<std::string> links;
    for (const std::string& heading : headings)
        links.push_back(heading + "#" + anchorOf(heading));
    return links;
}
}  // namespace

TEST(cookbookDoc, contentsListTheRecipesInOrder) {
    const Page cookbook("cookbook.md");
    EXPECT_LE(30U, cookbook.headings[3].size());
    EXPECT_EQ(linksTo(cookbook.headings[3]), cookbook.contents);
    for (const std::string& group : cookbook.headings[2])
        EXPECT_NE(std::string::npos, bytesOf(docs + "cookbook.md").find("\n**" + group + "**\n"))
            << group;
}

TEST(cookbookDoc, recipesHaveAtMostTwentyLines) {
    for (const auto& [recipe, lines] : Page("cookbook.md").code) {
        EXPECT_LE(5U, lines) << recipe;
        EXPECT_GE(20U, lines) << recipe;
    }
}

TEST(surprisesDoc, contentsListTheTen) {
    const Page surprises("surprises.md");
    EXPECT_EQ(10U, surprises.headings[2].size());
    EXPECT_EQ(linksTo(surprises.headings[2]), surprises.contents);
}

TEST(surprisesDoc, whatTheCookbookLinksToIsThere) {
    const Page surprises("surprises.md");
    const std::string text = bytesOf(docs + "cookbook.md");
    const std::regex link("\\(surprises\\.md#([^)]*)\\)");
    std::sregex_iterator found(text.begin(), text.end(), link);
    const std::sregex_iterator end;
    EXPECT_NE(end, found);
    for (; found != end; ++found)
        EXPECT_EQ(1U, surprises.anchors.count((*found)[1])) << (*found)[1];
}
