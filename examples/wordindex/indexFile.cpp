#include "examples/wordindex/indexFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/transcribe/fxStdioStream.h"
#include "kelvofxds/transcribe/fxTranscriber.h"

namespace {

// Holds one reference to a stream, as a host does that goes on using it while a transcriber comes
// and goes.
class StreamHolder {
public:
    explicit StreamHolder(fxStream* s) : stream(s) { ++stream->count; }
    StreamHolder(const StreamHolder&) = delete;
    StreamHolder& operator=(const StreamHolder&) = delete;
    ~StreamHolder() {
        if (--stream->count == 0)
            delete stream;
    }

    fxStream* get() const { return stream; }

private:
    fxStream* stream;
};

using Transcriber = std::unique_ptr<fxTranscriber>;

// The root of a stream can be an instance of any type, and readObject returns its bare address.
// This record takes the place of the library's own "DICT" while reading, and notes what it makes
// first: if the root is a dictionary, it is that one.
void* firstDictionary = nullptr;

void* makeDictionary(fxTypeObj& type) {
    void* dictionary = fxStrStrDictionary::newInstance(type);
    if (!firstDictionary)
        firstDictionary = dictionary;
    return dictionary;
}

void watchDictionaries() {
    static fxTypeObj watched("DICT", fxStrStrDictionary_type.version, makeDictionary,
                             fxStrStrDictionary::deleteInstance, fxStrStrDictionary::xdr);
    firstDictionary = nullptr;
}

}  // namespace

// The file.

IndexFile::IndexFile(IndexFile&& other) noexcept
    : fd(std::exchange(other.fd, -1)), reason(std::move(other.reason)) {}

IndexFile::~IndexFile() {
    if (fd >= 0)
        ::close(fd);
}

IndexFile IndexFile::existing(const std::string& path) {
    IndexFile file;
    file.open(path, O_RDONLY);
    return file;
}

// fxStdioStream truncates nothing, and of a longer file that was there before, the end would
// remain; so the file is opened here.
IndexFile IndexFile::create(const std::string& path) {
    IndexFile file;
    file.open(path, O_RDWR | O_CREAT | O_TRUNC);
    return file;
}

IndexFile IndexFile::createTemporary() {
    const char* directory = std::getenv("TMPDIR");
    std::string path = directory && *directory ? directory : P_tmpdir;
    path += "/wordindex.XXXXXX";
    IndexFile file;
    file.fd = ::mkostemp(&path[0], O_CLOEXEC);
    if (file.fd < 0)
        file.fail(std::strerror(errno));
    else
        ::unlink(path.c_str());
    return file;
}

void IndexFile::open(const std::string& path, int flags) {
    // Not to wait for the other end of a pipe, which could not be read again anyway.
    fd = ::open(path.c_str(), flags | O_NONBLOCK | O_CLOEXEC, 0666);
    struct stat status;
    if (fd < 0 || ::fstat(fd, &status) != 0) {
        fail(std::strerror(errno));
        return;
    }
    if (S_ISREG(status.st_mode))
        return;
    ::close(fd);
    fd = -1;
    fail(S_ISDIR(status.st_mode) ? std::strerror(EISDIR) : "not a regular file");
}

bool IndexFile::fail(const std::string& why) {
    reason = why;
    return false;
}

std::uint64_t IndexFile::bytes() const {
    struct stat status;
    return ::fstat(fd, &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

bool IndexFile::write(fxStrStrDictionary& index) {
    std::FILE* fp = ::fdopen(::dup(fd), "w");
    if (!fp)
        return fail(std::strerror(errno));
    const StreamHolder stream(new fxStdioStream(fp, fxStream::writeStream));
    const Transcriber writer(fxTranscriber::getWriter(stream.get()));
    // The stream's own flush, when it is closed, reports nothing.
    if (!writer || !writer->writeObject(&index, &index) || std::fflush(fp) != 0)
        return fail(std::strerror(errno));
    return true;
}

std::unique_ptr<fxStrStrDictionary> IndexFile::read() {
    ::lseek(fd, 0, SEEK_SET);
    const StreamHolder stream(new fxStdioStream(::dup(fd), fxStream::readStream));
    if (stream.get()->hasError()) {
        fail(std::strerror(errno));
        return nullptr;
    }
    const Transcriber reader(fxTranscriber::getReader(stream.get()));
    if (!reader) {
        fail("damaged index: the header is cut short");
        return nullptr;
    }
    watchDictionaries();
    void* root = reader->readObject(fxStrStrDictionary_type);
    if (!root) {
        fail("damaged index: cut short or inconsistent");
        return nullptr;
    }
    if (root != firstDictionary) {
        fail("damaged index: not a dictionary");
        return nullptr;
    }
    return std::unique_ptr<fxStrStrDictionary>(static_cast<fxStrStrDictionary*>(root));
}

// The index.

namespace {
const unsigned int longestToWalk = 4096;

// How many words belong into each bucket.
std::vector<unsigned int> chainLengths(fxStrStrDictionary& index) {
    std::vector<unsigned int> lengths(index.getNumBuckets());
    for (fxStrStrDictionaryIter it(index); it.key(); ++it)
        ++lengths[it.key()->hash() % lengths.size()];
    return lengths;
}

bool isNumber(const fxStr& text) {
    const char* digits = text.c_str();
    return text.length() != 0 && std::all_of(digits, digits + text.length(), [](char c) {
               return std::isdigit(static_cast<unsigned char>(c));
           });
}
}  // namespace

std::string defectOf(fxStrStrDictionary& index) {
    const std::vector<unsigned int> lengths = chainLengths(index);
    for (fxStrStrDictionaryIter it(index); it.key(); ++it) {
        if (!isNumber(*it.value()))
            return "damaged index: a count is not a number";
        // Nobody has the time to find each word in a chain of millions.
        if (lengths[it.key()->hash() % lengths.size()] > longestToWalk)
            continue;
        if (index.find(*it.key()) != it.value())
            return "damaged index: a word is not where it belongs";
    }
    return "";
}

unsigned int countMissing(fxStrStrDictionary& a, const fxStrStrDictionary& b) {
    unsigned int missing = 0;
    for (fxStrStrDictionaryIter it(a); it.key(); ++it) {
        const fxStr* value = b.find(*it.key());
        if (!value || *value != *it.value())
            ++missing;
    }
    return missing;
}

unsigned int longestChain(fxStrStrDictionary& index) {
    const std::vector<unsigned int> lengths = chainLengths(index);
    return lengths.empty() ? 0 : *std::max_element(lengths.begin(), lengths.end());
}
