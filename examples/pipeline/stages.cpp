#include "examples/pipeline/stages.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "kelvofxds/values/fxData.h"

namespace {
// addInput takes functions of every type under this one.
template <class Function>
void (*receiver(Function function))() {
    return reinterpret_cast<void (*)()>(function);
}
}  // namespace

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
    addInput("bytes", fxDT_int, this, receiver(takeBytes), 0);
    addInput("line", fxDT_CharPtr, this, receiver(take), 0);
}

void LineCounter::takeBytes(LineCounter* self, int n) {
    self->bytes += static_cast<unsigned int>(n);
}

void LineCounter::take(LineCounter* self, char* text) {
    const int n = static_cast<int>(std::strlen(text));
    self->sendInt(self->total, static_cast<int>(++self->lines), fxSendQueued);
    if (n <= self->longest)
        return;
    self->longest = n;
    self->sendInt(self->length, n, fxSendQueued);
}

NumberSum::NumberSum() : sum(0) { addInput("number", fxDT_int, this, receiver(take), 0); }

void NumberSum::take(NumberSum* self, int number) { self->sum += number; }

Meter::Meter() : onTerminal(::isatty(STDERR_FILENO) == 1), shownLines(0), shownAt(secondsNow()) {
    const unsigned char latestOnly = 1;
    addInput("lines", fxDT_CharPtr, this, receiver(takeLines), latestOnly);
    addInput("longest", fxDT_CharPtr, this, receiver(takeLongest), latestOnly);
    addInput("tick", fxDT_void, this, receiver(takeTick), latestOnly);
}

Meter::~Meter() {
    if (onTerminal)
        std::fputs("\r\033[K", stderr);
}

void Meter::takeLines(Meter* self, char* text) { self->lines = text; }

void Meter::takeLongest(Meter* self, char* text) { self->longest = text; }

void Meter::takeTick(Meter* self) {
    if (!self->onTerminal)
        return;
    const double now = secondsNow();
    const double count = std::strtod(self->lines.c_str(), nullptr);
    const double rate = (count - self->shownLines) / (now - self->shownAt);
    std::fprintf(stderr, "\r\033[K%s lines, %.0f a second, longest %s bytes", self->lines.c_str(),
                 rate, self->longest.c_str());
    std::fflush(stderr);
    self->shownLines = count;
    self->shownAt = now;
}
