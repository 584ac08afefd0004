// threads [--planted] ROUNDS - two threads with objects of their own, for a checker of threads
//
// Each family that it can follow is used by both at one time. Exits with 0 if everything was as it
// should be.
// With --planted the two use one string, once, which the checker has to report.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/str/fxStr.h"
#include "tests/support/separateUses.h"

namespace {

void useOne(fxStr* shared) { shared->append('x'); }

bool useBesideEachOther(const SeparateUse& separate, int rounds) {
    bool isRight[2] = {};
    std::thread first([&] { isRight[0] = separate.use(1, rounds); });
    std::thread second([&] { isRight[1] = separate.use(2, rounds); });
    first.join();
    second.join();
    return isRight[0] && isRight[1];
}

}  // namespace

int main(int argc, char** argv) {
    fxInitializeToolkit();
    const bool isPlanted = argc > 2 && std::strcmp(argv[1], "--planted") == 0;
    if (isPlanted) {
        fxStr shared;
        std::thread first(useOne, &shared);
        std::thread second(useOne, &shared);
        first.join();
        second.join();
    }
    int failures = 0;
    for (unsigned int i = 0; i < separateUseCount; ++i) {
        if (!separateUses[i].isFollowed ||
            useBesideEachOther(separateUses[i], std::atoi(argv[argc - 1])))
            continue;
        std::fprintf(stderr, "%s: not what it should be\n", separateUses[i].family);
        ++failures;
    }
    return failures == 0 ? 0 : 1;
}
