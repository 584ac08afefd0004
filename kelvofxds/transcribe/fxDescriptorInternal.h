// fxDescriptorInternal.h - an open file of the system's.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

/// Owns a descriptor. A signal that interrupts one of its calls does no harm, and
/// of the first call that fails it keeps the reason.
class fxDescriptor {
public:
    fxDescriptor() : number(-1), reason(0) {}
    fxDescriptor(const fxDescriptor&) = delete;
    fxDescriptor& operator=(const fxDescriptor&) = delete;
    ~fxDescriptor() { close(); }

    /// As open(2). False leaves it closed.
    bool open(const char* path, int flags, mode_t mode = 0) {
        close();
        reason = 0;
        do {
            number = ::open64(path, flags | O_CLOEXEC, mode);
        } while (number < 0 && errno == EINTR);
        return number >= 0 || failed();
    }

    bool isOpen() const { return number >= 0; }
    /// For calls of other kinds.
    int get() const { return number; }
    /// The errno of the first call that has failed; 0 if none has.
    int error() const { return reason; }

    /// Waits until all that was written is on the disk.
    bool sync() {
        while (::fsync(number) != 0) {
            if (errno != EINTR)
                return failed();
        }
        return true;
    }

    /// The descriptor is gone whatever comes of it, also if a signal interrupts.
    bool close() {
        const int closing = number;
        number = -1;
        return closing < 0 || ::close(closing) == 0 || errno == EINTR || failed();
    }

    /// A standard I/O stream on it, for "r" or "w"; null if there is no memory. The
    /// descriptor stays this object's, which has to outlive the stream.
    std::FILE* stream(const char* mode) {
        cookie_io_functions_t calls = {};
        calls.read = readSome;
        calls.write = writeAll;
        std::FILE* made = ::fopencookie(this, mode, calls);
        if (!made)
            failed();
        return made;
    }

private:
    bool failed() {
        if (reason == 0)
            reason = errno;
        return false;
    }

    static ssize_t readSome(void* descriptor, char* bytes, std::size_t n) {
        fxDescriptor& self = *static_cast<fxDescriptor*>(descriptor);
        for (;;) {
            const ssize_t got = ::read(self.number, bytes, n);
            if (got >= 0)
                return got;
            if (errno != EINTR)
                return self.failed(), -1;
        }
    }

    // Returns 0 on failure, which the C library asks for in place of -1.
    static ssize_t writeAll(void* descriptor, const char* bytes, std::size_t n) {
        fxDescriptor& self = *static_cast<fxDescriptor*>(descriptor);
        for (std::size_t done = 0; done < n;) {
            const ssize_t taken = ::write(self.number, bytes + done, n - done);
            if (taken > 0)
                done += static_cast<std::size_t>(taken);
            else if (taken == 0 || errno != EINTR)
                return taken == 0 ? errno = ENOSPC : 0, self.failed(), 0;
        }
        return static_cast<ssize_t>(n);
    }

    int number;  // owned; -1 if it is closed
    int reason;  // errno of the first failure
};
