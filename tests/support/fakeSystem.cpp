#include "tests/support/fakeSystem.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace {
FakeSystem* installed = nullptr;

SelectSet contentsOf(const fd_set* set) {
    SelectSet contents = {set != nullptr, set, {}};
    for (int d = 0; set && d < FD_SETSIZE; ++d) {
        if (FD_ISSET(d, set))
            contents.descriptors.push_back(d);
    }
    return contents;
}

void overwrite(fd_set* set, const std::vector<int>& descriptors) {
    if (!set)
        return;
    FD_ZERO(set);
    for (const int d : descriptors)
        FD_SET(d, set);
}

// The definition that this file's would hide.
template <class Function>
Function systemFunction(const char* name) {
    void* found = ::dlsym(RTLD_NEXT, name);
    if (!found)
        std::abort();
    return reinterpret_cast<Function>(found);
}
}  // namespace

FakeSystem::FakeSystem() {
    if (installed)
        std::abort();
    installed = this;
}

FakeSystem::~FakeSystem() { installed = nullptr; }

FakeSystem* FakeSystem::current() { return installed; }

void FakeSystem::note(const char* call) {
    if (log)
        *log += call;
}

int FakeSystem::select(int nfds, fd_set* read, fd_set* write, fd_set* exception, timeval* timeout) {
    note("select ");
    selects.push_back({nfds, contentsOf(read), contentsOf(write), contentsOf(exception),
                       timeout != nullptr, timeout ? timeout->tv_sec : 0,
                       timeout ? timeout->tv_usec : 0});
    SelectAnswer answer;
    if (!answers.empty()) {
        answer = answers.front();
        answers.pop_front();
    }
    if (answer.result >= 0) {
        overwrite(read, answer.read);
        overwrite(write, answer.write);
        overwrite(exception, answer.exception);
    }
    now = static_cast<clock_t>(static_cast<unsigned long>(now) + answer.ticks);
    if (answer.meanwhile)
        answer.meanwhile();
    if (answer.error)
        errno = answer.error;
    return answer.result;
}

clock_t FakeSystem::times() {
    note("times ");
    ++timesCalls;
    if (timesError)
        errno = timesError;
    return now;
}

int FakeSystem::close(int fd) {
    note("close ");
    closed.push_back(fd);
    return 0;
}

// The program's own definitions come before the C library's, also for the
// calls that shared libraries make.

extern "C" {

int select(int nfds, fd_set* read, fd_set* write, fd_set* exception, timeval* timeout) {
    if (installed)
        return installed->select(nfds, read, write, exception, timeout);
    static const auto real = systemFunction<decltype(&::select)>("select");
    return real(nfds, read, write, exception, timeout);
}

clock_t times(tms* buffer) noexcept {
    if (installed)
        return installed->times();
    static const auto real = systemFunction<decltype(&::times)>("times");
    return real(buffer);
}

int close(int fd) {
    if (installed)
        return installed->close(fd);
    static const auto real = systemFunction<decltype(&::close)>("close");
    return real(fd);
}

}  // extern "C"
