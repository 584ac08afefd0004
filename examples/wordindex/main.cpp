// wordindex - counts the words of text files in a dictionary, writes that to a file, reads it back
// and compares. `wordindex --help` lists the options.

#include <getopt.h>
#include <sys/resource.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "examples/wordindex/guarded.h"
#include "examples/wordindex/inWords.h"
#include "examples/wordindex/indexFile.h"
#include "examples/wordindex/progress.h"
#include "examples/wordindex/textFiles.h"
#include "examples/wordindex/wordCounter.h"
#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/pattern/fxRegEx.h"

namespace {

const char usage[] =
    "usage: wordindex [-o FILE] [-q WORD]... [FILE | DIRECTORY]...\n"
    "       wordindex [-o FILE] [-q WORD]... -d DIR[:DIR...] -p PATTERN\n"
    "       wordindex -r FILE [-q WORD]...\n"
    "\n"
    "Counts the words of text files, writes the index to a file, reads it back and\n"
    "compares the two. Without arguments it takes the headers below /usr/include; a\n"
    "directory stands for all files below it.\n"
    "\n"
    "  -d DIRS   take the files in these directories, separated by ':', that\n"
    "            match PATTERN\n"
    "  -p PATTERN\n"
    "            a regular expression for whole names, like '.*\\.(h|hpp)'\n"
    "  -o FILE   keep the index in FILE, whose contents are replaced; without it\n"
    "            the index goes to a temporary file\n"
    "  -q WORD   look WORD up in the index; can be repeated\n"
    "  -r FILE   read the index in FILE instead of making one\n"
    "  --help    show this\n"
    "\n"
    "The exit status is 0, 1 when something could not be read, written or verified,\n"
    "and 2 when the arguments make no sense.\n";

const char introduction[] =
    "wordindex counts the words of text files in one dictionary, writes that to a file, reads it\n"
    "back and compares: what every program does that keeps its data from one run to the next.\n\n";

const double megabyte = 1e6;

struct Options {
    const char* output = nullptr;      // null for a temporary file
    const char* index = nullptr;       // to read; null to make one
    const char* list = nullptr;        // directories to search, separated by ':', or null
    const char* pattern = nullptr;     // of the names to search for, or null
    std::vector<std::string> queries;  // words to look up
    std::vector<std::string> texts;    // files and directories
};

// What counting comes to.
struct Counted {
    unsigned int files = 0;
    unsigned int failures = 0;
    std::uint64_t bytes = 0;
    std::uint64_t words = 0;
};

class Stopwatch {
public:
    Stopwatch() : start(std::chrono::steady_clock::now()) {}
    double seconds() const {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }

private:
    std::chrono::steady_clock::time_point start;
};

const char* plural(std::uint64_t n) { return n == 1 ? "" : "s"; }

void printMemory() {
    struct rusage used;
    if (::getrusage(RUSAGE_SELF, &used) == 0)
        std::printf("It never took more than %s of memory.\n",
                    amount(static_cast<std::uint64_t>(used.ru_maxrss) * 1024).c_str());
}

void printLookUps(const fxStrStrDictionary& index, const std::vector<std::string>& queries) {
    std::printf("\nLooked up in what was read:\n");
    for (const std::string& word : queries) {
        const fxStr* count = index.find(word.c_str());
        std::printf(
            "\"%s\" %s\n", word.c_str(),
            count
                ? ("occurs " + counted(std::strtoull(count->c_str(), nullptr, 10), "time")).c_str()
                : "is not there");
    }
    std::printf("\n");
}

void printBuckets(fxStrStrDictionary& index) {
    std::printf("It has %s, and the fullest holds %s.\n",
                counted(index.getNumBuckets(), "bucket").c_str(),
                counted(longestChain(index), "word").c_str());
}

// What the index beside the chains gains.

// A class of one's own has none until it promises something: its chains are walked.
class Walked : public fxStrStrDictionary {
public:
    using fxStrStrDictionary::fxStrStrDictionary;
    using fxStrStrDictionary::operator=;
};

const unsigned int mostWalked = 1000000;  // words: memory for all of them is needed once more

// How long it takes to look every word of `words` up in `in`, in seconds a word.
double secondsToLookUp(fxStrStrDictionary& words, const fxStrStrDictionary& in) {
    unsigned int found = 0;
    const Stopwatch looking;
    for (fxStrStrDictionaryIter iter(words); iter.key(); ++iter)
        found += in.find(*iter.key()) != nullptr;
    return looking.seconds() / (found != 0 ? found : 1);
}

void printGain(fxStrStrDictionary& words, fxStrStrDictionary& index) {
    if (index.length() > mostWalked)
        return;
    const double indexed = secondsToLookUp(words, index);
    Walked walked(index.getNumBuckets());
    walked = index;
    const double nanosecond = 1e-9;
    std::printf(
        "A look-up takes %.0f ns on average, and %.0f ns where chains are walked: an index beside "
        "the\n"
        "buckets finds a word at once, however many share a bucket.\n",
        indexed / nanosecond, secondsToLookUp(words, walked) / nanosecond);
}

// Counting.

Counted countWords(const TextFiles& texts, fxStrStrDictionary& index, Progress& progress) {
    WordCounter counter(index);
    Counted counted;
    counted.failures = texts.failures();
    progress.showCounting(static_cast<unsigned int>(texts.paths().size()),
                          static_cast<double>(texts.bytes()) / megabyte);
    CountReport report(progress);
    const auto tick = [&] { report.update(counted.files, counter.bytes()); };
    for (const std::string& path : texts.paths()) {
        if (counter.countFile(path, tick)) {
            ++counted.files;
        } else {
            Progress::complain(path, std::strerror(errno));
            ++counted.failures;
        }
        if (counter.isFull()) {
            Progress::complain(path, "too many different words, the rest is not counted");
            ++counted.failures;
            break;
        }
    }
    counted.bytes = counter.bytes();
    counted.words = counter.words();
    return counted;
}

void printCounts(const Counted& result, fxStrStrDictionary& index, double seconds) {
    std::printf("Counted %s in %s, %s of text, in %s: %s.\n", counted(result.words, "word").c_str(),
                counted(result.files, "file").c_str(), amount(result.bytes).c_str(),
                duration(seconds).c_str(), rate(result.bytes, seconds).c_str());
    std::printf(
        "%s different: each is a key of one fxStrStrDictionary, and its count the value.\n",
        index.length() == 1 ? "1 of them is" : (grouped(index.length()) + " of them are").c_str());
    printBuckets(index);
    std::fflush(stdout);
}

// Writing, reading back and comparing.

struct RoundTrip {
    std::unique_ptr<fxStrStrDictionary> copy;  // what was read back
    std::uint64_t bytes = 0;                   // of the file
    double writeSeconds = 0;
    double readSeconds = 0;
};

// Returns false, having said why, when the index could not be written or read back.
bool writeAndReadBack(fxStrStrDictionary& index, const Options& options, Progress& progress,
                      RoundTrip& result) {
    IndexFile file =
        options.output ? IndexFile::create(options.output) : IndexFile::createTemporary();
    progress.show("writing the index");
    const Stopwatch writing;
    const bool written = file.isOpen() && file.write(index);
    result.writeSeconds = writing.seconds();
    if (written) {
        progress.show("reading the index back");
        const Stopwatch reading;
        result.copy = file.read();
        result.readSeconds = reading.seconds();
        result.bytes = file.bytes();
    }
    if (!result.copy)
        Progress::complain(options.output ? options.output : "temporary file", file.problem());
    return result.copy != nullptr;
}

// Returns true when what was read back is what was written.
bool verify(fxStrStrDictionary& index, const Options& options, Progress& progress) {
    RoundTrip trip;
    if (!writeAndReadBack(index, options, progress, trip))
        return false;
    progress.show("verifying");
    const Stopwatch verifying;
    const unsigned int lost = countMissing(index, *trip.copy);
    const unsigned int added = countMissing(*trip.copy, index);
    const double seconds = verifying.seconds();

    Progress::clear();
    printGain(index, *trip.copy);
    std::printf("\nWrote the dictionary, %s, in %s: %s. One call, writeObject, did it.\n",
                amount(trip.bytes).c_str(), duration(trip.writeSeconds).c_str(),
                rate(trip.bytes, trip.writeSeconds).c_str());
    std::printf("Read it back in %s: %s. A machine of the other byte order could read it, too.\n",
                duration(trip.readSeconds).c_str(), rate(trip.bytes, trip.readSeconds).c_str());
    std::fflush(stdout);
    if (lost != 0 || added != 0 || trip.copy->length() != index.length()) {
        std::fprintf(stderr, "wordindex: read back wrong: %u words lost, %u added\n", lost, added);
        return false;
    }
    std::printf("Compared the two in %s: no word is lost, none is added, each count is the same.\n",
                duration(seconds).c_str());
    printMemory();
    printLookUps(*trip.copy, options.queries);
    if (options.output)
        std::printf("The dictionary stays in %s.\n", options.output);
    return true;
}

int makeIndex(const Options& options) {
    std::fputs(introduction, stdout);
    std::fflush(stdout);
    Progress progress;
    TextFiles texts;
    if (options.list)
        texts.addMatching(options.list, options.pattern);
    else if (options.texts.empty())
        texts.addHeaders("/usr/include");
    for (const std::string& path : options.texts)
        texts.add(path);

    fxStrStrDictionary index(WordCounter::bucketsFor(texts.bytes()));
    const Stopwatch counting;
    const Counted counted = countWords(texts, index, progress);
    const double seconds = counting.seconds();
    Progress::clear();
    printCounts(counted, index, seconds);
    if (!verify(index, options, progress))
        return 1;
    std::printf("wordindex: verified %u word%s from %u file%s", index.length(),
                plural(index.length()), counted.files, plural(counted.files));
    if (counted.failures != 0)
        std::printf("; %u failure%s", counted.failures, plural(counted.failures));
    std::printf("\n");
    return counted.failures == 0 ? 0 : 1;
}

// Reading an index that others may have changed.

int readIndex(const Options& options) {
    IndexFile file = IndexFile::existing(options.index);
    const Stopwatch reading;
    std::unique_ptr<fxStrStrDictionary> index;
    if (file.isOpen())
        index = file.read();
    const double seconds = reading.seconds();
    const std::string problem = index ? defectOf(*index) : file.problem();
    if (!problem.empty()) {
        Progress::complain(options.index, problem);
        return 1;
    }
    std::printf("Read a dictionary of %s, %s, in %s: %s.\n",
                counted(index->length(), "different word").c_str(), amount(file.bytes()).c_str(),
                duration(seconds).c_str(), rate(file.bytes(), seconds).c_str());
    printBuckets(*index);
    printMemory();
    printLookUps(*index, options.queries);
    std::printf("wordindex: read %u word%s from %s\n", index->length(), plural(index->length()),
                options.index);
    return 0;
}

int readIndexGuarded(const Options& options) {
    return runGuarded([&] { return readIndex(options); },
                      [&](const std::string& lastWords) {
                          Progress::complain(options.index, "damaged index: " + lastWords);
                      });
}

// The command line.

// What is wrong with options that were understood one by one; null if nothing is.
const char* conflictIn(const Options& options) {
    if (options.index &&
        (!options.texts.empty() || options.output || options.list || options.pattern))
        return "-r goes with -q only";
    if (!options.list != !options.pattern)
        return "-d and -p go together";
    if (options.list && !options.texts.empty())
        return "-d and -p go without files and directories";
    const int notCompiled = -2;
    if (options.pattern && fxRegEx(options.pattern).findBuffer("", 0) == notCompiled)
        return "-p takes a regular expression";
    return nullptr;
}

// Returns the exit status, or -1 to go on.
int parse(int argc, char** argv, Options& options) {
    const option longOptions[] = {{"help", no_argument, nullptr, 'h'}, {nullptr, 0, nullptr, 0}};
    int c;
    while ((c = ::getopt_long(argc, argv, "d:o:p:q:r:h", longOptions, nullptr)) != -1) {
        switch (c) {
            case 'd':
                options.list = optarg;
                break;
            case 'o':
                options.output = optarg;
                break;
            case 'p':
                options.pattern = optarg;
                break;
            case 'q':
                options.queries.emplace_back(optarg);
                break;
            case 'r':
                options.index = optarg;
                break;
            case 'h':
                std::fputs(usage, stdout);
                return 0;
            default:
                std::fputs(usage, stderr);
                return 2;
        }
    }
    options.texts.assign(argv + optind, argv + argc);
    if (const char* conflict = conflictIn(options)) {
        std::fprintf(stderr, "wordindex: %s\n", conflict);
        return 2;
    }
    if (options.queries.empty())
        options.queries = {"int", "return", "the", "template"};
    return -1;
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    const int status = parse(argc, argv, options);
    if (status >= 0)
        return status;
    fxInitializeToolkit();
    const int result = options.index ? readIndexGuarded(options) : makeIndex(options);
    fxCleanupGlobalOrderings();
    return result;
}
