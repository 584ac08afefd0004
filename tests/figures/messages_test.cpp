// Messages by the million: none is lost, each comes in its order, and nothing stays behind.

#include <malloc.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/objects/fxEventHandler.h"
#include "kelvofxds/objects/fxObj.h"
#include "kelvofxds/values/fxData.h"
#include "tests/support/figure.h"

namespace {

template <class Function>
void (*raw(Function* function))() {
    return reinterpret_cast<void (*)()>(function);
}

// Takes numbers of one way of sending: each is the one before and 1, or any later one
// where only the newest counts.
class Line : public fxObj {
public:
    explicit Line(bool latestOnly) : isLatestOnly(latestOnly) {
        addInput("number", fxDT_int, this, raw(take), latestOnly);
        addInput("text", fxDT_CharPtr, this, raw(read), latestOnly);
    }

    static void take(Line* self, int value) {
        const bool isNext = self->isLatestOnly ? value > self->last : value == self->last + 1;
        self->outOfOrder += isNext ? 0 : 1;
        self->last = value;
        ++self->received;
    }
    static void read(Line* self, const char* text) { take(self, std::atoi(text)); }

    const bool isLatestOnly;
    int last = 0;
    unsigned long received = 0;
    unsigned long outOfOrder = 0;
};

// Sends the numbers from 1 on, each to a line of ints, one of texts and one that wants
// the newest alone.
class Source : public fxObj {
public:
    Source() : out(addOutput("out", fxDT_int)) {
        connect("out", &all, "number");
        connect("out", &converted, "text");
        connect("out", &newest, "number");
    }
    void send(fxSendFlags flags) { sendInt(out, ++sent, flags); }
    // Messages that did not come, where all have to.
    unsigned long lost() const {
        const auto due = static_cast<unsigned long>(sent);
        return due - all.received + due - converted.received + (newest.last == sent ? 0 : 1);
    }
    unsigned long outOfOrder() const {
        return all.outOfOrder + converted.outOfOrder + newest.outOfOrder;
    }
    unsigned long received() const { return all.received + converted.received + newest.received; }

    Line all{false};
    Line converted{false};
    Line newest{true};
    fxOutputChannel* out;
    int sent = 0;
};

long residentKilobytes() {
    std::ifstream statm("/proc/self/statm");
    long size = 0;
    long resident = 0;
    statm >> size >> resident;
    return resident * 4;
}

}  // namespace

TEST(fullFigureS3, messagesComeInOrderAndLeaveNothingBehind) {
    fxInitializeToolkit();
    const unsigned long wanted = figureSize(10000000, 300000);
    Source now;
    Source queued;
    Source urgent;
    const auto round = [&] {
        for (unsigned int i = 0; i < 100; ++i) {
            now.send(fxObj::fxSendNow);
            queued.send(fxObj::fxSendQueued);
        }
        // The newest of the urgent is the first to be delivered: one a round.
        urgent.send(fxObj::fxSendUrgent);
        fx_theEventHandler->distributeEvents();
    };
    for (unsigned int i = 0; i < 100; ++i)
        round();  // what is made once is made
    const long resident = residentKilobytes();
    const std::size_t heap = mallinfo2().uordblks;
    const auto received = [&] { return now.received() + queued.received() + urgent.received(); };
    while (received() < wanted)
        round();

    const unsigned long lost = now.lost() + queued.lost() + urgent.lost();
    const unsigned long disorder = now.outOfOrder() + queued.outOfOrder() + urgent.outOfOrder();
    const std::size_t left = mallinfo2().uordblks - heap;
    const unsigned int events = fx_theEventHandler->numberOfEvents();
    const long growth = residentKilobytes() - resident;
    reportFigure(
        "S3",
        std::to_string(lost) + ";" + std::to_string(disorder) + ";" + std::to_string(left) + "B," +
            std::to_string(events) + ";" + std::to_string(growth) + "KiB",
        "0;0;0;256KiB", lost == 0 && disorder == 0 && left == 0 && events == 0 && growth <= 256);
}
