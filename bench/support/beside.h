// beside.h - cases that are timed beside peers which do the same work.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <set>
#include <string>

#include <benchmark/benchmark.h>

#include "bench/support/memory.h"
#include "bench/support/same.h"

/// What a case's size counts.
enum class Rate { bytes, items };

using Sizes = void (*)(benchmark::internal::Benchmark*);

/// 8 to 65536: how an operation grows.
inline void sweep(benchmark::internal::Benchmark* b) {
    b->RangeMultiplier(64)->Range(8, 1 << 16)->Complexity();
}

/// Lengths of usual texts, and longer ones.
inline void shortTexts(benchmark::internal::Benchmark* b) {
    b->Arg(8)->Arg(24)->Arg(100)->Arg(4096)->Arg(1 << 16)->Complexity();
}

/// 8 to 4096, for what is not worth its time beyond.
inline void shortSweep(benchmark::internal::Benchmark* b) {
    b->RangeMultiplier(8)->Range(8, 1 << 12)->Complexity();
}

/// Doubling sizes up to a million, for cases whose name ends in "/large". The
/// memory they take is measured too.
inline void doubling(benchmark::internal::Benchmark* b) {
    for (std::int64_t n = 125000; n <= 1000000; n *= 2)
        b->Arg(n);
    b->Unit(benchmark::kMillisecond);
}

/// One size, for operations that have none.
inline void single(benchmark::internal::Benchmark* b) { b->Arg(1); }

/// One side of a case: the name of an implementation and the work itself, a
/// function of the input that returns what it made.
template <class Work>
struct Side {
    const char* name;
    Work work;
};
template <class Work>
Side(const char*, Work) -> Side<Work>;

/// The input of a size. Only the last one is kept: some are large.
template <class Input>
Input& inputOf(unsigned int n) {
    static std::unique_ptr<Input> input;
    static unsigned int size;
    if (!input || size != n) {
        input.reset();
        input = std::make_unique<Input>(n);
        size = n;
    }
    return *input;
}

/// Ends the process unless both sides make the same of `input`.
template <class Input, class Ours, class Peer>
void requireSame(const std::string& name, Input& input, const Ours& ours, const Side<Peer>& peer) {
    const auto own = ours(input);
    if (same(own, peer.work(input)))
        return;
    std::fprintf(stderr, "%s: the results of kelvofxds and of %s differ\n", name.c_str(),
                 peer.name);
    std::abort();
}

/// The timed loop. What the work returns is released within it.
template <class Input, class Work>
void repeat(benchmark::State& state, Rate rate, bool measureMemory, Input& input,
            const Work& work) {
    const auto peak = measureMemory ? std::make_unique<PeakMemory>() : nullptr;
    for (auto _ : state) {
        auto made = work(input);
        benchmark::DoNotOptimize(made);
    }
    if (peak)
        state.counters["peak_MiB"] = peak->taken();
    const std::int64_t n = state.range(0);
    state.SetComplexityN(n);
    if (rate == Rate::bytes)
        state.SetBytesProcessed(state.iterations() * n);
    else
        state.SetItemsProcessed(state.iterations() * n);
}

/// Registers the case `name` for `ours` and every peer. Before the first timing
/// of a size all sides do the work once, and have to agree on the result.
/// The registered names are "name/implementation/size".
template <class Input, class Ours, class... Peers>
void beside(const std::string& name, Rate rate, Sizes sizes, Ours ours, Side<Peers>... peers) {
    const auto checked = std::make_shared<std::set<std::int64_t>>();
    const auto add = [&](const char* implementation, auto work) {
        benchmark::internal::Benchmark* b = benchmark::RegisterBenchmark(
            (name + "/" + implementation).c_str(), [=](benchmark::State& state) {
                Input& input = inputOf<Input>(static_cast<unsigned int>(state.range(0)));
                if (checked->insert(state.range(0)).second)
                    (requireSame(name, input, ours, peers), ...);
                repeat(state, rate, sizes == doubling, input, work);
            });
        sizes(b);
    };
    add("kelvofxds", ours);
    (add(peers.name, peers.work), ...);
}
