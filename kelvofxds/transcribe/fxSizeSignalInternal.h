// fxSizeSignalInternal.h - writing beyond the limit of a file's size.
#pragma once

#include <cerrno>
#include <csignal>
#include <ctime>

/// While it lives, a write beyond the limit that the process has for files
/// (RLIMIT_FSIZE) fails with EFBIG, and does not also end the process by SIGXFSZ.
class fxSizeSignal {
public:
    fxSizeSignal() : set(), wasPending(false), wasBlocked(false) {
        sigset_t before;
        ::sigemptyset(&before);
        ::sigpending(&before);
        wasPending = ::sigismember(&before, SIGXFSZ) == 1;
        ::sigemptyset(&set);
        ::sigaddset(&set, SIGXFSZ);
        ::pthread_sigmask(SIG_BLOCK, &set, &before);
        wasBlocked = ::sigismember(&before, SIGXFSZ) == 1;
    }
    fxSizeSignal(const fxSizeSignal&) = delete;
    fxSizeSignal& operator=(const fxSizeSignal&) = delete;
    ~fxSizeSignal() {
        const struct timespec now = {};
        while (!wasPending && ::sigtimedwait(&set, nullptr, &now) < 0 && errno == EINTR) {
        }
        if (!wasBlocked)
            ::pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
    }

private:
    sigset_t set;     // SIGXFSZ
    bool wasPending;  // before it began: somebody else's
    bool wasBlocked;  // before it began
};
