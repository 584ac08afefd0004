#include "kelvofxds/values/fxConverter.h"

#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>
#include <unistd.h>

#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/objects/fxEventHandler.h"
#include "kelvofxds/objects/fxObj.h"
#include "kelvofxds/objects/fxOutputChannel.h"
#include "kelvofxds/values/fxData.h"

struct fxConverterLayout {
    static_assert(std::is_base_of<fxInputChannel, fxConverter>::value, "a channel");
    static_assert(!std::is_polymorphic<fxConverter>::value, "no virtual operations");
    static_assert(sizeof(fxConverter) == sizeof(fxInputChannel) + 8, "two fields more");
    static_assert(sizeof(fxConverter) == 32, "eight words");
    static_assert(std::is_same<unsigned short, decltype(fxConverter::targetType)>::value,
                  "a type code");
    static_assert(std::is_same<fxConverter*, decltype(fxConverter::next)>::value, "a link");
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
    static_assert(offsetof(fxConverter, targetType) == 24, "the target type comes first");
    static_assert(offsetof(fxConverter, next) == 28, "then the link");
#pragma GCC diagnostic pop

    static fxConverter* next(const fxConverter& converter) { return converter.next; }
};

namespace {
const unsigned short typeCount = 12;

const bool standard[typeCount][typeCount] = {
    // to: void  bool  int  long float double char* fxStr void* fxObj* fxData* array
    {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},  // from void
    {0, 0, 1, 0, 1, 1, 0, 0, 0, 0, 0, 0},  // bool
    {0, 1, 0, 0, 1, 0, 1, 0, 0, 0, 0, 0},  // int
    {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},  // long
    {0, 1, 1, 0, 0, 1, 1, 0, 0, 0, 0, 0},  // float
    {0, 1, 1, 0, 1, 0, 1, 0, 0, 0, 0, 0},  // double
    {0, 0, 1, 0, 1, 0, 0, 1, 0, 0, 0, 0},  // char*
    {0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0},  // fxStr
    {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},  // void*
    {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},  // fxObj*
    {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},  // fxData*
    {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},  // fxStrArray
};

void noRoutine() {}
void otherRoutine() {}

// A link as a connection holds it: with a target and one reference.
fxConverter* linkTo(fxInputChannel* in, unsigned short from, unsigned short to) {
    fxConverter* link = fxConverter::findConverter(from, to);
    fxConverter::splice(link, in);
    ++link->count;
    return link;
}

class fxConverterTest : public testing::Test {
protected:
    fxConverterTest() { fxInitializeToolkit(); }
};

using fxConverterDeathTest = fxConverterTest;

// Ends a child process with status 0 if no expectation failed in it.
[[noreturn]] void endChild() {
    std::fflush(stdout);
    ::_exit(testing::Test::HasFailure() ? 1 : 0);
}

const auto succeeds = testing::ExitedWithCode(0);
}  // namespace

// The registry.

TEST_F(fxConverterTest, findsTheStandardPairsAndNoOthers) {
    for (unsigned short from = 0; from < typeCount; ++from) {
        for (unsigned short to = 0; to < typeCount; ++to) {
            SCOPED_TRACE(testing::Message() << from << " to " << to);
            fxInputChannel in(to, nullptr, noRoutine, 0);
            in.count = 1;
            fxConverter* link = fxConverter::findConverter(from, to);
            ASSERT_EQ(standard[from][to], link != nullptr);
            if (!link)
                continue;
            EXPECT_EQ(from, link->getType());
            EXPECT_EQ(to, link->getTargetType());
            fxConverter::splice(link, &in);
            ++link->count;
            link->dec();
        }
    }
    EXPECT_EQ(nullptr, fxConverter::findConverter(65535, 65535));
    EXPECT_EQ(nullptr, fxConverter::findConverter(fxDT_int, 65535));
}

TEST_F(fxConverterTest, foundLinkIsAFreshChannel) {
    fxInputChannel in(fxDT_float, nullptr, noRoutine, 0);
    in.count = 1;
    fxConverter* link = fxConverter::findConverter(fxDT_int, fxDT_float);
    ASSERT_NE(nullptr, link);
    EXPECT_EQ(nullptr, link->target);
    EXPECT_EQ(reinterpret_cast<void (*)()>(Cint2float), link->function);
    EXPECT_EQ((2u << 2) | 2u, link->flags) << "type 2 with the mark of a link";
    EXPECT_TRUE(link->isLink());
    EXPECT_FALSE(link->isLatestOnly());
    EXPECT_EQ(nullptr, link->pending);
    EXPECT_EQ(0u, link->count);
    EXPECT_EQ(nullptr, link->sources);
    EXPECT_EQ(fxDT_float, link->getTargetType());
    EXPECT_EQ(nullptr, fxConverterLayout::next(*link));

    fxConverter* other = fxConverter::findConverter(fxDT_int, fxDT_float);
    EXPECT_NE(link, other) << "each time a new one";
    for (fxConverter* made : {link, other}) {
        fxConverter::splice(made, &in);
        ++made->count;
        made->dec();
    }
}

TEST_F(fxConverterTest, linksAreNotRegistered) {
    fxInputChannel in(fxDT_float, nullptr, noRoutine, 0);
    in.count = 1;
    for (int i = 0; i < 100; ++i) {
        fxConverter* link = linkTo(&in, fxDT_int, fxDT_float);
        link->dec();
    }
    fxConverter* link = fxConverter::findConverter(fxDT_int, fxDT_float);
    EXPECT_EQ(nullptr, link->target) << "made from an entry, not from a link";
    fxConverter::splice(link, &in);
    ++link->count;
    link->dec();
    EXPECT_EQ(1u, in.count);
}

TEST_F(fxConverterTest, hostsRegisterConversionsOfTheirTypes) {
    // Codes that nothing else uses: an entry stays until the process ends.
    auto* entry = new fxConverter(60001, 60002, noRoutine);
    EXPECT_EQ(60001, entry->getType());
    EXPECT_EQ(60002, entry->getTargetType());
    EXPECT_EQ(60001u << 2, entry->flags) << "an entry is no link";
    EXPECT_EQ(noRoutine, entry->function);
    EXPECT_EQ(nullptr, entry->target);
    EXPECT_EQ(0u, entry->count);

    EXPECT_EQ(nullptr, fxConverter::findConverter(60002, 60001));
    EXPECT_EQ(nullptr, fxConverter::findConverter(60001, fxDT_int));
    fxInputChannel in(60002, nullptr, noRoutine, 0);
    in.count = 1;
    fxConverter* link = linkTo(&in, 60001, 60002);
    EXPECT_EQ(noRoutine, link->function);
    EXPECT_NE(entry, link);
    link->dec();
}

TEST_F(fxConverterTest, entriesArePushedAtTheHead) {
    auto* first = new fxConverter(60003, 60004, noRoutine);
    auto* second = new fxConverter(60005, 60006, noRoutine);
    EXPECT_EQ(first, fxConverterLayout::next(*second));
}

TEST_F(fxConverterTest, laterEntryIsUsedBeforeAnEarlierOne) {
    fxInputChannel in(60008, nullptr, noRoutine, 0);
    in.count = 1;
    new fxConverter(60007, 60008, noRoutine);
    fxConverter* before = linkTo(&in, 60007, 60008);
    new fxConverter(60007, 60008, otherRoutine);
    fxConverter* after = linkTo(&in, 60007, 60008);
    EXPECT_EQ(noRoutine, before->function);
    EXPECT_EQ(otherRoutine, after->function);
    before->dec();
    after->dec();
}

TEST_F(fxConverterDeathTest, hostsEntryIsUsedBeforeAStandardOne) {
    const auto check = [] {
        new fxConverter(fxDT_int, fxDT_float, otherRoutine);
        EXPECT_EQ(otherRoutine, fxConverter::findConverter(fxDT_int, fxDT_float)->function);
        fxConverter::createStandardConverters();
        EXPECT_EQ(reinterpret_cast<void (*)()>(Cint2float),
                  fxConverter::findConverter(fxDT_int, fxDT_float)->function);
        endChild();
    };
    EXPECT_EXIT(check(), succeeds, "");
}

TEST_F(fxConverterDeathTest, standardConvertersAreRegisteredEachTime) {
    const auto check = [] {
        for (int i = 0; i < 2; ++i) {
            auto* before = new fxConverter(60009, 60010, noRoutine);
            fxConverter::createStandardConverters();
            // Eighteen entries were pushed, from the first row of the table on.
            auto* entry = new fxConverter(60009, 60010, noRoutine);
            int pushed = -1;
            while (entry != before) {
                entry = fxConverterLayout::next(*entry);
                ++pushed;
            }
            EXPECT_EQ(18, pushed);
        }
        endChild();
    };
    EXPECT_EXIT(check(), succeeds, "");
}

TEST_F(fxConverterDeathTest, standardConvertersAreRegisteredInTheOrderOfTheTable) {
    const unsigned short pairs[18][2] = {{1, 2}, {1, 4}, {1, 5}, {2, 1}, {2, 4}, {2, 6},
                                         {4, 1}, {4, 5}, {4, 2}, {4, 6}, {5, 1}, {5, 4},
                                         {5, 2}, {5, 6}, {6, 2}, {6, 4}, {6, 7}, {7, 6}};
    const auto check = [&pairs] {
        fxConverter::createStandardConverters();
        const fxConverter* entry = new fxConverter(60011, 60012, noRoutine);
        for (int i = 17; i >= 0; --i) {
            entry = fxConverterLayout::next(*entry);
            EXPECT_EQ(pairs[i][0], entry->getType()) << i;
            EXPECT_EQ(pairs[i][1], entry->getTargetType()) << i;
        }
        endChild();
    };
    EXPECT_EXIT(check(), succeeds, "");
}

// Links.

TEST_F(fxConverterTest, spliceLeadsTheLinkToItsInputAndHoldsThat) {
    fxInputChannel in(fxDT_float, nullptr, noRoutine, 0);
    in.count = 1;
    fxConverter* link = fxConverter::findConverter(fxDT_int, fxDT_float);
    fxConverter::splice(link, &in);
    EXPECT_EQ(&in, link->target);
    EXPECT_EQ(&in, link->finalChannel());
    EXPECT_EQ(2u, in.count);
    EXPECT_EQ(0u, link->count) << "it is the connection that holds the link";
    EXPECT_EQ((2u << 2) | 2u, link->flags);
    EXPECT_EQ(nullptr, in.sources);
    ++link->count;
    link->dec();
    EXPECT_EQ(1u, in.count);
}

TEST_F(fxConverterTest, spliceCopiesTheLatestOnlyBitOnce) {
    fxInputChannel in(fxDT_float, nullptr, noRoutine, 1);
    in.count = 1;
    fxConverter* link = linkTo(&in, fxDT_int, fxDT_float);
    EXPECT_EQ((2u << 2) | 3u, link->flags);
    in.flags &= ~fxInputChannel::latestOnlyFlag;
    EXPECT_TRUE(link->isLatestOnly()) << "what the input had when they were joined";
    fxConverter::splice(link, &in);
    EXPECT_FALSE(link->isLatestOnly());
    EXPECT_TRUE(link->isLink());
    EXPECT_EQ(fxDT_int, link->getType());
    in.dec();  // spliced twice
    link->dec();
    EXPECT_EQ(1u, in.count);
}

TEST_F(fxConverterTest, linkThatGoesReleasesItsInput) {
    auto* in = new fxInputChannel(fxDT_float, nullptr, noRoutine, 0);
    fxConverter* link = linkTo(in, fxDT_int, fxDT_float);
    EXPECT_EQ(1u, in->count);
    link->dec();  // the input goes with its last reference
}

TEST_F(fxConverterTest, linksInAChainGoOneAfterTheOther) {
    fxInputChannel in(fxDT_double, nullptr, noRoutine, 0);
    in.count = 1;
    fxConverter* inner = linkTo(&in, fxDT_float, fxDT_double);
    fxConverter* outer = fxConverter::findConverter(fxDT_int, fxDT_float);
    fxConverter::splice(outer, inner);
    inner->dec();  // held by the outer link alone
    EXPECT_EQ(&in, outer->finalChannel());
    EXPECT_EQ(2u, in.count);
    ++outer->count;
    outer->dec();
    EXPECT_EQ(1u, in.count);
}

// Links in connections.

namespace {
class Source : public fxObj {
public:
    fxOutputChannel* output(unsigned short type) { return addOutput("out", type); }
};

class Sink : public fxObj {
public:
    fxInputChannel* input(unsigned short type, unsigned char latestOnly = 0) {
        return addInput("in", type, this, reinterpret_cast<void (*)()>(receive), latestOnly);
    }
    float value = 0;
    int calls = 0;

private:
    static void receive(void* self, float v) {
        static_cast<Sink*>(self)->value = v;
        ++static_cast<Sink*>(self)->calls;
    }
};
}  // namespace

TEST_F(fxConverterTest, connectionOfTwoTypesIsHeldThroughALink) {
    Source source;
    Sink sink;
    fxOutputChannel* out = source.output(fxDT_int);
    fxInputChannel* in = sink.input(fxDT_float);
    source.connect("out", &sink, "in");
    ASSERT_EQ(1u, out->getNumberOfConnections());
    fxInputChannel* link = (*out)[0];
    EXPECT_TRUE(link->isLink());
    EXPECT_EQ(in, link->target);
    EXPECT_EQ(1u, link->count);
    EXPECT_EQ(2u, in->count) << "of its object and of the link";
    EXPECT_EQ(nullptr, link->sources);
    ASSERT_NE(nullptr, in->sources);
    EXPECT_EQ(1u, in->sources->length());
    EXPECT_TRUE(out->isConnectedTo(in));

    source.disconnect("out", &sink, "in");
    EXPECT_EQ(0u, out->getNumberOfConnections());
    EXPECT_EQ(1u, in->count);
    EXPECT_EQ(0u, in->sources->length());
}

TEST_F(fxConverterTest, equalTypesNeedNoLink) {
    for (unsigned short type = 0; type < typeCount; ++type) {
        SCOPED_TRACE(type);
        Source source;
        Sink sink;
        fxOutputChannel* out = source.output(type);
        fxInputChannel* in = sink.input(type);
        source.connect("out", &sink, "in");
        ASSERT_EQ(1u, out->getNumberOfConnections());
        EXPECT_EQ(in, (*out)[0]);
        EXPECT_EQ(2u, in->count);
    }
}

TEST_F(fxConverterTest, inputWithoutTypeNeedsNoLink) {
    for (unsigned short type = 0; type < typeCount; ++type) {
        SCOPED_TRACE(type);
        Source source;
        Sink sink;
        fxOutputChannel* out = source.output(type);
        fxInputChannel* in = sink.input(fxDT_void);
        source.connect("out", &sink, "in");
        ASSERT_EQ(1u, out->getNumberOfConnections());
        EXPECT_EQ(in, (*out)[0]);
    }
}

TEST_F(fxConverterTest, standardPairsConnectThroughALink) {
    for (unsigned short from = 0; from < typeCount; ++from) {
        for (unsigned short to = 0; to < typeCount; ++to) {
            if (!standard[from][to])
                continue;
            SCOPED_TRACE(testing::Message() << from << " to " << to);
            Source source;
            Sink sink;
            fxOutputChannel* out = source.output(from);
            fxInputChannel* in = sink.input(to, 1);
            source.connect("out", &sink, "in");
            ASSERT_EQ(1u, out->getNumberOfConnections());
            EXPECT_TRUE((*out)[0]->isLink());
            EXPECT_TRUE((*out)[0]->isLatestOnly());
            EXPECT_EQ(from, (*out)[0]->getType());
            EXPECT_EQ(in, (*out)[0]->finalChannel());
        }
    }
}

TEST_F(fxConverterDeathTest, everyOtherPairIsFatal) {
    int fatalPairs = 0;
    for (unsigned short from = 0; from < typeCount; ++from) {
        for (unsigned short to = 1; to < typeCount; ++to) {
            if (from == to || standard[from][to])
                continue;
            ++fatalPairs;
            Source source;
            Sink sink;
            source.output(from);
            sink.input(to);
            const std::string message =
                "^Can't convert from " + std::to_string(from) + " to " + std::to_string(to) + "\n$";
            EXPECT_EXIT(source.connect("out", &sink, "in"), testing::KilledBySignal(SIGABRT),
                        message);
        }
    }
    // 144 less 12 of equal types, 11 to void and 18 of the table.
    EXPECT_EQ(103, fatalPairs);
}

TEST_F(fxConverterDeathTest, deliberateNoConversionGoesThroughAThirdType) {
    // An int becomes a float and a float a double, but an int no double.
    fxOutputChannel out(fxDT_int);
    fxInputChannel in(fxDT_double, nullptr, noRoutine, 0);
    in.count = 1;
    EXPECT_EXIT(out.add(&in), testing::KilledBySignal(SIGABRT), "^Can't convert from 2 to 5\n$");
}

TEST_F(fxConverterTest, linkBelongsToItsConnection) {
    Source source;
    Sink first, second;
    fxOutputChannel* out = source.output(fxDT_int);
    fxInputChannel* in[] = {first.input(fxDT_float), second.input(fxDT_float)};
    source.connect("out", &first, "in");
    source.connect("out", &second, "in");
    ASSERT_EQ(2u, out->getNumberOfConnections());
    EXPECT_NE((*out)[0], (*out)[1]);
    source.sendInt(out, 3, fxObj::fxSendNow);
    EXPECT_EQ(3.0f, first.value);
    EXPECT_EQ(3.0f, second.value);
    source.disconnect("out", &first, "in");
    EXPECT_EQ(1u, in[0]->count);
    EXPECT_EQ(2u, in[1]->count);
    source.sendInt(out, 4, fxObj::fxSendNow);
    EXPECT_EQ(3.0f, first.value);
    EXPECT_EQ(4.0f, second.value);
}

TEST_F(fxConverterTest, eitherEndOfALinkMayGoFirst) {
    for (const bool sourceFirst : {true, false}) {
        SCOPED_TRACE(sourceFirst);
        auto* source = new Source;
        auto* sink = new Sink;
        fxOutputChannel* out = source->output(fxDT_int);
        sink->input(fxDT_float);
        source->connect("out", sink, "in");
        if (sourceFirst) {
            delete source;
            EXPECT_EQ(1u, sink->getNumberOfProperties());
            delete sink;
        } else {
            delete sink;
            EXPECT_EQ(0u, out->getNumberOfConnections());
            source->sendInt(out, 1, fxObj::fxSendNow);
            delete source;
        }
    }
}

TEST_F(fxConverterTest, queuedMessageHoldsItsLink) {
    Sink sink;
    auto* source = new Source;
    fxOutputChannel* out = source->output(fxDT_int);
    fxInputChannel* in = sink.input(fxDT_float);
    source->connect("out", &sink, "in");
    fxInputChannel* link = (*out)[0];
    source->sendInt(out, 5, fxObj::fxSendQueued);
    EXPECT_EQ(2u, link->count) << "of the connection and of the message";
    delete source;
    EXPECT_EQ(1u, link->count);
    EXPECT_EQ(2u, in->count);
    fx_theEventHandler->distributeEvents();
    EXPECT_EQ(5.0f, sink.value);
    EXPECT_EQ(1, sink.calls);
    EXPECT_EQ(1u, in->count);
}

TEST_F(fxConverterTest, latestOnlyInputKeepsOneMessagePerLink) {
    Sink sink;
    Source first, second;
    fxInputChannel* in = sink.input(fxDT_float, 1);
    fxOutputChannel* outs[] = {first.output(fxDT_int), second.output(fxDT_int)};
    first.connect("out", &sink, "in");
    second.connect("out", &sink, "in");
    const unsigned int before = fx_theEventHandler->numberOfEvents();
    for (int i = 0; i < 3; ++i) {
        first.sendInt(outs[0], i, fxObj::fxSendQueued);
        second.sendInt(outs[1], 10 + i, fxObj::fxSendQueued);
    }
    EXPECT_EQ(before + 2, fx_theEventHandler->numberOfEvents());
    EXPECT_EQ(nullptr, in->pending) << "messages are noted at the links";
    EXPECT_NE(nullptr, (*outs[0])[0]->pending);
    fx_theEventHandler->distributeEvents();
    EXPECT_EQ(2, sink.calls);
    EXPECT_EQ(12.0f, sink.value);
    EXPECT_EQ(nullptr, (*outs[0])[0]->pending);
}
