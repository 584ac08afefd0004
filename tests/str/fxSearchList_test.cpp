#include "kelvofxds/str/fxSearchList.h"

#include <dirent.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/str/fxTempStr.h"
#include "kelvofxds/transcribe/fxTranscriber.h"
#include "tests/support/memoryStream.h"
#include "tests/support/runProgram.h"
#include "tests/support/vtable.h"

struct fxSearchListLayout {
    static_assert(sizeof(fxSearchList) == sizeof(fxStrArray) + 16, "two strings");
    static std::size_t offsetOfRegexp(const fxSearchList& l) { return offset(l, &l.regexpStr); }
    static std::size_t offsetOfList(const fxSearchList& l) { return offset(l, &l.searchListStr); }

private:
    static std::size_t offset(const fxSearchList& l, const void* field) {
        return static_cast<std::size_t>(static_cast<const char*>(field) -
                                        reinterpret_cast<const char*>(&l));
    }
};

static_assert(std::is_base_of<fxStrArray, fxSearchList>::value, "an array of strings");

namespace {

using Names = std::vector<std::string>;

Names namesOf(const fxStrArray& array) {
    Names names;
    for (unsigned int i = 0; i < array.length(); ++i)
        names.push_back(std::string(array[i].c_str(), array[i].length()));
    return names;
}

Names sorted(Names names) {
    std::sort(names.begin(), names.end());
    return names;
}

// What a new list finds, in the order of the names.
Names found(const std::string& list, const char* expr) {
    return sorted(namesOf(fxSearchList(list.c_str(), expr)));
}

// Every entry of a directory in the order in which the system gives them.
Names entriesOf(const std::string& directory) {
    Names names;
    DIR* entries = ::opendir(directory.c_str());
    EXPECT_NE(nullptr, entries);
    while (const dirent64* entry = ::readdir64(entries))
        names.push_back(directory + "/" + entry->d_name);
    ::closedir(entries);
    return names;
}

// What writing an array gives, header included.
std::string bytesOf(fxStrArray& array) {
    MemoryStream stream;
    const std::unique_ptr<fxTranscriber> writer(fxTranscriber::getWriter(&stream));
    EXPECT_EQ(1, writer->writeObject(&array, &array));
    return stream.written;
}

// Counts what a process may open, down to nothing, and gives it back at the end.
class NoDescriptors {
public:
    NoDescriptors() {
        EXPECT_EQ(0, ::getrlimit(RLIMIT_NOFILE, &before));
        const rlimit none{0, before.rlim_max};
        EXPECT_EQ(0, ::setrlimit(RLIMIT_NOFILE, &none));
    }
    NoDescriptors(const NoDescriptors&) = delete;
    NoDescriptors& operator=(const NoDescriptors&) = delete;
    ~NoDescriptors() { EXPECT_EQ(0, ::setrlimit(RLIMIT_NOFILE, &before)); }

private:
    rlimit before;
};

// Root reads everything: while one lives, root is somebody who does not.
class Nobody {
public:
    Nobody() : before(::geteuid()) {
        if (before == 0 && ::seteuid(65534) != 0)
            ADD_FAILURE() << "root cannot be anybody else";
    }
    Nobody(const Nobody&) = delete;
    Nobody& operator=(const Nobody&) = delete;
    ~Nobody() { EXPECT_EQ(0, ::seteuid(before)); }

    bool canRead(const std::string& directory) const {
        return ::euidaccess(directory.c_str(), R_OK | X_OK) == 0;
    }

private:
    uid_t before;
};

unsigned int openDescriptors() {
    unsigned int n = 0;
    for (int fd = 0; fd < 1024; ++fd) {
        struct stat status;
        if (::fstat(fd, &status) == 0)
            ++n;
    }
    return n;
}

}  // namespace

// Class shape.

TEST(fxSearchList, fieldsFollowTheStatedOrder) {
    const fxSearchList list("", "");
    EXPECT_EQ(sizeof(fxStrArray), fxSearchListLayout::offsetOfRegexp(list));
    EXPECT_EQ(sizeof(fxStrArray) + 8, fxSearchListLayout::offsetOfList(list));
}

TEST(fxSearchList, isAStringArrayToStreams) {
    fxSearchList list("", "");
    EXPECT_STREQ("ARRAY", list.className());
    EXPECT_EQ(&fxStrArray_type, &list.getTypeObj());
}

// The table is the string array's but for the destructors. It is compared with
// that of another heir, because addresses of functions that the test program
// refers to can differ from those in the library's own table of fxStrArray.
TEST(fxSearchList, onlyTheDestructorsAreItsOwn) {
    struct Heir : fxStrArray {};
    const fxSearchList list("", "");
    const Heir heir;
    void *const *own, *const *inherited;
    std::memcpy(&own, static_cast<const void*>(&list), sizeof own);
    std::memcpy(&inherited, static_cast<const void*>(&heir), sizeof inherited);
    EXPECT_NE(inherited[0], own[0]);
    EXPECT_NE(inherited[1], own[1]);
    const unsigned int last = vtableWord(&fxStrArray::compareElements);
    for (unsigned int word = 2; word <= last; ++word)
        EXPECT_EQ(inherited[word], own[word]) << word;
}

TEST(fxSearchList, isDeletedThroughItsBase) {
    const TemporaryFolder folder;
    folder.file("a", "");
    fxRCObj* held = new fxSearchList(folder.path().c_str(), "a");
    delete held;
}

TEST(fxSearchList, isWrittenLikeAStringArrayOfItsElements) {
    const TemporaryFolder folder;
    folder.file("a", "");
    folder.file("ab", "");
    fxSearchList list(folder.path().c_str(), "a.*");
    fxStrArray plain;
    for (const std::string& name : namesOf(list))
        plain.append(name.c_str());
    ASSERT_EQ(2u, plain.length());

    EXPECT_EQ(bytesOf(plain), bytesOf(list));
}

// Construction.

TEST(fxSearchList, keepsWhatItWasGivenAndLooksAtOnce) {
    const TemporaryFolder folder;
    folder.file("a", "");
    const fxSearchList list(folder.path().c_str(), "a");
    EXPECT_EQ(fxStr(folder.path().c_str()), list.searchList());
    EXPECT_EQ(fxStr("a"), list.regexp());
    EXPECT_EQ(Names{folder / "a"}, namesOf(list));
}

TEST(fxSearchList, nullIsAnEmptyText) {
    const fxSearchList list(nullptr, nullptr);
    EXPECT_EQ(0u, list.searchList().length());
    EXPECT_EQ(0u, list.regexp().length());
    EXPECT_EQ(0u, list.length());
}

TEST(fxSearchList, anEmptyListHasNoElements) { EXPECT_EQ(0u, fxSearchList("", ".*").length()); }

TEST(fxSearchList, aCopyHasTheElementsAndTheCriteria) {
    const TemporaryFolder folder;
    folder.file("a", "");
    folder.file("b", "");
    fxSearchList list(folder.path().c_str(), "a");
    fxSearchList copy(list);
    copy.regexp("b");
    EXPECT_EQ(Names{folder / "a"}, namesOf(list));
    EXPECT_EQ(Names{folder / "b"}, namesOf(copy));
    EXPECT_EQ(fxStr("a"), list.regexp());
}

// Which entries.

TEST(fxSearchList, selectsTheNamesThatTheExpressionMatchesWhole) {
    const TemporaryFolder folder;
    for (const char* name : {"a", "ab", "ba", "abc", "x.cpp", "x.h", "xcpp"})
        folder.file(name, "");
    const struct {
        const char* expr;
        Names names;
    } cases[] = {{"a.*", {"a", "ab", "abc"}},
                 {"a", {"a"}},
                 {"^ab$", {"ab"}},
                 {"ab|a", {"a", "ab"}},
                 {"[ab]+", {"a", "ab", "ba"}},
                 {".*\\.(cpp|h)", {"x.cpp", "x.h"}},
                 {"x.cpp", {"x.cpp"}},
                 {"x.*cpp", {"x.cpp", "xcpp"}},
                 {"z", {}}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.expr);
        Names expected;
        for (const std::string& name : c.names)
            expected.push_back(folder / name);
        EXPECT_EQ(expected, found(folder.path(), c.expr));
    }
}

TEST(fxSearchList, aMatchThatBeginsLaterSelectsNothing) {
    const TemporaryFolder folder;
    folder.file("ba", "");
    EXPECT_EQ(Names{}, found(folder.path(), "a.*"));
}

TEST(fxSearchList, deliberateTheFirstMatchMustBeTheWholeNameNotTheLongest) {
    const TemporaryFolder folder;
    folder.file("a", "");
    folder.file("ab", "");
    EXPECT_EQ(Names{folder / "a"}, found(folder.path(), "a|ab"));
    EXPECT_EQ((Names{folder / "a", folder / "ab"}), found(folder.path(), "ab|a"));
}

TEST(fxSearchList, anEmptyExpressionMatchesNoName) {
    const TemporaryFolder folder;
    folder.file("a", "");
    EXPECT_EQ(Names{}, found(folder.path(), ""));
    EXPECT_EQ(Names{}, found(folder.path(), nullptr));
}

TEST(fxSearchList, anExpressionThatDoesNotCompileMatchesNothing) {
    const TemporaryFolder folder;
    folder.file("a", "");
    folder.file("(", "");
    for (const char* expr : {"(", "*a", "[z-a]", "a\\"}) {
        SCOPED_TRACE(expr);
        EXPECT_EQ(Names{}, found(folder.path(), expr));
    }
}

TEST(fxSearchList, theDirectoryItselfAndItsParentAreEntriesToo) {
    const TemporaryFolder folder;
    folder.file("a", "");
    EXPECT_EQ((Names{folder / ".", folder / "..", folder / "a"}), found(folder.path(), ".*"));
    EXPECT_EQ(Names{folder / "."}, found(folder.path(), "\\."));
}

TEST(fxSearchList, entriesOfEveryKindAreSelected) {
    const TemporaryFolder folder;
    folder.file("e.file", "");
    folder.file("e.folder/below", "");
    ASSERT_EQ(0, ::symlink("nowhere", (folder / "e.dangling").c_str()));
    ASSERT_EQ(0, ::symlink("e.loop", (folder / "e.loop").c_str()));
    ASSERT_EQ(0, ::mkfifo((folder / "e.pipe").c_str(), 0600));
    EXPECT_EQ((Names{folder / "e.dangling", folder / "e.file", folder / "e.folder",
                     folder / "e.loop", folder / "e.pipe"}),
              found(folder.path(), "e.*"));
}

TEST(fxSearchList, namesOf255BytesAndOddBytesAreWhole) {
    const TemporaryFolder folder;
    const Names names = {std::string(255, 'n'), "n \n:\\*", "n\xFF\x80"};
    for (const std::string& name : names)
        folder.file(name, "");
    Names expected;
    for (const std::string& name : names)
        expected.push_back(folder / name);
    EXPECT_EQ(sorted(expected), found(folder.path(), "n.*"));
    EXPECT_EQ(Names{folder / names[0]}, found(folder.path(), (names[0] + "$").c_str()));
}

// Order.

TEST(fxSearchList, namesAreInTheOrderOfTheirDirectory) {
    const TemporaryFolder folder;
    for (unsigned int i = 0; i < 200; ++i)
        folder.file(std::to_string(i * 7919 % 1000), "");
    EXPECT_EQ(entriesOf(folder.path()), namesOf(fxSearchList(folder.path().c_str(), ".*")));
}

TEST(fxSearchList, directoriesAreInTheOrderOfTheList) {
    const TemporaryFolder folder;
    folder.file("1/a", "");
    folder.file("2/a", "");
    folder.file("2/b", "");
    const std::string one = folder / "1", two = folder / "2";
    const fxSearchList forward((one + ":" + two).c_str(), "a");
    EXPECT_EQ((Names{one + "/a", two + "/a"}), namesOf(forward));
    const fxSearchList backward((two + ":" + one).c_str(), "a");
    EXPECT_EQ((Names{two + "/a", one + "/a"}), namesOf(backward));
    const fxSearchList twice((one + ":" + one).c_str(), "a");
    EXPECT_EQ((Names{one + "/a", one + "/a"}), namesOf(twice));

    Names grouped = entriesOf(two);
    for (const std::string& name : entriesOf(one))
        grouped.push_back(name);
    EXPECT_EQ(grouped, namesOf(fxSearchList((two + ":" + one).c_str(), ".*")));
}

// The list.

TEST(fxSearchList, runsOfColonsAreOneSeparator) {
    const TemporaryFolder folder;
    folder.file("1/a", "");
    folder.file("2/a", "");
    const std::string one = folder / "1", two = folder / "2";
    const Names both = {one + "/a", two + "/a"};
    for (const std::string& list : {one + ":" + two, one + "::" + two, ":" + one + ":" + two,
                                    one + ":::" + two + "::", ":::" + one + ":" + two + ":"}) {
        SCOPED_TRACE(list);
        EXPECT_EQ(both, namesOf(fxSearchList(list.c_str(), "a")));
    }
    for (const char* list : {":", "::", ":::"})
        EXPECT_EQ(0u, fxSearchList(list, ".*").length());
}

TEST(fxSearchList, theDirectoryIsTakenAsItIsWritten) {
    const TemporaryFolder folder;
    folder.file("d/a", "");
    for (const std::string& directory : {folder / "d", folder / "d/", folder / "d//../d"}) {
        SCOPED_TRACE(directory);
        EXPECT_EQ(Names{directory + "/a"}, found(directory, "a"));
    }
}

TEST(fxSearchList, aDirectoryMayBeALink) {
    const TemporaryFolder folder;
    folder.file("d/a", "");
    ASSERT_EQ(0, ::symlink("d", (folder / "link").c_str()));
    EXPECT_EQ(Names{folder / "link/a"}, found(folder / "link", "a"));
}

// Directories that do not open.

TEST(fxSearchList, whatIsNoDirectoryIsLeftOut) {
    const TemporaryFolder folder;
    folder.file("d/a", "");
    folder.file("a", "");
    ASSERT_EQ(0, ::symlink("loop", (folder / "loop").c_str()));
    ASSERT_EQ(0, ::symlink("two", (folder / "one").c_str()));
    ASSERT_EQ(0, ::symlink("one", (folder / "two").c_str()));
    ASSERT_EQ(0, ::symlink("nowhere", (folder / "dangling").c_str()));
    testing::internal::CaptureStderr();
    for (const std::string& directory :
         {folder / "missing", folder / "a", folder / "loop", folder / "one", folder / "dangling",
          folder / std::string(256, 'n'), std::string(100000, 'n'), std::string(" ")}) {
        SCOPED_TRACE(directory.substr(0, 100));
        const std::string list = directory + ":" + (folder / "d") + ":" + directory;
        EXPECT_EQ(Names{folder / "d/a"}, namesOf(fxSearchList(list.c_str(), "a")));
    }
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

TEST(fxSearchList, anUnreadableDirectoryIsLeftOut) {
    const TemporaryFolder folder;
    folder.file("secret/a", "");
    folder.file("d/a", "");
    ASSERT_EQ(0, ::chmod((folder / "secret").c_str(), 0));
    ASSERT_EQ(0, ::chmod(folder.path().c_str(), 0755));
    ASSERT_EQ(0, ::chmod((folder / "d").c_str(), 0755));
    const std::string list = (folder / "secret") + ":" + (folder / "d");
    {
        const Nobody nobody;
        if (!nobody.canRead(folder / "d"))
            GTEST_SKIP() << "nobody but root can read temporary folders";
        EXPECT_EQ(Names{folder / "d/a"}, found(list, "a"));
    }
    ::chmod((folder / "secret").c_str(), 0700);
    EXPECT_EQ((Names{folder / "d/a", folder / "secret/a"}), found(list, "a"));
}

TEST(fxSearchList, withoutDescriptorsEveryDirectoryIsLeftOut) {
    const TemporaryFolder folder;
    folder.file("a", "");
    fxSearchList list(folder.path().c_str(), "a");
    ASSERT_EQ(1u, list.length());
    {
        const NoDescriptors none;
        list.recalc();
    }
    EXPECT_EQ(0u, list.length());
    list.recalc();
    EXPECT_EQ(Names{folder / "a"}, namesOf(list));
}

TEST(fxSearchList, everyDirectoryIsClosedAgain) {
    const TemporaryFolder folder;
    folder.file("1/a", "");
    folder.file("2/a", "");
    const unsigned int before = openDescriptors();
    fxSearchList list(((folder / "1") + ":" + (folder / "2") + ":/missing").c_str(), "(");
    for (unsigned int i = 0; i < 20; ++i) {
        list.regexp(i % 2 ? "a" : "(");
        list.recalc();
    }
    EXPECT_EQ(before, openDescriptors());
}

// Changing the criteria. A file that comes or goes shows whether it looked again.

TEST(fxSearchList, anotherListIsLookedInAtOnceTheSameIsNot) {
    const TemporaryFolder folder;
    folder.file("1/a", "");
    folder.file("2/a", "");
    const std::string one = folder / "1", two = folder / "2";
    fxSearchList list(one.c_str(), "a.*");
    list.searchList(two.c_str());
    EXPECT_EQ(Names{two + "/a"}, namesOf(list));
    EXPECT_EQ(fxStr(two.c_str()), list.searchList());

    folder.file("2/ab", "");
    list.searchList(two.c_str());
    EXPECT_EQ(Names{two + "/a"}, namesOf(list));
    list.searchList((two + ":").c_str());
    EXPECT_EQ((Names{two + "/a", two + "/ab"}), sorted(namesOf(list)));
}

TEST(fxSearchList, anotherExpressionIsLookedForAtOnceTheSameIsNot) {
    const TemporaryFolder folder;
    folder.file("a", "");
    folder.file("b", "");
    fxSearchList list(folder.path().c_str(), "a");
    list.regexp("b.*");
    EXPECT_EQ(Names{folder / "b"}, namesOf(list));
    EXPECT_EQ(fxStr("b.*"), list.regexp());

    folder.file("bc", "");
    list.regexp("b.*");
    EXPECT_EQ(Names{folder / "b"}, namesOf(list));
    list.regexp("b+c*");
    EXPECT_EQ((Names{folder / "b", folder / "bc"}), sorted(namesOf(list)));
}

TEST(fxSearchList, bothCriteriaChangeTogether) {
    const TemporaryFolder folder;
    folder.file("1/a", "");
    folder.file("2/a", "");
    folder.file("2/b", "");
    const std::string one = folder / "1", two = folder / "2";
    const struct {
        std::string list;
        const char* expr;
        bool looks;
    } cases[] = {{one, "a", false}, {two, "a", true}, {one, "b", true}, {two, "b", true}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.list + " " + c.expr);
        fxSearchList list(one.c_str(), "a");
        list.resize(0);
        list.append("what was not found");
        list.searchCriteria(c.list.c_str(), c.expr);
        EXPECT_EQ(c.looks ? found(c.list, c.expr) : Names{"what was not found"}, namesOf(list));
        EXPECT_EQ(fxStr(c.list.c_str()), list.searchList());
        EXPECT_EQ(fxStr(c.expr), list.regexp());
    }
}

TEST(fxSearchList, nullCriteriaAreEmpty) {
    const TemporaryFolder folder;
    folder.file("a", "");
    fxSearchList list(folder.path().c_str(), "a");
    list.regexp(nullptr);
    EXPECT_EQ(0u, list.length());
    EXPECT_EQ(0u, list.regexp().length());
    list.append("kept");
    list.regexp(nullptr);
    list.regexp("");
    EXPECT_EQ(Names{"kept"}, namesOf(list));

    list.searchCriteria(nullptr, "a");
    EXPECT_EQ(0u, list.length());
    EXPECT_EQ(0u, list.searchList().length());
    list.append("kept");
    list.searchList(nullptr);
    list.searchCriteria(nullptr, "a");
    EXPECT_EQ(Names{"kept"}, namesOf(list));
    list.searchCriteria(nullptr, nullptr);
    EXPECT_EQ(0u, list.length());
}

TEST(fxSearchList, anEmptyListEndsAllElements) {
    const TemporaryFolder folder;
    folder.file("a", "");
    fxSearchList list(folder.path().c_str(), "a");
    list.searchList("");
    EXPECT_EQ(0u, list.length());
}

TEST(fxSearchList, criteriaMayBePartOfItsOwnTexts) {
    const TemporaryFolder folder;
    folder.file("d/a", "");
    folder.file("d/d", "");
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder.path());
    fxSearchList list("d", "a");
    EXPECT_EQ(Names{"d/a"}, namesOf(list));
    list.searchCriteria("./d", list.searchList().c_str());
    EXPECT_EQ(Names{"./d/d"}, namesOf(list));
    list.searchList(list.searchList().c_str() + 2);
    EXPECT_EQ(Names{"d/d"}, namesOf(list));
    list.regexp(list[0].c_str() + 2);
    EXPECT_EQ(Names{"d/d"}, namesOf(list));
    list.searchCriteria(list[0].c_str(), list[0].c_str());
    EXPECT_EQ(Names{}, namesOf(list));
    std::filesystem::current_path(before);
}

// Looking again.

TEST(fxSearchList, recalcReplacesTheElementsByWhatIsThere) {
    const TemporaryFolder folder;
    folder.file("a1", "");
    fxSearchList list(folder.path().c_str(), "a.");
    folder.file("a2", "");
    ::unlink((folder / "a1").c_str());
    EXPECT_EQ(Names{folder / "a1"}, namesOf(list));
    list.recalc();
    EXPECT_EQ(Names{folder / "a2"}, namesOf(list));
    ::unlink((folder / "a2").c_str());
    list.recalc();
    EXPECT_EQ(0u, list.length());
}

TEST(fxSearchList, recalcWithAnEmptyListEndsTheElements) {
    fxSearchList list("", "a");
    list.append("added by hand");
    list.recalc();
    EXPECT_EQ(0u, list.length());
}

TEST(fxSearchList, aLargeDirectoryIsFoundWhole) {
    const TemporaryFolder folder;
    const unsigned int n = 3000;
    for (unsigned int i = 0; i < n; ++i)
        folder.file("file" + std::to_string(i), "");
    EXPECT_EQ(n, fxSearchList(folder.path().c_str(), "file[0-9]+").length());
    EXPECT_EQ(1000u, fxSearchList(folder.path().c_str(), "file2...").length());
}
