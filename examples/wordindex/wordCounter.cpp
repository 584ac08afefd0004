#include "examples/wordindex/wordCounter.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>

namespace {
const unsigned int bytesPerBucket = 256;
const unsigned int fewestBuckets = 4095;
const unsigned int mostBuckets = 1024 * 1024 - 1;

const unsigned int chunkSize = 64 * 1024;

// What each byte is replaced by before the text is taken apart: itself in a word, else a blank.
class ByteMap {
public:
    ByteMap() {
        for (unsigned int c = 0; c < sizeof map; ++c) {
            const bool inWord =
                c >= 0x80 || c == '_' || (c < 0x80 && std::isalnum(static_cast<int>(c)));
            map[c] = inWord ? static_cast<char>(c) : ' ';
        }
    }

    void apply(char* bytes, unsigned int n) const {
        for (unsigned int i = 0; i < n; ++i)
            bytes[i] = map[static_cast<unsigned char>(bytes[i])];
    }

private:
    char map[256];
};

// Adds one to a decimal number.
void increment(fxStr& number) {
    for (unsigned int i = number.length(); i-- > 0;) {
        if (number[i] != '9') {
            ++number[i];
            return;
        }
        number[i] = '0';
    }
    number.insert('1', 0);
}

// Closes a descriptor, and keeps errno.
class Descriptor {
public:
    explicit Descriptor(const char* path) : fd(::open(path, O_RDONLY | O_CLOEXEC)) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        const int error = errno;
        if (fd >= 0)
            ::close(fd);
        errno = error;
    }

    bool isOpen() const { return fd >= 0; }

    // Bytes read, 0 at the end, negative on failure.
    ssize_t read(char* to, std::size_t n) {
        ssize_t got;
        do {
            got = ::read(fd, to, n);
        } while (got < 0 && errno == EINTR);
        return got;
    }

private:
    int fd;
};
}  // namespace

unsigned int WordCounter::bucketsFor(std::uint64_t bytes) {
    const std::uint64_t wanted = bytes / bytesPerBucket;
    return static_cast<unsigned int>(
               std::clamp<std::uint64_t>(wanted, fewestBuckets, mostBuckets)) |
           1;
}

WordCounter::WordCounter(fxStrStrDictionary& words) : index(words), bytesRead(0), wordsCounted(0) {}

bool WordCounter::countFile(const std::string& path, const std::function<void()>& tick) {
    static const ByteMap map;
    Descriptor file(path.c_str());
    if (!file.isOpen())
        return false;
    char text[longestWord + 1 + chunkSize];
    unsigned int kept = 0;  // bytes at the start: the beginning of a word whose end is yet to come
    while (!isFull()) {
        const ssize_t got = file.read(text + kept, chunkSize);
        if (got < 0)
            return false;
        if (got == 0)
            break;
        const unsigned int n = static_cast<unsigned int>(got);
        bytesRead += n;
        map.apply(text + kept, n);
        unsigned int complete = kept + n;
        while (complete > 0 && text[complete - 1] != ' ')
            --complete;
        countText(text, complete);
        // Of a run that is too long already, its length past the limit is all that matters.
        const unsigned int rest = kept + n - complete;
        kept = std::min(rest, longestWord + 1);
        std::memmove(text, text + complete, kept);
        tick();
    }
    countText(text, kept);
    return true;
}

void WordCounter::countText(const char* bytes, unsigned int n) {
    const fxStr text(bytes, n);
    unsigned int pos = text.skip(0, ' ');
    while (pos < text.length()) {
        const fxStr word = text.token(pos, ' ');
        if (word.length() > longestWord)
            continue;
        increment(countOf(word));
        ++wordsCounted;
    }
}

fxStr& WordCounter::countOf(const fxStr& word) {
    fxStr& count = index.findCreate(word);
    if (count.length() == 0)
        count = fxStr("0", 1);
    return count;
}
