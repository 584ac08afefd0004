// When the functions that inputs own come to an end, and what they may do.

#include <memory>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "kelvofxds/objects/fxWiring.h"
#include "kelvofxds/values/fxProperty.h"
#include "tests/support/dataFlow.h"

namespace {

void ignoreInt(fxObj*, int) {}

// Something that a function owns, with bytes that it reads in the end.
class Owned {
public:
    explicit Owned(std::function<void()> doAtEnd = nullptr)
        : word(std::make_unique<std::string>(100, 'x')), atEnd(std::move(doAtEnd)) {
        ++alive;
    }
    Owned(Owned&& other) noexcept
        : word(std::move(other.word)), atEnd(std::exchange(other.atEnd, nullptr)) {
        ++alive;
    }
    Owned& operator=(Owned&&) = delete;
    ~Owned() {
        --alive;
        if (atEnd)
            atEnd();
    }
    std::size_t size() const { return word->size(); }

    inline static int alive = 0;

private:
    std::unique_ptr<std::string> word;
    std::function<void()> atEnd;
};

// An input of a host, which only connections hold.
class LoneInput final : public fxOwnInput {
public:
    explicit LoneInput(std::function<void()> doAtEnd = nullptr)
        : fxOwnInput(fxDT_int, receiver(ignore), false, end), owned(std::move(doAtEnd)) {}

private:
    static void ignore(void*, int) {}
    static void end(fxOwnInput* input) { delete static_cast<LoneInput*>(input); }

    Owned owned;
};

class fxWiringLifetime : public DataFlowTest {
protected:
    fxWiringLifetime() : sender(log, "sender"), object(std::make_unique<fxObj>()) {
        EXPECT_EQ(0, Owned::alive);
    }
    ~fxWiringLifetime() override {
        object.reset();
        sender.removeOutput("out");
        EXPECT_EQ(0, Owned::alive);
    }

    // An input "in" of the object that notes each value and then does `action`.
    fxInputChannel* add(std::function<void()> action = nullptr, bool latestOnly = false) {
        fxInputChannel* in = fxOnInput(
            object.get(), "in",
            [this, owned = Owned(), action = std::move(action)](int n) {
                log.note(std::to_string(n));
                if (action)
                    action();
                log.note("of " + std::to_string(owned.size()));
            },
            latestOnly);
        sender.connect("out", object.get(), "in");
        return in;
    }

    FlowNode sender;
    std::unique_ptr<fxObj> object;
};

}  // namespace

// The end of a function.

TEST_F(fxWiringLifetime, functionEndsWithItsInput) {
    add();
    EXPECT_EQ(1, Owned::alive);
    object->removeInput("in");
    EXPECT_EQ(0, Owned::alive);
    add();
    object.reset();
    EXPECT_EQ(0, Owned::alive);
    EXPECT_EQ(0U, sender.out->getNumberOfConnections());
}

TEST_F(fxWiringLifetime, functionEndsWhenItsInputIsReplaced) {
    const std::function<void()> replacements[] = {
        [this] { fxOnInput(object.get(), "in", [] {}); },
        [this] { fxAddInput(object.get(), "in", ignoreInt); },
        [this] { object->addInput("in", fxDT_int, nullptr, receiver(ignoreInt), 0); },
    };
    for (const auto& replace : replacements) {
        add();
        sender.send(5);
        replace();
        EXPECT_EQ(0, Owned::alive);
        EXPECT_EQ(0U, sender.out->getNumberOfConnections());
        EXPECT_EQ("", distribute());
    }
}

TEST_F(fxWiringLifetime, plainInputIsRemovedTooWhenItIsReplaced) {
    FlowNode node(log, "node");
    for (int i = 0; i < 2; ++i) {
        sender.connect("out", &node, "in");
        sender.send(1);
        if (i == 0)
            fxAddInput(&node, "in", ignoreInt);
        else
            fxOnInput(&node, "in", [] {});
        EXPECT_EQ(0U, sender.out->getNumberOfConnections());
        EXPECT_EQ("", distribute());
    }
}

TEST_F(fxWiringLifetime, convertedMessageThatIsLeftBehindReachesNobody) {
    const auto wire = [this] {
        fxOnInput(object.get(), "in", [this, owned = Owned()](const char* text) {
            log.note(text + std::string(" of ") + std::to_string(owned.size()));
        });
        sender.connect("out", object.get(), "in");
        sender.send(7);
    };
    wire();
    EXPECT_EQ("7 of 100", distribute());
    sender.send(8);
    object->removeInput("in");
    EXPECT_EQ(1, Owned::alive) << "the message leads to it";
    EXPECT_EQ("", distribute());
    EXPECT_EQ(0, Owned::alive);
    wire();
    fxOnInput(object.get(), "in", [] {});
    EXPECT_EQ("", distribute());
    EXPECT_EQ(0, Owned::alive);
}

TEST_F(fxWiringLifetime, convertedMessagesGoWithTheObject) {
    // Beyond some length, the queue has an index.
    for (const int n : {1, 1000}) {
        SCOPED_TRACE(n);
        object = std::make_unique<fxObj>();
        fxOnInput(object.get(), "in", [owned = Owned()](const char*) {});
        sender.connect("out", object.get(), "in");
        FlowNode other(log, "other");
        for (int i = 0; i < n; ++i)
            sender.send(i);
        sender.connect("out", &other, "in");
        sender.send(37);
        object.reset();
        EXPECT_EQ(0, Owned::alive);
        EXPECT_EQ(1U, queued());
        EXPECT_EQ("other=37", distribute());
    }
}

TEST_F(fxWiringLifetime, objectThatTakesNoMoreInputsEndsTheFunctionAtOnce) {
    int taken = -1;
    struct Late {
        fxObj* object;
        int* taken;
    } late{object.get(), &taken};
    const unsigned short tag = fxProperty::allocNewTag("late");
    object->setProperty(new fxProperty(tag, &late, [](void* value) {
        const auto* l = static_cast<Late*>(value);
        // What is set while properties go is released again at once.
        const unsigned short again = fxProperty::allocNewTag("later");
        l->object->setProperty(new fxProperty(again, value, [](void* v) {
            const auto* ll = static_cast<Late*>(v);
            *ll->taken = fxOnInput(ll->object, "in", [owned = Owned()] {}) ? 1 : 0;
        }));
    }));
    object.reset();
    EXPECT_EQ(0, taken);
    EXPECT_EQ(0, Owned::alive);
}

// What a function may do.

TEST_F(fxWiringLifetime, functionMayRemoveItsInput) {
    for (const fxObj::fxSendFlags flags : {fxObj::fxSendNow, fxObj::fxSendQueued}) {
        SCOPED_TRACE(flags);
        add([this] {
            object->removeInput("in");
            EXPECT_EQ(1, Owned::alive) << "until it returns";
        });
        sender.send(1, flags);
        if (flags == fxObj::fxSendQueued)
            fx_theEventHandler->distributeEvents();
        EXPECT_EQ("1 of 100", log.take());
        EXPECT_EQ(0, Owned::alive);
        EXPECT_EQ(0U, sender.out->getNumberOfConnections());
    }
}

TEST_F(fxWiringLifetime, functionMayDeleteItsObject) {
    for (const fxObj::fxSendFlags flags : {fxObj::fxSendNow, fxObj::fxSendQueued}) {
        SCOPED_TRACE(flags);
        object = std::make_unique<fxObj>();
        add([this] { object.reset(); });
        sender.send(1, flags);
        sender.send(2, flags);
        if (flags == fxObj::fxSendQueued)
            fx_theEventHandler->distributeEvents();
        EXPECT_EQ("1 of 100", log.take()) << "what was queued for it is dropped";
        EXPECT_EQ(0, Owned::alive);
    }
}

TEST_F(fxWiringLifetime, functionBehindAConversionMayDeleteItsObject) {
    fxOnInput(object.get(), "in", [this, owned = Owned()](const char* text) {
        object.reset();
        log.note(text + std::string(" of ") + std::to_string(owned.size()));
    });
    sender.connect("out", object.get(), "in");
    sender.send(3, fxObj::fxSendNow);
    EXPECT_EQ("3 of 100", log.take());
    EXPECT_EQ(0, Owned::alive);
}

TEST_F(fxWiringLifetime, functionMayReplaceItsInput) {
    add([this] { fxOnInput(object.get(), "in", [this](int n) { log.note(std::to_string(-n)); }); });
    sender.send(1, fxObj::fxSendNow);
    EXPECT_EQ("1 of 100", log.take());
    EXPECT_EQ(0, Owned::alive);
    sender.connect("out", object.get(), "in");
    sender.send(2, fxObj::fxSendNow);
    EXPECT_EQ("-2", log.take());
}

TEST_F(fxWiringLifetime, functionMaySendToItself) {
    int rest = 3;
    add([this, &rest] {
        if (--rest > 0)
            sender.send(rest, fxObj::fxSendNow);
    });
    sender.send(9, fxObj::fxSendNow);
    EXPECT_EQ("9 2 1 of 100 of 100 of 100", log.take());
}

TEST_F(fxWiringLifetime, functionMayRemoveItsInputWhileItIsCalledTwice) {
    int depth = 0;
    add([this, &depth] {
        if (++depth == 1)
            sender.send(2, fxObj::fxSendNow);
        else
            object.reset();
    });
    sender.send(1, fxObj::fxSendNow);
    EXPECT_EQ("1 2 of 100 of 100", log.take());
    EXPECT_EQ(0, Owned::alive);
}

TEST_F(fxWiringLifetime, undeliveredLatestValueGoesWithTheInput) {
    add([this] { object->removeInput("in"); }, true);
    sender.send(1);
    sender.send(2);
    EXPECT_EQ("2 of 100", distribute());
    add(nullptr, true);
    sender.send(3);
    object->removeInput("in");
    EXPECT_EQ("", distribute());
    EXPECT_EQ(0, Owned::alive);
}

// Exceptions.

TEST_F(fxWiringLifetime, exceptionsPassThrough) {
    const fxInputChannel* in = add([] { throw 1; });
    EXPECT_THROW(sender.send(1, fxObj::fxSendNow), int);
    EXPECT_EQ(2U, in->count) << "the dictionary's and the connection's";
    sender.send(2);
    EXPECT_THROW(fx_theEventHandler->distributeEvents(), int);
    EXPECT_EQ(2U, in->count);
    EXPECT_EQ("1 2", log.take());
}

TEST_F(fxWiringLifetime, exceptionsPassThroughAFunctionThatHasRemovedItsInput) {
    add([this] {
        object->removeInput("in");
        throw 1;
    });
    EXPECT_THROW(sender.send(1, fxObj::fxSendNow), int);
    EXPECT_EQ(0, Owned::alive);
}

// What goes with a function may call back.

TEST_F(fxWiringLifetime, endOfAnInputMayEndOthersOfTheSameOutput) {
    auto victim = std::make_unique<fxObj>();
    fxOnInput(victim.get(), "in", [](int) {});
    sender.out->add(new LoneInput([&victim] { victim.reset(); }));
    sender.connect("out", victim.get(), "in");
    sender.out->add(new LoneInput);
    sender.removeOutput("out");
    EXPECT_EQ(nullptr, victim);
    EXPECT_EQ(0, Owned::alive);
}

TEST_F(fxWiringLifetime, endOfAnInputMayDeleteTheOutputThatDisconnectsIt) {
    auto* in = new LoneInput([this] { sender.removeOutput("out"); });
    sender.out->add(in);
    sender.out->remove(in);
    EXPECT_EQ(0, Owned::alive);
    EXPECT_FALSE(fxTryConnect(&sender, "out", object.get(), "in", nullptr));
}

TEST_F(fxWiringLifetime, endOfAFunctionMayDeleteItsObject) {
    auto* dying = new fxObj;
    fxOnInput(dying, "in", [owned = Owned([dying] { delete dying; })](int) {});
    sender.connect("out", dying, "in");
    fxOnInput(dying, "in", [] {});
    EXPECT_EQ(0, Owned::alive);
    EXPECT_EQ(0U, sender.out->getNumberOfConnections());
}

TEST_F(fxWiringLifetime, endOfAFunctionMaySend) {
    FlowNode listener(log, "listener");
    sender.connect("out", &listener, "in");
    fxOnInput(object.get(), "in",
              [owned = Owned([this] { sender.send(8, fxObj::fxSendNow); })](int) {});
    sender.connect("out", object.get(), "in");
    object.reset();
    EXPECT_EQ("listener=8", log.take());
}
