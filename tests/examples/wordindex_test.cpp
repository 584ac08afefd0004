// The example program examples/wordindex, run as its users run it.

#ifdef KELVOFXDS_WORDINDEX

#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>
#include <random>
#include <regex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/str/fxStrArray.h"
#include "kelvofxds/transcribe/fxStdioStream.h"
#include "kelvofxds/transcribe/fxTranscriber.h"
#include "tests/support/runProgram.h"

namespace {

const Program wordindex{KELVOFXDS_WORDINDEX};

std::string repeated(const std::string& text, unsigned int n) {
    std::string all;
    for (unsigned int i = 0; i < n; ++i)
        all += text;
    return all;
}

// An independent count: runs of letters, digits, underscores and bytes from 0x80 on.
std::map<std::string, unsigned int> wordsOf(const std::string& text) {
    std::map<std::string, unsigned int> counts;
    std::string word;
    for (const char c : text + " ") {
        const unsigned char byte = static_cast<unsigned char>(c);
        if (byte >= 0x80 || byte == '_' || std::isalnum(byte)) {
            word += c;
        } else if (!word.empty()) {
            ++counts[word];
            word.clear();
        }
    }
    return counts;
}

// Writes any object to a file the way a host does.
void writeObject(const std::string& path, fxXDRObj& object) {
    fxTranscriber* writer =
        fxTranscriber::getWriter(new fxStdioStream(path.c_str(), fxStream::writeStream));
    ASSERT_NE(nullptr, writer);
    EXPECT_EQ(1, writer->writeObject(&object, &object));
    delete writer;
}

std::string damaged(const std::string& path, const std::string& why) {
    return "wordindex: " + path + ": damaged index: " + why + "\n";
}

// Reads an index that may be damaged: that ends well, or with one line that says what is wrong.
int statusOfReading(const std::string& path) {
    const ProgramResult result = wordindex.run({"-r", path});
    if (result.status == 0) {
        EXPECT_EQ("", result.err);
    } else {
        EXPECT_EQ(1, result.status);
        EXPECT_EQ("", result.out);
        EXPECT_EQ(0U, result.err.find("wordindex: " + path + ": damaged index: ")) << result.err;
        EXPECT_EQ(result.err.size() - 1, result.err.find('\n')) << result.err;
    }
    return result.status;
}

}  // namespace

// Counting.

TEST(wordindex, countsTheWordsOfAFile) {
    const TemporaryFolder folder;
    const std::string text = folder.file("text", "int f(int a_1) { return a_1+2; } // Int\n");

    const ProgramResult result =
        wordindex.run({"-q", "int", "-q", "a_1", "-q", "2", "-q", "Int", "-q", "a", text});

    EXPECT_EQ(0, result.status);
    EXPECT_EQ("", result.err);
    EXPECT_TRUE(result.hasLine("\"int\" occurs 2 times"));
    EXPECT_TRUE(result.hasLine("\"a_1\" occurs 2 times"));
    EXPECT_TRUE(result.hasLine("\"2\" occurs 1 time"));
    EXPECT_TRUE(result.hasLine("\"Int\" occurs 1 time"));
    EXPECT_TRUE(result.hasLine("\"a\" is not there"));
    EXPECT_EQ("wordindex: verified 6 words from 1 file", result.lastLine());
}

TEST(wordindex, countsCarryFromDigitToDigit) {
    const TemporaryFolder folder;
    const std::string text =
        folder.file("text", repeated("nine ", 9) + repeated("ten ", 10) + repeated("many ", 1000) +
                                repeated("odd ", 1999));

    const ProgramResult result =
        wordindex.run({"-q", "nine", "-q", "ten", "-q", "many", "-q", "odd", text});

    EXPECT_TRUE(result.hasLine("\"nine\" occurs 9 times"));
    EXPECT_TRUE(result.hasLine("\"ten\" occurs 10 times"));
    EXPECT_TRUE(result.hasLine("\"many\" occurs 1,000 times"));
    EXPECT_TRUE(result.hasLine("\"odd\" occurs 1,999 times"));
}

TEST(wordindex, tellsWhatALookUpCostsWithAndWithoutAnIndex) {
    const TemporaryFolder folder;
    const ProgramResult result = wordindex.run({folder.file("text", "one two two")});
    EXPECT_EQ(0, result.status);
    EXPECT_NE(std::string::npos, result.out.find("\nA look-up takes "));
    EXPECT_NE(std::string::npos, result.out.find(" where chains are walked: "));
}

TEST(wordindex, findsWordsThatSpanTheProgramsBuffers) {
    const TemporaryFolder folder;
    const std::string text = folder.file("text", repeated("seventeen_letters ", 40000));

    const ProgramResult result = wordindex.run({"-q", "seventeen_letters", text});

    EXPECT_TRUE(result.hasLine("\"seventeen_letters\" occurs 40,000 times"));
    EXPECT_EQ("wordindex: verified 1 word from 1 file", result.lastLine());
}

TEST(wordindex, leavesOutRunsOfMoreThan255Bytes) {
    const TemporaryFolder folder;
    const std::string longest(255, 'a');
    const std::string text =
        folder.file("text", longest + " " + std::string(256, 'b') + " " + std::string(200000, 'c') +
                                " " + std::string(65536, 'd') + " end");

    const ProgramResult result = wordindex.run({"-q", longest, "-q", "end", text});

    EXPECT_TRUE(result.hasLine("\"" + longest + "\" occurs 1 time"));
    EXPECT_TRUE(result.hasLine("\"end\" occurs 1 time"));
    EXPECT_EQ("wordindex: verified 2 words from 1 file", result.lastLine());
}

TEST(wordindex, anEmptyFileHasNoWords) {
    const TemporaryFolder folder;

    const ProgramResult result = wordindex.run({folder.file("empty", "")});

    EXPECT_EQ(0, result.status);
    EXPECT_EQ("wordindex: verified 0 words from 1 file", result.lastLine());
}

TEST(wordindex, takesBinaryFilesAsTheyCome) {
    const TemporaryFolder folder;
    std::mt19937 random(20240607);
    std::string bytes;
    for (unsigned int i = 0; i < 100000; ++i)
        bytes += static_cast<char>(random() & 0xFF);
    const auto words = wordsOf(bytes);
    const std::string& some = words.begin()->first;

    const ProgramResult result = wordindex.run({"-q", some, folder.file("binary", bytes)});

    EXPECT_EQ(0, result.status);
    EXPECT_TRUE(result.hasLine("\"" + some + "\" occurs " + std::to_string(words.at(some)) +
                               (words.at(some) == 1 ? " time" : " times")));
    EXPECT_EQ("wordindex: verified " + std::to_string(words.size()) + " words from 1 file",
              result.lastLine());
}

// Which files.

TEST(wordindex, aDirectoryStandsForTheFilesBelowIt) {
    const TemporaryFolder folder;
    folder.file("tree/one", "one");
    folder.file("tree/deep/er/two.txt", "two");
    folder.file("tree/.hidden/three", "three");
    folder.file("elsewhere/four", "four");
    std::filesystem::create_symlink("nowhere", folder / "tree/dangling");
    std::filesystem::create_directory_symlink("..", folder / "tree/loop");
    std::filesystem::create_symlink("../elsewhere/four", folder / "tree/link");

    const ProgramResult result =
        wordindex.run({"-q", "one", "-q", "two", "-q", "three", "-q", "four", folder / "tree"});

    EXPECT_EQ(0, result.status);
    EXPECT_TRUE(result.hasLine("\"one\" occurs 1 time"));
    EXPECT_TRUE(result.hasLine("\"two\" occurs 1 time"));
    EXPECT_TRUE(result.hasLine("\"three\" is not there"));
    EXPECT_TRUE(result.hasLine("\"four\" occurs 1 time"));
    EXPECT_EQ("wordindex: verified 3 words from 3 files", result.lastLine());
}

TEST(wordindex, aMissingFileGetsOneLineAndTheRestIsIndexed) {
    const TemporaryFolder folder;
    const std::string missing = folder / "missing";

    const ProgramResult result = wordindex.run({missing, folder.file("text", "here")});

    EXPECT_EQ(1, result.status);
    EXPECT_EQ("wordindex: " + missing + ": No such file or directory\n", result.err);
    EXPECT_EQ("wordindex: verified 1 word from 1 file; 1 failure", result.lastLine());
}

TEST(wordindex, anUnreadableFileGetsOneLineAndTheRestIsIndexed) {
    const TemporaryFolder folder;
    // It opens for everybody, but there is no memory at address 0 to read.
    const std::string unreadable = "/proc/self/mem";

    const ProgramResult result = wordindex.run({folder.file("text", "here"), unreadable});

    EXPECT_EQ(1, result.status);
    EXPECT_EQ("wordindex: " + unreadable + ": Input/output error\n", result.err);
    EXPECT_EQ("wordindex: verified 1 word from 1 file; 1 failure", result.lastLine());
}

// Searching for files.

TEST(wordindex, aPatternSelectsTheFilesOfAListOfDirectories) {
    const TemporaryFolder folder;
    folder.file("1/one.txt", "one both");
    folder.file("1/two.md", "two");
    folder.file("1/below/three.txt", "three");
    folder.file("2/four.txt", "four both");
    folder.file("2/four.txt.old", "five");
    std::filesystem::create_directory(folder / "2/folder.txt");
    std::filesystem::create_symlink("nowhere", folder / "2/dangling.txt");
    const std::string list = (folder / "1") + "::" + (folder / "missing") + ":" + (folder / "2");

    const ProgramResult result = wordindex.run({"-d", list, "-p", ".*\\.txt", "-q", "one", "-q",
                                                "two", "-q", "three", "-q", "four", "-q", "both"});

    EXPECT_EQ(0, result.status);
    EXPECT_EQ("", result.err);
    EXPECT_TRUE(result.hasLine("\"one\" occurs 1 time"));
    EXPECT_TRUE(result.hasLine("\"two\" is not there"));
    EXPECT_TRUE(result.hasLine("\"three\" is not there"));
    EXPECT_TRUE(result.hasLine("\"four\" occurs 1 time"));
    EXPECT_TRUE(result.hasLine("\"both\" occurs 2 times"));
    EXPECT_EQ("wordindex: verified 3 words from 2 files", result.lastLine());
}

TEST(wordindex, aPatternForEverythingTakesTheFilesOnly) {
    const TemporaryFolder folder;
    folder.file("1/.hidden", "hidden");
    folder.file("1/below/three", "three");

    const ProgramResult result = wordindex.run({"-d", folder / "1", "-p", ".*"});

    EXPECT_EQ(0, result.status);
    EXPECT_EQ("wordindex: verified 1 word from 1 file", result.lastLine());
}

TEST(wordindex, aPatternThatNoFileMatchesIsAFailure) {
    const TemporaryFolder folder;
    folder.file("text", "word");
    for (const std::string& list : {folder.path(), folder / "missing"}) {
        SCOPED_TRACE(list);
        const ProgramResult result = wordindex.run({"-d", list, "-p", "tex"});
        EXPECT_EQ(1, result.status);
        EXPECT_EQ("wordindex: " + list + ": no file matches tex\n", result.err);
        EXPECT_EQ("wordindex: verified 0 words from 0 files; 1 failure", result.lastLine());
    }
}

// The index file.

TEST(wordindex, writesAnIndexThatItReadsLater) {
    const TemporaryFolder folder;
    const std::string index = folder / "index";

    const ProgramResult written = wordindex.run({"-o", index, folder.file("text", "a b a")});
    const ProgramResult read = wordindex.run({"-r", index, "-q", "a", "-q", "b", "-q", "c"});

    EXPECT_EQ(0, written.status);
    EXPECT_EQ(0, read.status);
    EXPECT_EQ("", read.err);
    EXPECT_TRUE(read.hasLine("\"a\" occurs 2 times"));
    EXPECT_TRUE(read.hasLine("\"b\" occurs 1 time"));
    EXPECT_TRUE(read.hasLine("\"c\" is not there"));
    EXPECT_EQ("wordindex: read 2 words from " + index, read.lastLine());
}

TEST(wordindex, replacesALongerFileThatWasThere) {
    const TemporaryFolder folder;
    const std::string text = folder.file("text", "some words");
    const std::string fresh = folder / "fresh";
    const std::string stale = folder.file("stale", std::string(100000, 'x'));

    EXPECT_EQ(0, wordindex.run({"-o", fresh, text}).status);
    EXPECT_EQ(0, wordindex.run({"-o", stale, text}).status);

    EXPECT_EQ(bytesOf(fresh), bytesOf(stale));
}

TEST(wordindex, theTemporaryIndexIsGoneAfterwards) {
    const TemporaryFolder folder;
    const std::string text = folder.file("text", "word");
    Program program = wordindex;
    program.temporaryFolder = folder / "tmp";

    const ProgramResult without = program.run({text});
    std::filesystem::create_directory(folder / "tmp");
    const ProgramResult with = program.run({text});

    EXPECT_EQ(1, without.status);
    EXPECT_EQ("wordindex: temporary file: No such file or directory\n", without.err);
    EXPECT_EQ(0, with.status);
    EXPECT_TRUE(std::filesystem::is_empty(folder / "tmp"));
}

TEST(wordindex, anIndexThatCannotBeWrittenIsAFailure) {
    const TemporaryFolder folder;
    const std::string text = folder.file("text", "word");
    const struct {
        std::string path, why;
    } cases[] = {{folder.path(), "Is a directory"},
                 {folder / "no/such/folder", "No such file or directory"},
                 {"/dev/null", "not a regular file"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        const ProgramResult result = wordindex.run({"-o", c.path, text});
        EXPECT_EQ(1, result.status);
        EXPECT_EQ("wordindex: " + c.path + ": " + c.why + "\n", result.err);
    }
}

// Damage.

TEST(wordindex, anIndexThatCannotBeOpenedIsAFailure) {
    const TemporaryFolder folder;
    const struct {
        std::string path, why;
    } cases[] = {{folder / "missing", "No such file or directory"},
                 {folder.path(), "Is a directory"},
                 {"/dev/null", "not a regular file"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        const ProgramResult result = wordindex.run({"-r", c.path});
        EXPECT_EQ(1, result.status);
        EXPECT_EQ("", result.out);
        EXPECT_EQ("wordindex: " + c.path + ": " + c.why + "\n", result.err);
    }
}

TEST(wordindex, namesTheDamage) {
    const TemporaryFolder folder;
    const std::string index = folder / "index";
    ASSERT_EQ(0, wordindex.run({"-o", index, folder.file("text", "A")}).status);
    const std::string sound = bytesOf(index);
    // The hash of "A" is 1 << 27, which of 4095 buckets is number 8. The two texts come last: the
    // count, then the word, two bytes each behind ten bytes of framing.
    const std::size_t bucket = 94;
    std::uint32_t number = 0;
    std::memcpy(&number, &sound[bucket], sizeof number);
    ASSERT_EQ(8u, number);
    const std::uint32_t next = number + 1;
    const std::size_t word = sound.size() - 2;
    const std::size_t count = word - 12;
    ASSERT_EQ('A', sound[word]);
    ASSERT_EQ('1', sound[count]);
    const struct {
        std::size_t offset;
        std::string bytes;
        std::string why;
    } cases[] = {{0, "F", "Unknown transcriber type \"FxBinaryWriter\""},
                 {0, "\n", "Unknown transcriber type \"?xBinaryWriter\""},
                 {20, std::string(1, '\0'), "fxBinaryReader: unknown short ordering 33445566"},
                 {26, "\1", "XXX baddest news"},
                 {31, "d", "unknown type dICT"},
                 {bucket, std::string(reinterpret_cast<const char*>(&next), sizeof next),
                  "a word is not where it belongs"},
                 {word, "B", "a word is not where it belongs"},
                 {count, "x", "a count is not a number"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "offset " << c.offset);
        std::string bytes = sound;
        bytes.replace(c.offset, c.bytes.size(), c.bytes);
        folder.file("index", bytes);
        const ProgramResult result = wordindex.run({"-r", index});
        EXPECT_EQ(1, result.status);
        EXPECT_EQ("", result.out);
        EXPECT_EQ(damaged(index, c.why), result.err);
    }
}

TEST(wordindex, otherFilesAreNoIndexes) {
    const TemporaryFolder folder;
    fxStrArray strings(3);
    writeObject(folder / "array", strings);
    const struct {
        std::string path, why;
    } cases[] = {{folder.file("empty", ""), "the header is cut short"},
                 {folder.file("text", "just text"), "the header is cut short"},
                 {folder / "array", "not a dictionary"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        const ProgramResult result = wordindex.run({"-r", c.path});
        EXPECT_EQ(1, result.status);
        EXPECT_EQ(damaged(c.path, c.why), result.err);
    }
}

TEST(wordindex, anIndexCutAnywhereIsDamaged) {
    const TemporaryFolder folder;
    const std::string index = folder / "index";
    ASSERT_EQ(0, wordindex.run({"-o", index, folder.file("text", "cut me")}).status);
    const std::string sound = bytesOf(index);
    for (std::size_t length = 0; length < sound.size(); ++length) {
        SCOPED_TRACE(testing::Message() << "cut to " << length);
        folder.file("index", sound.substr(0, length));
        EXPECT_EQ(1, statusOfReading(index));
    }
}

TEST(wordindex, aFlippedBitNeverCrashesIt) {
    const TemporaryFolder folder;
    const std::string index = folder / "index";
    const std::string text = folder.file("text", "flip any bit of any of these words");
    ASSERT_EQ(0, wordindex.run({"-o", index, text}).status);
    const std::string sound = bytesOf(index);
    const unsigned int seed = 4711;
    std::mt19937 random(seed);
    for (unsigned int i = 0; i < 200; ++i) {
        const std::size_t bit = random() % (sound.size() * 8);
        SCOPED_TRACE(testing::Message() << "seed " << seed << ", bit " << bit);
        std::string bytes = sound;
        bytes[bit / 8] = static_cast<char>(bytes[bit / 8] ^ (1 << (bit % 8)));
        folder.file("index", bytes);
        statusOfReading(index);
    }
}

// What it says.

TEST(wordindex, helpDescribesTheOptions) {
    const ProgramResult result = wordindex.run({"--help"});
    EXPECT_EQ(0, result.status);
    EXPECT_EQ("", result.err);
    EXPECT_EQ(0U, result.out.find("usage: wordindex "));
    for (const char* option : {"-d DIRS", "-o FILE", "-p PATTERN", "-q WORD", "-r FILE", "--help"})
        EXPECT_NE(std::string::npos, result.out.find(option)) << option;
}

TEST(wordindex, argumentsThatMakeNoSenseAreRefused) {
    const std::vector<std::string> cases[] = {{"-x"},
                                              {"-r"},
                                              {"-r", "a", "b"},
                                              {"-r", "a", "-o", "b"},
                                              {"-r", "a", "-d", "b", "-p", "c"},
                                              {"-d"},
                                              {"-p"},
                                              {"-d", "a"},
                                              {"-p", "a"},
                                              {"-d", "a", "-p", "b", "c"},
                                              {"-d", "a", "-p", "("}};
    for (const auto& arguments : cases) {
        const ProgramResult result = wordindex.run(arguments);
        EXPECT_EQ(2, result.status);
        EXPECT_EQ("", result.out);
        EXPECT_NE("", result.err);
    }
}

// Read aloud by someone who sees it for the first time: each number says what it counts.
TEST(wordindex, noFigureStandsAlone) {
    const TemporaryFolder folder;
    const std::string index = folder / "index";
    const std::string text = folder.file("text", repeated("thousand times ", 1000) + "once");

    const ProgramResult made = wordindex.run({"-o", index, "-q", "once", text});
    const ProgramResult read = wordindex.run({"-r", index, "-q", "once"});

    EXPECT_EQ(0U, made.out.find("wordindex counts the words of text files "));
    EXPECT_TRUE(made.hasLine("The dictionary stays in " + index + "."));
    const std::regex figure("[0-9][0-9,.]*(.?[^ \n]*)");
    const std::regex unit(" (words?|files?|bytes?|[kM]B|MB/s|buckets?|times?|µs|ms|ns|s|of)[,:.]?");
    for (std::string out : {made.out, read.out}) {
        for (std::size_t at; (at = out.find(index)) != std::string::npos;)
            out.erase(at, index.size());
        const std::sregex_iterator end;
        unsigned int figures = 0;
        for (std::sregex_iterator match(out.begin(), out.end(), figure); match != end; ++match) {
            ++figures;
            const std::string behind = (*match)[1];
            EXPECT_TRUE(std::regex_match(behind, unit) || behind == " different") << match->str();
        }
        EXPECT_LE(7U, figures);
    }
}

TEST(wordindex, showsProgressOnATerminalOnly) {
    const TemporaryFolder folder;
    const std::string text = folder.file("text", "word");
    const int master = ::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
    if (master < 0 || ::grantpt(master) != 0 || ::unlockpt(master) != 0)
        GTEST_SKIP() << "there is no terminal to be had";
    Program program = wordindex;
    program.standardError = ::open(::ptsname(master), O_RDWR | O_NOCTTY);
    ASSERT_GE(program.standardError, 0);

    EXPECT_EQ(0, program.run({text}).status);
    const std::string erase = "\r\033[K";
    const std::string line = shownBy(master, erase);
    ::close(program.standardError);
    ::close(master);

    EXPECT_EQ(0U, line.find("counting: 0 of 1 files, 0.0 of 0.0 MB" + erase)) << line;
    EXPECT_EQ(line.size() - erase.size(), line.rfind(erase)) << line;
    EXPECT_EQ("", wordindex.run({text}).err);
}

#endif
