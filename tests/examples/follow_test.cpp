// The example program examples/follow, run as its users run it.

#ifdef KELVOFXDS_FOLLOW

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/runProgram.h"

namespace {

class followProgram : public testing::Test {
protected:
    followProgram() {
        follow.workingFolder = folder.path();
        shell.workingFolder = folder.path();
    }

    ProgramResult run(const std::vector<std::string>& arguments) const {
        return follow.run(arguments);
    }
    // Runs a script in which "$@" stands for the program.
    ProgramResult script(const std::string& text) const {
        return shell.run(argumentsForScript(text, KELVOFXDS_FOLLOW));
    }

    const TemporaryFolder folder;
    Program follow{KELVOFXDS_FOLLOW};
    Program shell{theShell};
};

}  // namespace

TEST_F(followProgram, showsWhatIsThereUpToALimit) {
    const std::string log = folder.file("log", "one\ntwo\n\nfour\nunfinished");
    EXPECT_EQ("one\ntwo\n\n", run({"-a", "-n", "3", log}).out);
    EXPECT_EQ("four\n", run({"-a", "-n", "1", "-p", "^f", log}).out);
}

TEST_F(followProgram, ofSeveralFilesItNamesEach) {
    folder.file("a", "one\n");
    folder.file("b", "two\n");
    const ProgramResult result = run({"-a", "-n", "2", "a", "b"});
    EXPECT_EQ(0, result.status);
    EXPECT_EQ("a: one\nb: two\n", result.out);
    EXPECT_EQ("", result.err);
}

TEST_F(followProgram, showsLinesAsTheyAreAppended) {
    folder.file("log", "one\n");
    // Whoever sees a line appends the next one, in two parts.
    const ProgramResult result = script(
        "\"$@\" -a -n 3 -s 0.02 log | while read -r line; do echo \"$line\"; case $line in\n"
        "one) printf tw >>log; printf 'o\\n' >>log;; two) echo three >>log;; esac; done");
    EXPECT_EQ("one\ntwo\nthree\n", result.out);
    EXPECT_EQ("", result.err);
}

TEST_F(followProgram, withoutTheOptionItBeginsAtTheEnd) {
    folder.file("old", "old\n");
    // The complaint about the other file shows that both have been looked at.
    const ProgramResult result = script(
        "mkfifo seen; \"$@\" -n 1 -s 0.02 old new 2>seen & read -r line <seen\n"
        "echo \"$line\"; echo more >>old; wait");
    EXPECT_EQ("follow: new: No such file or directory\nold: more\n", result.out);
}

TEST_F(followProgram, waitsForAFileThatIsNotThere) {
    const ProgramResult result = script(
        "mkfifo seen; \"$@\" -n 1 -s 0.02 log 2>seen & read -r line <seen\n"
        "echo \"$line\"; echo one >log; wait");
    EXPECT_EQ("follow: log: No such file or directory\none\n", result.out);
}

TEST_F(followProgram, aFileThatWasCutOrReplacedIsReadFromItsStart) {
    folder.file("log", "one\nunfinished");
    folder.file("next", "3\n");
    const ProgramResult result = script(
        "\"$@\" -a -n 3 -s 0.02 log | while read -r line; do echo \"$line\"; case $line in\n"
        "one) echo 2 >log;; 2) mv next log;; esac; done");
    EXPECT_EQ("one\n2\n3\n", result.out);
    EXPECT_EQ("follow: log: starts anew\nfollow: log: starts anew\n", result.err);
}

TEST_F(followProgram, signalsEndItInOrder) {
    folder.file("log", "one\n");
    for (const char* signal : {"INT", "TERM"}) {
        SCOPED_TRACE(signal);
        const ProgramResult result = script(
            "mkfifo out; \"$@\" -a log >out & pid=$!\n"
            "read -r line <out; kill -" +
            std::string(signal) + " $pid; wait $pid; echo \"$line $?\"; rm out");
        EXPECT_EQ("one 0\n", result.out);
        EXPECT_EQ("", result.err);
    }
}

TEST_F(followProgram, whatIsNoPatternIsRefused) {
    const ProgramResult result = run({"-p", "(", "log"});
    EXPECT_EQ(2, result.status);
    EXPECT_EQ("follow: \"(\" is no regular expression\n", result.err);
}

TEST_F(followProgram, helpTellsTheOptionsAndWrongOnesDo) {
    const ProgramResult help = run({"--help"});
    EXPECT_EQ(0, help.status);
    EXPECT_EQ(0U, help.out.find("usage: follow "));
    const std::vector<std::string> wrong[] = {{},
                                              {"-a"},
                                              {"-x", "log"},
                                              {"-n", "many", "log"},
                                              {"-s", "0", "log"},
                                              {"-s", "often", "log"}};
    for (const auto& arguments : wrong) {
        const ProgramResult result = run(arguments);
        EXPECT_EQ(2, result.status);
        EXPECT_NE(std::string::npos, result.err.find(help.out));
    }
}

#endif
