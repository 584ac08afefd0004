// fxTimerModel_test.cpp - the active list beside a plain model of it.

#include <cstddef>
#include <cstdint>
#include <deque>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/objects/fxTimer.h"
#include "tests/support/loopFixture.h"
#include "tests/support/operations.h"

using namespace loopTest;

namespace {

/// The active list by its description: deltas, each inserted by a walk.
class Model {
public:
    void start(const fxTimer& timer) {
        stop(timer);
        float d = timer.getInterval();
        std::size_t place = 0;
        while (place < list.size() && d >= list[place].second)
            d -= list[place++].second;
        if (place < list.size())
            list[place].second -= d;
        list.insert(list.begin() + static_cast<std::ptrdiff_t>(place), ActiveTimer(&timer, d));
    }

    void stop(const fxTimer& timer) {
        for (std::size_t i = 0; i < list.size(); ++i) {
            if (list[i].first != &timer)
                continue;
            if (i + 1 < list.size())
                list[i + 1].second += list[i].second;
            list.erase(list.begin() + static_cast<std::ptrdiff_t>(i));
            return;
        }
    }

    void alarm(float elapsed) {
        while (!list.empty() && elapsed >= list.front().second) {
            elapsed -= list.front().second;
            list.erase(list.begin());
        }
        if (!list.empty())
            list.front().second -= elapsed;
    }

    std::vector<ActiveTimer> list;
};

/// Does nothing when it is due.
struct QuietTimer : fxTimer {
    QuietTimer() : fxTimer(0) {}
    void tick() override {}
};

class fxTimerModel : public LoopTest {};

}  // namespace

TEST_F(fxTimerModel, randomStartsAndStopsGiveTheDeltasOfAWalkBitForBit) {
    const std::uint32_t seed = 20261121;
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    std::deque<QuietTimer> timers(100);
    Model model;
    const unsigned long rounds = operations(20000);
    for (unsigned long round = 0; round < rounds; ++round) {
        QuietTimer& timer = timers[random() % timers.size()];
        const unsigned int what = random() % 64;
        if (what < 32) {
            timer.setInterval(static_cast<float>(random() % 1000) / 7);
            timer.startTimer();
            model.start(timer);
        } else if (what < 63) {
            timer.stopTimer();
            model.stop(timer);
        } else {
            const float elapsed = static_cast<float>(random() % 100) / 9;
            fxTimer::alarm(elapsed);
            model.alarm(elapsed);
        }
        if (round % 16 == 0) {
            ASSERT_EQ(model.list, activeList()) << round;
        }
    }
    for (QuietTimer& timer : timers)
        timer.stopTimer();
}

// More than it is noted of what links them.
TEST_F(fxTimerModel, seventyThousandTimersStopInAnyOrder) {
    std::deque<QuietTimer> timers(70000);
    Model model;
    for (std::size_t i = 0; i < timers.size(); ++i)
        model.list.emplace_back(&timers[i], 1.0F);
    for (std::size_t i = timers.size(); i > 0; --i) {  // each before the others
        timers[i - 1].setInterval(static_cast<float>(i));
        timers[i - 1].startTimer();
    }
    ASSERT_EQ(model.list, activeList());
    for (std::size_t i = 0; i < 300; ++i) {
        QuietTimer& timer = timers[i * 7919 % timers.size()];
        timer.stopTimer();
        model.stop(timer);
        if (i % 3 == 0) {
            timer.startTimer();
            model.start(timer);
        }
    }
    ASSERT_EQ(model.list, activeList());
    timers.clear();
    EXPECT_EQ(nullptr, fxTimer::activeTimers);
}
