// fxdump, run as its users run it: the program beside the library, and a native one.

#ifdef KELVOFXDS_FXDUMP

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/dumping.h"
#include "tests/support/jsonCheck.h"
#include "tests/support/runProgram.h"
#include "tests/support/streamBytes.h"
#include "tests/support/streamSamples.h"

namespace {
const Program fxdumpProgram{KELVOFXDS_FXDUMP};

bool has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

std::string standardStream() { return littleHeader() + hex("02 02000000 'A' 00"); }

// Runs a command of the shell, for redirections, in which "$@" stands for fxdump.
ProgramResult shell(const std::string& command) {
    return Program(theShell).run(argumentsForScript(command, KELVOFXDS_FXDUMP));
}
}  // namespace

TEST(fxdump, showsFilesOneAfterTheOther) {
    const TemporaryFolder folder;
    const std::string one = folder.file("one", graphSample(false));
    const std::string two = folder.file("two", standardStream());
    const ProgramResult result = fxdumpProgram.run({one, two});
    EXPECT_EQ(0, result.status);
    EXPECT_EQ("", result.err);
    EXPECT_EQ(0u, result.out.find(one + ": graph stream, little-endian\n"));
    EXPECT_TRUE(has(result.out, two + ": standard stream, little-endian\n"));
    const ProgramResult json = fxdumpProgram.run({"--json", one, two});
    EXPECT_EQ(0, json.status);
    EXPECT_TRUE(JsonCheck::isDocument(json.out)) << json.out;
}

TEST(fxdump, endsWithTheWorstOfAllFiles) {
    const TemporaryFolder folder;
    const std::string sound = folder.file("sound", standardStream());
    const std::string cut = folder.file("cut", standardStream().substr(0, 30));
    const std::string missing = folder / "missing";
    const ProgramResult damaged = fxdumpProgram.run({cut, sound});
    EXPECT_EQ(1, damaged.status);
    EXPECT_EQ("fxdump: " + cut + ": offset 26, record 1: the stream ends within a record\n",
              damaged.err);
    EXPECT_TRUE(has(damaged.out, sound + ": standard stream"));
    const ProgramResult trouble = fxdumpProgram.run({missing, cut, sound});
    EXPECT_EQ(2, trouble.status);
    EXPECT_TRUE(has(trouble.err, "fxdump: " + missing + ": No such file or directory\n"));
    const ProgramResult aFolder = fxdumpProgram.run({"--json", folder.path()});
    EXPECT_EQ(2, aFolder.status);
    EXPECT_EQ("fxdump: " + folder.path() + ": Is a directory\n", aFolder.err);
    EXPECT_TRUE(JsonCheck::isDocument(aFolder.out)) << aFolder.out;
}

TEST(fxdump, verdictsOnBadStreamsAreErrors) {
    const TemporaryFolder folder;
    GraphBytes g;
    g.type(2, "A", 1).record(fxOT_Object, {1, 2, 2}).end();
    const std::string bad = folder.file("bad", g.str());
    const ProgramResult result = fxdumpProgram.run({"--verify", bad});
    EXPECT_EQ(1, result.status);
    EXPECT_EQ("", result.out);
    EXPECT_EQ("fxdump: " + bad + ": offset 37, record 2: version 2, but the type has version 1\n",
              result.err);
}

TEST(fxdump, readsTheStandardInput) {
    const TemporaryFolder folder;
    const std::string file = folder.file("stream", graphSample(true));
    const ProgramResult result = shell("cat '" + file + "' | \"$@\" --verify -");
    EXPECT_EQ(0, result.status);
    EXPECT_EQ(0u, result.out.find("(standard input): graph stream, big-endian, ")) << result.out;
}

TEST(fxdump, aFullDiskIsTrouble) {
    const TemporaryFolder folder;
    const std::string file = folder.file("stream", graphSample(true));
    for (const char* option : {"", "--hex", "--json", "--dot", "--stats", "--verify", "--help"}) {
        const ProgramResult result =
            shell("\"$@\" " + std::string(option) + " '" + file + "' > /dev/full");
        EXPECT_EQ(2, result.status) << option;
        EXPECT_EQ("fxdump: standard output: No space left on device\n", result.err) << option;
    }
}

TEST(fxdump, hasHelpAndAVersion) {
    const ProgramResult help = fxdumpProgram.run({"--help"});
    EXPECT_EQ(0, help.status);
    EXPECT_EQ(0u, help.out.find("usage: fxdump "));
    const std::string manual = bytesOf(KELVOFXDS_SOURCE_DIR "/tools/fxdump/fxdump.1");
    for (const char* option :
         {"hex", "json", "dot", "stats", "verify", "reader-words", "help", "version"}) {
        EXPECT_TRUE(has(help.out, std::string("\n  --") + option + " ")) << option;
        std::string name = std::string(".B \\-\\-") + option;
        if (const std::size_t dash = name.find("r-w"); dash != std::string::npos)
            name.insert(dash + 1, "\\");
        EXPECT_TRUE(has(manual, name + "\n")) << option;
    }
    const ProgramResult version = fxdumpProgram.run({"--version"});
    EXPECT_EQ(0, version.status);
    EXPECT_EQ("fxdump 0.1.0\n", version.out);
}

TEST(fxdump, argumentsThatMakeNoSenseAreRefused) {
    const struct {
        std::vector<std::string> arguments;
        const char* why;
    } cases[] = {{{}, "no file given"},
                 {{"--hex"}, "no file given"},
                 {{"-x", "a"}, "there is no option -x"},
                 {{"--hex", "--dot", "a"},
                  "only one of --hex, --json, --dot, --stats and --verify can be given"}};
    for (const auto& c : cases) {
        const ProgramResult result = fxdumpProgram.run(c.arguments);
        EXPECT_EQ(2, result.status);
        EXPECT_EQ("", result.out);
        EXPECT_EQ(std::string("fxdump: ") + c.why + "; see fxdump --help\n", result.err);
    }
    const TemporaryFolder folder;
    Program there = fxdumpProgram;
    there.workingFolder = folder.path();
    folder.file("--hex", standardStream());
    EXPECT_EQ(0, there.run({"--", "--hex"}).status);
}

#ifndef KELVOFXDS_EMULATOR
TEST(fxdump, coloursAreForTerminalsOnly) {
    const TemporaryFolder folder;
    const std::string file = folder.file("stream", standardStream());
    const struct {
        const char* environment;
        bool isColoured;
    } cases[] = {{"TERM=xterm NO_COLOR=", true},
                 {"TERM=xterm NO_COLOR=1", false},
                 {"TERM=dumb NO_COLOR=", false}};
    for (const auto& c : cases) {
        const int master = ::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
        if (master < 0 || ::grantpt(master) != 0 || ::unlockpt(master) != 0)
            GTEST_SKIP() << "there is no terminal to be had";
        const int terminal = ::open(::ptsname(master), O_RDWR | O_NOCTTY);
        ASSERT_GE(terminal, 0);
        shell(std::string(c.environment) + " \"$@\" '" + file + "' > " + ::ptsname(master));
        const std::string out = shownBy(master, "end\r\n");
        ::close(terminal);
        ::close(master);
        EXPECT_EQ(c.isColoured, has(out, "\033[")) << out;
        EXPECT_TRUE(has(out, "\"A\"")) << out;
    }
    EXPECT_FALSE(has(shell("TERM=xterm \"$@\" '" + file + "'").out, "\033["));
}
#endif

#ifdef KELVOFXDS_WORDINDEX
TEST(fxdump, showsWhatTheWordIndexWrites) {
    const TemporaryFolder folder;
    const std::string index = folder / "index";
    ASSERT_EQ(0, Program(KELVOFXDS_WORDINDEX)
                     .run({"-o", index, folder.file("text", "the cat and the dog")})
                     .status);
    const ProgramResult list = fxdumpProgram.run({index});
    EXPECT_EQ(0, list.status);
    for (const char* part : {"#1 DICT, type 2, version 1", "pairs 4,", "\"cat\"\n", "\"2\"\n"})
        EXPECT_TRUE(has(list.out, part)) << part;
    const ProgramResult verdict = fxdumpProgram.run({"--verify", index});
    EXPECT_EQ(0, verdict.status);
    EXPECT_TRUE(has(verdict.out, ": sound; the standard reader would read it\n")) << verdict.out;
}
#endif

#ifdef KELVOFXDS_CONTACTS
TEST(fxdump, showsWhatTheContactBookSaves) {
    const TemporaryFolder folder;
    const std::string book = folder / "book";
    const Program contacts(KELVOFXDS_CONTACTS);
    ASSERT_EQ(0, contacts.run({"-f", book, "add", "Ada", "company=Engines"}).status);
    ASSERT_EQ(0, contacts.run({"-f", book, "add", "Bob"}).status);
    ASSERT_EQ(0, contacts.run({"-f", book, "link", "Ada", "Bob"}).status);
    const ProgramResult list = fxdumpProgram.run({book});
    EXPECT_EQ(0, list.status);
    EXPECT_TRUE(has(list.out, book + ": graph stream, "));
    for (const char* part : {" Contact, type ", " Book, type ", "Ada.", "Engines", ", right\n"})
        EXPECT_TRUE(has(list.out, part)) << part << list.out;
    EXPECT_TRUE(has(fxdumpProgram.run({"--verify", book}).out, ", 1 root: sound\n"));
}
#endif

// The magic fragment.

TEST(fxdump, fileNamesBothKindsOfStreams) {
    if (::access("/usr/bin/file", X_OK) != 0)
        GTEST_SKIP() << "there is no file(1)";
    const TemporaryFolder folder;
    const struct {
        std::string bytes;
        const char* name;
    } cases[] = {{littleHeader(), "kelvofxds standard object stream, little-endian\n"},
                 {bigHeader(), "kelvofxds standard object stream, big-endian\n"},
                 {GraphBytes(false).str(), "kelvofxds graph object stream, little-endian\n"},
                 {GraphBytes(true).str(), "kelvofxds graph object stream, big-endian\n"}};
    for (const auto& c : cases)
        EXPECT_EQ(c.name,
                  shell("/usr/bin/file -b -m " KELVOFXDS_SOURCE_DIR "/tools/fxdump/fxdump.magic '" +
                        folder.file("stream", c.bytes) + "'")
                      .out);
}

// The native program.

#ifdef KELVOFXDS_NATIVE_FXDUMP

TEST(fxdumpNative, showsTheSameAsTheProgramBesideTheLibrary) {
    const Program native{KELVOFXDS_NATIVE_FXDUMP};
    EXPECT_EQ('\2', bytesOf(native.path)[4]) << "it is no 64-bit program";
    const TemporaryFolder folder;
    const std::string cut = graphSample(false).substr(0, 300);
    for (const std::string& bytes :
         {graphSample(false), graphSample(true), standardStream(), cut}) {
        const std::string file = folder.file("stream", bytes);
        for (const char* option :
             {"--reader-words", "--hex", "--json", "--dot", "--stats", "--verify"}) {
            const ProgramResult theirs = fxdumpProgram.run({option, file});
            const ProgramResult ours = native.run({option, file});
            EXPECT_EQ(theirs.status, ours.status) << option;
            EXPECT_EQ(theirs.out, ours.out) << option;
            EXPECT_EQ(theirs.err, ours.err) << option;
        }
    }
}

#endif

#endif
