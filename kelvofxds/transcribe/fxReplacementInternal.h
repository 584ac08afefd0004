// fxReplacementInternal.h - the new content of a file, until it is in its place.
#pragma once

#include <sys/stat.h>

#include <climits>

#include "kelvofxds/transcribe/fxDescriptorInternal.h"
#include "kelvofxds/transcribe/fxFailureInternal.h"

/// Puts a new file in the place of an old one, in one step: whoever opens the path
/// finds the old content or the new one, whole.
///
/// The new file stands beside the old one, as ".NAME.saving-1A2B3C4D" with as much
/// of its name as there is room for. Until it is in its place its destructor removes
/// it; a process that is killed leaves it there. Every operation returns false when
/// it fails, and says why in the fxFailure; the old file is then as it was.
class fxReplacement {
public:
    explicit fxReplacement(fxFailure& f)
        : failure(f), target(), made(), oldName(), old(), current(), hasOld(false) {}
    fxReplacement(const fxReplacement&) = delete;
    fxReplacement& operator=(const fxReplacement&) = delete;
    ~fxReplacement() {
        file.close();
        drop(made);
        drop(oldName);
    }

    /// Makes the new file for `path`; what that leads to, if it is a link.
    bool begin(const char* path);
    /// What the new content is written to.
    fxDescriptor& content() { return file; }
    /// Puts the new file in its place when it is on the disk. All has been written.
    bool finish();

private:
    bool look(const char* path);
    bool followLinks();
    bool openDirectory();
    bool make();
    bool keepPermissions();
    bool putInPlace();
    bool syncDirectory();
    bool takeBack();
    void keepOld();
    static void drop(char* path);
    unsigned int nameAt() const;
    bool failed(int error, const char* what);

    fxFailure& failure;
    fxDescriptor file;
    fxDescriptor directory;  // closed if it may not be read
    char target[PATH_MAX];   // the path; no link
    char made[PATH_MAX];     // the new file's path; empty if there is none
    char oldName[PATH_MAX];  // a second name of the old file; empty if it has none
    struct stat64 old;       // the old file's
    struct stat64 current;   // the new file's
    bool hasOld;             // there is an old file
};
