// Patterns that take other matchers for ever, or all of a stack.

#include <malloc.h>
#include <sys/resource.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/figure.h"
#include "tests/support/hostilePatterns.h"
#include "tests/support/inChild.h"
#include "tests/support/paintedStack.h"
#include "tests/support/regexPair.h"

namespace {

double processorSeconds() {
    std::timespec now;
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// Searches of one subject.
class Searches {
public:
    Searches(fxregexp& compiledPattern, const std::string& text)
        : program(compiledPattern), subject(text) {}

    // The seconds that one takes.
    double measure() {
        const double enough = isFullFigure() ? 0.04 : 0.002;  // some ticks of a busy machine
        const double start = processorSeconds();
        double spent = 0;
        unsigned int rounds = 0;
        for (; spent < enough; ++rounds, spent = processorSeconds() - start)
            hasFound = fxregexec(&program, subject.c_str()) == 1;
        return spent / rounds;
    }
    bool found() const { return hasFound; }

private:
    fxregexp& program;
    const std::string subject;
    bool hasFound = false;
};

// How the time grows with a subject twice as long, by two lengths that are `doublings` apart. A
// machine that does other things is slower for a while, so times are compared that were taken side
// by side: the median counts, of more of them while it is not the one wanted.
double growth(Searches& shorter, Searches& longer, unsigned int doublings, double wanted) {
    const unsigned int fewest = 3, most = 15;
    std::vector<double> ratios;
    for (;;) {
        const double seconds = shorter.measure();
        ratios.push_back(longer.measure() / seconds);
        std::sort(ratios.begin(), ratios.end());
        const double each = std::pow(ratios[ratios.size() / 2], 1.0 / doublings);
        if (ratios.size() >= most || (ratios.size() >= fewest && each <= wanted))
            return each;
    }
}

// Whether short subjects give what the slow matcher gives; `isMatch` says what that is.
bool isRight(RegexPair& pair, const HostilePattern& hostile, bool& isMatch) {
    bool isKnown = false;
    for (std::size_t n = hostile.unit.size() + hostile.end.size(); n <= 24; ++n) {
        const std::string subject = hostile.subject(n);
        if (pair.search(subject, 1000000))
            return false;
        if (pair.match().gaveUp)
            break;
        isKnown = true;
        isMatch = pair.match().found;
    }
    return isKnown;
}

// The lengths to be measured: in the short form two, that are far enough from each other to tell on
// a machine that does other things too. Under a sanitizer all takes ten times as long.
struct Lengths {
    std::size_t first, last;
    unsigned int doublings;  // from one to the next
};
#ifdef __SANITIZE_ADDRESS__
const Lengths some = {1 << 10, 1 << 12, 2};
#else
const Lengths some = {1 << 13, 1 << 15, 2};
#endif
const Lengths all = {1 << 14, 1 << 20, 1};

// The worst growth of one pattern; -1 if something wrong was found.
double worstGrowth(const HostilePattern& hostile, const Lengths& lengths, double wanted) {
    RegexPair pair;
    bool isMatch = false;
    if (pair.take(hostile.pattern) || !pair.hasProgram() || !isRight(pair, hostile, isMatch))
        return -1;
    double worst = 0;
    std::unique_ptr<Searches> shorter;
    for (std::size_t n = lengths.first; n <= lengths.last; n <<= lengths.doublings) {
        auto longer = std::make_unique<Searches>(pair.block(), hostile.subject(n));
        if (shorter)
            worst = std::max(worst, growth(*shorter, *longer, lengths.doublings, wanted));
        shorter = std::move(longer);
        if (n > lengths.first && shorter->found() != isMatch)
            return -1;
    }
    std::printf("%8.3f ms, %.2f: %.60s\n", shorter->measure() * 1000, worst,
                hostile.pattern.c_str());
    return worst;
}

struct Search {
    const HostilePattern* hostile;
    std::size_t length;
};

void* searchOnce(void* argument) {
    const auto& search = *static_cast<Search*>(argument);
    const Compiled program = compiled(search.hostile->pattern);
    fxregexec(program.get(), search.hostile->subject(search.length).c_str());
    return nullptr;
}

struct Worst {
    double growth = 0;
    std::size_t stack = 0;
};

// Of all patterns, under `ulimit -s 256`; growth is -1 after a wrong result, death, or a search
// without an end.
Worst worstOfAll(const Lengths& lengths, double wanted) {
    const std::string text = inChild([=] {
        const rlimit stack{256 * 1024, 256 * 1024};
        ::setrlimit(RLIMIT_STACK, &stack);
        const rlimit seconds{figureSize(1800, 200), figureSize(1800, 200)};
        ::setrlimit(RLIMIT_CPU, &seconds);
        // What the kernel takes to hand out memory grows by a step when malloc begins to ask it
        // anew for each large block.
        ::mallopt(M_MMAP_MAX, 0);
        ::mallopt(M_TRIM_THRESHOLD, INT_MAX);
        Worst worst;
        for (const HostilePattern& hostile : hostilePatterns()) {
            const double ratio = worstGrowth(hostile, lengths, wanted);
            if (ratio < 0)
                return "wrong: " + hostile.pattern.substr(0, 60);
            worst.growth = std::max(worst.growth, ratio);
            Search search{&hostile, lengths.last};
            worst.stack = std::max(worst.stack, stackTakenBy(searchOnce, &search));
        }
        std::fflush(stdout);
        return std::to_string(worst.growth) + " " + std::to_string(worst.stack);
    });
    Worst worst;
    unsigned long stack = 0;
    if (std::sscanf(text.c_str(), "%lf %lu", &worst.growth, &stack) != 2) {
        ADD_FAILURE() << text;
        worst.growth = -1;
    }
    worst.stack = stack;
    return worst;
}

std::string rounded(double value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.2f", value);
    return text;
}

}  // namespace

// What takes time with the square of the length grows fourfold.
TEST(figureX2, hostilePatternsTakeTimeInProportionAndNoStack) {
    ASSERT_EQ(60U, hostilePatterns().size());
    const double most = isFullFigure() ? 2.3 : 3;
    const std::size_t mostStack = 65536;
    const Worst worst = worstOfAll(isFullFigure() ? all : some, most);
    reportFigure("X2", rounded(worst.growth) + ";" + std::to_string(worst.stack),
                 (isFullFigure() ? "2.3;" : "3;") + std::to_string(mostStack),
                 worst.growth > 0 && worst.growth <= most && worst.stack <= mostStack);
}
