// objects.cpp - examples of the reference manual: kelvofxds/objects.

#include <unistd.h>

#include "docs/reference/examples.h"

namespace {
// What the examples connect: it adds up what arrives at "number".
class Sum : public fxObj {
public:
    Sum() { addInput("number", fxDT_int, this, reinterpret_cast<void (*)()>(take), 0); }
    int total = 0;

private:
    static void take(Sum* self, int number) { self->total += number; }
};

// It has an output "number".
class Source : public fxObj {
public:
    Source() : number(addOutput("number", fxDT_int)) {}
    fxOutputChannel* const number;
};
}  // namespace

EXAMPLE(fxObj) {
    //! [fxObj]
    struct Half : fxObj {
        Half() : out(addOutput("result", fxDT_int)) {
            addInput("number", fxDT_int, this, reinterpret_cast<void (*)()>(take), 0);
        }
        static void take(Half* self, int n) { self->sendInt(self->out, n / 2, fxSendNow); }
        fxOutputChannel* out;
    } half;
    Sum sum;  // an fxObj with an input "number", which it adds to `total`
    half.connect("result", &sum, "number");
    Half::take(&half, 84);
    std::printf("%d\n", sum.total);  // 42
    //! [fxObj]
}

EXAMPLE(fxOutputChannel) {
    //! [fxOutputChannel]
    Source source;  // an fxObj with an output "number", `number`
    Sum sum;        // one with an input "number", which it adds to `total`
    source.connect("number", &sum, "number");
    source.sendInt(source.number, 42, fxObj::fxSendNow);
    std::printf("%d of %u\n", sum.total, source.number->getNumberOfConnections());  // 42 of 1
    //! [fxOutputChannel]
}

EXAMPLE(fxInputChannel) {
    //! [fxInputChannel]
    Source source;  // an fxObj with an output "number", `number`
    int last = 0;
    const auto take = [](int* target, int number) { *target = number; };
    auto* input = new fxInputChannel(fxDT_int, &last, reinterpret_cast<void (*)()>(+take), 0);
    ++input->count;
    source.number->add(input);
    source.sendInt(source.number, 42, fxObj::fxSendNow);
    std::printf("%d\n", last);  // 42
    input->disconnect();
    input->dec();
    //! [fxInputChannel]
}

EXAMPLE(fxEvent) {
    //! [fxEvent]
    struct Greeting : fxEvent {
        Greeting() : fxEvent(fxET_Unknown) {}
        void deliver() override {
            std::printf("hello\n");  // hello
        }
    };
    fx_theEventHandler->postEvent(new Greeting, 0);  // at the end of the queue, which owns it
    fx_theEventHandler->distributeEvents();
    //! [fxEvent]
}

EXAMPLE(fxEventHandler) {
    //! [fxEventHandler]
    Source source;  // an fxObj with an output "number", `number`
    Sum sum;        // one with an input "number", which it adds to `total`
    source.connect("number", &sum, "number");
    source.sendInt(source.number, 42, fxObj::fxSendQueued);
    std::printf("%d, %u queued\n", sum.total, fx_theEventHandler->numberOfEvents());  // 0, 1 queued
    fx_theEventHandler->distributeEvents();
    std::printf("%d\n", sum.total);  // 42
    //! [fxEventHandler]
}

EXAMPLE(fxEventQueue) {
    //! [fxEventQueue]
    struct Note : fxEvent {
        explicit Note(unsigned long code) : fxEvent(code) {}
        void deliver() override {}
    };
    fxEventQueue queue;
    queue.append(new Note(1));
    queue.insert(new Note(2));  // before it
    fxEvent* first = queue.get();
    std::printf("%lu, %u left\n", first->getType(), queue.getCount());  // 2, 1 left
    delete first;
    //! [fxEventQueue]
    delete queue.get();
}

EXAMPLE(fxMessageEvent) {
    //! [fxMessageEvent]
    int last = 0;
    const auto take = [](int* target, int number) { *target = number; };
    auto* input = new fxInputChannel(fxDT_int, &last, reinterpret_cast<void (*)()>(+take), 0);
    ++input->count;
    fxMessageEvent(input, new fxIntData(42)).deliver();  // as the queue does
    std::printf("%d\n", last);                           // 42
    input->dec();
    //! [fxMessageEvent]
}

EXAMPLE(fxTimer) {
    //! [fxTimer]
    struct Clock : fxTimer {
        Clock() : fxTimer(1) {}  // again and again
        void tick() override { ++ticks; }
        int ticks = 0;
    } clock;
    clock.setInterval(0.5F);
    clock.startTimer();
    fxTimer::alarm(0.6F);  // the loop does this
    fxTimer::alarm(0.6F);
    std::printf("%d ticks\n", clock.ticks);  // 2 ticks
    //! [fxTimer]
}

EXAMPLE(fxSelectHandler) {
    //! [fxSelectHandler]
    struct Reader : fxSelectHandler {
        explicit Reader(int descriptor) : fxSelectHandler(descriptor, 1, 0, 0) {}
        void handleRead() override { n += ::read(fd, bytes, sizeof bytes); }
        long n = 0;
        char bytes[100];
    };
    int ends[2];
    if (::pipe(ends) != 0 || ::write(ends[1], "hello", 5) != 5)
        return;
    Reader reader(ends[0]);
    fx_theExecutive->addSelectHandler(&reader);
    fx_theExecutive->poll(0);
    std::printf("%ld bytes\n", reader.n);  // 5 bytes
    //! [fxSelectHandler]
    fx_theExecutive->removeSelectHandler(&reader);
    ::close(ends[0]);
    ::close(ends[1]);
}

EXAMPLE(fxExec) {
    //! [fxExec]
    Source source;  // an fxObj with an output "number", `number`
    Sum sum;        // one with an input "number", which it adds to `total`
    source.connect("number", &sum, "number");
    source.sendInt(source.number, 42, fxObj::fxSendQueued);
    fx_theExecutive->poll(0);        // one pass: waits, serves, delivers; loop() makes many
    std::printf("%d\n", sum.total);  // 42
    //! [fxExec]
}

EXAMPLE(fxApplication) {
    //! [fxApplication]
    struct Hello : fxApplication {
        void initialize(int, char**) override {}
        void open() override {
            std::printf("hello\n");  // hello
            close();                 // the loop runs until the last application is closed
        }
    } hello;  // the executive knows it now
    fx_theExecutive->initialize(0, nullptr);
    fx_theExecutive->open();
    fx_theExecutive->loop();
    //! [fxApplication]
}

EXAMPLE(fxSequencer) {
    //! [fxSequencer]
    fxSequencer next;
    next(2);  // taken already
    const unsigned int a = next();
    const unsigned int b = next();
    std::printf("%u %u\n", a, b);  // 1 0
    //! [fxSequencer]
}

EXAMPLE(fxSeqRange) {
    //! [fxSeqRange]
    fxSequencer next;
    for (int i = 0; i < 5; ++i)
        next();
    const fxSeqRange& used = next.getRanges()[0];
    std::printf("%u from %u\n", used.count, used.start);  // 5 from 0
    //! [fxSeqRange]
}

EXAMPLE(fxSeqRangeArray) {
    //! [fxSeqRangeArray]
    fxSequencer next;
    next();
    next(7);
    const fxSeqRangeArray& used = next.getRanges();
    std::printf("%u ranges, the last from %u\n", used.length(),
                used[1].start);  // 2 ranges, the last from 7
    //! [fxSeqRangeArray]
}

EXAMPLE(fxStubFuncArray) {
    //! [fxStubFuncArray]
    static int calls = 0;
    const fxStubFuncArray::Function call = [] { ++calls; };
    fxStubFuncArray functions;
    functions.append(&call);
    functions.append(&call);
    for (unsigned int i = 0; i < functions.length(); ++i)
        functions[i]();
    std::printf("%d\n", calls);  // 2
    //! [fxStubFuncArray]
}

EXAMPLE(fxOwnInput) {
    //! [fxOwnInput]
    Source source;  // an fxObj with an output "number", `number`
    fxObj sink;
    int last = 0;
    const fxInputChannel* input = fxOnInput(&sink, "number", [&last](int n) { last = n; });
    source.connect("number", &sink, "number");
    source.sendInt(source.number, 42, fxObj::fxSendNow);
    std::printf("%d\n", last);                                                        // 42
    std::printf("%d\n", static_cast<const fxOwnInput*>(input)->getOwner() == &sink);  // 1
    //! [fxOwnInput]
}
