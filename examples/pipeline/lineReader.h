// lineReader.h - lines of text out of a descriptor.
#pragma once

#include <string>

#include "kelvofxds/objects/fxSelectHandler.h"

/// Reads a pipe, a terminal or anything else select() waits for.
///
/// Outputs: "bytes", how many have been read, and "line", each line's text
/// without its newline, both sent at once; a last line needs no newline. And
/// "done", no value, sent once there is no more, when the reader has taken
/// itself out of the executive.
class LineReader : public fxSelectHandler {
public:
    /// Takes over `descriptor`.
    explicit LineReader(int descriptor);

    void handleRead() override;

private:
    void sendLines(const char* bytes, unsigned int n);
    void sendLine(const char* bytes, std::size_t n);
    void finish();

    fxOutputChannel* bytesRead;
    fxOutputChannel* line;
    fxOutputChannel* done;
    std::string rest;  // of a line whose end has not come yet
};
