// loop_bench.cpp - a pass of the dispatch loop, beside libuv.

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

#include <uv.h>

#include "bench/support/beside.h"
#include "kelvofxds/objects/fxExec.h"
#include "kelvofxds/objects/fxSelectHandler.h"

namespace {

void require(bool fine, const char* what) {
    if (fine)
        return;
    std::perror(what);
    std::abort();
}

// A pipe with at most one byte in it. Serving it takes the byte and puts it back, so that the pipe
// is ready again for the next pass.
class Pipe {
public:
    // The loop takes descriptors below 100 only, so the writing end moves out of the way.
    Pipe() {
        int ends[2];
        require(::pipe(ends) == 0, "pipe");
        in = ends[0];
        out = ::fcntl(ends[1], F_DUPFD, 200);
        require(out >= 0, "fcntl");
        ::close(ends[1]);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    ~Pipe() { ::close(out); }

    void put(char byte) { require(::write(out, &byte, 1) == 1, "write"); }
    unsigned char take() {
        char byte = 0;
        require(::read(in, &byte, 1) == 1, "read");
        return static_cast<unsigned char>(byte);
    }
    unsigned char serve() {
        const unsigned char byte = take();
        put(static_cast<char>(byte));
        return byte;
    }

    int in;  // closed by who serves it

private:
    int out;
};

class Handler : public fxSelectHandler {
public:
    Handler(Pipe& served, unsigned int& result)
        : fxSelectHandler(served.in, 1, 0, 0), pipe(served), sum(result) {
        fx_theExecutive->addSelectHandler(this);
    }
    ~Handler() override { fx_theExecutive->removeSelectHandler(this); }

    void handleRead() override { sum += pipe.serve(); }

private:
    Pipe& pipe;
    unsigned int& sum;
};

// The same under libuv, in a loop of its own.
class UvLoop {
public:
    UvLoop(std::vector<Pipe>& pipes, unsigned int& result) : served(pipes.size()) {
        require(::uv_loop_init(&loop) == 0, "uv_loop_init");
        for (std::size_t i = 0; i < pipes.size(); ++i) {
            served[i].pipe = &pipes[i];
            served[i].sum = &result;
            uv_poll_t* handle = &served[i].handle;
            handle->data = &served[i];
            require(::uv_poll_init(&loop, handle, pipes[i].in) == 0, "uv_poll_init");
            require(::uv_poll_start(handle, UV_READABLE, isReadable) == 0, "uv_poll_start");
        }
    }
    UvLoop(const UvLoop&) = delete;
    UvLoop& operator=(const UvLoop&) = delete;
    ~UvLoop() {
        for (Served& each : served)
            ::uv_close(reinterpret_cast<uv_handle_t*>(&each.handle), nullptr);
        ::uv_run(&loop, UV_RUN_DEFAULT);
        ::uv_loop_close(&loop);
    }

    void pass() { ::uv_run(&loop, UV_RUN_NOWAIT); }

private:
    struct Served {
        uv_poll_t handle;
        Pipe* pipe;
        unsigned int* sum;
    };

    static void isReadable(uv_poll_t* handle, int, int) {
        auto* each = static_cast<Served*>(handle->data);
        *each->sum += each->pipe->serve();
    }

    std::vector<Served> served;
    uv_loop_t loop;
};

// `n` pipes that both loops watch; no pass of one runs while the other's does.
struct Pipes {
    explicit Pipes(unsigned int n) : pipes(n) {
        for (Pipe& pipe : pipes)
            handlers.push_back(std::make_unique<Handler>(pipe, sum));
        uv = std::make_unique<UvLoop>(pipes, sum);
    }

    // Makes the last `n` pipes ready.
    void makeReady(unsigned int n) {
        if (n == ready)
            return;
        for (unsigned int i = 0; i < pipes.size(); ++i) {
            Pipe& pipe = pipes[pipes.size() - 1 - i];
            if (i < n && i >= ready)
                pipe.put(static_cast<char>(i + 1));
            else if (i >= n && i < ready)
                pipe.take();
        }
        ready = n;
    }
    void makeAllReady() { makeReady(static_cast<unsigned int>(pipes.size())); }

    unsigned int passOfOurs() {
        sum = 0;
        fx_theExecutive->poll(0);
        return sum;
    }
    unsigned int passOfUv() {
        sum = 0;
        uv->pass();
        return sum;
    }

    unsigned int sum = 0;
    unsigned int ready = 0;
    std::vector<Pipe> pipes;
    std::vector<std::unique_ptr<Handler>> handlers;
    std::unique_ptr<UvLoop> uv;  // before the handlers close what it watches
};

void descriptorCounts(benchmark::internal::Benchmark* b) { b->Arg(1)->Arg(16)->Arg(64); }

const bool registered = [] {
    beside<Pipes>(
        "fxExec/pass over n ready descriptors", Rate::items, descriptorCounts,
        [](Pipes& in) {
            in.makeAllReady();
            return in.passOfOurs();
        },
        Side{"libuv", [](Pipes& in) {
                 in.makeAllReady();
                 return in.passOfUv();
             }});
    beside<Pipes>(
        "fxExec/pass over n descriptors, the last one ready", Rate::items, descriptorCounts,
        [](Pipes& in) {
            in.makeReady(1);
            return in.passOfOurs();
        },
        Side{"libuv", [](Pipes& in) {
                 in.makeReady(1);
                 return in.passOfUv();
             }});
    return true;
}();

}  // namespace
