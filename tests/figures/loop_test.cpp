// The loop under signals, and idle.

#include <sys/resource.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cmath>
#include <csignal>
#include <string>

#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/objects/fxApplication.h"
#include "kelvofxds/objects/fxExec.h"
#include "kelvofxds/objects/fxSelectHandler.h"
#include "kelvofxds/objects/fxTimer.h"
#include "kelvofxds/values/fxData.h"
#include "tests/support/figure.h"

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

double processorMilliseconds() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    const auto of = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) * 1000 + static_cast<double>(time.tv_usec) / 1000;
    };
    return of(usage.ru_utime) + of(usage.ru_stime);
}

// Counts ticks until so many seconds of the clock have gone by, then ends the loop.
class Ticks : public fxApplication {
public:
    Ticks(float interval, unsigned int duration)
        : timer(1), seconds(duration), start(Clock::now()) {
        addInput("tick", fxDT_void, this, reinterpret_cast<void (*)()>(take), 0);
        timer.connect("tick", this, "tick");
        timer.setInterval(interval);
        timer.startTimer();
    }
    void initialize(int, char**) override {}
    static void take(Ticks* self) {
        ++self->seen;
        self->took = secondsSince(self->start);
        if (self->took >= self->seconds) {
            self->timer.stopTimer();
            self->close();
        }
    }

    fxTimer timer;
    double seconds;
    Clock::time_point start;
    double took = 0;  // until the last tick
    unsigned int seen = 0;
};

// Bytes come through a pipe; nobody minds what they are.
class Bytes : public fxSelectHandler {
public:
    explicit Bytes(int descriptor) : fxSelectHandler(descriptor, 1, 0, 0) {
        fx_theExecutive->addSelectHandler(this);
    }
    ~Bytes() override { fx_theExecutive->removeSelectHandler(this); }
    void handleRead() override {
        char bytes[4096];
        const ssize_t n = ::read(fd, bytes, sizeof bytes);
        received += n > 0 ? static_cast<unsigned long>(n) : 0;
    }

    unsigned long received = 0;
};

volatile std::sig_atomic_t signals = 0;
int signalPipe[2];

// What a host does in its handler: a byte for the loop.
void onSignal(int) {
    const int error = errno;
    signals = signals + 1;
    const ssize_t n = ::write(signalPipe[1], "", 1);
    static_cast<void>(n);
    errno = error;
}

void signalEvery(long microseconds) {
    const timeval interval{0, microseconds};
    const itimerval timer{interval, interval};
    ::setitimer(ITIMER_REAL, &timer, nullptr);
}

unsigned long passes = 0;
void countPass() { ++passes; }

}  // namespace

TEST(fullFigureL1, signalsTakeNoTicksFromTheLoop) {
    fxInitializeToolkit();
    const auto seconds = static_cast<unsigned int>(figureSize(10, 1));
    ASSERT_EQ(0, ::pipe(signalPipe));
    Bytes bytes(signalPipe[0]);
    struct sigaction action {};
    action.sa_handler = onSignal;
    struct sigaction before {};
    ASSERT_EQ(0, ::sigaction(SIGALRM, &action, &before));

    const double interval = 0.1;
    Ticks ticks(static_cast<float>(interval), seconds);
    signalEvery(1000);
    fx_theExecutive->loop();
    signalEvery(0);
    ::sigaction(SIGALRM, &before, nullptr);
    for (unsigned int pass = 0; pass < 10; ++pass)  // what was on its way
        fx_theExecutive->poll(0.1F);

    // Ticks that were due, and bytes of signals, that did not come; and what the ticks that came
    // are late.
    const auto due = static_cast<unsigned int>(ticks.took / interval);
    const auto sent = static_cast<unsigned long>(signals);
    const unsigned long lost = (due > ticks.seen ? due - ticks.seen : 0) + sent - bytes.received;
    const double drift = std::fabs(ticks.took - ticks.seen * interval) * 1000;
    reportFigure("L1", std::to_string(lost) + ";" + std::to_string(std::lround(drift)) + "ms",
                 "0;100ms", lost == 0 && drift <= 100 && sent > seconds * 500UL);
    ::close(signalPipe[0]);
    ::close(signalPipe[1]);
}

TEST(fullFigureL3, idleLoopSleeps) {
    fxInitializeToolkit();
    int ends[2];
    ASSERT_EQ(0, ::pipe(ends));
    const auto seconds = static_cast<unsigned int>(figureSize(10, 1));
    {
        Bytes quiet(ends[0]);
        Ticks ticks(1.0F, seconds);
        fx_theExecutive->addPostSelectFunc(countPass);
        passes = 0;
        const double before = processorMilliseconds();
        fx_theExecutive->loop();
        const double used = processorMilliseconds() - before;
        fx_theExecutive->removePostSelectFunc(countPass);
        reportFigure("L3", std::to_string(std::lround(used)) + "ms;" + std::to_string(passes),
                     "20ms;12", used <= 20 && passes <= 12);
    }
    ::close(ends[0]);
    ::close(ends[1]);
}
