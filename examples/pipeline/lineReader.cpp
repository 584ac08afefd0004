#include "examples/pipeline/lineReader.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "kelvofxds/objects/fxExec.h"
#include "kelvofxds/values/fxData.h"

namespace {
const unsigned int chunk = 65536;  // bytes read at a time: what a pipe holds
}  // namespace

LineReader::LineReader(int descriptor)
    : fxSelectHandler(descriptor, 1, 0, 0),
      bytesRead(addOutput("bytes", fxDT_int)),
      line(addOutput("line", fxDT_CharPtr)),
      done(addOutput("done", fxDT_void)) {
    fx_theExecutive->addSelectHandler(this);
}

void LineReader::handleRead() {
    char bytes[chunk];
    const ssize_t n = ::read(fd, bytes, sizeof bytes);
    if (n > 0) {
        sendInt(bytesRead, static_cast<int>(n), fxSendNow);
        sendLines(bytes, static_cast<unsigned int>(n));
    } else if (n == 0 || (errno != EINTR && errno != EAGAIN)) {
        finish();
    }
}

void LineReader::sendLines(const char* bytes, unsigned int n) {
    const char* const end = bytes + n;
    while (const void* found = std::memchr(bytes, '\n', static_cast<std::size_t>(end - bytes))) {
        const char* newline = static_cast<const char*>(found);
        sendLine(bytes, static_cast<std::size_t>(newline - bytes));
        bytes = newline + 1;
    }
    rest.append(bytes, end);
}

// A text ends at its first NUL on the way, as every text of the library does.
void LineReader::sendLine(const char* bytes, std::size_t n) {
    rest.append(bytes, n);
    sendCharPtr(line, rest.c_str(), fxSendNow);
    rest.clear();
}

void LineReader::finish() {
    if (!rest.empty())
        sendLine("", 0);
    fx_theExecutive->removeSelectHandler(this);
    sendVoid(done, fxSendQueued);  // queued: who hears it may delete this reader
}
