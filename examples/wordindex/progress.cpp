#include "examples/wordindex/progress.h"

#include <unistd.h>

#include <cstdio>

#include "kelvofxds/objects/fxEventHandler.h"
#include "kelvofxds/values/fxData.h"

namespace {
const float interval = 0.2F;  // seconds
const double megabyte = 1e6;

bool lineShown = false;

// addInput takes functions of every type under this one.
template <class Function>
void (*receiver(Function function))() {
    return reinterpret_cast<void (*)()>(function);
}
}  // namespace

Progress::Progress()
    : onTerminal(::isatty(STDERR_FILENO) == 1),
      allFiles(0),
      allMegabytes(0),
      files(0),
      megabytes(0) {
    const unsigned char latestOnly = 1;
    addInput("files", fxDT_int, this, receiver(takeFiles), latestOnly);
    addInput("megabytes", fxDT_double, this, receiver(takeMegabytes), latestOnly);
    addInput("tick", fxDT_void, this, receiver(takeTick), latestOnly);
}

Progress::~Progress() { clear(); }

void Progress::takeFiles(Progress* self, int number) { self->files = number; }

void Progress::takeMegabytes(Progress* self, double number) { self->megabytes = number; }

void Progress::takeTick(Progress* self) {
    char line[100];
    std::snprintf(line, sizeof line, "counting: %d of %u files, %.1f of %.1f MB", self->files,
                  self->allFiles, self->megabytes, self->allMegabytes);
    self->show(line);
}

void Progress::show(const std::string& text) {
    if (!onTerminal)
        return;
    clear();
    std::fputs(text.c_str(), stderr);
    std::fflush(stderr);
    lineShown = true;
}

void Progress::showCounting(unsigned int filesToCount, double megabytesToCount) {
    allFiles = filesToCount;
    allMegabytes = megabytesToCount;
    files = 0;
    megabytes = 0;
    takeTick(this);
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

CountReport::CountReport(Progress& progress)
    : files(addOutput("files", fxDT_int)),
      megabytes(addOutput("megabytes", fxDT_double)),
      timer(1),
      advanced(Clock::now()) {
    connect("files", &progress, "files");
    connect("megabytes", &progress, "megabytes");
    timer.connect("tick", &progress, "tick");
    timer.setInterval(interval);
    if (progress.isShown())
        timer.startTimer();
}

// The tick is queued behind the numbers, so that the line shows these.
void CountReport::update(unsigned int filesCounted, std::uint64_t bytesCounted) {
    if (!timer.isActive())
        return;
    sendInt(files, static_cast<int>(filesCounted), fxSendQueued);
    sendDouble(megabytes, static_cast<double>(bytesCounted) / megabyte, fxSendQueued);
    const Clock::time_point now = Clock::now();
    fxTimer::alarm(std::chrono::duration<float>(now - advanced).count());
    advanced = now;
    fx_theEventHandler->distributeEvents();
}
