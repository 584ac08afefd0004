// stages.h - what the lines run through.
#pragma once

#include <cstdint>

#include "kelvofxds/objects/fxObj.h"
#include "kelvofxds/str/fxStr.h"

/// Counts lines and bytes.
///
/// Inputs: "bytes", how many more have been read, and "line", a text. Outputs:
/// "total", the number of lines so far, and "length", the bytes of a line that
/// is longer than every one before; both int, queued.
class LineCounter : public fxObj {
public:
    LineCounter();

    std::uint64_t lines;
    std::uint64_t bytes;

private:
    void takeBytes(int n);
    void take(const char* text);

    fxOutputChannel* total;
    fxOutputChannel* length;
    int longest;
};

/// Adds up the numbers that lines begin with. Input: "number", an int; a text
/// without a number counts as 0.
class NumberSum : public fxObj {
public:
    NumberSum();

    std::int64_t sum;

private:
    void take(int number);
};

/// Shows how things stand on one line of standard error, if that is a
/// terminal.
///
/// Inputs: "lines" and "longest", both texts, of which only the newest counts;
/// and "tick", no value, upon which the line is rewritten.
class Meter : public fxObj {
public:
    Meter();
    Meter(const Meter&) = delete;
    Meter& operator=(const Meter&) = delete;
    ~Meter() override;  ///< Removes the line.

private:
    void show();

    bool onTerminal;
    fxStr lines;
    fxStr longest;
    double shownLines;  // when the line was last written
    double shownAt;     // seconds
};

/// Seconds on a clock that only goes forward.
double secondsNow();
