// fxFileKinds_test.cpp - files of other kinds, and what fxLoadFile says of them.

#include <fstream>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/transcribe/fxFile.h"
#include "tests/support/runProgram.h"
#include "tests/support/savedBook.h"

TEST(fxFileKinds, aStreamOfAnotherWriterIsToldByItsName) {
    const TemporaryFolder folder;
    const std::string path = folder / "file";
    const std::string marks("ieee\0\x22\x11\x66\x55\x44\x33", 11);
    const std::string none = "it is no file that fxSaveFile or a standard writer has written";
    const struct {
        const char* name;
        std::string reason;
    } cases[] = {
        {"myWriter2", "it is a stream of \"myWriter2\", which is another kind"},
        {"my_writer", "it is a stream of \"my_writer\", which is another kind"},
        {"my::Writer", "it is a stream of \"my::Writer\", which is another kind"},
        {"my-Writer", none},
        {"my Writer", none},
        {"", none},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::ofstream(path, std::ios::binary) << c.name << '\0' << marks;
        fxStr why;
        const std::unique_ptr<SavedBook> book(fxLoadFile<SavedBook>(path.c_str(), &why));
        EXPECT_EQ(nullptr, book);
        EXPECT_EQ("cannot load \"" + path + "\": " + c.reason, why.c_str());
    }
}
