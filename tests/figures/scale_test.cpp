// Large graphs: how time grows with their size, and that their depth costs no stack.

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <memory>

#include "kelvofxds/core/fxToolkit.h"
#include "tests/support/figure.h"
#include "tests/support/graphs.h"
#include "tests/support/inChild.h"
#include "tests/support/paintedStack.h"

namespace {

using Writer = fxTranscriber* (*)(fxStream*);  // null: the one that getWriter makes by itself

// An object and a block each; everybody knows two others, one of them in a circle.
class Crowd {
public:
    explicit Crowd(unsigned int n) : people(new Person[n]) {
        for (unsigned int i = 0; i < n; ++i) {
            people[i].mother = &people[(i + 1) % n];
            people[i].friends[0] = &people[i / 2];
            people[i].setShorts({static_cast<short>(i)});
        }
    }
    Person& root() { return people[0]; }

private:
    std::unique_ptr<Person[]> people;
};

bool write(Crowd& crowd, Writer kind) {
    const Held<> stream;
    if (kind)
        fxTranscriber::changeDefaultWriter(kind);
    const std::unique_ptr<fxTranscriber> writer(fxTranscriber::getWriter(stream.get()));
    fxTranscriber::resetToDefaultWriter();
    return writer->writeObject(&crowd.root(), &crowd.root()) == 1;
}

// The processor's time of the quickest of some writings, which other programs have disturbed least,
// in a process whose memory nothing else has scattered.
double secondsToWrite(unsigned int n, Writer kind) {
    const std::string text = inChild([n, kind] {
        Crowd crowd(n);
        std::clock_t quickest = std::numeric_limits<std::clock_t>::max();
        for (int i = 0; i < 5; ++i) {
            const std::clock_t start = std::clock();
            if (!write(crowd, kind))
                return std::string("not written");
            quickest = std::min<std::clock_t>(quickest, std::clock() - start);
        }
        return std::to_string(static_cast<double>(quickest) / CLOCKS_PER_SEC);
    });
    return std::atof(text.c_str());
}

std::string rounded(double value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.2f", value);
    return text;
}

struct Chain {
    unsigned int length;
    bool isSame;
};

// Writes a chain of persons, reads it and counts them.
void* goAndComeBack(void* argument) {
    auto& chain = *static_cast<Chain*>(argument);
    const std::unique_ptr<Person[]> people(new Person[chain.length]);
    for (unsigned int i = 0; i + 1 < chain.length; ++i)
        people[i].mother = &people[i + 1];
    const Held<> stream;
    fxTranscriber::changeDefaultWriter(makeGraphWriter);
    const std::unique_ptr<fxTranscriber> writer(fxTranscriber::getWriter(stream.get()));
    fxTranscriber::resetToDefaultWriter();
    chain.isSame = writer->writeObject(&people[0], &people[0]) == 1;
    const auto reader = graphReaderOn(stream.get());
    unsigned int found = 0;
    for (auto* person = static_cast<Person*>(reader->readObject(Person_type)); person; ++found) {
        Person* const next = person->mother;
        delete person;
        person = next;
    }
    chain.isSame = chain.isSame && found == chain.length;
    return nullptr;
}

}  // namespace

TEST(fullFigureS1, timeToWriteGrowsWithTheNumberOfObjectsAndBlocks) {
    fxInitializeToolkit();
    const auto most = static_cast<unsigned int>(figureSize(500000, 20000));
    double worst = 0;
    std::string value;
    const Writer kinds[] = {nullptr, makeGraphWriter};
    const unsigned int sizes[] = {most / 4, most / 2, most};
    for (const Writer kind : kinds) {
        double seconds[] = {1e9, 1e9, 1e9};
        for (int round = 0; round < 4; ++round) {
            for (int i = 0; i < 3; ++i)
                seconds[i] = std::min(seconds[i], secondsToWrite(sizes[i], kind));
        }
        ASSERT_LT(0, *std::min_element(seconds, seconds + 3));
        worst = std::max({worst, seconds[1] / seconds[0], seconds[2] / seconds[1]});
        value += rounded(seconds[2]) + "s;";
    }
    reportFigure("S1", value + rounded(worst), "print;2.3", worst <= 2.3);
}

TEST(fullFigureS2, aChainTakesNoStack) {
    fxInitializeToolkit();
    Chain brief{10, false};
    Chain chain{static_cast<unsigned int>(figureSize(1000000, 50000)), false};
    const std::size_t base = stackTakenBy(goAndComeBack, &brief);
    const std::size_t most = stackTakenBy(goAndComeBack, &chain);
    const std::size_t growth = most > base ? most - base : 0;
    reportFigure("S2", std::to_string(growth) + "B", "65536B",
                 brief.isSame && chain.isSame && growth <= 65536);
}
