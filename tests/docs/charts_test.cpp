// docs/charts/: the pictures are what the tables of docs/performance.md give, all of them.

#include <cstdlib>
#include <filesystem>
#include <set>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/runProgram.h"

namespace {
const std::string sourceFolder = KELVOFXDS_SOURCE_DIR "/";

// Draws the charts of `document` into `folder` and returns the status of the tool.
int draw(const TemporaryFolder& folder, const std::string& document) {
    const std::string command = "LC_ALL=C awk -v out='" + folder.path() + "' -f '" + sourceFolder +
                                "bench/charts.awk' '" + document + "' 2>'" + (folder / "said") +
                                "'";
    return std::system(command.c_str());
}

std::set<std::string> picturesIn(const std::string& folder) {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() == ".svg")
            names.insert(entry.path().filename().string());
    }
    return names;
}

unsigned int countOf(const std::string& what, const std::string& text) {
    unsigned int n = 0;
    for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += what.size())
        ++n;
    return n;
}

// How many ratios the tables of classes hold: their third column from the right has one more of
// them than commas. The table of large sizes has one in each row, in the same place.
unsigned int ratiosIn(const std::string& document) {
    unsigned int n = 0;
    bool inTables = false, large = false;
    std::istringstream lines(document);
    for (std::string line; std::getline(lines, line);) {
        if (line.compare(0, 3, "## ") == 0)
            inTables = line.find("Graph streams") != std::string::npos;
        if (line.find("<!-- measured tables") != std::string::npos)
            inTables = true;
        if (inTables && line.compare(0, 9, "### Large") == 0)
            large = true;
        const bool isRow =
            inTables && line.compare(0, 2, "| ") == 0 && line.compare(0, 7, "| case ") != 0;
        std::size_t end = line.size() - 2;
        for (int column = 0; isRow && column < (large ? 2 : 3); ++column)
            end = line.rfind('|', end) - 1;
        if (isRow)
            n += 1 + countOf(",", line.substr(line.rfind('|', end), end - line.rfind('|', end)));
    }
    return n;
}
}  // namespace

TEST(charts, areWhatTheTablesGive) {
    const TemporaryFolder folder;
    ASSERT_EQ(0, draw(folder, sourceFolder + "docs/performance.md")) << bytesOf(folder / "said");

    const std::set<std::string> drawn = picturesIn(folder.path());
    EXPECT_EQ(drawn, picturesIn(sourceFolder + "docs/charts"));
    for (const std::string& name : drawn) {
        const bool same = bytesOf(folder / name) == bytesOf(sourceFolder + "docs/charts/" + name);
        EXPECT_TRUE(same) << name << " is another: run ./dev docs";
    }
}

TEST(charts, leaveNoRatioOut) {
    unsigned int marks = 0;
    for (const std::string& name : picturesIn(sourceFolder + "docs/charts")) {
        const std::string picture = bytesOf(sourceFolder + "docs/charts/" + name);
        if (name != "overview.svg")
            marks += countOf("<circle", picture) + countOf("<path", picture);
    }
    const unsigned int ratios = ratiosIn(bytesOf(sourceFolder + "docs/performance.md"));
    EXPECT_LT(1000u, ratios);
    EXPECT_EQ(ratios, marks);
    const std::string overview = bytesOf(sourceFolder + "docs/charts/overview.svg");
    const std::string large = bytesOf(sourceFolder + "docs/charts/large.svg");
    EXPECT_EQ(ratios - countOf("<circle", large),
              countOf("<circle", overview) + countOf("<path", overview));
}

TEST(charts, areAllShownInTheDocument) {
    const std::string document = bytesOf(sourceFolder + "docs/performance.md");
    for (const std::string& name : picturesIn(sourceFolder + "docs/charts"))
        EXPECT_EQ(1u, countOf("](charts/" + name + ")", document)) << name;
}

TEST(charts, tablesThatMakeNoSenseAreRefused) {
    const std::string start = "<!-- measured tables -->\n### ";
    const struct {
        std::string tables, why;
    } cases[] = {{"fxArray\n| a | b | 8 | 0.5x | 1 ns | 1 ns |  |\n", "no ratio: 0.5x"},
                 {"fxArray\n| a | b | 8 | 0 | 1 ns | 1 ns |  |\n", "no ratio: 0"},
                 {"fxNews\n", "of which folder is fxNews"},
                 {"fxArray\n", "no table"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.tables);
        const TemporaryFolder folder;
        EXPECT_NE(0, draw(folder, folder.file("document", start + c.tables)));
        EXPECT_NE(std::string::npos, bytesOf(folder / "said").find(c.why));
    }
}
