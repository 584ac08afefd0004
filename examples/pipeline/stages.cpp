#include "examples/pipeline/stages.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "kelvofxds/objects/fxWiring.h"
#include "kelvofxds/values/fxData.h"

double secondsNow() {
    using std::chrono::steady_clock;
    return std::chrono::duration<double>(steady_clock::now().time_since_epoch()).count();
}

LineCounter::LineCounter()
    : lines(0),
      bytes(0),
      total(addOutput("total", fxDT_int)),
      length(addOutput("length", fxDT_int)),
      longest(-1) {
    fxAddInput(this, "bytes", &LineCounter::takeBytes);
    fxAddInput(this, "line", &LineCounter::take);
}

void LineCounter::takeBytes(int n) { bytes += static_cast<unsigned int>(n); }

void LineCounter::take(const char* text) {
    const int n = static_cast<int>(std::strlen(text));
    sendInt(total, static_cast<int>(++lines), fxSendQueued);
    if (n <= longest)
        return;
    longest = n;
    sendInt(length, n, fxSendQueued);
}

NumberSum::NumberSum() : sum(0) { fxAddInput(this, "number", &NumberSum::take); }

void NumberSum::take(int number) { sum += number; }

Meter::Meter() : onTerminal(::isatty(STDERR_FILENO) == 1), shownLines(0), shownAt(secondsNow()) {
    const bool latestOnly = true;
    fxOnInput(
        this, "lines", [this](const char* text) { lines = text; }, latestOnly);
    fxOnInput(
        this, "longest", [this](const char* text) { longest = text; }, latestOnly);
    fxAddInput(this, "tick", &Meter::show, latestOnly);
}

Meter::~Meter() {
    if (onTerminal)
        std::fputs("\r\033[K", stderr);
}

void Meter::show() {
    if (!onTerminal)
        return;
    const double now = secondsNow();
    const double number = std::strtod(lines.c_str(), nullptr);
    const double rate = (number - shownLines) / (now - shownAt);
    std::fprintf(stderr, "\r\033[K%s lines, %.0f a second, longest %s bytes", lines.c_str(), rate,
                 longest.c_str());
    std::fflush(stderr);
    shownLines = number;
    shownAt = now;
}
