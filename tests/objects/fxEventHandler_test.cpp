#include "kelvofxds/objects/fxEventHandler.h"

#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/objects/fxMessageEvent.h"
#include "tests/support/dataFlow.h"

namespace {

// An event with a channel that is no fxMessageEvent.
class ChannelEvent : public NoteEvent {
public:
    ChannelEvent(FlowLog& eventLog, const char* eventName, unsigned long code, fxInputChannel* c)
        : NoteEvent(eventLog, eventName), channel(c) {
        type = code;
    }
    fxInputChannel* getChannel() override { return channel; }

private:
    fxInputChannel* channel;
};

// A predicate and what it is asked.
struct Question {
    std::function<int(fxEvent*)> answer;
    std::vector<fxEvent*> asked;

    static unsigned char ask(fxEvent* e, void* question) {
        auto* self = static_cast<Question*>(question);
        self->asked.push_back(e);
        return static_cast<unsigned char>(self->answer(e));
    }
};

class fxEventHandlerTest : public DataFlowTest {
protected:
    NoteEvent* post(const char* name, std::function<void()> reaction = {}) {
        auto* event = new NoteEvent(log, name, std::move(reaction));
        fx_theEventHandler->postEvent(event, 0);
        return event;
    }
    NoteEvent* postAtFront(const char* name) {
        auto* event = new NoteEvent(log, name);
        fx_theEventHandler->postEvent(event, 1);
        return event;
    }
};

}  // namespace

TEST_F(fxEventHandlerTest, theToolkitMakesTheOneHandler) {
    ASSERT_NE(nullptr, fx_theEventHandler);
    EXPECT_EQ(0U, fx_theEventHandler->numberOfEvents());
    EXPECT_EQ(static_cast<void*>(fx_theEventHandler),
              static_cast<void*>(&fx_theEventHandler->getQueue()));
}

TEST_F(fxEventHandlerTest, newHandlerHasAnEmptyQueue) {
    fxEventHandler handler;
    EXPECT_EQ(0U, handler.numberOfEvents());
    EXPECT_EQ(nullptr, handler.getQueue().get());
    handler.distributeEvents();
}

TEST_F(fxEventHandlerTest, destructorLeavesQueuedEventsAlone) {
    NoteEvent event(log, "event");
    {
        fxEventHandler handler;
        handler.postEvent(&event, 0);
        EXPECT_EQ(1U, handler.numberOfEvents());
    }
    EXPECT_EQ("", log.take());
}

// Posting.

TEST_F(fxEventHandlerTest, postEventQueuesAtTheTailOrTheHead) {
    const struct {
        unsigned char atFront;
        const char* order;
    } rows[] = {{0, "a ~a b ~b"}, {1, "b ~b a ~a"}, {2, "b ~b a ~a"}, {255, "b ~b a ~a"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(+row.atFront);
        post("a");
        fx_theEventHandler->postEvent(new NoteEvent(log, "b"), row.atFront);
        EXPECT_EQ(2U, queued());
        EXPECT_EQ(row.order, distribute());
    }
}

TEST_F(fxEventHandlerTest, eventThatIsQueuedAlreadyStaysWhereItIs) {
    for (const unsigned char atFront : {false, true}) {
        SCOPED_TRACE(+atFront);
        NoteEvent* events[] = {post("a"), post("b"), post("c")};
        for (NoteEvent* event : events)
            fx_theEventHandler->postEvent(event, atFront);
        EXPECT_EQ(3U, queued());
        EXPECT_EQ("a ~a b ~b c ~c", distribute());
    }
    NoteEvent* single = post("single");
    fx_theEventHandler->postEvent(single, 0);
    EXPECT_EQ(1U, queued());
    EXPECT_EQ("single ~single", distribute());
}

// Distributing.

TEST_F(fxEventHandlerTest, distributeDeliversFromTheHeadAndDeletesEachAtOnce) {
    EXPECT_EQ("", distribute());
    post("a")->count = 3;
    post("b");
    postAtFront("c");
    EXPECT_EQ("c ~c a ~a b ~b", distribute());
    EXPECT_EQ(0U, queued());
    EXPECT_EQ("", distribute());
}

TEST_F(fxEventHandlerTest, eventIsNotQueuedWhileItIsDelivered) {
    std::vector<unsigned int> counts;
    for (const char* name : {"a", "b", "c"})
        post(name, [&] { counts.push_back(queued()); });
    fx_theEventHandler->distributeEvents();
    EXPECT_EQ((std::vector<unsigned int>{2, 1, 0}), counts);
}

TEST_F(fxEventHandlerTest, deliberateEventsPostedMeanwhileWaitForTheNextCall) {
    post("a", [this] { post("d", [this] { post("f"); }); });
    post("b", [this] { post("e"); });
    post("c");
    EXPECT_EQ("a ~a b ~b c ~c", distribute());
    EXPECT_EQ("d ~d e ~e", distribute());
    EXPECT_EQ("f ~f", distribute());
}

TEST_F(fxEventHandlerTest, endlessPostingEndsEachCall) {
    std::function<void()> again = [&] { post("x", again); };
    post("x", again);
    EXPECT_EQ("x ~x", distribute());
    EXPECT_EQ("x ~x", distribute());
    EXPECT_EQ(1U, queued());
    again = nullptr;
    delete fx_theEventHandler->getQueue().get();
}

TEST_F(fxEventHandlerTest, deliberateUrgentEventPostedMeanwhileTakesAnOldOnesPlace) {
    post("a", [this] { postAtFront("urgent"); });
    post("b");
    post("c");
    EXPECT_EQ("a ~a urgent ~urgent b ~b", distribute());
    EXPECT_EQ("c ~c", distribute());
    post("last", [this] { postAtFront("urgent"); });
    EXPECT_EQ("last ~last", distribute());
    EXPECT_EQ("urgent ~urgent", distribute());
}

TEST_F(fxEventHandlerTest, removedEventsMakeRoomForTheOnesPostedMeanwhile) {
    NoteEvent* b = nullptr;
    post("a", [&] {
        fx_theEventHandler->getQueue().remove(b);
        post("d");
        post("e");
    });
    b = post("b");
    post("c");
    EXPECT_EQ("a ~b ~a c ~c d ~d", distribute()) << "three, as queued when it was called";
    EXPECT_EQ("e ~e", distribute());
}

TEST_F(fxEventHandlerTest, distributeStopsEarlyWhenTheQueueIsEmpty) {
    post("a", [] {
        while (fxEvent* e = fx_theEventHandler->getQueue().get())
            delete e;
    });
    post("b");
    post("c");
    EXPECT_EQ("a ~b ~c ~a", distribute());
}

TEST_F(fxEventHandlerTest, distributeInsideADeliveryTakesTheRest) {
    post("a", [] { fx_theEventHandler->distributeEvents(); });
    post("b", [this] { post("d"); });
    post("c");
    EXPECT_EQ("a b ~b c ~c ~a d ~d", distribute()) << "the outer call has two left to take";
    EXPECT_EQ(0U, queued());
}

// Removing.

TEST_F(fxEventHandlerTest, removeEventsAsksAboutEachFromTheHead) {
    const std::vector<fxEvent*> events = {post("a"), post("b"), post("c")};
    Question none{[](fxEvent*) { return 0; }, {}};
    fx_theEventHandler->removeEvents(Question::ask, &none);
    EXPECT_EQ(events, none.asked);
    EXPECT_EQ("a ~a b ~b c ~c", distribute());

    none.asked.clear();
    fx_theEventHandler->removeEvents(Question::ask, &none);
    EXPECT_TRUE(none.asked.empty());
}

TEST_F(fxEventHandlerTest, removeEventsDeletesTheOnesAnsweredWithAnythingButZero) {
    const struct {
        int answers[3];
        const char* removed;
        const char* left;
    } rows[] = {{{1, 0, 0}, "~a", "b ~b c ~c"},   {{0, 2, 0}, "~b", "a ~a c ~c"},
                {{0, 0, 255}, "~c", "a ~a b ~b"}, {{1, 1, 0}, "~a ~b", "c ~c"},
                {{0, 1, 1}, "~b ~c", "a ~a"},     {{1, 0, 1}, "~a ~c", "b ~b"},
                {{1, 1, 1}, "~a ~b ~c", ""},      {{0, 0, 0}, "", "a ~a b ~b c ~c"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.removed);
        for (const char* name : {"a", "b", "c"})
            post(name)->count = 2;
        Question question;
        question.answer = [&](fxEvent*) { return row.answers[question.asked.size() - 1]; };
        fx_theEventHandler->removeEvents(Question::ask, &question);
        EXPECT_EQ(3U, question.asked.size());
        EXPECT_EQ(row.removed, log.take());
        EXPECT_EQ(row.left, distribute());
    }
}

TEST_F(fxEventHandlerTest, removeMessageEventsRemovesThoseOfOneChannel) {
    FlowNode sender(log);
    FlowNode object(log, "object");
    FlowNode other(log, "other");
    fxObj third;
    const ChannelReference in(object.in);
    for (FlowNode* node : {&object, &other})
        sender.connect("out", node, "in");
    sender.send(1);
    post("event");
    sender.send(2, fxObj::fxSendUrgent);
    EXPECT_EQ(4U, in.others()) << "dictionary, connection, two messages";
    fx_theEventHandler->removeMessageEvents(object.in);
    EXPECT_EQ(2U, in.others());
    EXPECT_EQ("other=2 other=1 event ~event", distribute());
    fx_theEventHandler->removeMessageEvents(object.in);
}

TEST_F(fxEventHandlerTest, removeMessageEventsLooksAtTypeAndChannel) {
    fxInputChannel channel(fxDT_int, nullptr, nullptr, 0);
    fxInputChannel other(fxDT_int, nullptr, nullptr, 0);
    auto& queue = fx_theEventHandler->getQueue();
    queue.append(new ChannelEvent(log, "unknown", fxET_Unknown, &channel));
    queue.append(new ChannelEvent(log, "message", fxET_MessageEvent, &channel));
    queue.append(new ChannelEvent(log, "elsewhere", fxET_MessageEvent, &other));
    queue.append(new ChannelEvent(log, "nowhere", fxET_MessageEvent, nullptr));
    fx_theEventHandler->removeMessageEvents(&channel);
    EXPECT_EQ("~message", log.take());
    EXPECT_EQ("unknown ~unknown elsewhere ~elsewhere nowhere ~nowhere", distribute());
}

TEST_F(fxEventHandlerTest, zapMessageEventsMatchesMessagesOfTheChannel) {
    fxInputChannel channel(fxDT_int, nullptr, nullptr, 0);
    fxInputChannel other(fxDT_int, nullptr, nullptr, 0);
    channel.count = other.count = 1;
    fxMessageEvent message(&channel, new SpyData(1));
    fxMessageEvent second(&channel, new SpyData(2));
    fxMessageEvent elsewhere(&other, new SpyData(3));
    ChannelEvent noMessage(log, "x", fxET_Unknown, &channel);
    ChannelEvent looksLikeOne(log, "x", fxET_MessageEvent, &channel);
    const struct {
        const char* why;
        fxEvent* event;
        fxMessageEvent* pending;
        bool matches, keepsPending;
    } rows[] = {{"nothing pending", &message, nullptr, true, true},
                {"it is pending", &message, &message, true, false},
                {"another one is pending", &message, &second, true, true},
                {"for another channel", &elsewhere, &second, false, true},
                {"no message", &noMessage, &message, false, true},
                {"a message of another class", &looksLikeOne, &message, true, true}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        channel.pending = row.pending;
        EXPECT_EQ(row.matches, zapMessageEvents(row.event, &channel) != 0);
        EXPECT_EQ(row.keepsPending ? row.pending : nullptr, channel.pending);
        EXPECT_EQ(nullptr, other.pending);
    }
}

TEST_F(fxEventHandlerTest, askingLeavesPendingAloneAndZappingClearsIt) {
    FlowNode sender(log);
    FlowNode object(log, "object", fxDT_int, 1);
    sender.connect("out", &object, "in");
    sender.send(1);
    fxEvent* message = object.in->pending;
    ASSERT_NE(nullptr, message);
    EXPECT_EQ(message, queuedEvents()[0]);
    EXPECT_EQ(message, object.in->pending) << "asking changes nothing";
    Question question{[&](fxEvent* e) { return zapMessageEvents(e, object.in); }, {}};
    fx_theEventHandler->removeEvents(Question::ask, &question);
    EXPECT_EQ(nullptr, object.in->pending);
    EXPECT_EQ(0U, queued());
}

TEST_F(fxEventHandlerTest, messageThatIsDeletedIsNotPendingAnyMore) {
    FlowNode sender(log);
    FlowNode object(log, "object", fxDT_int, 1);
    FlowNode other(log, "other");
    Question all{[](fxEvent*) { return 1; }, {}};
    auto& queue = fx_theEventHandler->getQueue();
    const std::function<void()> ways[] = {
        [&] { fx_theEventHandler->removeEvents(Question::ask, &all); },
        [&] { queue.remove(object.in->pending); }, [&] { delete queue.get(); }};
    sender.connect("out", &object, "in");
    for (const auto& way : ways) {
        SCOPED_TRACE(&way - ways);
        for (const bool isHostsOwn : {false, true}) {
            if (isHostsOwn)
                queue.append(object.in->pending = new fxMessageEvent(object.in, new SpyData(1)));
            else
                sender.send(1);
            way();
            EXPECT_EQ(nullptr, object.in->pending);
            EXPECT_EQ(0U, queued());
        }
        sender.send(2);
        EXPECT_EQ("object=2", distribute());
    }
}

TEST_F(fxEventHandlerTest, removeEventsForDropsWhatWouldReachATarget) {
    FlowNode sender(log);
    FlowNode direct(log, "direct");
    FlowNode converting(log, "converting", fxDT_fxBool, 1);
    for (FlowNode* node : {&direct, &converting}) {
        sender.connect("out", node, "in");
        sender.send(1);
    }
    post("event");
    EXPECT_EQ(4U, queued());
    fx_theEventHandler->removeEventsFor(&sender);
    EXPECT_EQ(4U, queued());
    fx_theEventHandler->removeEventsFor(&direct);
    EXPECT_EQ(2U, queued());
    fx_theEventHandler->removeEventsFor(&converting);
    EXPECT_EQ(nullptr, (*sender.out)[1]->pending);
    EXPECT_EQ("event ~event", distribute());
}
