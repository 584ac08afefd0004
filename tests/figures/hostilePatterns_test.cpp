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

// Searches of one subject, and the least time that one has taken so far.
class Searches {
public:
    Searches(fxregexp& compiledPattern, const std::string& text)
        : program(compiledPattern), subject(text) {}

    void measure() {
        const double enough = 0.002;
        const double start = processorSeconds();
        double spent = 0;
        unsigned int rounds = 0;
        for (; spent < enough; ++rounds, spent = processorSeconds() - start)
            hasFound = fxregexec(&program, subject.c_str()) == 1;
        if (least == 0 || spent / rounds < least)
            least = spent / rounds;
    }
    double seconds() const { return least; }
    bool found() const { return hasFound; }

private:
    fxregexp& program;
    const std::string subject;
    double least = 0;
    bool hasFound = false;
};

// What a subject twice as long takes, by two lengths that are `doublings` apart. What disturbs only
// ever adds to the times, so more of them are taken while the figure is not the one wanted.
double growth(Searches& shorter, Searches& longer, unsigned int doublings, double wanted) {
    const unsigned int fewest = 3, most = 16;
    double each = 0;
    for (unsigned int i = 0; i < fewest || (i < most && each > wanted); ++i) {
        shorter.measure();
        longer.measure();
        each = std::pow(longer.seconds() / shorter.seconds(), 1.0 / doublings);
    }
    return each;
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
    std::printf("%8.3f ms, %.2f: %.60s\n", shorter->seconds() * 1000, worst,
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
