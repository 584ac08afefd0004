// inChild.h - running a piece of a test in a process of its own.
#pragma once

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>
#include <string>

#include <gtest/gtest.h>

/// What `work` returns in a child process, which may change what holds for a whole
/// process; or how the child has died.
inline std::string inChild(const std::function<std::string()>& work) {
    int ends[2];
    EXPECT_EQ(0, ::pipe(ends));
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(ends[0]);
        const std::string result = work();
        const char* at = result.data();
        for (std::size_t left = result.size(); left != 0;) {
            const ssize_t n = ::write(ends[1], at, left);
            if (n <= 0)
                ::_exit(1);
            at += n;
            left -= static_cast<std::size_t>(n);
        }
        ::_exit(0);
    }
    ::close(ends[1]);
    std::string result;
    char bytes[1000];
    for (ssize_t n; (n = ::read(ends[0], bytes, sizeof bytes)) > 0;)
        result.append(bytes, static_cast<std::size_t>(n));
    ::close(ends[0]);
    int status = 0;
    EXPECT_EQ(child, ::waitpid(child, &status, 0));
    if (WIFSIGNALED(status))
        return "ended by signal " + std::to_string(WTERMSIG(status));
    return result;
}

/// From now on this process opens no descriptor of this number or a greater one.
inline void limitDescriptors(unsigned int number) {
    rlimit limit;
    EXPECT_EQ(0, ::getrlimit(RLIMIT_NOFILE, &limit));
    limit.rlim_cur = number;
    EXPECT_EQ(0, ::setrlimit(RLIMIT_NOFILE, &limit));
}
