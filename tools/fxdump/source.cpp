#include "tools/fxdump/source.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace fxdump {

namespace {
const std::size_t bufferSize = 64 * 1024;
}  // namespace

Source::Source() : buffer(new char[bufferSize]) {}

Source::~Source() = default;

std::size_t Source::ready(const char*& bytes) {
    if (begin == end && !atEnd) {
        begin = 0;
        end = read(buffer.get(), bufferSize);
        atEnd = end == 0;
    }
    bytes = buffer.get() + begin;
    return end - begin;
}

void Source::drop(std::size_t n) {
    begin += n;
    position += n;
}

std::size_t Source::take(char* to, std::size_t n) {
    std::size_t taken = 0;
    while (taken < n) {
        const char* bytes = nullptr;
        const std::size_t step = std::min(n - taken, ready(bytes));
        if (step == 0)
            break;
        std::memcpy(to + taken, bytes, step);
        drop(step);
        taken += step;
    }
    return taken;
}

std::size_t FileSource::read(char* at, std::size_t room) {
    for (;;) {
        const ssize_t n = ::read(fd, at, room);
        if (n >= 0)
            return static_cast<std::size_t>(n);
        if (errno != EINTR) {
            fail(errno);
            return 0;
        }
    }
}

std::size_t MemorySource::read(char* at, std::size_t room) {
    const std::size_t n = std::min(left, room);
    if (n != 0)
        std::memcpy(at, next, n);
    next += n;
    left -= n;
    return n;
}

}  // namespace fxdump
