// stages.h - what the lines of growing files run through.
#pragma once

#include <sys/types.h>

#include <string>

#include "kelvofxds/objects/fxObj.h"
#include "kelvofxds/objects/fxSelectHandler.h"
#include "kelvofxds/pattern/fxRegEx.h"

/// Reads what is appended to a file.
///
/// Input: "look", no value. Output: "line", the text of each line that has come since the last
/// look, sent at once. A file that is missing is waited for; one that became shorter, or is another
/// one now, is read from its start. Both are told on standard error.
class Follower : public fxObj {
public:
    /// Begins at the start of the file `path`, or at its end; puts `prefix` before each line.
    Follower(const char* path, bool fromStart, const std::string& prefix);
    Follower(const Follower&) = delete;
    Follower& operator=(const Follower&) = delete;
    ~Follower() override;

    /// What the input does.
    void look();

private:
    bool isOpen();
    bool hasBeenReplaced() const;
    void tell(const char* what) const;
    void sendLines(const char* bytes, std::size_t n);

    fxOutputChannel* line;
    std::string path;
    std::string prefix;
    std::string rest;  // of a line whose end has not come yet
    off_t position;    // in the file; -1 for its end
    int fd;            // -1 while there is no file
    bool isMissed;     // and that has been told
};

/// Lets the lines through that have a pattern. Input: "line"; output: "line", sent at once.
class Filter : public fxObj {
public:
    explicit Filter(const char* pattern);

    bool isPattern() const { return expression.findBuffer("", 0) != -2; }

private:
    void take(const char* text);

    fxOutputChannel* line;
    fxRegEx expression;
};

/// Prints lines. Input: "line". Output: "done", no value, when there have been as many as wanted.
class Printer : public fxObj {
public:
    /// 0 is no limit.
    explicit Printer(unsigned int limit);

private:
    void take(const char* text);

    fxOutputChannel* done;
    unsigned int limit;
    unsigned int printed;
};

/// Turns the signals that end a program into a message. Output: "end", no value.
///
/// A signal handler may do next to nothing; this one writes a byte to a pipe, whose other end the
/// loop waits for. There is one object at a time.
class Ending : public fxSelectHandler {
public:
    Ending();
    ~Ending() override;

    void handleRead() override;

private:
    static void take(int signal);

    static int writeEnd;
    fxOutputChannel* end;
};
