// main_bench.cpp - runs the benchmarks with this project's defaults.

#include <cstdio>
#include <vector>

#include <benchmark/benchmark.h>

#include "kelvofxds/core/fxToolkit.h"

int main(int argc, char** argv) {
    fxInitializeToolkit();

    // Before the user's own arguments, so that those win.
    static char minTime[] = "--benchmark_min_time=0.1";
    std::vector<char*> arguments(argv, argv + argc);
    arguments.insert(arguments.begin() + 1, minTime);
    arguments.push_back(nullptr);
    int count = static_cast<int>(arguments.size()) - 1;

    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data()))
        return 1;
#ifdef NDEBUG
    benchmark::AddCustomContext("compiler", "g++ " __VERSION__);
#else
    benchmark::AddCustomContext("compiler", "g++ " __VERSION__ ", not optimised");
#endif
    const bool ran = benchmark::RunSpecifiedBenchmarks() != 0;
    benchmark::Shutdown();
    return ran ? 0 : 1;
}
