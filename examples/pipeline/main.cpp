// pipeline - sends the lines of files, or of standard input, through objects that count them.
//
//   LineReader "bytes" ----int----------> "bytes"   LineCounter
//   LineReader "line" -----text---------> "line"    LineCounter
//                      \---text to int--> "number"  NumberSum
//   LineCounter "total" ---int to text--> "lines"   Meter
//   LineCounter "length" --int to text--> "longest" Meter
//   fxTimer "tick" ------------void-----> "tick"    Meter
//   LineReader "done" ---------void-----> "done"    Pipeline

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include "examples/pipeline/lineReader.h"
#include "examples/pipeline/stages.h"
#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/objects/fxApplication.h"
#include "kelvofxds/objects/fxExec.h"
#include "kelvofxds/objects/fxTimer.h"
#include "kelvofxds/values/fxData.h"

namespace {

const float meterInterval = 0.2F;  // seconds

void complain(const char* source) {
    std::fprintf(stderr, "pipeline: %s: %s\n", source, std::strerror(errno));
}

// Copies the file at `path` to `out`, as cat would. Runs in a process of its own, so that the
// descriptor which the loop waits for is a pipe.
int copyFile(const char* path, int in, int out) {
    char bytes[65536];
    for (;;) {
        const ssize_t n = ::read(in, bytes, sizeof bytes);
        if (n == 0)
            return 0;
        if (n < 0) {
            complain(path);
            return 1;
        }
        for (ssize_t written = 0; written < n;) {
            const ssize_t step = ::write(out, bytes + written, static_cast<size_t>(n - written));
            if (step < 0)
                return 1;
            written += step;
        }
    }
}

// The reading end of a pipe through which the file's bytes come; -1 after a complaint.
int pipeFrom(const char* path) {
    int ends[2];
    const int in = ::open(path, O_RDONLY | O_CLOEXEC);
    if (in < 0 || ::pipe(ends) != 0) {
        complain(path);
        if (in >= 0)
            ::close(in);
        return -1;
    }
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(ends[0]);
        ::_exit(copyFile(path, in, ends[1]));
    }
    if (child < 0) {
        complain(path);
        ::close(ends[0]);
    }
    ::close(in);
    ::close(ends[1]);
    return child < 0 ? -1 : ends[0];
}

// A descriptor of standard input for a reader to close; -1 after a complaint.
int standardInput() {
    const int fd = ::dup(STDIN_FILENO);
    if (fd < 0)
        complain("standard input");
    return fd;
}

/// Reads its sources one after another and closes when the last is done.
class Pipeline : public fxApplication {
public:
    Pipeline();

    void initialize(int argc, char** argv) override;
    void open() override;

    /// Prints the result and returns the exit status.
    int report() const;

private:
    static void sourceIsDone(Pipeline* self);
    void readNext();

    std::vector<const char*> paths;  // sources to come, the last one first; null is standard input
    unsigned int sources;
    unsigned int failures;
    std::unique_ptr<LineReader> reader;
    LineCounter counter;
    NumberSum sum;
    Meter meter;
    fxTimer timer;
    double startTime;
};

Pipeline::Pipeline() : sources(0), failures(0), timer(1), startTime(secondsNow()) {
    addInput("done", fxDT_void, this, reinterpret_cast<void (*)()>(sourceIsDone), 0);
    counter.connect("total", &meter, "lines");
    counter.connect("length", &meter, "longest");
    timer.connect("tick", &meter, "tick");
}

void Pipeline::initialize(int argc, char** argv) {
    for (int i = argc - 1; i > 0; --i)
        paths.push_back(argv[i]);
    if (paths.empty())
        paths.push_back(nullptr);
}

void Pipeline::open() {
    fxApplication::open();
    timer.setInterval(meterInterval);
    timer.startTimer();
    readNext();
}

void Pipeline::readNext() {
    reader.reset();
    while (!reader && !paths.empty()) {
        const char* path = paths.back();
        paths.pop_back();
        const int fd = path ? pipeFrom(path) : standardInput();
        if (fd < 0) {
            ++failures;
            continue;
        }
        ++sources;
        reader = std::make_unique<LineReader>(fd);
        reader->connect("bytes", &counter, "bytes");
        reader->connect("line", &counter, "line");
        reader->connect("line", &sum, "number");
        reader->connect("done", this, "done");
    }
    if (!reader)
        close();
}

void Pipeline::sourceIsDone(Pipeline* self) {
    self->reader.reset();  // before its child is waited for, which may still be writing
    int status = 0;
    if (::wait(&status) > 0 && status != 0)
        ++self->failures;
    self->readNext();
}

int Pipeline::report() const {
    const double seconds = secondsNow() - startTime;
    const auto lines = static_cast<unsigned long long>(counter.lines);
    std::printf("bytes            %llu\n", static_cast<unsigned long long>(counter.bytes));
    std::printf("leading numbers  %lld\n", static_cast<long long>(sum.sum));
    std::printf("seconds          %.3f\n", seconds);
    std::printf("pipeline: %llu line%s from %u source%s\n", lines, lines == 1 ? "" : "s", sources,
                sources == 1 ? "" : "s");
    return failures == 0 ? 0 : 1;
}

// The loop charges timers for the time it waits, not for the time its handlers take. A program that
// is kept busy for long charges the rest itself: this is called after the handlers of each pass.
double lastPass = 0;
double busySeconds = 0;

void chargeTimers() {
    const double tick = 0.01;  // what the loop measures in
    const double now = secondsNow();
    const double pass = now - lastPass;
    lastPass = now;
    if (pass < tick)
        busySeconds += pass;
    if (busySeconds < tick)
        return;
    fxTimer::alarm(static_cast<float>(busySeconds));
    busySeconds = 0;
}

}  // namespace

int main(int argc, char** argv) {
    fxInitializeToolkit();
    int status;
    {
        Pipeline pipeline;
        lastPass = secondsNow();
        fx_theExecutive->addPostSelectFunc(chargeTimers);
        fx_theExecutive->initialize(argc, argv);
        fx_theExecutive->open();
        if (pipeline.isOpen())
            fx_theExecutive->loop();
        fflush(stderr);
        status = pipeline.report();
    }
    fxCleanupGlobalOrderings();
    return status;
}
