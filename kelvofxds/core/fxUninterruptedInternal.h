// fxUninterruptedInternal.h - system calls that a signal does not end.
#pragma once

#include <cerrno>

/// What `call` returns in the end: it is made again as long as it fails because a signal has
/// interrupted it. `failure` is what it returns when it fails.
template <class Call, class Result>
auto fxUninterrupted(Result failure, Call call) {
    auto result = call();
    while (result == failure && errno == EINTR)
        result = call();
    return result;
}

/// The same of a look-up, whose null may also mean that there is nothing: errno tells, and stays
/// as it was where nothing has failed.
template <class Call>
auto fxUninterruptedLookUp(Call call) {
    const int before = errno;
    errno = 0;
    auto found = call();
    while (!found && errno == EINTR) {
        errno = 0;
        found = call();
    }
    if (errno == 0)
        errno = before;
    return found;
}
