// failingCalls.cpp - preloaded into a program, fails one of its system calls.
//
// FAIL_CALL=fsync FAIL_AT=2 FAIL_WITH=5 lets the second call of fsync fail with
// errno 5 (EIO), after "failed fsync" has been written to standard error. Calls
// that make or end a descriptor of a file count when the file is in FAIL_BELOW.

// Its functions cannot be defined beside the C library's own inline definitions of them.
#undef _FORTIFY_SOURCE

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {
template <class Function>
Function* systemFunction(const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

const char* setting(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

// Whether this call of `name` is the one.
bool fails(const char* name) {
    static int calls = 0;
    if (std::strcmp(setting("FAIL_CALL"), name) != 0 || ++calls != std::atoi(setting("FAIL_AT")))
        return false;
    std::fprintf(stderr, "failed %s\n", name);
    errno = std::atoi(setting("FAIL_WITH"));
    return true;
}

bool isBelow(const char* path) {
    const char* const folder = setting("FAIL_BELOW");
    return std::strncmp(path, folder, std::strlen(folder)) == 0;
}

bool isBelow(int fd) {
    char link[40];
    char path[PATH_MAX] = "";
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", fd);
    return ::readlink(link, path, sizeof path - 1) > 0 && isBelow(path);
}
}  // namespace

extern "C" {

int open64(const char* path, int flags, ...) {
    static auto* const system = systemFunction<int(const char*, int, ...)>("open64");
    std::va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = va_arg(arguments, mode_t);
    va_end(arguments);
    return isBelow(path) && fails("open64") ? -1 : system(path, flags, mode);
}

ssize_t write(int fd, const void* bytes, size_t n) {
    static auto* const system = systemFunction<ssize_t(int, const void*, size_t)>("write");
    return isBelow(fd) && fails("write") ? -1 : system(fd, bytes, n);
}

ssize_t read(int fd, void* bytes, size_t n) {
    static auto* const system = systemFunction<ssize_t(int, void*, size_t)>("read");
    return isBelow(fd) && fails("read") ? -1 : system(fd, bytes, n);
}

// The descriptor is gone all the same, as the system's close has it.
int close(int fd) {
    static auto* const system = systemFunction<int(int)>("close");
    const bool isOne = isBelow(fd) && fails("close");
    const int error = errno;
    const int result = system(fd);
    errno = isOne ? error : errno;
    return isOne ? -1 : result;
}

int fsync(int fd) {
    static auto* const system = systemFunction<int(int)>("fsync");
    return fails("fsync") ? -1 : system(fd);
}

int rename(const char* from, const char* to) noexcept {
    static auto* const system = systemFunction<int(const char*, const char*)>("rename");
    return fails("rename") ? -1 : system(from, to);
}

int link(const char* from, const char* to) noexcept {
    static auto* const system = systemFunction<int(const char*, const char*)>("link");
    // As a file system on which a file has one name.
    if (std::strcmp(setting("FAIL_LINKS"), "all") == 0)
        return errno = EPERM, -1;
    return fails("link") ? -1 : system(from, to);
}

int fchmod(int fd, mode_t mode) noexcept {
    static auto* const system = systemFunction<int(int, mode_t)>("fchmod");
    return fails("fchmod") ? -1 : system(fd, mode);
}

int fchown(int fd, uid_t owner, gid_t group) noexcept {
    static auto* const system = systemFunction<int(int, uid_t, gid_t)>("fchown");
    return fails("fchown") ? -1 : system(fd, owner, group);
}

ssize_t readlink(const char* path, char* target, size_t n) noexcept {
    static auto* const system = systemFunction<ssize_t(const char*, char*, size_t)>("readlink");
    return isBelow(path) && fails("readlink") ? -1 : system(path, target, n);
}

int stat64(const char* path, struct stat64* status) noexcept {
    static auto* const system = systemFunction<int(const char*, struct stat64*)>("stat64");
    return isBelow(path) && fails("stat64") ? -1 : system(path, status);
}

int lstat64(const char* path, struct stat64* status) noexcept {
    static auto* const system = systemFunction<int(const char*, struct stat64*)>("lstat64");
    return isBelow(path) && fails("lstat64") ? -1 : system(path, status);
}

int fstat64(int fd, struct stat64* status) noexcept {
    static auto* const system = systemFunction<int(int, struct stat64*)>("fstat64");
    return isBelow(fd) && fails("fstat64") ? -1 : system(fd, status);
}

FILE* fopencookie(void* cookie, const char* mode, cookie_io_functions_t calls) noexcept {
    static auto* const system =
        systemFunction<FILE*(void*, const char*, cookie_io_functions_t)>("fopencookie");
    return fails("fopencookie") ? nullptr : system(cookie, mode, calls);
}

}  // extern "C"
