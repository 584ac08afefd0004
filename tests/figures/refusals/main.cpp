// main.cpp - sixty things a host does, each with the first, the second, the third ... memory
// refused that it asks for.
//
// Each try is a process of its own. It may end as if nothing had been refused, or with a value
// that says so; or the process ends with "out of memory" and SIGABRT, which of the lists, hash
// table and name space is SIGABRT alone. Everything else is printed, and counts. What is left
// allocated does not.

#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "tests/figures/refusals/scenarios.h"

bool isArmed = false;

namespace {

unsigned long untilRefused = 0;

template <class Function>
Function* systemFunction(const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

// The one allocation, not those behind it: what goes on has to go on well.
bool refuses() {
    if (!isArmed || untilRefused == 0)
        return false;
    return --untilRefused == 0;
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) noexcept {
    static auto* const system = systemFunction<void*(std::size_t)>("malloc");
    return refuses() ? nullptr : system(size);
}

void* calloc(std::size_t n, std::size_t size) noexcept {
    static auto* const system = systemFunction<void*(std::size_t, std::size_t)>("calloc");
    return refuses() ? nullptr : system(n, size);
}

void* realloc(void* block, std::size_t size) noexcept {
    static auto* const system = systemFunction<void*(void*, std::size_t)>("realloc");
    return refuses() ? nullptr : system(block, size);
}

}  // extern "C"

namespace {

// --- the tries ---

// How a child exits: with all its memory, or with something refused.
const int enough = 0;
const int refused = 1;

// What a child ended with, and what it wrote to standard error.
struct End {
    int status;
    std::string said;
};

// Runs the scenario with its `n`th allocation refused. Status 0: there was none.
End tryWith(const Scenario& scenario, unsigned long n) {
    int ends[2];
    if (::pipe(ends) != 0)
        std::abort();
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(ends[1], 2);
        ::alarm(20);
        untilRefused = n;
        isArmed = true;
        scenario.run();
        isArmed = false;
        ::_exit(untilRefused == 0 ? refused : enough);
    }
    ::close(ends[1]);
    End end{0, ""};
    char bytes[1000];
    for (ssize_t size; (size = ::read(ends[0], bytes, sizeof bytes)) > 0;)
        end.said.append(bytes, static_cast<std::size_t>(size));
    ::close(ends[0]);
    ::waitpid(child, &end.status, 0);
    return end;
}

bool isStated(const Scenario& scenario, const End& end) {
    if (WIFEXITED(end.status))
        return WEXITSTATUS(end.status) <= refused && end.said.empty();
    return WIFSIGNALED(end.status) && WTERMSIG(end.status) == SIGABRT &&
           (end.said == usual || end.said == scenario.message);
}

// Other outcomes of one scenario.
unsigned long badOutcomesOf(const Scenario& scenario, unsigned long& tries) {
    unsigned long bad = 0;
    for (unsigned long n = 1; n < 10000; ++n) {
        const End end = tryWith(scenario, n);
        ++tries;
        if (!isStated(scenario, end)) {
            ++bad;
            std::fprintf(stderr, "%s, allocation %lu: status %x, \"%s\"\n", scenario.name, n,
                         static_cast<unsigned int>(end.status), end.said.c_str());
        }
        if (WIFEXITED(end.status) && WEXITSTATUS(end.status) == enough)
            return bad;  // it did not ask so often
    }
    return bad + 1;
}

}  // namespace

int main(int argc, char** argv) {
    fxInitializeToolkit();
    prepareTexts();
    prepareStreams();
    prepareGraphs();
    unsigned long bad = 0;
    unsigned long tries = 0;
    unsigned int n = 0;
    for (const Scenarios& scenarios :
         {ofTexts(), ofContainers(), ofObjects(), ofStreams(), ofGraphs()}) {
        for (const Scenario& scenario : scenarios) {
            if (argc > 1 && std::strcmp(argv[1], scenario.name) != 0)
                continue;
            bad += badOutcomesOf(scenario, tries);
            ++n;
        }
    }
    const bool isReached = bad == 0 && (n >= 60 || argc > 1);
    std::printf("GOAL I6 %lu;%lu_tries;%u_scenarios 0 %s\n", bad, tries, n,
                isReached ? "PASS" : "FAIL");
    return isReached ? 0 : 1;
}
