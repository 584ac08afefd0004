#include "kelvofxds/transcribe/fxReplacementInternal.h"

#include <ctime>

#include "kelvofxds/core/fxIndexSeedInternal.h"
#include "kelvofxds/core/fxUninterruptedInternal.h"

namespace {
const unsigned int mostLinks = 40;    // as many as the system follows
const unsigned int mostOfName = 200;  // bytes of the old name in the new one
const unsigned int mostNames = 100;   // that are tried
const mode_t permissionBits = 07777;
const mode_t modeOfNew = 0666;  // less the umask
const mode_t modeUntilKept = 0600;

bool isSame(const struct stat64& a, const struct stat64& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

bool giveTo(int fd, uid_t owner, gid_t group) {
    return fxUninterrupted(-1, [=] { return ::fchown(fd, owner, group); }) == 0;
}

// Nobody else's, most likely.
std::uint32_t randomNumber(const void* here, unsigned int attempt) {
    struct timespec now = {};
    ::clock_gettime(CLOCK_REALTIME, &now);
    const auto time = static_cast<std::uint32_t>(now.tv_nsec) ^
                      static_cast<std::uint32_t>(now.tv_sec) * 0x9E3779B1U;
    const auto process = static_cast<std::uint32_t>(::getpid()) * 0x85EBCA6BU;
    return fxIndexSeed(here).hash(time ^ process ^ attempt);
}

// How much of a name can be part of another: no character of several bytes is cut.
unsigned int partOf(const char* name) {
    unsigned int n = 0;
    while (n < mostOfName && name[n] != '\0')
        ++n;
    while (n == mostOfName && n > mostOfName - 4 && (name[n] & 0xC0) == 0x80)
        --n;
    return n;
}
}  // namespace

bool fxReplacement::failed(int error, const char* what) { return failure.set(error, "%s", what); }

bool fxReplacement::begin(const char* path) {
    return look(path) && followLinks() && openDirectory() && make();
}

bool fxReplacement::look(const char* path) {
    if (!path || path[0] == '\0')
        return failed(0, "no path is given");
    hasOld = ::stat64(path, &old) == 0;
    if (!hasOld && errno != ENOENT)
        return failed(errno, "it cannot be looked at");
    if (hasOld && S_ISDIR(old.st_mode))
        return failed(0, "it is a directory");
    if (hasOld && !S_ISREG(old.st_mode))
        return failed(0, "it is no regular file");
    if (hasOld && ::faccessat(AT_FDCWD, path, W_OK, AT_EACCESS) != 0)
        return failed(errno, "it is protected against writing");
    const std::size_t n = std::strlen(path);
    if (n >= sizeof target)
        return failed(ENAMETOOLONG, "no new file can be made beside it");
    std::memcpy(target, path, n + 1);
    return true;
}

// Index of the last name in the path.
unsigned int fxReplacement::nameAt() const {
    const char* slash = std::strrchr(target, '/');
    return slash ? static_cast<unsigned int>(slash + 1 - target) : 0;
}

bool fxReplacement::followLinks() {
    const char* const what = "the link cannot be followed";
    for (unsigned int links = 0; links < mostLinks; ++links) {
        struct stat64 status;
        if (::lstat64(target, &status) != 0)
            return (errno == ENOENT && !hasOld) || failed(errno, what);
        if (!S_ISLNK(status.st_mode))
            return !hasOld || isSame(status, old) || failed(ENOENT, what);
        char link[PATH_MAX];
        const ssize_t n = ::readlink(target, link, sizeof link);
        if (n < 0)
            return failed(errno, what);
        const unsigned int kept = link[0] == '/' ? 0 : nameAt();
        const unsigned int length = kept + static_cast<unsigned int>(n);
        if (length >= sizeof target)
            return failed(ENAMETOOLONG, what);
        std::memcpy(target + kept, link, length - kept);
        target[length] = '\0';
    }
    return failed(ELOOP, what);
}

bool fxReplacement::openDirectory() {
    const unsigned int at = nameAt();
    if (target[at] == '\0')
        return failed(0, "it names a directory");
    char path[PATH_MAX] = ".";
    if (at != 0) {
        std::memcpy(path, target, at);
        path[at] = '\0';
    }
    // In one that may be changed, but not read, files can be made all the same.
    return directory.open(path, O_RDONLY | O_DIRECTORY) || directory.error() == EACCES ||
           failure.set(directory.error(), "its directory \"%s\" cannot be opened", path);
}

bool fxReplacement::make() {
    const unsigned int at = nameAt();
    for (unsigned int attempt = 0; attempt < mostNames; ++attempt) {
        const int n = std::snprintf(
            made, sizeof made, "%.*s.%.*s.saving-%08X", static_cast<int>(at), target,
            static_cast<int>(partOf(target + at)), target + at, randomNumber(this, attempt));
        const bool fits = n > 0 && static_cast<unsigned int>(n) < sizeof made;
        // Nothing that is there is opened, nor is a link followed.
        if (fits &&
            file.open(made, O_WRONLY | O_CREAT | O_EXCL, hasOld ? modeUntilKept : modeOfNew))
            return true;
        made[0] = '\0';
        if (!fits || file.error() != EEXIST)
            return failed(fits ? file.error() : ENAMETOOLONG, "no new file can be made beside it");
    }
    return failed(EEXIST, "no new file can be made beside it");
}

// Nobody may do more with the new file than with the old one: where its owner or
// group cannot be kept, those get no more than everybody.
bool fxReplacement::keepPermissions() {
    if (::fstat64(file.get(), &current) != 0)
        return failed(errno, "the new file cannot be looked at");
    if (!hasOld)
        return true;
    mode_t mode = old.st_mode & permissionBits;
    const bool isOthers = current.st_uid != old.st_uid || current.st_gid != old.st_gid;
    if (isOthers && !giveTo(file.get(), old.st_uid, old.st_gid)) {
        const auto sameOwner = static_cast<uid_t>(-1);
        mode &= S_IRWXU | S_IRWXG | S_IRWXO;
        if (current.st_gid != old.st_gid && !giveTo(file.get(), sameOwner, old.st_gid))
            mode &= ~static_cast<mode_t>(S_IRWXG) | (mode & S_IRWXO) << 3;
    }
    if (fxUninterrupted(-1, [&] { return ::fchmod(file.get(), mode); }) == 0)
        return true;
    const int error = errno;  // some file systems have none of their own
    return (::fstat64(file.get(), &current) == 0 && (current.st_mode & permissionBits) == mode) ||
           failed(error, "the new file cannot have the permissions of the old one");
}

bool fxReplacement::finish() {
    if (!keepPermissions())
        return false;
    if (!file.sync())
        return failed(file.error(), "the new file does not get to the disk");
    if (!file.close())
        return failed(file.error(), "the new file cannot be closed");
    return putInPlace();
}

// Gives the old file a second name, by which it can be put back. Not every file
// system can, and not every file may have one.
void fxReplacement::keepOld() {
    const int n = hasOld ? std::snprintf(oldName, sizeof oldName, "%s-old", made) : 0;
    if (n <= 0 || static_cast<unsigned int>(n) >= sizeof oldName || ::link(target, oldName) != 0)
        oldName[0] = '\0';
}

bool fxReplacement::putInPlace() {
    keepOld();
    if (::rename(made, target) != 0)
        return failed(errno, "the new file cannot be put in its place");
    made[0] = '\0';
    return syncDirectory() || takeBack();
}

// A file system that cannot do this for a directory does not need it.
bool fxReplacement::syncDirectory() {
    return !directory.isOpen() || directory.sync() || directory.error() == EINVAL ||
           failed(directory.error(), "the change of its directory does not get to the disk");
}

// The new file may be gone when the power is, so the old one takes its place again,
// unless somebody else has put a third one there.
bool fxReplacement::takeBack() {
    struct stat64 status;
    const bool isOurs = ::lstat64(target, &status) == 0 && isSame(status, current);
    if (isOurs && oldName[0] != '\0' && ::rename(oldName, target) == 0) {
        oldName[0] = '\0';
        return false;
    }
    if (isOurs && !hasOld && ::unlink(target) == 0)
        return false;
    failure.add("the new file is in its place now, but may be lost with the power");
    return false;
}

void fxReplacement::drop(char* path) {
    if (path[0] != '\0')
        ::unlink(path);
    path[0] = '\0';
}
