#include "examples/wordindex/progress.h"

#include <unistd.h>

#include <cstdio>

namespace {
const std::chrono::milliseconds interval(200);

bool lineShown = false;
}  // namespace

Progress::Progress() : onTerminal(::isatty(STDERR_FILENO) == 1), next() {}

Progress::~Progress() { clear(); }

bool Progress::isDue() { return onTerminal && std::chrono::steady_clock::now() >= next; }

void Progress::show(const std::string& text) {
    if (!onTerminal)
        return;
    clear();
    std::fputs(text.c_str(), stderr);
    std::fflush(stderr);
    lineShown = true;
    next = std::chrono::steady_clock::now() + interval;
}

void Progress::clear() {
    if (lineShown)
        std::fputs("\r\033[K", stderr);
    lineShown = false;
}

void Progress::complain(const std::string& what, const std::string& why) {
    clear();
    std::fprintf(stderr, "wordindex: %s: %s\n", what.c_str(), why.c_str());
}
