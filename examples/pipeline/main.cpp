// pipeline - sends the lines of files, or of standard input, through objects that count them.
//
//   LineReader "bytes" ----int----------> "bytes"   LineCounter
//   LineReader "line" -----text---------> "line"    LineCounter
//                      \---text to int--> "number"  NumberSum
//   LineCounter "total" ---int to text--> "lines"   Meter
//   LineCounter "length" --int to text--> "longest" Meter
//   fxTimer "tick" ------------void-----> "tick"    Meter
//   LineReader "done" ---------void-----> "done"    Pipeline
//
// `pipeline --dot | dot -Tsvg` draws this.

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <memory>
#include <vector>

#include "examples/pipeline/lineReader.h"
#include "examples/pipeline/stages.h"
#include "kelvofxds/core/fxFatal.h"
#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/objects/fxApplication.h"
#include "kelvofxds/objects/fxExec.h"
#include "kelvofxds/objects/fxTimer.h"
#include "kelvofxds/objects/fxWiring.h"
#include "kelvofxds/str/fxStr.h"
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

// connect() ignores a name that is not there, and then nothing arrives.
void wire(fxObj& from, const char* output, fxObj& to, const char* input) {
    fxStr why;
    if (!fxTryConnect(&from, output, &to, input, &why))
        fxFatal("pipeline: %s", why.c_str());
}

/// Reads its sources one after another and closes when the last is done.
class Pipeline : public fxApplication {
public:
    Pipeline();

    void initialize(int argc, char** argv) override;
    void open() override;

    /// Prints the objects and their wiring as a graph and returns the exit status.
    int draw();
    /// Reads what the arguments name, prints the result and returns the exit status.
    int run(int argc, char** argv);

private:
    int report() const;
    void sourceIsDone();
    void readNext();
    void readFrom(int descriptor);

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
    fxAddInput(this, "done", &Pipeline::sourceIsDone);
    wire(counter, "total", meter, "lines");
    wire(counter, "length", meter, "longest");
    wire(timer, "tick", meter, "tick");
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
        readFrom(fd);
    }
    if (!reader)
        close();
}

void Pipeline::readFrom(int descriptor) {
    reader = std::make_unique<LineReader>(descriptor);
    wire(*reader, "bytes", counter, "bytes");
    wire(*reader, "line", counter, "line");
    wire(*reader, "line", sum, "number");
    wire(*reader, "done", *this, "done");
}

void Pipeline::sourceIsDone() {
    reader.reset();  // before its child is waited for, which may still be writing
    int status = 0;
    if (::wait(&status) > 0 && status != 0)
        ++failures;
    readNext();
}

int Pipeline::draw() {
    readFrom(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    fxObj* const objects[] = {reader.get(), &counter, &sum, &timer, &meter, this};
    return fxWriteDot(stdout, objects, std::size(objects)) ? 0 : 1;
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

int Pipeline::run(int argc, char** argv) {
    lastPass = secondsNow();
    fx_theExecutive->addPostSelectFunc(chargeTimers);
    fx_theExecutive->initialize(argc, argv);
    fx_theExecutive->open();
    if (isOpen())
        fx_theExecutive->loop();
    fflush(stderr);
    return report();
}

}  // namespace

int main(int argc, char** argv) {
    fxInitializeToolkit();
    int status;
    {
        Pipeline pipeline;
        const bool isDrawn = argc == 2 && std::strcmp(argv[1], "--dot") == 0;
        status = isDrawn ? pipeline.draw() : pipeline.run(argc, argv);
    }
    fxCleanupGlobalOrderings();
    return status;
}
