#include "examples/follow/stages.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

#include "kelvofxds/objects/fxExec.h"
#include "kelvofxds/objects/fxWiring.h"
#include "kelvofxds/values/fxData.h"

Follower::Follower(const char* file, bool fromStart, const std::string& before)
    : line(addOutput("line", fxDT_CharPtr)),
      path(file),
      prefix(before),
      position(fromStart ? 0 : -1),
      fd(-1),
      isMissed(false) {
    const bool latestOnly = true;
    fxAddInput(this, "look", &Follower::look, latestOnly);
}

Follower::~Follower() {
    if (fd >= 0)
        ::close(fd);
}

void Follower::look() {
    if (!isOpen())
        return;
    char bytes[65536];
    ssize_t n;
    while ((n = ::read(fd, bytes, sizeof bytes)) > 0) {
        position += n;
        sendLines(bytes, static_cast<std::size_t>(n));
    }
}

bool Follower::isOpen() {
    if (fd >= 0 && hasBeenReplaced()) {
        tell("starts anew");
        ::close(fd);
        fd = -1;
        position = 0;
        rest.clear();
    }
    if (fd >= 0)
        return true;
    fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        if (!isMissed)
            tell(std::strerror(errno));
        isMissed = true;
        position = 0;  // whatever it has when it comes is new
        return false;
    }
    isMissed = false;
    if (position < 0)
        position = ::lseek(fd, 0, SEEK_END);
    return true;
}

// A file that is just not there stays open: its writer may be about to make a new one.
bool Follower::hasBeenReplaced() const {
    struct stat ours, theirs;
    if (::fstat(fd, &ours) != 0 || ::stat(path.c_str(), &theirs) != 0)
        return false;
    return ours.st_ino != theirs.st_ino || ours.st_dev != theirs.st_dev || ours.st_size < position;
}

void Follower::tell(const char* what) const {
    std::fprintf(stderr, "follow: %s: %s\n", path.c_str(), what);
}

void Follower::sendLines(const char* bytes, std::size_t n) {
    rest.append(bytes, n);
    std::size_t start = 0;
    for (std::size_t end; (end = rest.find('\n', start)) != std::string::npos; start = end + 1)
        sendCharPtr(line, (prefix + rest.substr(start, end - start)).c_str(), fxSendNow);
    rest.erase(0, start);
}

Filter::Filter(const char* pattern) : line(addOutput("line", fxDT_CharPtr)), expression(pattern) {
    fxAddInput(this, "line", &Filter::take);
}

void Filter::take(const char* text) {
    if (expression.findBuffer(text, static_cast<unsigned int>(std::strlen(text))) >= 0)
        sendCharPtr(line, text, fxSendNow);
}

Printer::Printer(unsigned int most) : done(addOutput("done", fxDT_void)), limit(most), printed(0) {
    fxAddInput(this, "line", &Printer::take);
}

void Printer::take(const char* text) {
    if (limit != 0 && printed == limit)
        return;  // the message that ends the program is on its way
    std::puts(text);
    std::fflush(stdout);
    if (++printed == limit)
        sendVoid(done, fxSendQueued);
}

int Ending::writeEnd = -1;

Ending::Ending() : end(addOutput("end", fxDT_void)) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return;
    writeEnd = ends[1];
    setDescriptor(ends[0]);  // the handler closes it
    setInterest(1, 0, 0);
    fx_theExecutive->addSelectHandler(this);
    for (const int signal : {SIGINT, SIGTERM})
        std::signal(signal, take);
}

Ending::~Ending() {
    for (const int signal : {SIGINT, SIGTERM})
        std::signal(signal, SIG_DFL);
    fx_theExecutive->removeSelectHandler(this);
    ::close(writeEnd);
}

void Ending::take(int) {
    const int before = errno;
    if (::write(writeEnd, "", 1) != 1)
        std::_Exit(1);
    errno = before;
}

void Ending::handleRead() {
    char byte;
    if (::read(fd, &byte, 1) == 1)
        sendVoid(end, fxSendQueued);
}
