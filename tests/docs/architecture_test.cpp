// Holds docs/architecture.md to its word: the layers and what looks both ways.

#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/runProgram.h"
#include "tests/support/testNames.h"

namespace {
namespace fs = std::filesystem;

const std::string library = KELVOFXDS_SOURCE_DIR "/kelvofxds/";

// Every file of the library, as "folder/name", with those it includes.
std::map<std::string, std::vector<std::string>> includes() {
    const std::regex line("(?:^|\n)[ \t]*#include \"kelvofxds/([^\"]+)\"");
    std::map<std::string, std::vector<std::string>> found;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(library)) {
        const std::string extension = entry.path().extension().string();
        if (extension != ".h" && extension != ".cpp")
            continue;
        const std::string text = bytesOf(entry.path().string());
        std::vector<std::string>& included = found[entry.path().string().substr(library.size())];
        for (std::sregex_iterator match(text.begin(), text.end(), line), end; match != end; ++match)
            included.push_back((*match)[1]);
    }
    return found;
}

std::string folderOf(const std::string& file) { return file.substr(0, file.find('/')); }

// What stands in backquotes in each row of the table headed `heading`, one
// vector a row.
std::vector<std::vector<std::string>> rowsOf(const std::string& heading) {
    const std::string document = bytesOf(KELVOFXDS_SOURCE_DIR "/docs/architecture.md");
    std::vector<std::vector<std::string>> rows;
    std::size_t at = document.find(heading + "\n|---|---|\n");
    EXPECT_NE(std::string::npos, at) << heading;
    if (at == std::string::npos)
        return rows;
    at += heading.size() + 11;
    const std::regex quoted("`([^`]+)`");
    while (document[at] == '|') {
        const std::size_t end = document.find('\n', at);
        const std::string row = document.substr(at, end - at);
        rows.emplace_back();
        for (std::sregex_iterator match(row.begin(), row.end(), quoted), last; match != last;
             ++match)
            rows.back().push_back((*match)[1]);
        at = end + 1;
    }
    return rows;
}

// Whether `file` is "name", or one of "folder/*" or "folder/name.*".
bool isOneOf(const std::string& file, const std::string& files) {
    if (files.back() != '*')
        return file == files;
    return file.compare(0, files.size() - 1, files, 0, files.size() - 1) == 0;
}

// The row of the table of layers that speaks of `file` most closely, counted
// from the top; -1 if none does.
int layerOf(const std::string& file, const std::vector<std::vector<std::string>>& layers) {
    int layer = -1;
    std::size_t closest = 0;
    for (std::size_t i = 0; i < layers.size(); ++i) {
        for (const std::string& files : layers[i]) {
            if (isOneOf(file, files) && files.size() > closest) {
                closest = files.size();
                layer = static_cast<int>(i);
            }
        }
    }
    return layer;
}

// `header` and all that it includes by any detour.
std::set<std::string> reachedFrom(const std::string& header,
                                  const std::map<std::string, std::vector<std::string>>& all) {
    std::set<std::string> reached{header};
    for (std::vector<std::string> rest = all.at(header); !rest.empty();) {
        const std::string file = rest.back();
        rest.pop_back();
        if (reached.insert(file).second)
            rest.insert(rest.end(), all.at(file).begin(), all.at(file).end());
    }
    return reached;
}

const char* const layerTable = "| layer | files |";
const char* const pairTable = "| folders | why both ways |";

}  // namespace

TEST(architecture, everyFileBelongsToALayerAndIncludesNoneOfAHigherOne) {
    const auto layers = rowsOf(layerTable);
    for (const auto& [file, included] : includes()) {
        const int layer = layerOf(file, layers);
        EXPECT_NE(-1, layer) << file;
        for (const std::string& other : included)
            EXPECT_LE(layer, layerOf(other, layers)) << file << " includes " << other;
    }
}

TEST(architecture, listsIncludeNothingButInterfacesAndNothingIncludesThem) {
    for (const auto& [file, included] : includes()) {
        for (const std::string& other : included) {
            const bool fromLists = folderOf(file) == "lists";
            const bool toLists = folderOf(other) == "lists";
            EXPECT_TRUE(!fromLists || toLists || folderOf(other) == "core")
                << file << " includes " << other;
            EXPECT_TRUE(!toLists || fromLists || file == "kelvofxds.h" || file == "std.h")
                << file << " includes " << other;
        }
    }
}

TEST(architecture, everySourceIsLinkedAndEveryPublicHeaderIsInTheOneOfAll) {
    const std::string sources = bytesOf(library + "CMakeLists.txt");
    const auto all = includes();
    const std::set<std::string> offered = reachedFrom("kelvofxds.h", all);
    const std::set<std::string> besides = reachedFrom("std.h", all);
    for (const auto& entry : all) {
        const std::string& file = entry.first;
        const bool isSource = fs::path(file).extension() == ".cpp";
        const bool isInternal = file.find("Internal.h") != std::string::npos;
        const bool isLinked = sources.find("\n    " + file + "\n") != std::string::npos;
        EXPECT_TRUE(isSource ? isLinked : isInternal || offered.count(file) + besides.count(file))
            << file;
    }
}

TEST(architecture, theOneOfAllDoesNotBringWhatTheStandardLibraryIsAsked) {
    const auto all = includes();
    const std::set<std::string> offered = reachedFrom("kelvofxds.h", all);
    for (const std::string& file : offered) {
        EXPECT_NE("std.h", file);
        EXPECT_EQ(std::string::npos, file.find("Std.h")) << file;
    }
    EXPECT_EQ(0U, offered.count("containers/fxArrayStdParts.h"));
    EXPECT_EQ(1U, reachedFrom("std.h", all).count("lists/fxListsStd.h"));
}

TEST(architecture, noFileIncludesItselfByADetour) {
    auto rest = includes();
    // Takes away what includes nothing that is left, until only circles are.
    for (bool took = true; took;) {
        took = false;
        for (auto file = rest.begin(); file != rest.end();) {
            bool isFree = true;
            for (const std::string& other : file->second)
                isFree = isFree && rest.count(other) == 0;
            took = took || isFree;
            file = isFree ? rest.erase(file) : std::next(file);
        }
    }
    for (const auto& entry : rest)
        ADD_FAILURE() << entry.first << " is in a circle, or includes one";
}

TEST(architecture, filesAndTestsThatAreNamedExist) {
    std::set<std::string> files;
    for (const char* folder : {"cmake", "docs", "kelvofxds", "tests"}) {
        for (const fs::directory_entry& entry :
             fs::recursive_directory_iterator(KELVOFXDS_SOURCE_DIR "/" + std::string(folder)))
            files.insert(entry.path().filename().string());
    }
    const std::set<std::string> tests = testsOfThisProgram();
    const std::string document = bytesOf(KELVOFXDS_SOURCE_DIR "/docs/architecture.md");
    const std::regex name("`(?:[A-Za-z]+/)*([A-Za-z0-9_]+\\.([A-Za-z0-9_]+))`");
    unsigned int named = 0;
    for (std::sregex_iterator match(document.begin(), document.end(), name), end; match != end;
         ++match, ++named) {
        const std::string extension = (*match)[2];
        const bool isFile = extension == "h" || extension == "cpp" || extension == "md" ||
                            extension == "txt" || extension == "sh";
        EXPECT_EQ(1U, (isFile ? files : tests).count((*match)[1])) << (*match)[1];
    }
    EXPECT_LT(30U, named);
}

TEST(architecture, foldersThatLookBothWaysAreThoseInTheTable) {
    std::set<std::pair<std::string, std::string>> looks;
    for (const auto& [file, included] : includes()) {
        for (const std::string& other : included)
            looks.emplace(folderOf(file), folderOf(other));
    }
    std::set<std::pair<std::string, std::string>> both;
    for (const auto& [from, to] : looks) {
        if (from < to && looks.count({to, from}) == 1)
            both.emplace(from + "/", to + "/");
    }

    std::set<std::pair<std::string, std::string>> named;
    for (const std::vector<std::string>& row : rowsOf(pairTable)) {
        ASSERT_LE(2U, row.size());
        named.emplace(row[0], row[1]);
    }
    EXPECT_EQ(named, both);
}
