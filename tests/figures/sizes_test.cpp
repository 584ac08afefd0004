// Counts, sizes and positions about 2^31, and about as many as 32 bits can address, for every
// argument that is one. What says how much lies at an address is not among them: no check can tell.

// Where nothing looks for misuse, its outcome is undefined.
#if KELVOFXDS_LIBRARY_IS_CHECKED

#include "tests/figures/sizes.h"

#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "kelvofxds/core/fxToolkit.h"
#include "tests/support/figure.h"
#include "tests/support/trialRunner.h"

namespace {

const unsigned int countsOfRow = 7;

unsigned int countOf(const SizeRow& row, unsigned int i) {
    const unsigned int half = 0x80000000;
    if (row.elementSize < 3) {
        const unsigned int counts[] = {half - 1,   half,       half + 1, 0xFFFFFFFD,
                                       0xFFFFFFFE, 0xFFFFFFFF, half / 2};
        return counts[i];
    }
    const auto all = static_cast<unsigned int>((std::uint64_t{1} << 32) / row.elementSize);
    const unsigned int counts[] = {half - 1, half, half + 1, all - 1, all, all + 1, 0xFFFFFFFF};
    return counts[i];
}

// The trial that is made, for whoever judges how its process has ended.
unsigned int& present() {
    static void* const shared = ::mmap(nullptr, sizeof(unsigned int), PROT_READ | PROT_WRITE,
                                       MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return *static_cast<unsigned int*>(shared);
}
const SizeRow& rowOf(unsigned int trial) { return sizeRows()[trial / countsOfRow]; }
unsigned int countOf(unsigned int trial) { return countOf(rowOf(trial), trial % countsOfRow); }

// What is granted does not depend on the machine: 64 MiB more than there are.
void limitMemory() {
    static bool isLimited = false;
    if (isLimited)
        return;
    isLimited = true;
    std::FILE* const file = std::fopen("/proc/self/statm", "r");
    unsigned long pages = 0;
    if (!file || std::fscanf(file, "%lu", &pages) != 1)
        std::abort();
    std::fclose(file);
    const rlim_t most = rlim_t{pages} * 4096 + (rlim_t{64} << 20);
    const rlimit limit = {most, most};
    ::setrlimit(RLIMIT_AS, &limit);
}

// Whether a call may return.
bool mayReturn(const SizeRow& row, unsigned int n) {
    return row.outcome == SizeOutcome::isStated ||
           (row.outcome == SizeOutcome::isMisuseIfNot && !row.isTooLarge(n));
}

// One that returns although it should have ended, or returns something else, says so.
bool isAsStated(unsigned int trial) {
    limitMemory();
    present() = trial;
    const bool isRight = rowOf(trial).call(countOf(trial));
    if (isRight && mayReturn(rowOf(trial), countOf(trial)))
        return true;
    std::fprintf(stderr, "returned");
    std::abort();
}

std::string tooLarge(const SizeRow& row) { return row.stated + ": size too large\n"; }

bool isMisuse(const SizeRow& row, const std::string& text) {
    const std::string start = row.name + ": ";
    return text.compare(0, start.size(), start) == 0 && text.find('\n') == text.size() - 1;
}

// Whether the process was to end with `text`.
bool isStatedEnd(const SizeRow& row, unsigned int n, const std::string& text) {
    switch (row.outcome) {
        case SizeOutcome::isStated:
            return false;
        case SizeOutcome::hasNoMemory:
            return text == (row.isTooLarge(n) ? tooLarge(row) : "out of memory\n");
        case SizeOutcome::isMisuse:
            return isMisuse(row, text);
        case SizeOutcome::isMisuseIfAddressable:
            return row.isTooLarge(n) ? text == tooLarge(row) : isMisuse(row, text);
        case SizeOutcome::isMisuseIfNot:
            return row.isTooLarge(n) && isMisuse(row, text);
        case SizeOutcome::ends:
            return text == (row.stated.empty() ? "" : row.stated + "\n");
    }
    return false;
}

}  // namespace

TEST(figureH2, everySizeEndsAsStated) {
    fxInitializeToolkit();
    present() = 0;
    const auto all = static_cast<unsigned int>(sizeRows().size()) * countsOfRow;
    const auto step = static_cast<unsigned int>(figureSize(1, 2));
    unsigned int cases = 0;
    unsigned int bad = 0;
    // A few rows at a time: a series that is bad throughout stops early.
    const unsigned int share = countsOfRow * 5;
    for (unsigned int first = 0; first < all; first += share) {
        const unsigned int n = (std::min(share, all - first) + step - 1) / step;
        const TrialReport report = runTrials(
            n, [&](unsigned int i) { return isAsStated(first + i * step); },
            [](const std::string& text) {
                return isStatedEnd(rowOf(present()), countOf(present()), text);
            });
        cases += report.trials();
        bad += static_cast<unsigned int>(report.failures.size());
        for (const std::string& failure : report.failures)
            std::printf("from %s on: %s\n", sizeRows()[first / countsOfRow].name.c_str(),
                        failure.substr(0, 300).c_str());
    }
    reportFigure("H2", std::to_string(cases) + ";" + std::to_string(bad), "300;0",
                 cases >= 300 && bad == 0);
}

#endif
