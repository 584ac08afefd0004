// writeCounters.cpp - part of the library in the coverage preset alone: what processes count that
// end without the library's destructors. The tests of how programs end run in such processes.
//
// A child counts in the memory of its parent, so that however it ends, nothing is lost; the process
// that has loaded the library writes the counters when it ends, also by a signal or by _exit.

#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <cstring>

extern "C" {
void __gcov_dump();
extern char counters_begin[];  // counters.ld
extern char counters_end[];
}

namespace {

pid_t loader;  // the process that has loaded the library

// A program may have taken from itself what is needed to write files.
void liftLimits() {
    const decltype(RLIMIT_AS) limits[] = {RLIMIT_AS, RLIMIT_FSIZE, RLIMIT_NOFILE};
    for (const auto resource : limits) {
        rlimit limit;
        if (::getrlimit(resource, &limit) == 0) {
            limit.rlim_cur = limit.rlim_max;
            ::setrlimit(resource, &limit);
        }
    }
}

void writeCounters() {
    if (::getpid() != loader)
        return;
    liftLimits();
    __gcov_dump();
}

// The signal is back at its default, and held back until this returns.
void dying(int signal) {
    writeCounters();
    ::raise(signal);
}

const int deadly[] = {SIGABRT, SIGFPE, SIGSEGV, SIGILL, SIGBUS, SIGPIPE, SIGTERM};

__attribute__((constructor)) void share() {
    loader = ::getpid();
    const auto size = static_cast<std::size_t>(counters_end - counters_begin);
    void* const shared =
        ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED)
        std::abort();
    std::memcpy(shared, counters_begin, size);
    if (::mremap(shared, size, size, MREMAP_MAYMOVE | MREMAP_FIXED, counters_begin) == MAP_FAILED)
        std::abort();

    // A program that looks after one of them itself sets its own handler later.
    for (const int signal : deadly) {
        struct sigaction now;
        if (::sigaction(signal, nullptr, &now) != 0 || now.sa_handler != SIG_DFL)
            continue;
        now.sa_handler = dying;
        now.sa_flags = static_cast<int>(SA_RESETHAND);
        ::sigaction(signal, &now, nullptr);
    }
}

// The library may be unloaded. Its counters are written after this.
__attribute__((destructor(101))) void stopWatching() {
    for (const int signal : deadly) {
        struct sigaction now;
        if (::sigaction(signal, nullptr, &now) == 0 && now.sa_handler == dying)
            std::signal(signal, SIG_DFL);
    }
    liftLimits();
}

}  // namespace

// Programs find this one before the system's.
extern "C" __attribute__((visibility("default"))) void _exit(int status) {
    writeCounters();
    ::syscall(SYS_exit_group, status);
    __builtin_unreachable();
}
