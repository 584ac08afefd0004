// The example program examples/pipeline, run as its users run it.

#ifdef KELVOFXDS_PIPELINE

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/runProgram.h"

namespace {

const Program pipeline{KELVOFXDS_PIPELINE};

// Standard input of the programs that are run while it exists.
class StandardInput {
public:
    // Takes over `descriptor`; -1 stands for a standard input that is closed
    // when the program begins.
    explicit StandardInput(int descriptor) : saved(::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3)) {
        if (descriptor < 0) {
            ::fcntl(STDIN_FILENO, F_SETFD, FD_CLOEXEC);
        } else {
            EXPECT_EQ(STDIN_FILENO, ::dup2(descriptor, STDIN_FILENO));
            ::close(descriptor);
        }
    }
    StandardInput(const StandardInput&) = delete;
    StandardInput& operator=(const StandardInput&) = delete;
    ~StandardInput() {
        ::dup2(saved, STDIN_FILENO);
        ::close(saved);
    }

private:
    int saved;
};

// A pipe with `bytes` in it, which has room for 64 KB, and nobody to write more.
int pipeWith(const std::string& bytes) {
    int ends[2];
    EXPECT_EQ(0, ::pipe(ends));
    EXPECT_EQ(static_cast<ssize_t>(bytes.size()), ::write(ends[1], bytes.data(), bytes.size()));
    ::close(ends[1]);
    return ends[0];
}

// Writes `text` to `out` and waits until `wanted` has been shown on the terminal. Runs in a process
// of its own, whose exit status it returns: 0 when it saw it.
int writeAndAwait(const std::string& text, int out, int terminal, const std::string& wanted) {
    const unsigned int patience = 60;  // seconds
    ::alarm(patience);
    if (::write(out, text.data(), text.size()) != static_cast<ssize_t>(text.size()))
        return 1;
    std::string shown;
    while (shown.find(wanted) == std::string::npos) {
        char bytes[1000];
        const ssize_t n = ::read(terminal, bytes, sizeof bytes);
        if (n <= 0)
            return 1;
        shown.append(bytes, static_cast<std::size_t>(n));
    }
    return 0;
}

// The figures that do not depend on time.
struct Figures {
    std::string bytes, numbers, last;
};

Figures figuresOf(const ProgramResult& result) {
    Figures figures;
    for (const std::string& line : result.lines()) {
        if (line.compare(0, 17, "bytes            ") == 0)
            figures.bytes = line.substr(17);
        if (line.compare(0, 17, "leading numbers  ") == 0)
            figures.numbers = line.substr(17);
    }
    figures.last = result.lastLine();
    return figures;
}

}  // namespace

// Lines.

TEST(pipeline, countsTheLinesAndBytesOfFiles) {
    const TemporaryFolder folder;
    const std::string longLine(200000, 'x');
    const struct {
        const char* what;
        std::string text;
        std::string last;
    } cases[] = {
        {"empty", "", "0 lines"},
        {"one line", "a\n", "1 line"},
        {"an empty line", "\n", "1 line"},
        {"only empty lines", "\n\n\n", "3 lines"},
        {"no newline at the end", "a\nb", "2 lines"},
        {"nothing but one unfinished line", "a", "1 line"},
        {"a line longer than a pipe holds", longLine + "\nb\n", "2 lines"},
        {"long lines without an end", "b\n" + longLine, "2 lines"},
        {"a line as long as a read", std::string(65535, 'x') + "\nb\n", "2 lines"},
        {"a line one longer", std::string(65536, 'x') + "\nb\n", "2 lines"},
        {"NUL bytes", std::string("a\0b\n\0\n", 6), "2 lines"},
        {"carriage returns", "a\r\nb\r\n", "2 lines"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const ProgramResult result = pipeline.run({folder.file("text", c.text)});
        const Figures figures = figuresOf(result);
        EXPECT_EQ(0, result.status);
        EXPECT_EQ("", result.err);
        EXPECT_EQ("pipeline: " + c.last + " from 1 source", figures.last);
        EXPECT_EQ(std::to_string(c.text.size()), figures.bytes);
    }
}

TEST(pipeline, addsUpTheNumbersThatLinesBeginWith) {
    const TemporaryFolder folder;
    const struct {
        std::string text, sum;
    } cases[] = {
        {"1\n2\n3\n", "6"},
        {"12 apples\n30pears\n", "42"},
        {"-5\n+7\n", "2"},
        {"  8 behind blanks\n", "8"},
        {"none\n\nx 3\n", "0"},
        {"0x10\n010\n", "10"},
        {"2.9\n", "2"},
        {"1\n20", "21"},                             // the last line needs no newline
        {"2147483647\n2147483647\n", "4294967294"},  // the sum is wider than an int
        {std::string("7\0008\n", 4), "7"},           // a text ends at a NUL
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        const ProgramResult result = pipeline.run({folder.file("text", c.text)});
        EXPECT_EQ(0, result.status);
        EXPECT_EQ(c.sum, figuresOf(result).numbers);
    }
}

TEST(pipeline, findsNumbersWhereverItsBuffersEnd) {
    const TemporaryFolder folder;
    std::string text;
    for (unsigned int i = 0; i < 100000; ++i)
        text += std::to_string(i) + " is a number\n";

    const ProgramResult result = pipeline.run({folder.file("text", text)});

    EXPECT_EQ(std::to_string(text.size()), figuresOf(result).bytes);
    EXPECT_EQ("4999950000", figuresOf(result).numbers);
    EXPECT_EQ("pipeline: 100000 lines from 1 source", result.lastLine());
}

TEST(pipeline, printsFourLinesThatEndInTheResult) {
    const TemporaryFolder folder;

    const ProgramResult result = pipeline.run({folder.file("text", "4\n")});

    const std::vector<std::string> lines = result.lines();
    ASSERT_EQ(4U, lines.size());
    EXPECT_EQ("bytes            2", lines[0]);
    EXPECT_EQ("leading numbers  4", lines[1]);
    EXPECT_EQ(0U, lines[2].find("seconds          "));
    EXPECT_EQ("pipeline: 1 line from 1 source", lines[3]);
}

// Standard input.

TEST(pipeline, withoutArgumentsItReadsStandardInput) {
    const TemporaryFolder folder;
    const std::string text = folder.file("text", "1\n2\n");
    const struct {
        const char* what;
        int descriptor;
        std::string sum, last;
    } cases[] = {
        {"a pipe", pipeWith("1\n2\n3"), "6", "pipeline: 3 lines from 1 source"},
        {"an empty pipe", pipeWith(""), "0", "pipeline: 0 lines from 1 source"},
        {"a full pipe", pipeWith(std::string(65534, 'x') + "\n4"), "4",
         "pipeline: 2 lines from 1 source"},
        {"a file", ::open(text.c_str(), O_RDONLY), "3", "pipeline: 2 lines from 1 source"},
        {"a device", ::open("/dev/null", O_RDONLY), "0", "pipeline: 0 lines from 1 source"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        ASSERT_GE(c.descriptor, 0);
        const StandardInput input(c.descriptor);
        const ProgramResult result = pipeline.run({});
        EXPECT_EQ(0, result.status);
        EXPECT_EQ("", result.err);
        EXPECT_EQ(c.sum, figuresOf(result).numbers);
        EXPECT_EQ(c.last, result.lastLine());
    }
}

TEST(pipeline, standardInputThatIsClosedIsAFailure) {
    const StandardInput input(-1);

    const ProgramResult result = pipeline.run({});

    EXPECT_EQ(1, result.status);
    EXPECT_EQ("pipeline: standard input: Bad file descriptor\n", result.err);
    EXPECT_EQ("pipeline: 0 lines from 0 sources", result.lastLine());
}

TEST(pipeline, withArgumentsItLeavesStandardInputAlone) {
    const TemporaryFolder folder;
    const std::string text = folder.file("text", "1\n");
    const int descriptor = pipeWith("5");
    const int same = ::fcntl(descriptor, F_DUPFD_CLOEXEC, 3);
    const StandardInput input(descriptor);

    const ProgramResult result = pipeline.run({text});

    char byte = 0;
    EXPECT_EQ("1", figuresOf(result).numbers);
    EXPECT_EQ(1, ::read(same, &byte, 1));
    EXPECT_EQ('5', byte);
    ::close(same);
}

// Several files.

TEST(pipeline, readsItsFilesInOrder) {
    const TemporaryFolder folder;
    const std::string missing[] = {folder / "missing 1", folder / "missing 2",
                                   folder / "missing 3"};
    const std::string text = folder.file("text", "1\n");

    const ProgramResult result = pipeline.run({missing[0], text, missing[1], text, missing[2]});

    std::string complaints;
    for (const std::string& path : missing)
        complaints += "pipeline: " + path + ": No such file or directory\n";
    EXPECT_EQ(1, result.status);
    EXPECT_EQ(complaints, result.err);
    EXPECT_EQ("2", figuresOf(result).numbers);
    EXPECT_EQ("pipeline: 2 lines from 2 sources", result.lastLine());
}

TEST(pipeline, anUnfinishedLineEndsWithItsFile) {
    const TemporaryFolder folder;

    const ProgramResult result =
        pipeline.run({folder.file("one", "1\n2"), folder.file("two", "3\n4")});

    EXPECT_EQ("10", figuresOf(result).numbers);
    EXPECT_EQ("pipeline: 4 lines from 2 sources", result.lastLine());
}

TEST(pipeline, readsMoreFilesThanTheLoopHasRoomForDescriptors) {
    const TemporaryFolder folder;
    std::vector<std::string> paths;
    for (unsigned int i = 1; i <= 200; ++i)
        paths.push_back(folder.file(std::to_string(i), std::to_string(i) + "\nsecond\n"));

    const ProgramResult result = pipeline.run(paths);

    EXPECT_EQ(0, result.status);
    EXPECT_EQ("", result.err);
    EXPECT_EQ("20100", figuresOf(result).numbers);
    EXPECT_EQ("pipeline: 400 lines from 200 sources", result.lastLine());
}

TEST(pipeline, aFileCanBeReadTwice) {
    const TemporaryFolder folder;
    const std::string text = folder.file("text", "21\n");

    const ProgramResult result = pipeline.run({text, text});

    EXPECT_EQ("42", figuresOf(result).numbers);
    EXPECT_EQ("pipeline: 2 lines from 2 sources", result.lastLine());
}

// What it shows.

TEST(pipeline, showsItsProgressOnATerminalUntilTheEnd) {
    const int master = ::posix_openpt(O_RDWR | O_NOCTTY);
    if (master < 0 || ::grantpt(master) != 0 || ::unlockpt(master) != 0)
        GTEST_SKIP() << "there is no terminal to be had";
    Program program = pipeline;
    program.standardError = ::open(::ptsname(master), O_RDWR | O_NOCTTY);
    ASSERT_GE(program.standardError, 0);
    int ends[2];
    ASSERT_EQ(0, ::pipe(ends));
    // The program gets no end of its input before its line has been seen.
    const pid_t user = ::fork();
    if (user == 0)
        ::_exit(writeAndAwait("5 apples\n6\n", ends[1], master, ", longest 8 bytes"));
    ::close(ends[1]);

    const StandardInput input(ends[0]);
    const ProgramResult result = program.run({});
    int status = 0;
    ::waitpid(user, &status, 0);
    const std::string erase = "\r\033[K";
    const std::string end = shownBy(master, erase);
    ::close(program.standardError);
    ::close(master);

    EXPECT_EQ(0, status);
    EXPECT_EQ("pipeline: 2 lines from 1 source", result.lastLine());
    ASSERT_GE(end.size(), erase.size());
    EXPECT_EQ(erase, end.substr(end.size() - erase.size()));
}

TEST(pipeline, drawsItsWiring) {
    const ProgramResult result = pipeline.run({"--dot"});

    EXPECT_EQ(0, result.status);
    EXPECT_EQ("", result.err);
    EXPECT_EQ(0U, result.out.find("digraph wiring {\n"));
    EXPECT_EQ("}", result.lastLine());
    for (const char* text :
         {"<b>LineReader</b>", "<b>LineCounter</b>", "<b>NumberSum</b>", "<b>fxTimer</b>",
          "<b>Meter</b>", "<b>Pipeline</b>", "n0:o2:e -> n2:i0:w [label=< char* &#8594; int >",
          "n0:o1:e -> n5:i0:w\n"})
        EXPECT_NE(std::string::npos, result.out.find(text)) << text;
    EXPECT_EQ(std::string::npos, result.out.find("elsewhere")) << "nothing is left out";
    EXPECT_EQ(result.out, pipeline.run({"--dot"}).out);
}

// What cannot be read.

TEST(pipeline, aMissingFileGetsOneLineAndTheRestIsRead) {
    const TemporaryFolder folder;
    const std::string missing = folder / "missing";

    const ProgramResult result = pipeline.run({missing, folder.file("text", "3\n")});

    EXPECT_EQ(1, result.status);
    EXPECT_EQ("pipeline: " + missing + ": No such file or directory\n", result.err);
    EXPECT_EQ("3", figuresOf(result).numbers);
    EXPECT_EQ("pipeline: 1 line from 1 source", result.lastLine());
}

TEST(pipeline, whereNothingCanBeOpenedItEndsAtOnce) {
    const TemporaryFolder folder;

    const ProgramResult result = pipeline.run({folder / "missing"});

    EXPECT_EQ(1, result.status);
    EXPECT_EQ("pipeline: 0 lines from 0 sources", result.lastLine());
}

TEST(pipeline, anUnreadableFileGetsOneLineAndTheRestIsRead) {
    const TemporaryFolder folder;
    const std::string text = folder.file("text", "3\n");
    const struct {
        std::string path, why;
    } cases[] = {{folder.path(), "Is a directory"}, {"/proc/self/mem", "Input/output error"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        const ProgramResult result = pipeline.run({c.path, text});
        EXPECT_EQ(1, result.status);
        EXPECT_EQ("pipeline: " + c.path + ": " + c.why + "\n", result.err);
        EXPECT_EQ("3", figuresOf(result).numbers);
        EXPECT_EQ("pipeline: 1 line from 2 sources", result.lastLine());
    }
}

#endif
