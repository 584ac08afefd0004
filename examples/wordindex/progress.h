// progress.h - what the program says while it works, on standard error.
#pragma once

#include <chrono>
#include <string>

/// One line that is rewritten a few times a second while standard error is a terminal, and that is
/// gone when the object is.
class Progress {
public:
    Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    /// True when it is time for another show(); cheap.
    bool isDue();
    /// Replaces the line by `text`.
    void show(const std::string& text);

    /// Removes the line.
    static void clear();
    /// Writes "wordindex: `what`: `why`" as a line of its own to standard error.
    static void complain(const std::string& what, const std::string& why);

private:
    bool onTerminal;
    std::chrono::steady_clock::time_point next;  // when the line is due
};
