#include "kelvofxds/core/fxPlatform.h"

#include <dlfcn.h>
#include <elf.h>
#include <link.h>

#include <cstring>
#include <string>

#include <gtest/gtest.h>

namespace {

// The symbol's entry in the library's own table; null if it has none.
const ElfW(Sym) * librarySymbol(const char* name) {
    void* library = dlopen("libkelvofxds.so.1", RTLD_LAZY | RTLD_NOLOAD);
    if (!library)
        return nullptr;
    void* address = dlsym(library, name);
    Dl_info info;
    void* symbol = nullptr;
    const bool found = address && dladdr1(address, &info, &symbol, RTLD_DL_SYMENT) != 0;
    dlclose(library);
    return found ? static_cast<const ElfW(Sym)*>(symbol) : nullptr;
}

struct Split {
    std::string directory, leaf;
    int status;
};

Split split(const char* path) {
    char directory[64], leaf[64];
    std::memset(directory, '?', sizeof directory);
    std::memset(leaf, '?', sizeof leaf);
    const int status = fileutl_strip_leaf(path, 63, directory, 63, leaf);
    return {directory, leaf, status};
}

}  // namespace

TEST(fxPlatform, hostMayReplaceEachFunction) {
    for (const char* name : {"imsg_print", "imsg_sprintf", "fileutl_strip_leaf"}) {
        SCOPED_TRACE(name);
        const ElfW(Sym)* symbol = librarySymbol(name);
        ASSERT_NE(nullptr, symbol);
        EXPECT_EQ(STB_WEAK, ELF32_ST_BIND(symbol->st_info));
        EXPECT_EQ(STV_DEFAULT, ELF32_ST_VISIBILITY(symbol->st_other));
    }
}

TEST(fxPlatform, messagesAreFormattedToStandardOutput) {
    testing::internal::CaptureStdout();
    const int printed = imsg_print(0, -1, "%-*s|%d\n", 5, "ab", 42);
    EXPECT_EQ("ab   |42\n", testing::internal::GetCapturedStdout());
    EXPECT_EQ(9, printed);
}

TEST(fxPlatform, messageNumberAndDestinationChangeNothing) {
    testing::internal::CaptureStdout();
    EXPECT_EQ(1, imsg_print(3, 17, "%s", "x"));
    EXPECT_EQ("x", testing::internal::GetCapturedStdout());
}

TEST(fxPlatform, messagesAreFormattedIntoTheBuffer) {
    char buffer[32];
    std::memset(buffer, '#', sizeof buffer);
    EXPECT_EQ(7, imsg_sprintf(buffer, -1, "%-*s%c", 6, "abc", '.'));
    EXPECT_STREQ("abc   .", buffer);
    EXPECT_EQ('#', buffer[8]);
}

// However the library is compiled.
TEST(fxPlatform, formatsThatCanBeWrittenToMayCount) {
    char format[] = "ab%ncd";
    char buffer[8];
    int counts[2] = {};
    testing::internal::CaptureStdout();
    EXPECT_EQ(4, imsg_print(0, -1, format, &counts[0]));
    EXPECT_EQ("abcd", testing::internal::GetCapturedStdout());
    EXPECT_EQ(4, imsg_sprintf(buffer, -1, format, &counts[1]));
    EXPECT_STREQ("abcd", buffer);
    EXPECT_EQ(2, counts[0]);
    EXPECT_EQ(2, counts[1]);
}

TEST(fxPlatform, leafIsThePathsLastComponent) {
    const struct {
        const char *path, *directory, *leaf;
    } cases[] = {{"a/b", "a", "b"},      {"/a/b/c", "/a/b", "c"}, {"a//b", "a", "b"},
                 {"a/b/", "a", "b"},     {"a/b///", "a", "b"},    {"leaf", ".", "leaf"},
                 {"leaf/", ".", "leaf"}, {"", ".", ""},           {"/", "/", ""},
                 {"///", "/", ""}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        const Split result = split(c.path);
        EXPECT_EQ(c.directory, result.directory);
        EXPECT_EQ(c.leaf, result.leaf);
        EXPECT_EQ(0, result.status);
    }
}

TEST(fxPlatform, deliberateALeadingSlashAloneGivesAnEmptyDirectory) {
    const Split result = split("/leaf");
    EXPECT_EQ("", result.directory);
    EXPECT_EQ("leaf", result.leaf);
}

TEST(fxPlatform, directoryAndLeafAreCutToTheirBuffers) {
    char directory[8] = "xxxxxxx", leaf[8] = "yyyyyyy";
    EXPECT_EQ(0, fileutl_strip_leaf("directory/leaf", 3, directory, 2, leaf));
    EXPECT_STREQ("dir", directory);
    EXPECT_EQ('x', directory[4]);
    EXPECT_STREQ("le", leaf);
    EXPECT_EQ('y', leaf[3]);

    EXPECT_EQ(0, fileutl_strip_leaf("directory/leaf", 0, directory, 0, leaf));
    EXPECT_STREQ("", directory);
    EXPECT_STREQ("", leaf);
}

TEST(fxPlatform, nothingIsWrittenToABufferOfANegativeSize) {
    for (int size : {-1, -100}) {
        char directory[4] = "xxx", leaf[4] = "yyy";
        EXPECT_EQ(0, fileutl_strip_leaf("a/b", size, directory, size, leaf));
        EXPECT_STREQ("xxx", directory);
        EXPECT_STREQ("yyy", leaf);
    }
}
