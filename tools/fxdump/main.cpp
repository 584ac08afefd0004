// fxdump - shows what is in streams of objects, without the classes of their hosts.

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string>

#include "kelvofxds/version.h"
#include "tools/fxdump/dump.h"

namespace {
using fxdump::Outcome;

// To a terminal that has any, unless the user wants none.
bool wantsColours() {
    const char* const none = std::getenv("NO_COLOR");
    const char* const terminal = std::getenv("TERM");
    return ::isatty(STDOUT_FILENO) && (!none || *none == '\0') && terminal &&
           std::strcmp(terminal, "dumb") != 0;
}

void complain(const std::string& what) { std::fprintf(stderr, "fxdump: %s\n", what.c_str()); }

Outcome showDescriptor(fxdump::Dump& dump, int fd, const std::string& file) {
    fxdump::FileSource source(fd);
    std::string message;
    const Outcome outcome = dump.show(source, file, message);
    if (!message.empty())
        complain(file + ": " + message);
    return outcome;
}

Outcome showFile(fxdump::Dump& dump, const std::string& file) {
    if (file == "-")
        return showDescriptor(dump, STDIN_FILENO, "(standard input)");
    const int fd = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        complain(file + ": " + std::strerror(errno));
        return fxdump::isTrouble;
    }
    const Outcome outcome = showDescriptor(dump, fd, file);
    ::close(fd);
    return outcome;
}

int showAll(const fxdump::Options& options) {
    fxdump::Output out(stdout, wantsColours());
    fxdump::Dump dump(options, out);
    Outcome worst = fxdump::isSound;
    for (const std::string& file : options.files) {
        if (!out.failed())
            worst = std::max(worst, showFile(dump, file));
    }
    dump.finish();
    if (out.flush())
        return worst;
    complain(std::string("standard output: ") + std::strerror(errno));
    return fxdump::isTrouble;
}

int run(int argc, char** argv) {
    std::string wrong;
    const fxdump::Options options = fxdump::parseOptions(argc, argv, wrong);
    if (!wrong.empty()) {
        complain(wrong + "; see fxdump --help");
        return fxdump::isTrouble;
    }
    if (options.help)
        std::fputs(fxdump::helpText, stdout);
    else if (options.version)
        std::puts("fxdump " KELVOFXDS_VERSION);
    else
        return showAll(options);
    if (std::fflush(stdout) == 0)
        return fxdump::isSound;
    complain(std::string("standard output: ") + std::strerror(errno));
    return fxdump::isTrouble;
}
}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& refused) {
        // Memory, of which checking takes some for each number in a stream.
        complain(refused.what());
        return fxdump::isTrouble;
    }
}
