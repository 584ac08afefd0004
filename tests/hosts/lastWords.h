// lastWords.h - what a process says before it aborts.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <cstring>

/// What the child that calls a function writes to standard error before it aborts; empty if it does
/// not abort. Nothing is allocated, since the host may refuse it.
///
/// The child takes the signal itself: an emulator in which a process dies of one would add words of
/// its own.
class LastWords {
public:
    template <class Function>
    explicit LastWords(Function function) {
        int ends[2];
        if (::pipe(ends) != 0)
            return;
        const pid_t child = ::fork();
        if (child == 0) {
            std::signal(SIGABRT, [](int) { ::_exit(aborted); });
            ::dup2(ends[1], STDERR_FILENO);
            function();
            ::_exit(0);
        }
        ::close(ends[1]);
        std::size_t size = 0;  // a message comes in pieces
        for (ssize_t n = 1; n > 0; size += static_cast<std::size_t>(n > 0 ? n : 0))
            n = ::read(ends[0], text + size, sizeof text - 1 - size);
        ::close(ends[0]);
        int status = 0;
        ::waitpid(child, &status, 0);
        text[WIFEXITED(status) && WEXITSTATUS(status) == aborted ? size : 0] = '\0';
    }

    bool are(const char* expected) const { return std::strcmp(text, expected) == 0; }

    char text[256] = "";

private:
    static const int aborted = 128 + SIGABRT;  // as a shell would say it
};
