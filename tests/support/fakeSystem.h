// fakeSystem.h - select, times and close as a test wants them.
#pragma once

#include <sys/select.h>
#include <sys/times.h>

#include <deque>
#include <functional>
#include <string>
#include <utility>
#include <vector>

/// A set that a call of select was given.
struct SelectSet {
    bool given;                    ///< False for a null pointer.
    const fd_set* address;         ///< Where it was; only for comparisons.
    std::vector<int> descriptors;  ///< All of them, ascending.
};

/// What a call of select was given.
struct SelectCall {
    int nfds;
    SelectSet read;
    SelectSet write;
    SelectSet exception;
    bool hasTimeout;  ///< False for a null pointer, which waits forever.
    long seconds;
    long microseconds;
};

/// What a call of select does. One that fails leaves the sets alone, as the
/// system does; any other overwrites those it was given.
struct SelectAnswer {
    int result = 0;
    std::vector<int> read = {};  ///< Put into the sets, if they were given.
    std::vector<int> write = {};
    std::vector<int> exception = {};
    unsigned long ticks = 0;          ///< By which the clock advances meanwhile.
    int error = 0;                    ///< Stored in errno unless it is 0.
    std::function<void()> meanwhile;  ///< Called before it returns.
};

namespace loopTest {

/// As many descriptors are ready as the sets have together.
inline SelectAnswer ready(std::vector<int> read, std::vector<int> write = {},
                          std::vector<int> exception = {}) {
    SelectAnswer answer;
    answer.result = static_cast<int>(read.size() + write.size() + exception.size());
    answer.read = std::move(read);
    answer.write = std::move(write);
    answer.exception = std::move(exception);
    return answer;
}

/// Nothing is ready; `ticks` passed.
inline SelectAnswer timedOut(unsigned long ticks = 0) {
    SelectAnswer answer;
    answer.ticks = ticks;
    return answer;
}

/// The call fails with `error` after `ticks`.
inline SelectAnswer failure(int error, unsigned long ticks = 0) {
    SelectAnswer answer;
    answer.result = -1;
    answer.error = error;
    answer.ticks = ticks;
    return answer;
}

/// `answer`, but the clock advances by `ticks`.
inline SelectAnswer after(unsigned long ticks, SelectAnswer answer) {
    answer.ticks = ticks;
    return answer;
}

}  // namespace loopTest

/// While one lives, every call of select, times and close that goes through the
/// dynamic linker, the library's included, ends here and none reaches the
/// system. Without one the calls are passed on. One at a time.
class FakeSystem {
public:
    FakeSystem();
    FakeSystem(const FakeSystem&) = delete;
    FakeSystem& operator=(const FakeSystem&) = delete;
    ~FakeSystem();

    /// The one that lives, or null.
    static FakeSystem* current();

    std::deque<SelectAnswer> answers;  ///< For the calls to come; then a time-out at once.
    std::vector<SelectCall> selects;   ///< The calls so far.
    clock_t now = 0;                   ///< What times returns.
    unsigned int timesCalls = 0;
    int timesError = 0;          ///< Stored in errno by times unless it is 0.
    std::vector<int> closed;     ///< The arguments of close so far.
    std::string* log = nullptr;  ///< Gets "select ", "times " and "close ", in order.

    int select(int nfds, fd_set* read, fd_set* write, fd_set* exception, timeval* timeout);
    clock_t times();
    int close(int fd);

private:
    void note(const char* call);
};
