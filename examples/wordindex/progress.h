// progress.h - what the program says while it works, on standard error.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "kelvofxds/objects/fxTimer.h"

/// One line that is rewritten a few times a second while standard error is a terminal, and that is
/// gone when the object is.
///
/// Inputs: "files", an int, and "megabytes", a double, how far counting has come; and "tick", no
/// value, upon which the line is rewritten. Only the newest value of each counts.
class Progress : public fxObj {
public:
    Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress() override;

    /// False when nothing is ever shown.
    bool isShown() const { return onTerminal; }
    /// Replaces the line by `text`.
    void show(const std::string& text);
    /// Replaces the line by one that says how many of `files` files and `megabytes` MB are counted,
    /// none so far.
    void showCounting(unsigned int files, double megabytes);

    /// Removes the line.
    static void clear();
    /// Writes "wordindex: `what`: `why`" as a line of its own to standard error.
    static void complain(const std::string& what, const std::string& why);

private:
    static void takeFiles(Progress* self, int number);
    static void takeMegabytes(Progress* self, double number);
    static void takeTick(Progress* self);

    bool onTerminal;
    unsigned int allFiles;
    double allMegabytes;
    int files;
    double megabytes;
};

/// Tells a Progress how far counting has come, and when to say so.
///
/// Outputs: "files" and "megabytes", as the inputs of Progress. The program has no dispatch loop,
/// so this advances the timer and has the messages delivered.
class CountReport : public fxObj {
public:
    /// Starts the timer, if `progress` is shown.
    explicit CountReport(Progress& progress);

    /// Call it now and then, but not for every word: it looks at the clock.
    void update(unsigned int filesCounted, std::uint64_t bytesCounted);

private:
    using Clock = std::chrono::steady_clock;

    fxOutputChannel* files;
    fxOutputChannel* megabytes;
    fxTimer timer;
    Clock::time_point advanced;  // when the timer was last
};
