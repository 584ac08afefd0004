#include "kelvofxds/objects/fxEventQueue.h"

#include <algorithm>
#include <cstddef>
#include <deque>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/dataFlow.h"

struct fxEventQueueLayout {
    static_assert(offsetof(fxEventQueue, head) == 0, "no table");
    static_assert(offsetof(fxEventQueue, tail) == 4, "after head");
    static_assert(offsetof(fxEventQueue, count) == 8, "after tail");
    static_assert(sizeof(fxEventQueue) == 12, "nothing else");
    static_assert(offsetof(fxEventHandler, queue) == 0, "a handler is a queue");
    static_assert(sizeof(fxEventHandler) == sizeof(fxEventQueue), "and nothing else");

    static const fxEvent* head(const fxEventQueue& q) { return q.head; }
    static const fxEvent* tail(const fxEventQueue& q) { return q.tail; }
};

namespace {

// An event whose links can be seen; it counts those that live.
class LinkedEvent : public fxEvent {
public:
    LinkedEvent() : fxEvent(fxET_Unknown) { ++alive; }
    ~LinkedEvent() override { --alive; }
    void deliver() override {}

    const fxEvent* nextEvent() const { return next; }
    const fxEvent* prevEvent() const { return prev; }

    static int alive;
};

int LinkedEvent::alive = 0;

// Whether `queue` consists of `events`, with every link in place.
void expectQueue(const std::vector<LinkedEvent*>& events, fxEventQueue& queue) {
    EXPECT_EQ(events.size(), queue.getCount());
    EXPECT_EQ(events.empty() ? nullptr : events.front(), fxEventQueueLayout::head(queue));
    EXPECT_EQ(events.empty() ? nullptr : events.back(), fxEventQueueLayout::tail(queue));
    for (std::size_t i = 0; i < events.size(); ++i) {
        SCOPED_TRACE(testing::Message() << "event " << i << " of " << events.size());
        EXPECT_EQ(i == 0 ? nullptr : events[i - 1], events[i]->prevEvent());
        EXPECT_EQ(i + 1 == events.size() ? nullptr : events[i + 1], events[i]->nextEvent());
        EXPECT_TRUE(queue.contains(events[i]));
    }
}

void expectUnlinked(const LinkedEvent* event) {
    EXPECT_EQ(nullptr, event->nextEvent());
    EXPECT_EQ(nullptr, event->prevEvent());
}

class fxEventQueueTest : public DataFlowTest {
protected:
    void SetUp() override {
        DataFlowTest::SetUp();
        LinkedEvent::alive = 0;
    }
    void TearDown() override {
        while (fxEvent* e = queue.get())
            delete e;
        EXPECT_EQ(0, LinkedEvent::alive);
        DataFlowTest::TearDown();
    }

    std::vector<LinkedEvent*> appended(unsigned int n) {
        std::vector<LinkedEvent*> events;
        for (unsigned int i = 0; i < n; ++i) {
            events.push_back(new LinkedEvent);
            queue.append(events.back());
        }
        return events;
    }

    fxEventQueue queue;
};

}  // namespace

TEST_F(fxEventQueueTest, newQueueIsEmpty) {
    expectQueue({}, queue);
    EXPECT_EQ(nullptr, queue.get());
    expectQueue({}, queue);
}

TEST_F(fxEventQueueTest, appendLinksAtTheTail) {
    auto* a = new LinkedEvent;
    auto* b = new LinkedEvent;
    auto* c = new LinkedEvent;
    queue.append(a);
    expectQueue({a}, queue);
    queue.append(b);
    expectQueue({a, b}, queue);
    queue.append(c);
    expectQueue({a, b, c}, queue);
}

TEST_F(fxEventQueueTest, insertLinksAtTheHead) {
    auto* a = new LinkedEvent;
    auto* b = new LinkedEvent;
    auto* c = new LinkedEvent;
    queue.insert(a);
    expectQueue({a}, queue);
    queue.insert(b);
    expectQueue({b, a}, queue);
    queue.append(c);
    expectQueue({b, a, c}, queue);
}

TEST_F(fxEventQueueTest, getUnlinksTheHead) {
    std::vector<LinkedEvent*> events = appended(3);
    while (!events.empty()) {
        SCOPED_TRACE(events.size());
        LinkedEvent* first = events.front();
        EXPECT_EQ(first, queue.get());
        expectUnlinked(first);
        EXPECT_FALSE(queue.contains(first));
        events.erase(events.begin());
        expectQueue(events, queue);
        delete first;
    }
    EXPECT_EQ(nullptr, queue.get());
    expectQueue({}, queue);
}

TEST_F(fxEventQueueTest, takenEventCanBeQueuedAgain) {
    const std::vector<LinkedEvent*> events = appended(2);
    queue.append(static_cast<LinkedEvent*>(queue.get()));
    expectQueue({events[1], events[0]}, queue);
    queue.insert(static_cast<LinkedEvent*>(queue.get()));
    expectQueue({events[1], events[0]}, queue);
}

TEST_F(fxEventQueueTest, removeUnlinksAndDeletesWherever) {
    for (unsigned int n = 1; n <= 4; ++n) {
        for (unsigned int i = 0; i < n; ++i) {
            SCOPED_TRACE(testing::Message() << "event " << i << " of " << n);
            std::vector<LinkedEvent*> events = appended(n);
            queue.remove(events[i]);
            EXPECT_EQ(static_cast<int>(n) - 1, LinkedEvent::alive);
            events.erase(events.begin() + static_cast<int>(i));
            expectQueue(events, queue);
            for (LinkedEvent* left : events)
                queue.remove(left);
            expectQueue({}, queue);
            EXPECT_EQ(0, LinkedEvent::alive);
        }
    }
}

TEST_F(fxEventQueueTest, removeAfterGetFindsItsNeighbours) {
    const std::vector<LinkedEvent*> events = appended(3);
    delete queue.get();
    queue.remove(events[1]);
    expectQueue({events[2]}, queue);
}

TEST_F(fxEventQueueTest, removeDeletesWhateverTheReferenceCount) {
    const std::vector<LinkedEvent*> events = appended(1);
    events[0]->count = 5;
    queue.remove(events[0]);
    EXPECT_EQ(0, LinkedEvent::alive);
}

TEST_F(fxEventQueueTest, removeOfAnEventThatIsNotQueuedLeavesItAlone) {
    LinkedEvent unqueued;
    queue.remove(&unqueued);
    expectQueue({}, queue);
    const std::vector<LinkedEvent*> events = appended(2);
    queue.remove(&unqueued);
    expectQueue(events, queue);
    queue.append(&unqueued);
    EXPECT_EQ(events[0], queue.get());
    delete events[0];
    EXPECT_EQ(events[1], queue.get());
    delete events[1];
    EXPECT_EQ(&unqueued, queue.get());
    queue.remove(&unqueued);
    EXPECT_EQ(1, LinkedEvent::alive);
}

TEST_F(fxEventQueueTest, containsWalksTheWholeQueue) {
    LinkedEvent unqueued;
    EXPECT_FALSE(queue.contains(&unqueued));
    const std::vector<LinkedEvent*> events = appended(100);
    for (LinkedEvent* e : events)
        EXPECT_TRUE(queue.contains(e));
    EXPECT_FALSE(queue.contains(&unqueued));
    EXPECT_FALSE(queue.contains(nullptr));
}

TEST_F(fxEventQueueTest, destructorLeavesQueuedEventsAlone) {
    LinkedEvent a;
    LinkedEvent b;
    {
        fxEventQueue other;
        other.append(&a);
        other.append(&b);
    }
    EXPECT_EQ(2, LinkedEvent::alive);
    EXPECT_EQ(&b, a.nextEvent());
    EXPECT_EQ(&a, b.prevEvent());
}

TEST_F(fxEventQueueTest, behavesLikeADequeWithRandomOperations) {
    const unsigned int seed = 20240229;
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    std::vector<LinkedEvent*> model;
    for (int step = 0; step < 5000 && !HasFailure(); ++step) {
        SCOPED_TRACE(testing::Message() << "step " << step);
        const unsigned int what = random() % 6;
        if (what < 2) {
            model.push_back(new LinkedEvent);
            queue.append(model.back());
        } else if (what == 2) {
            model.insert(model.begin(), new LinkedEvent);
            queue.insert(model.front());
        } else if (what == 3) {
            fxEvent* taken = queue.get();
            EXPECT_EQ(model.empty() ? nullptr : model.front(), taken);
            if (!model.empty())
                model.erase(model.begin());
            delete taken;
        } else if (!model.empty()) {
            const auto victim = model.begin() + static_cast<int>(random() % model.size());
            queue.remove(*victim);
            model.erase(victim);
        }
        expectQueue(model, queue);
    }
}
