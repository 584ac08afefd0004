// Streams that were cut, or of which a bit was changed, in both formats and both byte orders.

#include <string>
#include <vector>

#include "tests/support/figure.h"
#include "tests/support/goldenStreams.h"
#include "tests/support/hostileReading.h"
#include "tests/support/trialRunner.h"

namespace {

struct Stream {
    const goldenStreams::Kind* kind;
    std::string bytes;
};

std::vector<Stream> allStreams() {
    std::vector<Stream> all;
    for (const auto& kind : goldenStreams::kinds) {
        for (const bool isBig : {false, true})
            all.push_back({&kind, goldenStreams::fileOf(kind, isBig)});
    }
    return all;
}

const std::size_t headLength = 25;  // of graph streams: up to it nothing is protected

// Whether the bytes were read as if nothing had happened to them. What is read is used, and
// stays: it is a process of its own.
bool isRead(const Stream& stream, const std::string& bytes) {
    if (!stream.kind->isGraph)
        return hostile::readAndUse(bytes, 1);
    fxInitializeToolkit();
    const Held<> source(static_cast<const void*>(bytes.data()),
                        static_cast<unsigned int>(bytes.size()));
    const std::unique_ptr<fxTranscriber> reader(fxTranscriber::getReader(source.get()));
    return reader && reader->readObject(stream.kind->type());
}

// The outcomes of `trial(n)` for all n below `n`, of which every `step`th is tried.
TrialReport tryEvery(unsigned long step, unsigned long n,
                     bool (*trial)(const Stream&, unsigned long), const Stream& stream) {
    return runTrials(
        static_cast<unsigned int>((n + step - 1) / step),
        [&](unsigned int i) { return trial(stream, i * step); }, hostile::isStatedMessage, 1024);
}

bool isReadWhenCut(const Stream& stream, unsigned long n) {
    return isRead(stream, stream.bytes.substr(0, n));
}

bool isReadWithABitChanged(const Stream& stream, unsigned long bit) {
    std::string bytes = stream.bytes;
    bytes[bit / 8] = static_cast<char>(bytes[bit / 8] ^ 1 << bit % 8);
    return isRead(stream, bytes);
}

// Trials, and those that ended otherwise than is stated; of graph streams none may load. A
// changed bit of the head may make it the same stream of another host.
struct Outcomes {
    unsigned long trials = 0;
    unsigned long bad = 0;

    void add(const Stream& stream, const TrialReport& report, unsigned long allowed) {
        trials += report.trials();
        bad += report.failures.size();
        if (stream.kind->isGraph && report.values > allowed)
            bad += report.values - allowed;
        for (const std::string& failure : report.failures)
            std::printf("%s: %s\n", stream.kind->name, failure.c_str());
    }
};

std::string shown(const Outcomes& outcomes) {
    return std::to_string(outcomes.trials) + ";" + std::to_string(outcomes.bad);
}

}  // namespace

TEST(figureI1, everyPrefixEndsAsStated) {
    Outcomes outcomes;
    for (const Stream& stream : allStreams()) {
        ASSERT_LT(headLength, stream.bytes.size()) << stream.kind->name;
        outcomes.add(stream,
                     tryEvery(figureSize(1, 13), stream.bytes.size(), isReadWhenCut, stream), 0);
    }
    const unsigned long wanted = figureSize(20000, 1500);
    reportFigure("I1", shown(outcomes), std::to_string(wanted) + ";0",
                 outcomes.trials >= wanted && outcomes.bad == 0);
}

TEST(figureI2, everyChangedBitEndsAsStated) {
    Outcomes outcomes;
    for (const Stream& stream : allStreams())
        outcomes.add(
            stream,
            tryEvery(figureSize(1, 61), stream.bytes.size() * 8, isReadWithABitChanged, stream), 0);
    const unsigned long wanted = figureSize(200000, 3000);
    reportFigure("I2", shown(outcomes), std::to_string(wanted) + ";0",
                 outcomes.trials >= wanted && outcomes.bad == 0);
}
