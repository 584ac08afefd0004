// fxStdioStreamSignals_test.cpp - streams whose system calls signals interrupt.

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/transcribe/fxFile.h"
#include "kelvofxds/transcribe/fxStdioStream.h"
#include "kelvofxds/transcribe/fxTranscriber.h"
#include "tests/support/goldenStreams.h"
#include "tests/support/inChild.h"
#include "tests/support/runProgram.h"

namespace {

// Whoever blocks is interrupted until the signals' handler gives it what it waits for.
volatile std::sig_atomic_t signals = 0;
void (*onSignal)() = nullptr;

void handle(int) {
    const int error = errno;
    signals = signals + 1;
    onSignal();
    errno = error;
}

// While one lives, `action` is called a thousand times a second, and no call goes on after it.
class Signals {
public:
    explicit Signals(void (*action)()) {
        signals = 0;
        onSignal = action;
        struct sigaction ours {};
        ours.sa_handler = handle;
        ::sigaction(SIGALRM, &ours, &before);
        every(1000);
    }
    Signals(const Signals&) = delete;
    Signals& operator=(const Signals&) = delete;
    ~Signals() {
        every(0);
        // One may be under way still, and would end the process.
        ::signal(SIGALRM, SIG_IGN);
        ::usleep(1000);
        ::sigaction(SIGALRM, &before, nullptr);
    }

private:
    static void every(long microseconds) {
        const itimerval timer{{0, microseconds}, {0, microseconds}};
        ::setitimer(ITIMER_REAL, &timer, nullptr);
    }

    struct sigaction before {};
};

// The end of a pipe that the handler uses, what it writes a few bytes of, and a path.
int pipeEnd = -1;
const char* toWrite = nullptr;
std::size_t left = 0;
std::size_t chunk = 0;
const char* path = nullptr;

void giveSome() {
    const std::size_t n = left < chunk ? left : chunk;
    if (n != 0 && ::write(pipeEnd, toWrite, n) != static_cast<ssize_t>(n))
        std::abort();
    toWrite += n;
    left -= n;
    if (left == 0 && pipeEnd >= 0) {
        ::close(pipeEnd);
        pipeEnd = -1;
    }
}

void takeSome() {
    char bytes[5000];
    static_cast<void>(::read(pipeEnd, bytes, sizeof bytes) < 0);
}

// A descriptor from which `n` bytes a signal can be read of what is in `bytes`.
int slowInput(const std::string& bytes, std::size_t n) {
    int ends[2];
    EXPECT_EQ(0, ::pipe(ends));
    pipeEnd = ends[1];
    static std::string all;
    all = bytes;
    toWrite = all.data();
    left = all.size();
    chunk = n;
    return ends[0];
}

std::unique_ptr<fxStdioStream> slowStream(const std::string& bytes, std::size_t n) {
    return std::make_unique<fxStdioStream>(slowInput(bytes, n), fxStream::readStream);
}

template <class Item>
std::string itemsOf(unsigned char (fxStream::*get)(Item*, unsigned int), const std::string& bytes) {
    const auto stream = slowStream(bytes, 3);
    const Signals signal(giveSome);
    Item items[8] = {};
    const unsigned char isDone = (stream.get()->*get)(items, 8);
    return isDone ? std::string(reinterpret_cast<const char*>(items), sizeof items) : "failed";
}

const char text[] = "The quick brown fox jumps over the lazy dog, and then it runs away from it.";

}  // namespace

TEST(fxStdioStreamSignals, readsGoOn) {
    const std::string bytes(text, 64);
    EXPECT_EQ(bytes.substr(0, 8), itemsOf<char>(&fxStream::getBytes, bytes));
    EXPECT_EQ(bytes.substr(0, 16), itemsOf<short>(&fxStream::getShorts, bytes));
    EXPECT_EQ(bytes.substr(0, 32), itemsOf<int>(&fxStream::getInts, bytes));
    EXPECT_EQ(bytes.substr(0, 8 * sizeof(long)), itemsOf<long>(&fxStream::getLongs, bytes));
    EXPECT_EQ(bytes.substr(0, 32), itemsOf<float>(&fxStream::getFloats, bytes));
    EXPECT_EQ(bytes, itemsOf<double>(&fxStream::getDoubles, bytes));
}

// The number of standard input is a file's like any other.
TEST(fxStdioStreamSignals, readsOfStandardInputGoOn) {
    const std::string bytes(text);
    const std::string result = inChild([&]() -> std::string {
        if (::dup2(slowInput(bytes, 3), 0) != 0)
            return "no standard input";
        fxStdioStream input(0, fxStream::readStream);
        const Signals signal(giveSome);
        std::string read(bytes.size(), ' ');
        return input.getBytes(&read[0], static_cast<unsigned int>(read.size())) ? read : "failed";
    });
    EXPECT_EQ(bytes, result);
}

TEST(fxStdioStreamSignals, bytesComeOneByOneUpToTheEnd) {
    const std::string bytes(text);
    const auto stream = slowStream(bytes, 1);
    const Signals signal(giveSome);
    std::string read;
    for (char c; stream->getBytes(&c, 1);)
        read += c;
    EXPECT_EQ(bytes, read);
    EXPECT_EQ(0, stream->getBytes(&read[0], 2));
}

TEST(fxStdioStreamSignals, interruptionsLeaveNoTraceOfAFailure) {
    const auto stream = slowStream(text, 10);
    const Signals signal(giveSome);
    char bytes[50];
    EXPECT_EQ(1, stream->getBytes(bytes, 50));
    EXPECT_EQ(1, stream->close());
}

// What a host's own functions say of themselves is believed, whatever errno is.
TEST(fxStdioStreamSignals, failuresOfAHostsFileAreFinal) {
    unsigned int calls = 0;
    cookie_io_functions_t functions = {};
    functions.read = [](void* cookie, char*, std::size_t) -> ssize_t {
        ++*static_cast<unsigned int*>(cookie);
        errno = EINTR;
        return -1;
    };
    fxStdioStream stream(::fopencookie(&calls, "r", functions), fxStream::readStream);
    char bytes[2];
    EXPECT_EQ(0, stream.getBytes(bytes, 1));
    EXPECT_EQ(0, stream.getBytes(bytes, 2));
    EXPECT_EQ(2u, calls);
}

TEST(fxStdioStreamSignals, objectsAreReadWhole) {
    fxInitializeToolkit();
    for (const auto& kind : goldenStreams::kinds) {
        SCOPED_TRACE(kind.name);
        const std::string bytes = goldenStreams::fileOf(kind, goldenStreams::hostIsBig());
        fxStdioStream* stream = slowStream(bytes, 1 + bytes.size() / 20).release();
        ++stream->count;
        fxXDRObj* root = nullptr;
        {
            const Signals signal(giveSome);
            root = goldenStreams::readFrom(stream, kind);
        }
        EXPECT_NE(nullptr, root);
        if (root)
            kind.end(root);
        if (--stream->count == 0)
            delete stream;
    }
}

// A pipe with a name opens when somebody opens its other end.

TEST(fxStdioStreamSignals, openingsGoOn) {
    const TemporaryFolder folder;
    const std::string fifo = folder / "fifo";
    ASSERT_EQ(0, ::mkfifo(fifo.c_str(), 0600));
    path = fifo.c_str();
    const auto openForReading = [] {
        if (signals == 3)
            pipeEnd = ::open(path, O_RDONLY | O_NONBLOCK);
    };
    const auto openForWriting = [] {
        if (signals == 3)
            pipeEnd = ::open(path, O_RDWR | O_NONBLOCK);
    };
    const auto end = [] { ::close(pipeEnd); };
    {
        const Signals signal(openForWriting);
        fxStdioStream reading(path, fxStream::readStream);
        EXPECT_EQ(0, reading.hasError());
    }
    end();
    {
        const Signals signal(openForReading);
        fxStdioStream writing(path, fxStream::writeStream);
        EXPECT_EQ(0, writing.hasError());
    }
    end();
    {
        const Signals signal(openForReading);
        const std::unique_ptr<fxStdioStream> made(fxStdioStream::createFile(path));
        EXPECT_EQ(0, made->hasError());
    }
    end();
}

// The system's own buffer throws away what a write that is interrupted has left.
TEST(fxStdioStreamSignals, lostWritesAreTold) {
    int ends[2];
    ASSERT_EQ(0, ::pipe(ends));
    pipeEnd = ends[0];
    fxStdioStream stream(ends[1], fxStream::writeStream);
    const Signals signal(takeSome);
    bool isAllPut = true;
    for (unsigned int i = 0; i < 20000; ++i)
        isAllPut = stream.putBytes(text, 64) && isAllPut;
    EXPECT_FALSE(stream.flush() && isAllPut);
    EXPECT_EQ(0, stream.close());
    ::close(ends[0]);
}
