// sending_bench.cpp - values on their way from outputs to inputs, beside signals and function
// calls.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <sigc++/sigc++.h>
#include <boost/signals2.hpp>

#include "bench/support/beside.h"
#include "kelvofxds/objects/fxEventHandler.h"
#include "kelvofxds/objects/fxObj.h"
#include "kelvofxds/values/fxData.h"

namespace {

const int value = 123456;

// What a receiver does with a value, the same on every side: each weighs it differently, so that a
// receiver left out or called twice shows in the sum.
struct Sum {
    void add(int v, int weight) { total += static_cast<unsigned int>(v * weight); }
    unsigned int total = 0;
};

template <class Function>
void (*receiver(Function function))() {
    return reinterpret_cast<void (*)()>(function);
}

class Sender : public fxObj {
public:
    Sender() : out(addOutput("out", fxDT_int)) {}
    void send(int v, fxSendFlags flags) { sendInt(out, v, flags); }

private:
    fxOutputChannel* out;
};

class TextSender : public fxObj {
public:
    TextSender() : out(addOutput("out", fxDT_CharPtr)) {}
    void send(const char* text, fxSendFlags flags) { sendCharPtr(out, text, flags); }

private:
    fxOutputChannel* out;
};

// Takes a number, or the text of one.
class Receiver : public fxObj {
public:
    Receiver(Sum& result, int factor) : sum(result), weight(factor) {
        addInput("number", fxDT_int, this, receiver(takeNumber), 0);
        addInput("text", fxDT_CharPtr, this, receiver(takeText), 0);
    }

private:
    static void takeNumber(Receiver* self, int v) { self->sum.add(v, self->weight); }
    static void takeText(Receiver* self, char* text) {
        self->sum.add(text[0] + text[5], self->weight);
    }

    Sum& sum;
    int weight;
};

// What signals and functions call. Like an fxObj, it may go at any time: sigc++ disconnects it
// then.
class PeerReceiver : public sigc::trackable {
public:
    PeerReceiver(Sum& result, int factor) : sum(result), weight(factor) {}
    virtual ~PeerReceiver() {}

    virtual void take(int v) { sum.add(v, weight); }
    void takeNumber(int v) { sum.add(v, weight); }
    void takeText(const char* text) { sum.add(text[0] + text[5], weight); }
    void formatNumber(int v) {
        char text[64];
        std::snprintf(text, sizeof text, "%d", v);
        takeText(text);
    }

protected:
    Sum& sum;
    int weight;
};

// A second class keeps the compiler from knowing whom a virtual call reaches.
class OtherReceiver : public PeerReceiver {
public:
    using PeerReceiver::PeerReceiver;
    void take(int v) override { sum.add(v, weight + 1); }
};

// Without a lock, as nothing else here has one.
using BoostSignal = boost::signals2::signal_type<
    void(int), boost::signals2::keywords::mutex_type<boost::signals2::dummy_mutex>>::type;

// A source of each kind with `n` receivers.
struct Receivers {
    explicit Receivers(unsigned int n) {
        for (unsigned int i = 0; i < n; ++i) {
            const int weight = static_cast<int>(i) + 1;
            ours.push_back(std::make_unique<Receiver>(sum, weight));
            numbers.connect("out", ours.back().get(), "number");
            texts.connect("out", ours.back().get(), "text");
            peers.push_back(std::make_unique<PeerReceiver>(sum, weight));
            PeerReceiver* peer = peers.back().get();
            sigcNumbers.connect(sigc::mem_fun(*peer, &PeerReceiver::takeNumber));
            sigcTexts.connect(sigc::mem_fun(*peer, &PeerReceiver::formatNumber));
            boostNumbers.connect([peer](int v) { peer->takeNumber(v); });
        }
        others.push_back(std::make_unique<OtherReceiver>(sum, 1));
    }

    unsigned int taken() {
        const unsigned int total = sum.total;
        sum.total = 0;
        return total;
    }

    Sum sum;
    std::vector<std::unique_ptr<Receiver>> ours;
    std::vector<std::unique_ptr<PeerReceiver>> peers, others;
    Sender numbers, texts;
    sigc::signal<void, int> sigcNumbers, sigcTexts;
    BoostSignal boostNumbers;
};

// One source with one receiver, for `n` messages at a time.
struct Messages : Receivers {
    explicit Messages(unsigned int n) : Receivers(1), count(static_cast<int>(n)) {
        lines.connect("out", ours[0].get(), "text");
    }

    int count;
    TextSender lines;
    std::shared_ptr<PeerReceiver> shared = std::make_shared<PeerReceiver>(sum, 1);
    std::deque<std::function<void()>> queue;
};

unsigned int sendAndDistribute(Messages& in) {
    for (int i = 0; i < in.count; ++i)
        in.numbers.send(i + 1, fxObj::fxSendQueued);
    fx_theEventHandler->distributeEvents();
    return in.taken();
}

// As many as there are now, as distributeEvents does.
unsigned int callFunctions(Messages& in) {
    for (std::size_t n = in.queue.size(); n != 0; --n) {
        const std::function<void()> function = std::move(in.queue.front());
        in.queue.pop_front();
        function();
    }
    return in.taken();
}

unsigned int queueFunctions(Messages& in) {
    PeerReceiver* peer = in.peers[0].get();
    for (int i = 0; i < in.count; ++i)
        in.queue.emplace_back([peer, i] { peer->takeNumber(i + 1); });
    return callFunctions(in);
}

// A message keeps its channel alive. A function that keeps its receiver alive does the same.
unsigned int queueHoldingFunctions(Messages& in) {
    for (int i = 0; i < in.count; ++i)
        in.queue.emplace_back([peer = in.shared, i] { peer->takeNumber(i + 1); });
    return callFunctions(in);
}

// A text that is no longer the sender's when it arrives.
const char statusLine[] = "position 0123456789";

unsigned int sendAndDistributeTexts(Messages& in) {
    for (int i = 0; i < in.count; ++i)
        in.lines.send(statusLine + i % 8, fxObj::fxSendQueued);
    fx_theEventHandler->distributeEvents();
    return in.taken();
}

unsigned int queueFunctionsOfTexts(Messages& in) {
    PeerReceiver* peer = in.peers[0].get();
    for (int i = 0; i < in.count; ++i)
        in.queue.emplace_back(
            [peer, text = std::string(statusLine + i % 8)] { peer->takeText(text.c_str()); });
    return callFunctions(in);
}

void receiverCounts(benchmark::internal::Benchmark* b) { b->Arg(1)->Arg(4)->Arg(16); }
void messageCounts(benchmark::internal::Benchmark* b) {
    b->Arg(1)->Arg(64)->Arg(1024)->Arg(4096)->Arg(1 << 16);
}

// Resident memory.

const int manyMessages = 10000000;
const double mostGrowth = 1024;  // KiB: a tenth of a byte a message; none is expected

double residentKibibytes() {
    char line[256];
    double resident = 0;
    std::FILE* file = std::fopen("/proc/self/smaps_rollup", "r");
    while (file && std::fgets(line, sizeof line, file)) {
        if (std::strncmp(line, "Rss:", 4) == 0)
            std::sscanf(line + 4, "%lf", &resident);
    }
    if (file)
        std::fclose(file);
    return resident;
}

void residentGrowth(benchmark::State& state) {
    const int batch = 1000;
    Messages messages(batch);
    const unsigned int expected = queueFunctions(messages);
    residentKibibytes();  // what reading the number takes is there from now on
    double growth = 0;
    for (auto _ : state) {
        sendAndDistribute(messages);
        const double before = residentKibibytes();
        for (int sent = 0; sent < manyMessages; sent += batch) {
            if (sendAndDistribute(messages) != expected)
                std::abort();
        }
        growth = residentKibibytes() - before;
    }
    state.counters["grown_KiB"] = growth;
    state.SetItemsProcessed(state.iterations() * manyMessages);
    if (growth > mostGrowth) {
        std::fprintf(stderr, "%d messages took %.0f KiB of memory for good\n", manyMessages,
                     growth);
        std::abort();
    }
}

// The cases.

void immediateCases() {
    beside<Receivers>(
        "fxOutputChannel/send now to n receivers", Rate::items, receiverCounts,
        [](Receivers& in) {
            in.numbers.send(value, fxObj::fxSendNow);
            return in.taken();
        },
        Side{"sigc++",
             [](Receivers& in) {
                 in.sigcNumbers.emit(value);
                 return in.taken();
             }},
        Side{"boost::signals2",
             [](Receivers& in) {
                 in.boostNumbers(value);
                 return in.taken();
             }},
        Side{"virtual call", [](Receivers& in) {
                 for (const auto& peer : in.peers)
                     peer->take(value);
                 return in.taken();
             }});
    beside<Receivers>(
        "fxConverter/send int to n text inputs", Rate::items, receiverCounts,
        [](Receivers& in) {
            in.texts.send(value, fxObj::fxSendNow);
            return in.taken();
        },
        Side{"sigc++ and snprintf", [](Receivers& in) {
                 in.sigcTexts.emit(value);
                 return in.taken();
             }});
}

void queuedCases() {
    beside<Messages>("fxEventHandler/queue and distribute n messages", Rate::items, messageCounts,
                     sendAndDistribute, Side{"std::deque of std::function", queueFunctions},
                     Side{"std::deque of functions that hold receivers", queueHoldingFunctions});
    beside<Messages>("fxEventHandler/queue and distribute n texts", Rate::items, messageCounts,
                     sendAndDistributeTexts,
                     Side{"std::deque of std::function", queueFunctionsOfTexts});
    benchmark::RegisterBenchmark("fxEventHandler/memory grown by queued messages/kelvofxds",
                                 residentGrowth)
        ->Arg(manyMessages)
        ->Iterations(1)
        ->Unit(benchmark::kMillisecond);
}

const bool registered = [] {
    immediateCases();
    queuedCases();
    return true;
}();

}  // namespace
