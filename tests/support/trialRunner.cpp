#include "tests/support/trialRunner.h"

#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "tests/support/dying.h"

#ifdef __SANITIZE_ADDRESS__
// The sanitizer writes its shadow, an eighth, of memory that is only reserved.
const long trialMemoryLimit = (64 + 512) * 1024;
#else
const long trialMemoryLimit = 64 * 1024;
#endif

namespace {
const unsigned int mostFailures = 10;
const int exceptionStatus = 99;

// What a child tells its parent.
struct Progress {
    unsigned int next;  // the trial under way, or to make next
    unsigned int values;
    unsigned int nulls;
};

class Runner {
public:
    Runner(const std::function<bool(unsigned int)>& t, unsigned int limit)
        : trial(t), seconds(limit), output(std::tmpfile()) {
        void* memory = ::mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE,
                              MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED || !output)
            std::abort();
        progress = static_cast<Progress*>(memory);
    }
    Runner(const Runner&) = delete;
    Runner& operator=(const Runner&) = delete;
    ~Runner() {
        ::munmap(progress, sizeof(Progress));
        std::fclose(output);
    }

    // Makes the trials from `first` to before `end` in a child.
    void run(unsigned int first, unsigned int end) {
        *progress = Progress{first, 0, 0};
        std::rewind(output);
        if (::ftruncate(::fileno(output), 0) != 0)
            std::abort();
        std::fflush(nullptr);
        const pid_t child = ::fork();
        if (child == 0)
            makeTrials(end);
        rusage usage;
        if (child < 0 || ::wait4(child, &status, 0, &usage) != child)
            std::abort();
        resident = usage.ru_maxrss;
    }

    // What the child wrote on standard error, except that the sanitizer could
    // not allocate something, which is what null results are for.
    std::string message() const {
        std::string text;
        std::rewind(output);
        for (int c = std::getc(output); c != EOF; c = std::getc(output))
            text += static_cast<char>(c);
        const char* const warning = "WARNING: AddressSanitizer failed to allocate";
        for (std::size_t at = text.find(warning); at != std::string::npos; at = text.find(warning))
            text.erase(text.rfind('\n', at) + 1, text.find('\n', at) - text.rfind('\n', at));
        return text;
    }

    std::string end() const {
        if (WIFSIGNALED(status))
            return "died by signal " + std::to_string(WTERMSIG(status));
        if (WEXITSTATUS(status) == exceptionStatus)
            return "threw an exception";
        return "exited with " + std::to_string(WEXITSTATUS(status));
    }

    Progress* progress;
    int status = 0;     // of the last child
    long resident = 0;  // KiB, of the last child at its largest

private:
    [[noreturn]] void makeTrials(unsigned int end) {
        const rlimit noCore = {0, 0};
        ::setrlimit(RLIMIT_CORE, &noCore);
        letEndUs(SIGABRT);
        std::signal(SIGALRM, SIG_DFL);
        std::signal(SIGPROF, SIG_DFL);
        ::dup2(::fileno(output), STDERR_FILENO);
        try {
            for (; progress->next < end; ++progress->next) {
                limitTime();
                ++(trial(progress->next) ? progress->values : progress->nulls);
            }
        } catch (...) {
            ::_exit(exceptionStatus);
        }
        ::_exit(0);  // whatever was left allocated is meant to be
    }

    // Processor time is what counts on a busy machine; a trial that only waits
    // is ended by the clock.
    void limitTime() const {
        const itimerval limit = {{0, 0}, {static_cast<time_t>(seconds), 0}};
        ::setitimer(ITIMER_PROF, &limit, nullptr);
        ::alarm(seconds * 20);
    }

    const std::function<bool(unsigned int)>& trial;
    const unsigned int seconds;
    std::FILE* output;
};
}  // namespace

TrialReport runTrials(unsigned int n, const std::function<bool(unsigned int)>& trial,
                      const std::function<bool(const std::string&)>& isStated, unsigned int batch,
                      unsigned int seconds) {
    TrialReport report;
    Runner runner(trial, seconds);
    runner.run(0, 0);
    const long idle = runner.resident;
    unsigned int next = 0;
    while (next < n && report.failures.size() < mostFailures) {
        runner.run(next, n - next > batch ? next + batch : n);
        const Progress& progress = *runner.progress;
        const std::string name = "trial " + std::to_string(progress.next) + " ";
        report.values += progress.values;
        report.nulls += progress.nulls;
        if (runner.resident - idle > report.growth)
            report.growth = runner.resident - idle;
        next = progress.next;
        if (runner.status != 0) {
            const std::string message = runner.message();
            if (WIFSIGNALED(runner.status) && WTERMSIG(runner.status) == SIGABRT &&
                isStated(message))
                ++report.fatals;
            else
                report.failures.push_back(name + runner.end() + ": " + message);
            ++next;
        }
        if (runner.resident - idle > trialMemoryLimit)
            report.failures.push_back(name + "or one of its batch made " +
                                      std::to_string(runner.resident - idle) + " KiB resident");
    }
    return report;
}
