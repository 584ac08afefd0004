// rejection.cpp - takes the places of fxFatal, abort and exit; see rejection.h.

#include "fuzz/rejection.h"

#include <dlfcn.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "kelvofxds/core/fxFatal.h"

namespace fuzz {
bool (*isStated)(const char* message) = nullptr;
bool isOutOfMemory(const char* message) { return std::strcmp(message, "out of memory") == 0; }
}  // namespace fuzz

namespace {
// Whether the library has called, and not something else that uses the same name.
bool isOfLibrary(const void* caller) {
    Dl_info info;
    return dladdr(caller, &info) != 0 && info.dli_fname &&
           std::strstr(info.dli_fname, "libkelvofxds") != nullptr;
}

template <class Function>
Function theUsual(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

[[noreturn]] void end() {
    theUsual<void (*)()>("abort")();
    __builtin_trap();
}

[[noreturn]] void reject(const char* message) {
    if (fuzz::isStated && fuzz::isStated(message))
        throw fuzz::Rejected();
    std::fprintf(stderr, "the library ended the process: %s\n", message);
    end();
}
}  // namespace

// Takes the place of the library's function.
void fxFatal(const char* format, ...) {
    static char message[1 << 17];  // inputs are shorter
    std::va_list values;
    va_start(values, format);
    std::vsnprintf(message, sizeof message, format, values);
    va_end(values);
    reject(message);
}

// The C library's declarations rule out that these throw, so here they have other names.
extern "C" {
[[noreturn]] void rejectAbort() __asm__("abort");
[[noreturn]] void rejectExit(int status) __asm__("exit");

void rejectAbort() {
    if (isOfLibrary(__builtin_return_address(0)))
        reject("abort");
    end();
}

void rejectExit(int status) {
    if (isOfLibrary(__builtin_return_address(0)))
        reject("exit");
    theUsual<void (*)(int)>("exit")(status);
    __builtin_trap();
}
}
