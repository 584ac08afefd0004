// reloading.cpp [LOADS] - a host that loads and unloads the library again and again.
//
// It is not linked with the library, which comes and goes with a plug-in that uses it, or alone,
// and begins anew each time: without a start, with two, with clean-up alone. Exits with 0, and
// prints the figure A2, when each beginning was as stated, nothing of the library stayed in the
// process, and each load kept no more memory than what is stated to stay until the process ends.

#include "tests/hosts/reloading.h"

#include <dlfcn.h>
#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

const unsigned int beginningCount = sizeof beginnings / sizeof beginnings[0];

// The singletons and registries, which live until the process ends: bytes a load.
const long mostKept = 4096;
const int warmUp = 50;  // loads, after which what is kept is looked at

bool isInProcess(const char* name) {
    std::FILE* const maps = std::fopen("/proc/self/maps", "r");
    if (!maps)
        return true;
    bool isThere = false;
    for (char line[512]; std::fgets(line, sizeof line, maps);)
        isThere = isThere || std::strstr(line, name);
    std::fclose(maps);
    return isThere;
}

long bytesInUse() { return static_cast<long>(::mallinfo2().uordblks); }

int failed(const char* what, const char* why) {
    std::fprintf(stderr, "%s: %s\n", what, why);
    return 1;
}

// The library alone, of which another handle keeps it there.
int loadLibrary(int flags) {
    void* const library = ::dlopen(LIBRARY, flags);
    void* const again = ::dlopen(LIBRARY, flags);
    if (!library || library != again)
        return failed(LIBRARY, ::dlerror());
    ::dlclose(again);
    if (!::dlsym(library, "fxStr_type"))
        return failed(LIBRARY, "gone while it is held");
    ::dlclose(library);
    return 0;
}

int loadPlugin(const char* beginning, int flags) {
    void* const plugin = ::dlopen(PLUGIN, flags);
    if (!plugin)
        return failed(PLUGIN, ::dlerror());
    void* const found = ::dlsym(plugin, beginning);
    Beginning* begin = nullptr;
    std::memcpy(&begin, &found, sizeof begin);
    const int failures = begin ? begin() : 1;
    if (failures != 0)
        failed(beginning, "not as it is stated");
    ::dlclose(plugin);
    return failures;
}

int loadOnce(int load) {
    const int flags =
        (load % 2 == 0 ? RTLD_NOW : RTLD_LAZY) | (load % 4 < 2 ? RTLD_LOCAL : RTLD_GLOBAL);
    const unsigned int way = static_cast<unsigned int>(load) % (beginningCount + 1);
    int failures = way == beginningCount ? loadLibrary(flags) : loadPlugin(beginnings[way], flags);
    if (isInProcess("libkelvofxds"))
        failures += failed(LIBRARY, "still there after it was unloaded");
    return failures;
}

}  // namespace

int main(int argc, char** argv) {
    const int loads = argc > 1 ? std::atoi(argv[1]) : 1000;
    int failures = isInProcess("libkelvofxds") ? failed("host", "linked with the library") : 0;
    long before = 0;
    for (int load = 0; load < loads; ++load) {
        if (load == warmUp)
            before = bytesInUse();
        failures += loadOnce(load);
    }
    const long kept = loads > warmUp ? (bytesInUse() - before) / (loads - warmUp) : 0;
    std::fprintf(stderr, "%d loads, each of which keeps %ld bytes\n", loads, kept);
    if (kept > mostKept)
        failures += failed("host", "more is kept than what is stated");
    std::printf("GOAL A2 %d 0 %s\n", failures, failures == 0 ? "PASS" : "FAIL");
    return failures == 0 ? 0 : 1;
}
