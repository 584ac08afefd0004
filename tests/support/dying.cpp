#include "tests/support/dying.h"

#include <csignal>

#ifdef KELVOFXDS_EMULATOR
#include <fcntl.h>
#include <limits.h>
#include <unistd.h>

#include <cstddef>
#include <initializer_list>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

// The emulator tells on standard error that its program has ended, and why. Who reads that compares
// it with what the program says.
void endUnheard(int signal) {
    ::dup2(::open("/dev/null", O_WRONLY), STDERR_FILENO);
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

// A death test that starts this program anew starts the emulator with it.
void startAnewByTheEmulator() {
    char path[PATH_MAX];
    const ssize_t length = ::readlink("/proc/self/exe", path, sizeof path);
    std::vector<std::string> words = {"/usr/bin/env", KELVOFXDS_EMULATOR};
    words.emplace_back(path, length > 0 ? static_cast<std::size_t>(length) : 0);
    testing::internal::SetInjectableArgvs(words);
}

[[maybe_unused]] const bool areUnheard = [] {
    for (int signal : {SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGQUIT})
        std::signal(signal, endUnheard);
    startAnewByTheEmulator();
    return true;
}();

}  // namespace

void letEndUs(int signal) { std::signal(signal, endUnheard); }

#else

void letEndUs(int signal) { std::signal(signal, SIG_DFL); }

#endif
