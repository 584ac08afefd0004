// fxFileLinks_test.cpp - links and names that are too much for fxSaveFile, and those that are not.

#include <unistd.h>

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/transcribe/fxFile.h"
#include "tests/support/runProgram.h"
#include "tests/support/savedBook.h"

namespace {

std::string save(const std::string& to) {
    SavedBook book;
    book.fill(3, 1);
    fxStr why;
    fxSaveFile(to.c_str(), book, &why);
    return why.c_str();
}

// `n` bytes that lead nowhere else.
std::string detour(unsigned int n) {
    std::string path;
    while (path.size() + 2 <= n)
        path += "./";
    return path;
}

}  // namespace

TEST(fxFileLinks, oneThatIsTooLongBesideItsFolderIsNotFollowed) {
    const TemporaryFolder folder;
    ASSERT_EQ("", save(folder / "book"));
    const std::string target = detour(4080) + "book";
    ASSERT_EQ(0, ::symlink(target.c_str(), (folder / "link").c_str()));

    EXPECT_EQ("cannot save \"" + (folder / "link") +
                  "\": the link cannot be followed: File name too long",
              save(folder / "link"));
}

TEST(fxFileLinks, aChainIsFollowedToItsEnd) {
    const TemporaryFolder folder;
    std::string last = "book";
    for (unsigned int i = 0; i < 30; ++i) {
        const std::string name = "link" + std::to_string(i);
        ASSERT_EQ(0, ::symlink(last.c_str(), (folder / name).c_str()));
        last = name;
    }

    EXPECT_EQ("", save(folder / last));

    EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(folder / "book")));
    EXPECT_TRUE(std::filesystem::is_symlink(folder / last));
}

TEST(fxFileLinks, aFolderWhosePathLeavesNoRoomForANewNameIsAReason) {
    const TemporaryFolder folder;
    const unsigned int most = 4095 - 5;
    const auto used = static_cast<unsigned int>(folder.path().size()) + 1;
    const std::string path = folder.path() + "/" + detour(most - used) + "book";

    EXPECT_EQ("cannot save \"" + path + "\": no new file can be made beside it: File name too long",
              save(path));
}
