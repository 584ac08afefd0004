// fxTimer_bench.cpp - starting and stopping timers, beside libuv.

#include <cstdint>
#include <deque>
#include <vector>

#include <uv.h>

#include "bench/support/beside.h"
#include "kelvofxds/objects/fxTimer.h"

namespace {

/// Timers of which one is stopped and started anew, among `n` active ones.
class Timers {
public:
    explicit Timers(unsigned int n) : peers(n) {
        ::uv_loop_init(&loop);
        std::uint32_t random = 1;
        for (unsigned int i = 0; i < n; ++i) {
            random = random * 1664525 + 1013904223;
            seconds.push_back(1 + (random >> 8) % 1000);
            ours.emplace_back(static_cast<unsigned char>(0));
            ours[i].setInterval(static_cast<float>(seconds[i]));
            ours[i].startTimer();
            ::uv_timer_init(&loop, &peers[i]);
            startPeer(i);
        }
    }
    Timers(const Timers&) = delete;
    Timers& operator=(const Timers&) = delete;
    ~Timers() {
        for (uv_timer_t& peer : peers)
            ::uv_close(reinterpret_cast<uv_handle_t*>(&peer), nullptr);
        ::uv_run(&loop, UV_RUN_DEFAULT);
        ::uv_loop_close(&loop);
    }

    std::int64_t restartOurs() {
        std::int64_t active = 0;
        for (fxTimer& timer : ours) {
            timer.stopTimer();
            timer.startTimer();
            active += timer.isActive();
        }
        return active;
    }

    std::int64_t restartPeers() {
        std::int64_t active = 0;
        for (unsigned int i = 0; i < peers.size(); ++i) {
            ::uv_timer_stop(&peers[i]);
            startPeer(i);
            active += ::uv_is_active(reinterpret_cast<uv_handle_t*>(&peers[i])) != 0;
        }
        return active;
    }

private:
    void startPeer(unsigned int i) {
        ::uv_timer_start(
            &peers[i], [](uv_timer_t*) {}, seconds[i] * 1000ULL, 0);
    }

    uv_loop_t loop;
    std::vector<unsigned int> seconds;
    std::deque<fxTimer> ours;
    std::vector<uv_timer_t> peers;
};

void timerCounts(benchmark::internal::Benchmark* b) { b->Arg(1)->Arg(10)->Arg(100)->Arg(1000); }

const bool registered = [] {
    beside<Timers>(
        "fxTimer/stop and start among n", Rate::items, timerCounts,
        [](Timers& in) { return in.restartOurs(); },
        Side{"libuv", [](Timers& in) { return in.restartPeers(); }});
    return true;
}();

}  // namespace
