#include "kelvofxds/str/fxPath.h"

#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "kelvofxds/str/fxTempStr.h"

static_assert(std::is_base_of<fxStr, fxPath>::value, "a string");
static_assert(sizeof(fxPath) == sizeof(fxStr), "no fields of its own");
static_assert(!std::is_polymorphic<fxPath>::value, "no table");

namespace {

std::string textOf(const fxStr& s) { return std::string(s.c_str(), s.length()); }

// How paths are split. No part is longer than the path.
const struct {
    const char *path, *directory, *leaf;
} splits[] = {{"a/b", "a", "b"},
              {"/usr/lib", "/usr", "lib"},
              {"a/b/", "a", "b"},
              {"a//b", "a", "b"},
              {"///a/b//", "///a", "b"},
              {"a", ".", "a"},
              {"leaf", ".", "leaf"},
              {"leaf//", ".", "leaf"},
              {"./a", ".", "a"},
              {"../a", "..", "a"},
              {"/", "/", ""},
              {"///", "/", ""},
              {"", "", ""},
              {"a b/c d", "a b", "c d"}};

}  // namespace

// Construction.

TEST(fxPath, isMadeOfNothingATextOrAString) {
    EXPECT_EQ("", textOf(fxPath()));
    EXPECT_EQ("/a", textOf(fxPath("/a")));
    EXPECT_EQ("", textOf(fxPath(static_cast<const char*>(nullptr))));
    EXPECT_EQ("a/b", textOf(fxPath(fxStr("a/b"))));
    const fxStr directory("a");
    EXPECT_EQ("a/b", textOf(fxPath(directory | "/b")));
}

TEST(fxPath, copiesAreIndependent) {
    const fxPath path("a/b");
    fxPath copy(path), assigned;
    assigned = path;
    copy.append('c');
    assigned.append('d');
    EXPECT_EQ("a/b", textOf(path));
    EXPECT_EQ("a/bc", textOf(copy));
    EXPECT_EQ("a/bd", textOf(assigned));
}

// Splitting.

TEST(fxPath, splitsIntoDirectoryAndLeaf) {
    for (const auto& c : splits) {
        SCOPED_TRACE(c.path);
        const fxPath path(c.path);
        fxPath directory, leaf("what was there before");
        EXPECT_EQ(0, path.split(&directory, &leaf));
        EXPECT_EQ(c.directory, textOf(directory));
        EXPECT_EQ(c.leaf, textOf(leaf));
        EXPECT_EQ(c.path, textOf(path));
    }
}

TEST(fxPath, leafIsTheLastComponentAlone) {
    for (const auto& c : splits) {
        SCOPED_TRACE(c.path);
        EXPECT_EQ(c.leaf, textOf(fxPath(c.path).leaf()));
    }
}

TEST(fxPath, directoryIsWhatIsBeforeItAlone) {
    for (const auto& c : splits) {
        SCOPED_TRACE(c.path);
        EXPECT_EQ(c.directory, textOf(fxPath(c.path).directory()));
    }
}

TEST(fxPath, deliberateDirectoryOfALeadingSlashAloneIsEmpty) {
    EXPECT_EQ("", textOf(fxPath("/usr").directory()));
    EXPECT_EQ("usr", textOf(fxPath("/usr").leaf()));
    EXPECT_EQ("", textOf(fxPath("//x").directory()));
}

TEST(fxPath, onlyTheTextBeforeANulIsSplit) {
    const fxPath path(fxStr("a/b\0/c", 6));
    EXPECT_EQ("a", textOf(path.directory()));
    EXPECT_EQ("b", textOf(path.leaf()));
}

TEST(fxPath, eitherPartMayReplaceThePath) {
    fxPath path("/usr/lib");
    fxPath leaf;
    EXPECT_EQ(0, path.split(&path, &leaf));
    EXPECT_EQ("/usr", textOf(path));
    EXPECT_EQ("lib", textOf(leaf));

    path = fxPath("/usr/lib");
    fxPath directory;
    EXPECT_EQ(0, path.split(&directory, &path));
    EXPECT_EQ("/usr", textOf(directory));
    EXPECT_EQ("lib", textOf(path));
}

TEST(fxPath, anEmptyPathLeavesTheSharedEmptyTextAlone) {
    const fxPath path;
    fxPath directory("a"), leaf("b");
    EXPECT_EQ(0, path.split(&directory, &leaf));
    EXPECT_EQ(0u, directory.length());
    EXPECT_EQ(0u, leaf.length());
    EXPECT_EQ('\0', fxStr::emptyString);
}

TEST(fxPath, aLongPathIsSplitWhole) {
    const std::string directory(100000, 'd'), leaf(200000, 'l');
    const fxPath path((directory + "/" + leaf).c_str());
    EXPECT_EQ(directory, textOf(path.directory()));
    EXPECT_EQ(leaf, textOf(path.leaf()));
}
