// fxFailureInternal.h - why something has failed, in words.
#pragma once

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "kelvofxds/str/fxStr.h"

/// The first reason that is given for a failure.
class fxFailure {
public:
    fxFailure() : text{} {}

    /// Takes the reason that `format` and its arguments make, and behind it what the
    /// system says of `error` unless that is 0. Returns false.
    bool set(int error, const char* format, ...) __attribute__((format(printf, 3, 4))) {
        if (text[0] != '\0')
            return false;
        std::va_list arguments;
        va_start(arguments, format);
        std::vsnprintf(text, sizeof text, format, arguments);
        va_end(arguments);
        if (error != 0)
            add(std::strerror(error));
        return false;
    }

    /// Adds to it, behind a colon.
    void add(const char* more) {
        const std::size_t n = std::strlen(text);
        std::snprintf(text + n, sizeof text - n, ": %s", more);
    }

    /// Puts `what`, in quotes `name` unless it is null, and the reason into `why`.
    void tell(fxStr* why, const char* what, const char* name) const {
        if (!why)
            return;
        const char* const quote = name ? " \"" : "";
        const char* const end = name ? "\": " : ": ";
        name = name ? name : "";
        // A string without memory ends the process, which no reason is worth.
        const std::size_t most = std::strlen(what) + std::strlen(name) + sizeof text + 16;
        void* const room = std::malloc(2 * most);
        std::free(room);
        if (room)
            why->format("%s%s%s%s%s", what, quote, name, end, text);
    }

private:
    char text[1024];  // empty as long as there is none
};
