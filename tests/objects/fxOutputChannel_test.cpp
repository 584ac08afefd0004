#include "kelvofxds/objects/fxOutputChannel.h"

#include <csignal>
#include <cstddef>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/values/fxConverter.h"
#include "tests/support/dataFlow.h"

struct fxOutputChannelLayout {
    static_assert(offsetof(fxOutputChannel, type) == 0, "no table: a plain structure");
    static_assert(sizeof(fxOutputChannel::type) == 2, "an unsigned short");
    static_assert(offsetof(fxOutputChannel, connections) == 4, "after type");
    static_assert(sizeof(fxOutputChannel) == 8, "nothing else");

    static const fxVoidPtrArray* connections(const fxOutputChannel& out) { return out.connections; }
};

namespace {

void noteVoid(void* target) { static_cast<FlowLog*>(target)->note("void"); }
void noteBool(void* target, unsigned char value) {
    static_cast<FlowLog*>(target)->note("bool " + std::to_string(+value));
}
void noteInt(void* target, int value) {
    static_cast<FlowLog*>(target)->note("int " + std::to_string(value));
}

class fxOutputChannelTest : public DataFlowTest {
protected:
    // One that the test holds, until it calls dec.
    fxInputChannel* input(unsigned short type, unsigned char latestOnly = 0) {
        auto* channel = new fxInputChannel(type, &log,
                                           type == fxDT_void     ? receiver(noteVoid)
                                           : type == fxDT_fxBool ? receiver(noteBool)
                                                                 : receiver(noteInt),
                                           latestOnly);
        channel->count = 1;
        return channel;
    }
};
using fxOutputChannelDeathTest = fxOutputChannelTest;

}  // namespace

TEST_F(fxOutputChannelTest, newOutputHasNoConnections) {
    const unsigned short types[] = {0, 2, 11, 65535};
    for (const unsigned short type : types) {
        SCOPED_TRACE(type);
        fxOutputChannel out(type);
        EXPECT_EQ(type, out.getType());
        EXPECT_EQ(nullptr, fxOutputChannelLayout::connections(out));
        EXPECT_EQ(0U, out.getNumberOfConnections());
        fxInputChannel in(fxDT_int, nullptr, nullptr, 0);
        EXPECT_EQ(-1, out.find(&in));
        EXPECT_FALSE(out.isConnectedTo(&in));
        out.remove(&in);
        EXPECT_EQ(nullptr, fxOutputChannelLayout::connections(out));
    }
}

// Adding.

TEST_F(fxOutputChannelTest, inputOfTheSameTypeIsConnectedItself) {
    for (const unsigned short type : {fxDT_void, fxDT_fxBool, fxDT_int, fxDT_long, fxDT_float,
                                      fxDT_double, fxDT_CharPtr, fxDT_fxStr, fxDT_fxStrArray}) {
        SCOPED_TRACE(type);
        fxOutputChannel out(type);
        fxInputChannel* in = input(type);
        out.add(in);
        ASSERT_EQ(1U, out.getNumberOfConnections());
        EXPECT_EQ(in, out[0]);
        EXPECT_EQ(2U, in->count);
        ASSERT_EQ(1U, sources(in));
        EXPECT_EQ(&out, (*in->sources)[0]);
        in->disconnect();
        in->dec();
    }
}

TEST_F(fxOutputChannelTest, voidInputTakesAnyTypeWithoutALink) {
    for (const unsigned short type : {fxDT_void, fxDT_fxBool, fxDT_int, fxDT_long, fxDT_float,
                                      fxDT_double, fxDT_CharPtr, fxDT_fxStr, fxDT_fxStrArray}) {
        SCOPED_TRACE(type);
        fxOutputChannel out(type);
        fxInputChannel* in = input(fxDT_void);
        out.add(in);
        EXPECT_EQ(in, out[0]);
        EXPECT_EQ(2U, in->count);
        in->disconnect();
        in->dec();
    }
}

TEST_F(fxOutputChannelTest, inputOfAnotherTypeIsConnectedThroughALink) {
    for (const bool latestOnly : {false, true}) {
        SCOPED_TRACE(latestOnly);
        fxOutputChannel out(fxDT_int);
        fxInputChannel* in = input(fxDT_fxBool, latestOnly);
        out.add(in);
        ASSERT_EQ(1U, out.getNumberOfConnections());
        fxInputChannel* link = out[0];
        EXPECT_NE(in, link);
        EXPECT_TRUE(link->isLink());
        EXPECT_EQ(fxDT_int, link->getType()) << "of the values it takes";
        EXPECT_EQ(fxDT_fxBool, static_cast<fxConverter*>(link)->getTargetType());
        EXPECT_EQ(latestOnly, link->isLatestOnly());
        EXPECT_EQ(in, link->target);
        EXPECT_EQ(nullptr, link->sources);
        EXPECT_EQ(nullptr, link->pending);
        EXPECT_EQ(1U, link->count) << "the connection's";
        EXPECT_EQ(2U, in->count) << "the test's and the link's";
        ASSERT_EQ(1U, sources(in));
        EXPECT_EQ(&out, (*in->sources)[0]);
        in->disconnect();
        EXPECT_EQ(1U, in->count);
        in->dec();
    }
}

TEST_F(fxOutputChannelTest, eachConnectionHasALinkOfItsOwn) {
    fxOutputChannel first(fxDT_int);
    fxOutputChannel second(fxDT_int);
    fxInputChannel* in = input(fxDT_fxBool);
    first.add(in);
    second.add(in);
    EXPECT_NE(first[0], second[0]);
    EXPECT_EQ(3U, in->count);
    EXPECT_EQ(2U, sources(in));
    first.remove(in);
    EXPECT_EQ(2U, in->count);
    EXPECT_TRUE(second.isConnectedTo(in));
    second.remove(in);
    in->dec();
}

TEST_F(fxOutputChannelTest, addTwiceMakesTwoConnections) {
    for (const unsigned short type : {fxDT_int, fxDT_fxBool}) {
        SCOPED_TRACE(type);
        const std::string once = type == fxDT_int ? "int 6" : "bool 6";
        fxOutputChannel out(fxDT_int);
        fxInputChannel* in = input(type);
        out.add(in);
        out.add(in);
        EXPECT_EQ(2U, out.getNumberOfConnections());
        EXPECT_EQ(2U, sources(in));
        EXPECT_EQ(3U, in->count);
        EXPECT_EQ(0, out.find(in));
        fx_theEventHandler->postMessage(&out, new SpyData(6), fxObj::fxSendNow);
        EXPECT_EQ(once + ' ' + once, log.take());

        out.remove(in);
        EXPECT_EQ(1U, out.getNumberOfConnections());
        EXPECT_EQ(1U, sources(in));
        EXPECT_EQ(2U, in->count);
        fx_theEventHandler->postMessage(&out, new SpyData(6), fxObj::fxSendNow);
        EXPECT_EQ(once, log.take());
        out.remove(in);
        in->dec();
    }
}

// Finding and removing.

TEST_F(fxOutputChannelTest, connectionsAreInTheOrderOfAdding) {
    fxOutputChannel out(fxDT_int);
    std::vector<fxInputChannel*> inputs;
    for (unsigned int i = 0; i < 9; ++i) {
        inputs.push_back(input(i % 2 == 0 ? fxDT_int : fxDT_fxBool));
        out.add(inputs.back());
    }
    EXPECT_EQ(9U, out.getNumberOfConnections());
    for (unsigned int i = 0; i < 9; ++i) {
        EXPECT_EQ(static_cast<int>(i), out.find(inputs[i]));
        EXPECT_TRUE(out.isConnectedTo(inputs[i]));
        EXPECT_EQ(inputs[i], out[i]->finalChannel());
    }
    for (fxInputChannel* in : inputs) {
        in->disconnect();
        in->dec();
    }
}

TEST_F(fxOutputChannelTest, findFollowsChainsToTheirEnd) {
    fxOutputChannel out(fxDT_int);
    fxInputChannel* in = input(fxDT_fxBool);
    out.add(in);
    fxConverter* inserted = fxConverter::findConverter(fxDT_int, fxDT_fxBool);
    fxConverter::splice(inserted, in);
    fxConverter::splice(out[0], inserted);
    in->dec();  // the reference of the first link, which leads elsewhere now
    EXPECT_EQ(0, out.find(in));
    EXPECT_EQ(-1, out.find(inserted)) << "not the end of a chain";
    EXPECT_EQ(-1, out.find(out[0]));

    out.remove(in);
    EXPECT_EQ(0U, out.getNumberOfConnections());
    EXPECT_EQ(1U, in->count);
    EXPECT_EQ(0U, sources(in));
    in->dec();
}

TEST_F(fxOutputChannelTest, removeClosesTheGap) {
    for (unsigned int gone = 0; gone < 3; ++gone) {
        SCOPED_TRACE(gone);
        fxOutputChannel out(fxDT_int);
        std::vector<fxInputChannel*> inputs = {input(fxDT_int), input(fxDT_fxBool),
                                               input(fxDT_void)};
        for (fxInputChannel* in : inputs)
            out.add(in);
        out.remove(inputs[gone]);
        EXPECT_EQ(2U, out.getNumberOfConnections());
        EXPECT_EQ(-1, out.find(inputs[gone]));
        EXPECT_EQ(1U, inputs[gone]->count);
        EXPECT_EQ(0U, sources(inputs[gone]));
        inputs[gone]->dec();
        inputs.erase(inputs.begin() + static_cast<int>(gone));
        for (unsigned int i = 0; i < 2; ++i) {
            EXPECT_EQ(static_cast<int>(i), out.find(inputs[i]));
            EXPECT_EQ(2U, inputs[i]->count);
            EXPECT_EQ(1U, sources(inputs[i]));
        }
        for (fxInputChannel* in : inputs) {
            out.remove(in);
            in->dec();
        }
    }
}

TEST_F(fxOutputChannelTest, removeOfAnUnconnectedInputDoesNothing) {
    fxOutputChannel out(fxDT_int);
    fxOutputChannel other(fxDT_int);
    fxInputChannel* in = input(fxDT_int);
    fxInputChannel* unconnected = input(fxDT_int);
    out.add(in);
    other.add(unconnected);
    out.remove(unconnected);
    EXPECT_EQ(1U, out.getNumberOfConnections());
    EXPECT_EQ(2U, unconnected->count);
    EXPECT_EQ(1U, sources(unconnected));
    for (fxInputChannel* each : {in, unconnected}) {
        each->disconnect();
        each->dec();
    }
}

TEST_F(fxOutputChannelTest, removeReleasesTheLastReference) {
    for (const unsigned short type : {fxDT_int, fxDT_fxBool}) {
        SCOPED_TRACE(type);
        fxOutputChannel out(fxDT_int);
        fxInputChannel* in = input(type);
        out.add(in);
        in->dec();
        out.remove(in);  // frees it
        EXPECT_EQ(0U, out.getNumberOfConnections());
    }
}

// Destruction.

TEST_F(fxOutputChannelTest, destructorDisconnectsEveryConnection) {
    fxInputChannel* direct = input(fxDT_int);
    fxInputChannel* converting = input(fxDT_fxBool);
    fxInputChannel* orphan = input(fxDT_int);
    fxOutputChannel other(fxDT_int);
    other.add(direct);
    {
        fxOutputChannel out(fxDT_int);
        for (fxInputChannel* in : {direct, converting, direct, orphan, converting})
            out.add(in);
        orphan->dec();
        EXPECT_EQ(4U, direct->count);
        EXPECT_EQ(3U, converting->count);
    }
    EXPECT_EQ(2U, direct->count);
    ASSERT_EQ(1U, sources(direct));
    EXPECT_EQ(&other, (*direct->sources)[0]);
    EXPECT_EQ(1U, converting->count);
    EXPECT_EQ(0U, sources(converting));
    other.remove(direct);
    direct->dec();
    converting->dec();
}

TEST_F(fxOutputChannelTest, queuedMessagesKeepTheirConnection) {
    fxInputChannel* in = input(fxDT_fxBool);
    {
        fxOutputChannel out(fxDT_int);
        out.add(in);
        fx_theEventHandler->postMessage(&out, new SpyData(9), fxObj::fxSendQueued);
        EXPECT_EQ(2U, out[0]->count) << "the connection's and the message's";
        EXPECT_EQ(2U, in->count) << "messages hold the link, not the input";
    }
    EXPECT_EQ(2U, in->count);
    EXPECT_EQ("bool 9", distribute());
    EXPECT_EQ(1U, in->count);
    in->dec();
}

TEST_F(fxOutputChannelDeathTest, typesWithoutAConversionAreFatal) {
    fxOutputChannel out(fxDT_float);
    fxInputChannel in(fxDT_long, nullptr, nullptr, 0);
    EXPECT_EXIT(out.add(&in), testing::KilledBySignal(SIGABRT), "^Can't convert from 4 to 3\n$");
    fxOutputChannel ofNoKnownType(65535);
    EXPECT_EXIT(ofNoKnownType.add(&in), testing::KilledBySignal(SIGABRT),
                "^Can't convert from 65535 to 3\n$");
    fxOutputChannel ofNoValue(fxDT_void);
    fxInputChannel ofInt(fxDT_int, nullptr, nullptr, 0);
    EXPECT_EXIT(ofNoValue.add(&ofInt), testing::KilledBySignal(SIGABRT),
                "^Can't convert from 0 to 2\n$");
}

TEST_F(fxOutputChannelDeathTest, inputThatDoesNotKnowTheOutputIsFatal) {
    fxOutputChannel* out = new fxOutputChannel(fxDT_int);
    fxInputChannel* in = input(fxDT_int);
    out->add(in);
    in->remove(out);
    EXPECT_EXIT(out->remove(in), testing::KilledBySignal(SIGABRT), "^ic/oc connections busted\n$");
    EXPECT_EXIT(delete out, testing::KilledBySignal(SIGABRT), "^ic/oc connections busted\n$");
    in->add(out);
    delete out;
    in->dec();
}
