#include "kelvofxds/transcribe/fxFile.h"

#include <fcntl.h>
#include <grp.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/str/fxStrArray.h"
#include "kelvofxds/transcribe/fxBinaryWriter.h"
#include "kelvofxds/transcribe/fxGraphWriter.h"
#include "kelvofxds/transcribe/fxMemoryStream.h"
#include "kelvofxds/transcribe/fxStdioStream.h"
#include "tests/support/inChild.h"
#include "tests/support/runProgram.h"
#include "tests/support/savedBook.h"
#include "tests/support/streamBytes.h"

namespace {
namespace fs = std::filesystem;

const uid_t nobody = 65534;

class fxFileTest : public testing::Test {
protected:
    fxFileTest() : path(folder / "book") {}

    void TearDown() override {
        EXPECT_EQ(0, SavedBook::alive);
        EXPECT_EQ(0, SavedPerson::alive);
        EXPECT_EQ("", leftOver());
    }

    // Saves a book that depends on `seed`; "" or the reason why not.
    static std::string save(const std::string& to, unsigned int seed, unsigned int people = 7) {
        SavedBook book;
        book.fill(people, seed);
        fxStr why("before");
        const unsigned char done = fxSaveFile(to.c_str(), book, &why);
        EXPECT_EQ(done != 0, why == "") << why.c_str();
        return why.c_str();
    }

    static std::string textOf(unsigned int seed, unsigned int people = 7) {
        SavedBook book;
        book.fill(people, seed);
        return book.text();
    }

    // What the book in a file holds, or the reason why there is none.
    static std::string load(const std::string& from) {
        fxStr why("before");
        const std::unique_ptr<SavedBook> book(fxLoadFile<SavedBook>(from.c_str(), &why));
        EXPECT_EQ(book != nullptr, why == "") << why.c_str();
        return book ? book->text() : why.c_str();
    }

    std::string cannotSave(const std::string& to, const std::string& reason) const {
        return "cannot save \"" + to + "\": " + reason;
    }

    // What stands in the folder and is no file of the test's.
    std::string leftOver() const {
        std::string all;
        for (const auto& entry : fs::directory_iterator(folder.path())) {
            if (entry.path().filename().string().find(".saving-") != std::string::npos)
                all += entry.path().filename().string() + "\n";
        }
        return all;
    }

    static unsigned int permissionsOf(const std::string& of) {
        struct stat status;
        return ::stat(of.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
    }

    // The bytes of a stream with one root.
    template <class Writer>
    static std::string streamOf(fxXDRObj& object, fxTranscriber* make(fxStream*)) {
        fxMemoryStream stream;
        stream.count = 1;
        fxTranscriber::changeDefaultWriter(make);
        const std::unique_ptr<fxTranscriber> writer(fxTranscriber::getWriter(&stream));
        fxTranscriber::resetToDefaultWriter();
        EXPECT_EQ(1, writer->writeObject(&object, &object));
        return std::string(stream.getBase(), stream.length());
    }
    static std::string graphStreamOf(fxXDRObj& object) {
        return streamOf<fxGraphWriter>(object, makeGraphWriter);
    }
    static std::string standardStreamOf(fxXDRObj& object) {
        return streamOf<fxBinaryWriter>(object, fxTranscriber::makeDefaultWriter);
    }

    const TemporaryFolder folder;
    const std::string path;
};
}  // namespace

// Saving and loading.

TEST_F(fxFileTest, whatIsSavedIsLoaded) {
    for (const unsigned int people : {0u, 1u, 2u, 1000u}) {
        SCOPED_TRACE(people);
        EXPECT_EQ("", save(path, 5, people));
        EXPECT_EQ(textOf(5, people), load(path));
    }
}

TEST_F(fxFileTest, fileHasAGraphStreamAndNothingElse) {
    SavedBook book;
    book.fill(20, 3);
    EXPECT_EQ(1, fxSaveFile(path.c_str(), book));
    EXPECT_EQ(dump(graphStreamOf(book)), dump(bytesOf(path)));
}

TEST_F(fxFileTest, shorterContentLeavesNothingOfALongerOne) {
    EXPECT_EQ("", save(path, 1, 500));
    EXPECT_EQ("", save(path, 2, 3));
    EXPECT_EQ(textOf(2, 3), load(path));
}

TEST_F(fxFileTest, defaultWriterAndStartUpHaveNoInfluence) {
    struct NoWriter {
        static fxTranscriber* make(fxStream*) { return nullptr; }
    };
    fxTranscriber::changeDefaultWriter(NoWriter::make);
    EXPECT_EQ("", save(path, 5));
    fxTranscriber::resetToDefaultWriter();
    EXPECT_EQ(textOf(5), load(path));
    EXPECT_EQ(std::string("fxGraphWriter"), bytesOf(path).c_str());
}

TEST_F(fxFileTest, libraryContainersNeedNoRecordToBeNamed) {
    fxStrArray names;
    names.append("Ada");
    names.append("");
    fxStrStrDictionary pairs;
    pairs.add("a", "b");
    EXPECT_EQ(1, fxSaveFile(path.c_str(), names));
    const std::unique_ptr<fxStrArray> readNames(fxLoadFile<fxStrArray>(path.c_str()));
    ASSERT_TRUE(readNames);
    EXPECT_EQ(2u, readNames->length());
    EXPECT_STREQ("Ada", (*readNames)[0].c_str());
    EXPECT_EQ(1, fxSaveFile(path.c_str(), pairs));
    const std::unique_ptr<fxStrStrDictionary> readPairs(
        fxLoadFile<fxStrStrDictionary>(path.c_str()));
    ASSERT_TRUE(readPairs);
    EXPECT_STREQ("b", readPairs->find("a")->c_str());
}

TEST_F(fxFileTest, loadedObjectIsNobodysYet) {
    EXPECT_EQ("", save(path, 5));
    SavedBook* book = fxLoadFile<SavedBook>(path.c_str());
    ASSERT_NE(nullptr, book);
    EXPECT_EQ(0, book->count);
    delete book;
}

TEST_F(fxFileTest, reasonsMayBeLeftOut) {
    SavedBook book;
    EXPECT_EQ(0, fxSaveFile(folder.path().c_str(), book));
    EXPECT_EQ(0, fxSaveFile(folder.path().c_str(), book, nullptr));
    EXPECT_EQ(nullptr, fxLoadFile<SavedBook>(folder.path().c_str()));
    EXPECT_EQ(nullptr, fxLoadFile(folder.path().c_str(), SavedBook_type));
}

// What the new file takes over.

TEST_F(fxFileTest, permissionsOfTheOldFileAreKept) {
    const mode_t before = ::umask(027);
    EXPECT_EQ("", save(path, 1));
    EXPECT_EQ(0640u, permissionsOf(path)) << "0666 less the umask";
    for (const mode_t mode : {0600u, 0666u, 0777u, 0200u, 04755u, 02750u}) {
        SCOPED_TRACE(mode);
        ASSERT_EQ(0, ::chmod(path.c_str(), mode));
        EXPECT_EQ("", save(path, 2));
        EXPECT_EQ(mode, permissionsOf(path));
    }
    ::umask(before);
}

TEST_F(fxFileTest, ownerOfTheOldFileIsKept) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root may give files away";
    EXPECT_EQ("", save(path, 1));
    ASSERT_EQ(0, ::chown(path.c_str(), 1234, 5678));
    ASSERT_EQ(0, ::chmod(path.c_str(), 06751));
    EXPECT_EQ("", save(path, 2));
    struct stat status;
    ASSERT_EQ(0, ::stat(path.c_str(), &status));
    EXPECT_EQ(1234u, status.st_uid);
    EXPECT_EQ(5678u, status.st_gid);
    EXPECT_EQ(06751u, status.st_mode & 07777);
}

TEST_F(fxFileTest, whereTheGroupCannotBeKeptItGetsNoMoreThanEverybody) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "needs files of several owners";
    const struct {
        mode_t old, now;
    } cases[] = {{0666, 0666}, {0662, 0622}, {0676, 0666}, {06667, 0667}};
    ASSERT_EQ(0, ::chmod(folder.path().c_str(), 0777));
    for (const auto& c : cases) {
        SCOPED_TRACE(c.old);
        EXPECT_EQ("", save(path, 1));
        ASSERT_EQ(0, ::chown(path.c_str(), 1234, 5678));
        ASSERT_EQ(0, ::chmod(path.c_str(), c.old));
        EXPECT_EQ(
            "", inChild([this] {
                if (::setgroups(0, nullptr) != 0 || ::setgid(nobody) != 0 || ::setuid(nobody) != 0)
                    return std::string("no way");
                return save(path, 2);
            }));
        EXPECT_EQ(textOf(2), load(path));
        EXPECT_EQ(c.now, permissionsOf(path));
        fs::remove(path);
    }
}

TEST_F(fxFileTest, linkStaysAndItsTargetIsReplaced) {
    const std::string other = folder.file("deep/er/target", "old");
    fs::create_symlink("er/target", folder / "deep/second");
    fs::create_symlink(folder / "deep/second", path);
    ASSERT_EQ(0, ::chmod(other.c_str(), 0604));
    EXPECT_EQ("", save(path, 3));
    EXPECT_TRUE(fs::is_symlink(path));
    EXPECT_TRUE(fs::is_symlink(folder / "deep/second"));
    EXPECT_FALSE(fs::is_symlink(other));
    EXPECT_EQ(textOf(3), load(other));
    EXPECT_EQ(0604u, permissionsOf(other));
}

TEST_F(fxFileTest, linkToNothingGetsATarget) {
    fs::create_directory(folder / "deep");
    fs::create_symlink("deep/target", path);
    EXPECT_EQ("", save(path, 3));
    EXPECT_TRUE(fs::is_symlink(path));
    EXPECT_EQ(textOf(3), load(folder / "deep/target"));
}

TEST_F(fxFileTest, linksThatLeadNowhereAreReasons) {
    fs::create_symlink("second", folder / "first");
    fs::create_symlink("first", folder / "second");
    fs::create_symlink("no/such", folder / "third");
    EXPECT_EQ(
        cannotSave(folder / "first", "it cannot be looked at: Too many levels of symbolic links"),
        save(folder / "first", 1));
    EXPECT_EQ(cannotSave(folder / "third", "its directory \"" + folder / "no/" +
                                               "\" cannot be opened: No such file or directory"),
              save(folder / "third", 1));
}

// The system tells a path for such a link that leads elsewhere, or nowhere.
TEST_F(fxFileTest, linkToADeletedFileReplacesNoOtherFile) {
    const int fd = ::open(folder.file("gone", "x").c_str(), O_WRONLY);
    fs::remove(folder / "gone");
    const std::string link = "/proc/self/fd/" + std::to_string(fd);
    const std::string reason = "the link cannot be followed: No such file or directory";
    EXPECT_EQ(cannotSave(link, reason), save(link, 1));
    const std::string other = folder.file("gone (deleted)", "other");
    EXPECT_EQ(cannotSave(link, reason), save(link, 1));
    EXPECT_EQ("other", bytesOf(other));
    ::close(fd);
}

TEST_F(fxFileTest, otherHardLinksKeepTheOldContent) {
    EXPECT_EQ("", save(path, 1));
    fs::create_hard_link(path, folder / "other");
    EXPECT_EQ("", save(path, 2));
    EXPECT_EQ(textOf(2), load(path));
    EXPECT_EQ(textOf(1), load(folder / "other"));
}

TEST_F(fxFileTest, namesOfAnyLengthAndFormAreSaved) {
    const std::string umlauts = "\xC3\xA4\xC3\xB6\xC3\xBC";
    std::string longest;
    while (longest.size() + umlauts.size() <= 255)
        longest += umlauts;
    for (const std::string& name :
         {std::string(255, 'x'), longest, std::string("x" + longest.substr(0, 252)),
          std::string(" %s%n\n\"*?"), std::string("-"), std::string(".hidden")}) {
        SCOPED_TRACE(name);
        EXPECT_EQ("", save(folder / name, 1));
        EXPECT_EQ("", save(folder / name, 2));
        EXPECT_EQ(textOf(2), load(folder / name));
        fs::remove(folder / name);
    }
}

TEST_F(fxFileTest, pathsInTheWorkingDirectoryAreSaved) {
    EXPECT_EQ("", inChild([this] {
                  if (::chdir(folder.path().c_str()) != 0)
                      return std::string("no way");
                  return save("book", 4) + save("./book", 4) +
                         save("../" + fs::path(folder.path()).filename().string() + "/book", 4);
              }));
    EXPECT_EQ(textOf(4), load(path));
}

// What cannot be saved.

TEST_F(fxFileTest, whatIsNoFileIsNotReplaced) {
    const std::string device = folder / "device";
    const std::string fifo = folder / "fifo";
    ASSERT_EQ(0, ::mkfifo(fifo.c_str(), 0666));
    EXPECT_EQ(cannotSave(fifo, "it is no regular file"), save(fifo, 1));
    EXPECT_TRUE(fs::is_fifo(fifo));
    EXPECT_EQ(cannotSave(folder.path(), "it is a directory"), save(folder.path(), 1));
    EXPECT_EQ(cannotSave(folder / "new/", "it names a directory"), save(folder / "new/", 1));
    EXPECT_EQ(cannotSave("", "no path is given"), save("", 1));
    if (::mknod(device.c_str(), S_IFCHR | 0666, makedev(1, 7)) != 0)
        GTEST_SKIP() << "only root can make a device";
    fs::create_symlink("device", path);
    EXPECT_EQ(cannotSave(device, "it is no regular file"), save(device, 1));
    EXPECT_EQ(cannotSave(path, "it is no regular file"), save(path, 1));
    EXPECT_TRUE(fs::is_character_file(device)) << "/dev/full by another name";
}

TEST_F(fxFileTest, nullPathIsAReason) {
    SavedBook book;
    fxStr why;
    EXPECT_EQ(0, fxSaveFile(nullptr, book, &why));
    EXPECT_STREQ("cannot save \"\": no path is given", why.c_str());
    EXPECT_EQ(nullptr, fxLoadFile<SavedBook>(nullptr, &why));
    EXPECT_STREQ("cannot load \"\": no path is given", why.c_str());
}

TEST_F(fxFileTest, missingDirectoryAndTooLongPathsAreReasons) {
    EXPECT_EQ(cannotSave(folder / "no/book", "its directory \"" + folder / "no/" +
                                                 "\" cannot be opened: No such file or directory"),
              save(folder / "no/book", 1));
    EXPECT_EQ(
        cannotSave(folder / std::string(256, 'x'), "it cannot be looked at: File name too long"),
        save(folder / std::string(256, 'x'), 1));
    std::string deep = folder.path();
    while (deep.size() < 5000)
        deep += "/.";
    EXPECT_EQ(cannotSave(deep + "/book", "it cannot be looked at: File name too long"),
              save(deep + "/book", 1));
    deep.resize(4080);
    EXPECT_EQ(cannotSave(deep + "/book", "no new file can be made beside it: File name too long"),
              save(deep + "/book", 1));
}

TEST_F(fxFileTest, protectedFilesAndDirectoriesAreReasons) {
    EXPECT_EQ("", save(path, 1));
    EXPECT_EQ("", save(folder / "mine", 1));
    ASSERT_EQ(0, ::chmod(path.c_str(), 0444));
    ASSERT_EQ(0, ::chmod((folder / "mine").c_str(), 0666));
    ASSERT_EQ(0, ::chmod(folder.path().c_str(), 0555));
    const auto asNobody = [](const std::string& to) {
        return inChild([to] {
            if (::geteuid() == 0 && ::setuid(nobody) != 0)
                return std::string("no way");
            return save(to, 2);
        });
    };
    EXPECT_EQ(cannotSave(path, "it is protected against writing: Permission denied"),
              asNobody(path));
    for (const std::string name : {"mine", "new"}) {
        EXPECT_EQ(cannotSave(folder / name, "no new file can be made beside it: Permission denied"),
                  asNobody(folder / name));
    }
    EXPECT_EQ(textOf(1), load(path));
    EXPECT_EQ(textOf(1), load(folder / "mine"));
    ASSERT_EQ(0, ::chmod(folder.path().c_str(), 0700));
}

TEST_F(fxFileTest, directoryThatMayNotBeReadIsGoodEnough) {
    EXPECT_EQ("", inChild([this] {
                  if (::chmod(folder.path().c_str(), 0333) != 0 ||
                      (::geteuid() == 0 && ::setuid(nobody) != 0))
                      return std::string("no way");
                  return save(path, 2);
              }));
    ASSERT_EQ(0, ::chmod(folder.path().c_str(), 0700));
    EXPECT_EQ(textOf(2), load(path));
}

TEST_F(fxFileTest, objectThatCannotBeWrittenLeavesTheOldFile) {
    struct Half : SavedBook {
        unsigned char xdr(fxTranscriber& t) override {
            int number = 1;
            return t.xdr(&number, 1) && 0;
        }
        static unsigned char xdrHalf(void* object, fxTranscriber& t) {
            return static_cast<Half*>(object)->xdr(t);
        }
        fxTypeObj& getTypeObj() const override {
            static fxTypeObj type("fxFileTestHalf", 1, newInstance, deleteInstance, xdrHalf);
            return type;
        }
    };
    EXPECT_EQ("", save(path, 1));
    Half half;
    fxStr why;
    EXPECT_EQ(0, fxSaveFile(path.c_str(), half, &why));
    EXPECT_EQ(cannotSave(path, "the xdr of the type \"fxFileTestHalf\" returned 0"), why.c_str());
    EXPECT_EQ(textOf(1), load(path));
}

// What cannot be loaded.

TEST_F(fxFileTest, whatIsNoStreamHasAReasonOfItsOwn) {
    SavedBook book;
    const std::string header = graphStreamOf(book).substr(0, 25);
    const std::string foreign = "it is no file that fxSaveFile or a standard writer has written";
    const std::string cut = "it ends within its header";
    const struct {
        std::string bytes, reason;
    } cases[] = {
        {"", "it is empty"},
        {"f", cut},
        {header.substr(0, 13), cut},
        {header.substr(0, 14), cut},
        {header.substr(0, 24), cut},
        {"fxBinaryWriter", cut},
        {header, "it has no object behind its header"},
        {"g", foreign},
        {"fxGraphWritef", foreign},
        {std::string(100, 'x'), foreign},
        {std::string(100, '\0'), foreign},
        {"\x7F"
         "ELF\1\1\1" +
             std::string(45, '\0'),
         foreign},
        {"#!/bin/sh\n" + std::string(1, '\0'), foreign},
        {hex("'hostsWriter' 00 'ieee' 00 2211 66554433"),
         "it is a stream of \"hostsWriter\", which is another kind"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(dump(c.bytes));
        EXPECT_EQ("cannot load \"" + path + "\": " + c.reason, load(folder.file("book", c.bytes)));
    }
}

TEST_F(fxFileTest, whatIsNotThereHasAReasonOfItsOwn) {
    EXPECT_EQ("cannot load \"" + path + "\": No such file or directory", load(path));
    EXPECT_EQ("cannot load \"" + folder.path() + "\": it is a directory", load(folder.path()));
    EXPECT_EQ("cannot load \"\": no path is given", load(""));
    fs::create_symlink("book", path);
    EXPECT_EQ("cannot load \"" + path + "\": Too many levels of symbolic links", load(path));
}

TEST_F(fxFileTest, objectOfAnotherTypeIsNotLoaded) {
    fxStrArray names;
    EXPECT_EQ(1, fxSaveFile(path.c_str(), names));
    const std::string reason = load(path);
    EXPECT_EQ("cannot load \"" + path + "\": offset 41, record 2: the root is a \"" +
                  names.getTypeObj().name + "\", not a \"SavedBook\"",
              reason);
    fxXDRObj* any = fxLoadFile(path.c_str(), fxXDRObj_type);
    ASSERT_NE(nullptr, any);
    EXPECT_STREQ(names.className(), any->className());
    delete any;
}

TEST_F(fxFileTest, stringIsNeverTakenForAnObject) {
    folder.file(
        "book",
        hostHeader() + hex("02 02000000 'fxStr' 00 | 4a 04 01000000 02000000 01000000") + host(1));
    const struct {
        fxTypeObj& type;
        const char* reason;
    } cases[] = {{fxXDRObj_type, "a string comes where an object should"},
                 {fxStr_type, "the root is a \"fxStr\", which is no fxXDRObj"}};
    for (const auto& c : cases) {
        fxStr why;
        EXPECT_EQ(nullptr, fxLoadFile(path.c_str(), c.type, &why));
        EXPECT_NE(nullptr, std::strstr(why.c_str(), c.reason)) << why.c_str();
    }
}

TEST_F(fxFileTest, whateverFollowsTheObjectIsAReason) {
    SavedBook book;
    book.fill(3, 1);
    const std::string graph = graphStreamOf(book);
    const std::string standard = standardStreamOf(*std::make_unique<fxStrStrDictionary>());
    for (const std::string& more : {std::string("\n"), graph.substr(25), graph}) {
        const std::string reason = load(folder.file("book", graph + more));
        EXPECT_NE(std::string::npos, reason.find("the stream goes on behind its root")) << reason;
        EXPECT_EQ(1, SavedBook::alive);
        EXPECT_EQ(3, SavedPerson::alive) << "nothing of what was read is left";
    }
    fxStr why;
    folder.file("book", standard + "x");
    EXPECT_EQ(nullptr, fxLoadFile<fxStrStrDictionary>(path.c_str(), &why));
    EXPECT_NE(nullptr, std::strstr(why.c_str(), "the stream goes on behind its root"));
    folder.file("book", standard);
    delete fxLoadFile<fxStrStrDictionary>(path.c_str(), &why);
    EXPECT_STREQ("", why.c_str());
}

TEST_F(fxFileTest, damageIsAReasonEverywhere) {
    SavedBook book;
    book.fill(3, 1);
    const std::string whole = graphStreamOf(book);
    for (std::size_t i = 0; i < whole.size(); ++i) {
        const std::string part = load(folder.file("book", whole.substr(0, i)));
        EXPECT_EQ(0u, part.find("cannot load")) << i << part;
        std::string flipped = whole;
        flipped[i] = static_cast<char>(flipped[i] ^ (1 << i % 8));
        const std::string reason = load(folder.file("book", flipped));
        EXPECT_EQ(0u, reason.find("cannot load")) << i << reason;
    }
    EXPECT_EQ(book.text(), load(folder.file("book", whole)));
}

TEST_F(fxFileTest, standardStreamsAreLoadedToo) {
    SavedBook book;
    book.fill(5, 9);
    book.years.setMaxLength(0);
    folder.file("book", standardStreamOf(book));
    EXPECT_EQ(book.text(), load(path));
}

TEST_F(fxFileTest, pipeCanBeLoadedFrom) {
    SavedBook book;
    book.fill(5, 9);
    const std::string bytes = graphStreamOf(book);
    int ends[2];
    ASSERT_EQ(0, ::pipe(ends));
    ASSERT_EQ(static_cast<ssize_t>(bytes.size()), ::write(ends[1], bytes.data(), bytes.size()));
    ::close(ends[1]);
    EXPECT_EQ(book.text(), load("/proc/self/fd/" + std::to_string(ends[0])));
    ::close(ends[0]);
}

TEST_F(fxFileTest, descriptorsAreGivenBack) {
    EXPECT_EQ("", save(path, 1));
    folder.file("damaged", bytesOf(path).substr(0, 100));
    const int before = ::open("/dev/null", O_RDONLY);
    ::close(before);
    save(path, 2);
    save(folder / "no/book", 2);
    save(folder.path(), 2);
    load(path);
    load(folder / "damaged");
    load(folder / "missing");
    load(folder.path());
    const int after = ::open("/dev/null", O_RDONLY);
    ::close(after);
    EXPECT_EQ(before, after);
}
