// Streams over files that give and take a few bytes at a time, fail, or are full.

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <functional>
#include <string>

#include "kelvofxds/transcribe/fxFile.h"
#include "kelvofxds/transcribe/fxStdioStream.h"
#include "tests/support/figure.h"
#include "tests/support/goldenStreams.h"
#include "tests/support/inChild.h"
#include "tests/support/runProgram.h"

namespace {

using goldenStreams::Kind;

// A file that gives `chunk` bytes a call at most, and takes `room` bytes in all. To take few at a
// time it would have to fail: its buffer decides that.
struct ChunkedFile {
    static std::FILE* open(ChunkedFile& self, const char* mode) {
        cookie_io_functions_t functions = {};
        functions.read = [](void* cookie, char* bytes, std::size_t n) {
            auto& file = *static_cast<ChunkedFile*>(cookie);
            const std::size_t given = file.content.copy(bytes, std::min(n, file.chunk), file.place);
            file.place += given;
            return static_cast<ssize_t>(given);
        };
        functions.write = [](void* cookie, const char* bytes, std::size_t n) {
            auto& file = *static_cast<ChunkedFile*>(cookie);
            const std::size_t taken = std::min(n, file.room);
            file.content.append(bytes, taken);
            file.room -= taken;
            return static_cast<ssize_t>(taken);
        };
        return ::fopencookie(&self, mode, functions);
    }

    std::string content;
    std::size_t chunk = 1U << 30;
    std::size_t room = 1U << 30;
    std::size_t place = 0;
};

fxXDRObj* readFromFile(std::FILE* file, const Kind& kind) {
    const Held<fxStdioStream> stream(file, fxStream::readStream);
    return goldenStreams::readFrom(stream.get(), kind);
}

// As a host that wants to know does it: written, flushed, closed.
bool writeToFile(std::FILE* file, const Kind& kind, fxXDRObj& root) {
    const Held<fxStdioStream> stream(file, fxStream::writeStream);
    const bool isWritten = goldenStreams::writeTo(stream.get(), kind, root);
    const bool isClosed = stream->close() == 1;
    return isWritten && isClosed;
}

bool comesBackInChunks(const Kind& kind, const std::string& bytes, std::size_t chunk) {
    ChunkedFile source;
    source.content = bytes;
    source.chunk = chunk;
    fxXDRObj* const root = readFromFile(ChunkedFile::open(source, "r"), kind);
    if (!root)
        return false;
    ChunkedFile target;
    std::FILE* const file = ChunkedFile::open(target, "w");
    char buffer[8];
    std::setvbuf(file, buffer, chunk == 1 ? _IONBF : _IOFBF, chunk);
    const bool isWritten = writeToFile(file, kind, *root);
    kind.end(root);
    return isWritten && target.content == bytes;
}

// The streams are shorter than what a pipe holds.
bool comesBackThroughPipes(const Kind& kind, const std::string& bytes) {
    int ends[2];
    EXPECT_EQ(0, ::pipe(ends));
    EXPECT_EQ(static_cast<ssize_t>(bytes.size()), ::write(ends[1], bytes.data(), bytes.size()));
    ::close(ends[1]);
    fxXDRObj* const root = readFromFile(::fdopen(ends[0], "r"), kind);
    if (!root)
        return false;
    EXPECT_EQ(0, ::pipe(ends));
    const bool isWritten = writeToFile(::fdopen(ends[1], "w"), kind, *root);
    kind.end(root);
    std::string back(bytes.size() + 1, '\0');
    const ssize_t n = ::read(ends[0], &back[0], back.size());
    ::close(ends[0]);
    return isWritten && n >= 0 && back.substr(0, static_cast<std::size_t>(n)) == bytes;
}

const unsigned int kindCount = sizeof goldenStreams::kinds / sizeof goldenStreams::kinds[0];

std::string ownFileOf(const Kind& kind) {
    return goldenStreams::fileOf(kind, goldenStreams::hostIsBig());
}

fxXDRObj* rootOf(const Kind& kind) {
    ChunkedFile source;
    source.content = ownFileOf(kind);
    return readFromFile(ChunkedFile::open(source, "r"), kind);
}

// Writings of `root` that were said to have succeeded although the file took less.
unsigned long silentLosses(const Kind& kind, fxXDRObj& root, std::size_t step) {
    const std::size_t length = ownFileOf(kind).size();
    unsigned long losses = 0;
    for (std::size_t room = 0; room <= length; room += room + step > length ? 1 : step) {
        for (const int buffering : {_IOFBF, _IONBF}) {
            ChunkedFile target;
            target.room = room;
            std::FILE* const file = ChunkedFile::open(target, "w");
            std::setvbuf(file, nullptr, buffering, 4096);
            losses += writeToFile(file, kind, root) == (room >= length) ? 0 : 1;
        }
    }
    return losses;
}

unsigned long lossesOnAFullDisk(const Kind& kind, fxXDRObj& root) {
    return writeToFile(std::fopen("/dev/full", "w"), kind, root) ? 1 : 0;
}

// What went wrong with a file that is replaced while the process may write `limit` bytes: the old
// one is not whole, or the new one is there and it is said not to be, or the other way round; or
// how the process has died.
std::string outcomeWithALimit(const std::string& path, rlim_t limit, bool isIgnored) {
    return inChild([&] {
        fxStrStrDictionary old;
        old.add("old", "one");
        if (!fxSaveFile(path.c_str(), old))
            return std::string("old one not saved");
        fxStrStrDictionary next;
        for (int i = 0; i < 300; ++i)
            next.add(fxStr(i, "key %d"), "a value");
        ::signal(SIGXFSZ, isIgnored ? SIG_IGN : SIG_DFL);
        const rlimit most{limit, limit};
        ::setrlimit(RLIMIT_FSIZE, &most);
        const bool isSaved = fxSaveFile(path.c_str(), next);
        const std::unique_ptr<fxStrStrDictionary> found(
            fxLoadFile<fxStrStrDictionary>(path.c_str()));
        if (!found || found->length() != (isSaved ? 300U : 1U))
            return std::string("neither is whole");
        return std::string(isSaved == (limit > 100000) ? "" : "it is said otherwise");
    });
}

}  // namespace

TEST(figureI3, streamsComeBackThroughChunksAndPipes) {
    fxInitializeToolkit();
    const unsigned long rounds = figureSize(10000, 600);
    unsigned long different = 0;
    for (unsigned int i = 0; i < rounds; ++i) {
        const Kind& kind = goldenStreams::kinds[i % kindCount];
        const std::string bytes = ownFileOf(kind);
        const bool isSame = i % 8 == 7 ? comesBackThroughPipes(kind, bytes)
                                       : comesBackInChunks(kind, bytes, 1 + i % 7);
        different += isSame ? 0 : 1;
    }
    reportFigure("I3", std::to_string(rounds) + ";" + std::to_string(different),
                 std::to_string(rounds) + ";0", different == 0);
}

TEST(figureI4, noLostByteIsSilent) {
    fxInitializeToolkit();
    const TemporaryFolder folder;
    unsigned long losses = 0;
    for (const Kind& kind : goldenStreams::kinds) {
        fxXDRObj* const root = rootOf(kind);
        ASSERT_NE(nullptr, root) << kind.name;
        losses += silentLosses(kind, *root, figureSize(1, 97));
        losses += lossesOnAFullDisk(kind, *root);
        kind.end(root);
    }
    unsigned long crashes = 0;
    for (const rlim_t limit : {0, 1, 4095, 4096, 5000, 1000000}) {
        for (const bool isIgnored : {true, false}) {
            SCOPED_TRACE(limit);
            const std::string outcome =
                outcomeWithALimit(folder.path() + "/saved", limit, isIgnored);
            EXPECT_EQ("", outcome);
            const bool isCrash = outcome.compare(0, 5, "ended") == 0;
            crashes += isCrash ? 1 : 0;
            losses += outcome.empty() || isCrash ? 0 : 1;
        }
    }
    reportFigure("I4", std::to_string(losses) + ";" + std::to_string(crashes), "0;0",
                 losses == 0 && crashes == 0);
}
