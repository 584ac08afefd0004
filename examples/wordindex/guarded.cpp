#include "examples/wordindex/guarded.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "examples/wordindex/progress.h"

namespace {
const std::size_t longestMessage = 200;

std::string readAll(int fd) {
    std::string text;
    char bytes[4096];
    ssize_t n;
    while ((n = ::read(fd, bytes, sizeof bytes)) > 0 || (n < 0 && errno == EINTR)) {
        if (n > 0 && text.size() < 64 * sizeof bytes)
            text.append(bytes, static_cast<std::size_t>(n));
    }
    return text;
}

// What was said, as one line that is fit to be shown: it may quote the damaged file.
std::string oneLine(std::string text) {
    while (!text.empty() && text.back() == '\n')
        text.pop_back();
    text = text.substr(0, longestMessage);
    for (char& c : text) {
        if (c < ' ' || c > '~')
            c = '?';
    }
    return text;
}

[[noreturn]] void runChild(const std::function<int()>& task, int errorPipe) {
    ::dup2(errorPipe, STDERR_FILENO);
    ::close(errorPipe);
    const int result = task();
    std::fflush(stdout);
    ::_exit(result);
}

int noProcess(int error) {
    Progress::complain("no process to read in", std::strerror(error));
    return 1;
}

int statusOf(pid_t child) {
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}
}  // namespace

int runGuarded(const std::function<int()>& task,
               const std::function<void(const std::string&)>& onDeath) {
    int ends[2];
    if (::pipe(ends) != 0)
        return noProcess(errno);
    std::fflush(stdout);
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(ends[0]);
        runChild(task, ends[1]);
    }
    const int forkError = errno;
    ::close(ends[1]);
    const std::string said = child > 0 ? readAll(ends[0]) : "";
    ::close(ends[0]);
    if (child < 0)
        return noProcess(forkError);

    const int status = statusOf(child);
    if (WIFEXITED(status)) {
        std::fputs(said.c_str(), stderr);
        return WEXITSTATUS(status);
    }
    const std::string line = oneLine(said);
    onDeath(!line.empty() ? line : ::strsignal(WTERMSIG(status)));
    return 1;
}
