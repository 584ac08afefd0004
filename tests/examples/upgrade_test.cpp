// The example program examples/upgrade, run as its users run it.

#ifdef KELVOFXDS_UPGRADE

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxStrSet.h"
#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/core/fxRef.h"
#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/str/fxStrArray.h"
#include "kelvofxds/transcribe/fxFile.h"
#include "kelvofxds/transcribe/fxStdioStream.h"
#include "kelvofxds/transcribe/fxTranscriber.h"
#include "tests/support/runProgram.h"

namespace {

const char graphHeader[] = "fxGraphWriter";

class upgradeProgram : public testing::Test {
protected:
    upgradeProgram() {
        fxInitializeToolkit();
        upgrade.workingFolder = folder.path();
    }
    ProgramResult run(const std::vector<std::string>& arguments) const {
        return upgrade.run(arguments);
    }

    // Writes the object as a program of old did, and returns the file's bytes.
    std::string writeOld(const char* name, fxXDRObj& object) const {
        const fxRef<fxStdioStream> held(fxStdioStream::createFile((folder / name).c_str()));
        fxStdioStream* const file = held.get();
        fxTranscriber::resetToDefaultWriter();
        const std::unique_ptr<fxTranscriber> writer(fxTranscriber::getWriter(file));
        EXPECT_TRUE(writer && writer->writeObject(&object, &object));
        EXPECT_TRUE(file->close());
        return bytesOf(folder / name);
    }
    bool isGraph(const char* name) const {
        return bytesOf(folder / name).compare(0, sizeof graphHeader - 1, graphHeader) == 0;
    }
    template <class T>
    std::unique_ptr<T> loaded(const char* name) const {
        return std::unique_ptr<T>(fxLoadFile<T>((folder / name).c_str()));
    }

    const TemporaryFolder folder;
    Program upgrade{KELVOFXDS_UPGRADE};
};

// 1 to 5, for which an array has room for 8.
void fill(fxIntArray& numbers) {
    for (int i = 1; i <= 5; ++i)
        numbers.append(&i);
}

}  // namespace

TEST_F(upgradeProgram, containersOfTextsAreUpgradedByTheirNames) {
    fxStrStrDictionary capitals;
    capitals.add("Peru", "Lima");
    fxStrSet towns;
    towns.add("Cusco");
    fxStrArray lines;
    lines.append("one");
    lines.append("two");
    writeOld("capitals", capitals);
    writeOld("towns", towns);
    writeOld("lines", lines);

    const ProgramResult result = run({"capitals", "towns", "lines"});

    EXPECT_EQ(0, result.status);
    EXPECT_EQ("capitals: DICT upgraded\ntowns: SET upgraded\nlines: ARRAY upgraded\n", result.out);
    EXPECT_EQ("", result.err);
    for (const char* name : {"capitals", "towns", "lines"})
        EXPECT_TRUE(isGraph(name)) << name;
    ASSERT_TRUE(loaded<fxStrStrDictionary>("capitals"));
    EXPECT_EQ("Lima", *loaded<fxStrStrDictionary>("capitals")->find("Peru"));
    ASSERT_TRUE(loaded<fxStrSet>("towns"));
    EXPECT_EQ(1, loaded<fxStrSet>("towns")->contains("Cusco"));
    ASSERT_TRUE(loaded<fxStrArray>("lines"));
    EXPECT_EQ("two", (*loaded<fxStrArray>("lines"))[1]);
}

TEST_F(upgradeProgram, arraysOfNumbersAreUpgradedWhenTheTypeIsSaid) {
    fxIntArray numbers;
    fill(numbers);
    numbers.setMaxLength(0);
    const std::string before = writeOld("numbers", numbers);

    const ProgramResult wrong = run({"numbers"});
    EXPECT_EQ(1, wrong.status);
    EXPECT_EQ(0U, wrong.err.find("upgrade: cannot load \"numbers\": ")) << wrong.err;
    EXPECT_EQ(before, bytesOf(folder / "numbers"));

    EXPECT_EQ("numbers: ARRAY upgraded\n", run({"-t", "ints", "numbers"}).out);
    ASSERT_TRUE(loaded<fxIntArray>("numbers"));
    EXPECT_EQ(5U, loaded<fxIntArray>("numbers")->length());
    EXPECT_EQ(5, (*loaded<fxIntArray>("numbers"))[4]);
}

TEST_F(upgradeProgram, spareElementsAreDroppedByTheStandardReader) {
    fxIntArray numbers;
    fill(numbers);
    const std::string before = writeOld("numbers", numbers);

    const ProgramResult refused = run({"-t", "ints", "numbers"});
    EXPECT_EQ(1, refused.status);
    EXPECT_NE(std::string::npos, refused.err.find("spare capacity")) << refused.err;
    EXPECT_EQ(before, bytesOf(folder / "numbers"));

    EXPECT_EQ("numbers: ARRAY upgraded\n", run({"-s", "-t", "ints", "numbers"}).out);
    ASSERT_TRUE(loaded<fxIntArray>("numbers"));
    EXPECT_EQ(5U, loaded<fxIntArray>("numbers")->length());
    EXPECT_EQ(5, (*loaded<fxIntArray>("numbers"))[4]);
}

TEST_F(upgradeProgram, aTrialChangesNothing) {
    fxStrSet towns;
    const std::string before = writeOld("towns", towns);
    EXPECT_EQ("towns: SET would be upgraded\n", run({"-n", "towns"}).out);
    EXPECT_EQ(before, bytesOf(folder / "towns"));
}

TEST_F(upgradeProgram, whatIsUpgradedIsLeftAlone) {
    fxStrSet towns;
    writeOld("towns", towns);
    run({"towns"});
    const std::string before = bytesOf(folder / "towns");

    const ProgramResult again = run({"towns"});

    EXPECT_EQ(0, again.status);
    EXPECT_EQ("towns: is a graph stream\n", again.out);
    EXPECT_EQ(before, bytesOf(folder / "towns"));
}

TEST_F(upgradeProgram, whatCannotBeReadGetsOneLineAndTheRestIsUpgraded) {
    fxStrSet towns;
    const std::string whole = writeOld("towns", towns);
    folder.file("half", whole.substr(0, whole.size() / 2));
    folder.file("letter", "Dear all,\n");

    const ProgramResult result = run({"missing", "letter", "half", "towns"});

    EXPECT_EQ(1, result.status);
    EXPECT_EQ("towns: SET upgraded\n", result.out);
    EXPECT_EQ(0U, result.err.find("upgrade: cannot load \"missing\": No such file or directory\n"
                                  "upgrade: cannot load \"letter\": it is no file that "))
        << result.err;
    EXPECT_NE(std::string::npos, result.err.find("\nupgrade: cannot load \"half\": "));
    EXPECT_EQ("Dear all,\n", bytesOf(folder / "letter"));
    EXPECT_EQ(whole.substr(0, whole.size() / 2), bytesOf(folder / "half"));
}

TEST_F(upgradeProgram, helpTellsTheOptionsAndWrongOnesDo) {
    const ProgramResult help = run({"--help"});
    EXPECT_EQ(0, help.status);
    EXPECT_EQ(0U, help.out.find("usage: upgrade "));
    const std::vector<std::string> wrong[] = {{}, {"-n"}, {"-x", "a"}, {"-t", "apples", "a"}};
    for (const auto& arguments : wrong) {
        const ProgramResult result = run(arguments);
        EXPECT_EQ(2, result.status);
        EXPECT_NE(std::string::npos, result.err.find(help.out));
    }
}

#endif
