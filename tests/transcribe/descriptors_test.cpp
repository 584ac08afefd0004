// descriptors_test.cpp - files where the process may open no more.

#include <dirent.h>
#include <unistd.h>

#include <filesystem>
#include <iterator>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/transcribe/fxFile.h"
#include "kelvofxds/transcribe/fxStdioStream.h"
#include "tests/support/inChild.h"
#include "tests/support/runProgram.h"
#include "tests/support/savedBook.h"

namespace {

// With the one that it reads them by.
unsigned int openDescriptors() {
    unsigned int n = 0;
    DIR* const all = ::opendir("/proc/self/fd");
    while (all && ::readdir64(all))
        ++n;
    if (all)
        ::closedir(all);
    return n;
}

const int firstFree = 100;

// All below that are in use from now on.
void fillUp() {
    int next = 0;
    while (next < firstFree)
        next = ::dup(0);
    ::close(next);
}

// From now on `more` descriptors can be opened.
void allowMore(unsigned int more) { limitDescriptors(static_cast<unsigned int>(firstFree) + more); }

std::string save(const std::string& path, unsigned int seed) {
    SavedBook book;
    book.fill(10, seed);
    fxStr why;
    return fxSaveFile(path.c_str(), book, &why) ? "saved" : why.c_str();
}

std::string load(const std::string& path) {
    fxStr why;
    const std::unique_ptr<SavedBook> book(fxLoadFile<SavedBook>(path.c_str(), &why));
    return book ? book->text() : why.c_str();
}

}  // namespace

TEST(descriptors, whereThereAreNoneNothingOpensAndNothingIsMade) {
    const TemporaryFolder folder;
    const std::string there = folder.file("there", "content");
    const std::string missing = folder / "missing";
    EXPECT_EQ(
        "", inChild([&]() -> std::string {
            fillUp();
            allowMore(0);
            for (const std::string& path : {there, missing}) {
                for (const int type : {0, 1, 2}) {
                    fxStdioStream stream(path.c_str(), static_cast<fxStream::fxStreamType>(type));
                    char byte = 'x';
                    if (!stream.hasError() || stream.getBytes(&byte, 1) ||
                        stream.putBytes(&byte, 1))
                        return path + " opens as " + std::to_string(type);
                }
                const std::unique_ptr<fxStdioStream> made(fxStdioStream::createFile(path.c_str()));
                if (!made->hasError())
                    return path + " is made";
            }
            return "";
        }));
    EXPECT_EQ("content", bytesOf(there));
    EXPECT_FALSE(std::filesystem::exists(missing));
}

// Saving needs two, for the directory and the new file; loading needs one.
TEST(descriptors, savingAndLoadingSayThatThereAreTooFewAndLeaveNoneOpen) {
    const TemporaryFolder folder;
    const std::string path = folder / "book";
    ASSERT_EQ("saved", save(path, 1));
    const std::string before = load(path);
    const struct {
        unsigned int more;
        bool saves, loads;
    } rows[] = {{0, false, false}, {1, false, true}, {2, true, true}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.more);
        const std::string said = inChild([&] {
            fillUp();
            const unsigned int open = openDescriptors();
            allowMore(row.more);
            std::string all;
            for (unsigned int i = 0; i < 20; ++i)
                all = save(path, 1) + "|" + (load(path) == before ? "loaded" : load(path));
            allowMore(1);
            return all + "|" + std::to_string(openDescriptors() - open);
        });
        const std::string tooMany = ": Too many open files";
        EXPECT_EQ(row.saves, said.compare(0, 6, "saved|") == 0) << said;
        EXPECT_EQ(row.loads, said.find("|loaded|") != std::string::npos) << said;
        EXPECT_EQ(row.saves, said.find(tooMany) == std::string::npos) << said;
        EXPECT_EQ("|0", said.substr(said.size() - 2)) << said;
        EXPECT_EQ(before, load(path));
        EXPECT_EQ(1, std::distance(std::filesystem::directory_iterator(folder.path()), {}));
    }
}
