// reloadingUser.cpp - the plug-in of reloading.

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "kelvofxds/kelvofxds.h"
#include "tests/hosts/lastWords.h"
#include "tests/hosts/reloading.h"

namespace {

int failures = 0;

void check(bool isRight, const char* complaint) {
    if (isRight)
        return;
    std::fprintf(stderr, "%s\n", complaint);
    ++failures;
}

class Sender : public fxObj {
public:
    Sender() : out(addOutput("out", fxDT_int)) {}

    fxOutputChannel* out;
};

class Receiver : public fxObj {
public:
    Receiver() {
        addInput("in", fxDT_int, this, reinterpret_cast<void (*)()>(take), 0);
        addInput("as float", fxDT_float, this, reinterpret_cast<void (*)()>(takeFloat), 0);
    }

    int sum = 0;

private:
    static void take(Receiver* self, int value) { self->sum += value; }
    static void takeFloat(Receiver* self, float value) { self->sum += static_cast<int>(value); }
};

class Application : public fxApplication {
public:
    void initialize(int, char**) override {}
};

// What the two cleaning functions count.
int made = 0;
int ended = 0;
void make() { ++made; }
void end() { ++ended; }
fxOrderedGlobal own(make, end, nullptr, 0);

void checkContainers() {
    fxStrStrDictionary dict;
    fxStrArray strings;
    fxStrSet set;
    for (int i = 0; i < 40; ++i) {
        const fxStr text(i, "text %d");
        dict.add(text, fxStr(i, "%d"));
        strings.append(text);
        set.add(&text);
    }
    const fxStr last("text 39");
    check(dict.length() == 40 && set.contains(&last) && strings[39] == last, "containers");
    const fxRegEx number("[0-9]+$");
    check(number.findBuffer(last.c_str(), last.length()) == 5, "patterns");
    fxIntArray ints(3);
    ints.remove(0, 1);
    check(ints.length() == 2, "arrays");
    check(fxTypeObj::findType("fxStr") == &fxStr_type, "the type records are not there");
}

// Writing needs no start, nor does what copies in memory; reading asks for readers.
void checkStreams(bool isStarted) {
    fxStrStrDictionary dict;
    dict.add("a key", "a value");
    auto* const stream = new fxMemoryStream;
    ++stream->count;
    fxTranscriber* const writer = fxTranscriber::getWriter(stream);
    check(writer && writer->writeObject(&dict, &dict) == 1, "nothing can be written");
    delete writer;
    fxTranscriber* const reader = fxTranscriber::getReader(stream);
    check((reader != nullptr) == isStarted, "the readers are not there when they should be");
    void* const read = reader ? reader->readObject(fxStrStrDictionary_type) : nullptr;
    check((read != nullptr) == isStarted, "nothing is read");
    delete static_cast<fxStrStrDictionary*>(read);
    delete reader;
    --stream->count;
    delete stream;
    fxXDRObj* const copy = fxDeepCopy(static_cast<fxXDRObj&>(dict));
    check(copy != nullptr, "nothing is copied");
    delete static_cast<fxStrStrDictionary*>(copy);
}

void checkObjects() {
    Sender sender;
    Receiver receiver;
    sender.connect("out", &receiver, "in");
    sender.connect("out", &receiver, "as float");
    sender.sendInt(sender.out, 1, fxObj::fxSendNow);
    sender.sendInt(sender.out, 10, fxObj::fxSendQueued);
    fx_theEventHandler->distributeEvents();
    check(receiver.sum == 22, "values do not arrive");
    fxTimer timer(0);
    timer.setInterval(0.5F);
    timer.startTimer();
    fxTimer::alarm(0.5F);
    fx_theEventHandler->distributeEvents();
    Application application;
    char* noArguments[] = {nullptr};
    fx_theExecutive->initialize(0, noArguments);
    application.close();
}

// What cannot be done before the start, each with its stated message.

void sends() {
    Sender sender;
    Receiver receiver;
    sender.connect("out", &receiver, "in");
    sender.sendInt(sender.out, 1, fxObj::fxSendQueued);
}
void converts() {
    Sender sender;
    Receiver receiver;
    sender.connect("out", &receiver, "as float");
}
void applies() { Application application; }

void checkEnding(void (*ending)(), const char* expected) {
    const LastWords found(ending);
    if (found.are(expected))
        return;
    std::fprintf(stderr, "not \"%s\" but \"%s\"\n", expected, found.text);
    ++failures;
}

void checkSingletons(bool isStarted) {
    check((fx_theExecutive != nullptr) == isStarted &&
              (fx_theEventHandler != nullptr) == isStarted &&
              (fx_nextDataType != nullptr) == isStarted && (fx_theDebugger != nullptr) == isStarted,
          "the singletons are not there when they should be");
    check(made == (isStarted ? 1 : 0), "the host's global is not made when it should be");
}

}  // namespace

extern "C" {

FX_EXPORT Beginning useWithoutStart;
int useWithoutStart() {
    checkSingletons(false);
    checkContainers();
    checkStreams(false);
    return failures;
}

FX_EXPORT Beginning endWithoutStart;
int endWithoutStart() {
    checkEnding(sends, "fxObj: call fxInitializeToolkit first\n");
    checkEnding(converts, "fxConverter: call fxInitializeToolkit first\n");
    checkEnding(applies, "fxApplication: call fxInitializeToolkit first\n");
    return failures;
}

FX_EXPORT Beginning startTwice;
int startTwice() {
    fxInitializeToolkit();
    const fxExec* const executive = fx_theExecutive;
    const unsigned short type = fxDT_fxStrArray;
    fxInitializeToolkit();
    fxInitGlobalOrderings();
    checkSingletons(true);
    check(fx_theExecutive == executive && fxDT_fxStrArray == type && type == 11,
          "the second start is not without effect");
    checkContainers();
    checkStreams(true);
    checkObjects();
    fxCleanupGlobalOrderings();
    fxCleanupGlobalOrderings();
    check(ended == 1, "the host's global is not ended once");
    return failures;
}

FX_EXPORT Beginning cleanUpAlone;
int cleanUpAlone() {
    fxCleanupGlobalOrderings();
    fxCleanupGlobalOrderings();
    checkSingletons(false);
    check(ended == 1, "clean-up alone does not end once what was never made");
    checkContainers();
    return failures;
}

FX_EXPORT Beginning cleanUpThenStart;
int cleanUpThenStart() {
    fxCleanupGlobalOrderings();
    fxInitializeToolkit();
    checkSingletons(true);
    checkObjects();
    fxCleanupGlobalOrderings();
    check(ended == 1, "clean-up is done again");
    return failures;
}

}  // extern "C"
