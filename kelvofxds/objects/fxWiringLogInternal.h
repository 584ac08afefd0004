// fxWiringLogInternal.h - what is told to the log of fxSetWiringLog.
#pragma once

#include <cstdio>

class fxInputChannel;
class fxObj;
class fxOutputChannel;
class fxStr;

/// Writes one line for each thing that happens to the wiring. Its members are
/// called while it is on, which is asked for first, by one look at a pointer.
///
/// Channels know neither their names nor their objects, so the log remembers both
/// of each channel that an object adds, or looks up by name, while it is on.
class fxWiringLog {
public:
    static bool isOn() { return __builtin_expect(out != nullptr, false); }

    /// An object has added a channel.
    static void added(const fxObj& owner, const char* name, const fxInputChannel* in);
    static void added(const fxObj& owner, const char* name, const fxOutputChannel* out);
    /// `operation`, "connect" or "disconnect", has looked two channels up; those it
    /// has not found are null, and so may `to` be.
    static void lookedUp(const char* operation, const fxObj& from, const char* outputName,
                         const fxOutputChannel* out, const fxObj* to, const char* inputName,
                         const fxInputChannel* in);
    /// A channel that was to be removed is not there.
    static void missedInput(const fxObj& owner, const char* name);
    static void missedOutput(const fxObj& owner, const char* name);
    /// `first` leads from an output to an input: the input itself, or a link.
    static void connected(const fxOutputChannel* out, fxInputChannel* in,
                          const fxInputChannel* first);
    static void disconnected(const fxOutputChannel* out, const fxInputChannel* in);
    /// The types of both do not convert, which ends the process.
    static void notConverted(const fxOutputChannel* out, const fxInputChannel* in);
    /// A channel ends.
    static void ends(const void* channel);

    /// Null turns the log off.
    static void setFile(std::FILE* file);

private:
    static void write(const fxStr& line);

    static std::FILE* out;  // the host's; null while the log is off
};
