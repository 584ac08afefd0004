// rejection.h - inputs at which the library ends the process.
#pragma once

namespace fuzz {

/// Thrown where the library ends the process with a message that is stated for bytes of strangers:
/// the input is rejected, the library's frames are unwound.
struct Rejected {};

/// Knows the messages that are stated for what a fuzzer does; null, as it is at first, if none is.
/// Any other message is printed and a finding, where it happens. An abort() or exit() that the
/// library calls itself has "abort" or "exit" as its message. Sanitizers, the C++ library and the
/// fuzzers themselves end the process as ever.
extern bool (*isStated)(const char* message);

/// What a host that uses what it has read may end with: also without an entry a stream may say that
/// entries are large, and the first one that the host adds has that size.
bool isOutOfMemory(const char* message);

/// Runs `input`. Returns whether it was read to its end, that is, was not rejected.
template <class Input>
bool reachesEnd(Input input) {
    try {
        input();
        return true;
    } catch (const Rejected&) {
        return false;
    }
}

}  // namespace fuzz
