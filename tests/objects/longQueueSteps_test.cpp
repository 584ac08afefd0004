// The end of objects while many events are queued, beside a list that is searched from end to end.

#include <deque>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/objects/fxWiring.h"
#include "tests/support/dataFlow.h"

namespace {

struct Expected {
    const FlowNode* receiver;  // null for an event of a host's own
    std::string word;
};

class Steps {
public:
    Steps(FlowLog& flowLog, unsigned int seed) : log(flowLog), random(seed) {
        for (unsigned int i = 0; i < 8; ++i)
            nodes.push_back(make());
    }

    void take() {
        const unsigned int i = random() % 8;
        const int value = ++steps;
        switch (random() % 16) {
            case 0:
                drop(nodes[i].get());
                nodes[i] = make();
                break;
            case 1:
                drop(nodes[i].get());
                fx_theEventHandler->removeEventsFor(nodes[i].get());
                break;
            case 2:
                fx_theEventHandler->postEvent(new NoteEvent(log, "e" + std::to_string(value)), 0);
                expected.push_back(
                    {nullptr, "e" + std::to_string(value) + " ~e" + std::to_string(value)});
                break;
            default:
                send(*nodes[i], value, random() % 4 == 0);
        }
    }

    // What is left in the queue, as the log would note it.
    std::string left() const {
        FlowLog words;
        for (const Expected& each : expected)
            words.note(each.word);
        return words.take();
    }
    std::size_t count() const { return expected.size(); }

private:
    std::unique_ptr<FlowNode> make() {
        const unsigned short type = random() % 2 != 0 ? fxDT_int : fxDT_float;
        auto node = std::make_unique<FlowNode>(log, "n" + std::to_string(++made), type);
        if (type == fxDT_int && random() % 2 != 0)
            node->in = fxOnInput(node.get(), "in",
                                 [to = node.get()](int value) { FlowNode::receiveInt(to, value); });
        return node;
    }

    void send(FlowNode& node, int value, bool urgent) {
        FlowNode sender(log);
        sender.connect("out", &node, "in");
        sender.send(value, urgent ? fxObj::fxSendUrgent : fxObj::fxSendQueued);
        const Expected message = {&node, node.name + '=' + textOf(node, value)};
        if (urgent)
            expected.push_front(message);
        else
            expected.push_back(message);
    }

    static std::string textOf(const FlowNode& node, int value) {
        return node.in->getType() == fxDT_int ? std::to_string(value)
                                              : std::to_string(static_cast<double>(value));
    }

    void drop(const FlowNode* receiver) {
        std::deque<Expected> others;
        for (const Expected& each : expected) {
            if (each.receiver != receiver)
                others.push_back(each);
        }
        expected.swap(others);
    }

    FlowLog& log;
    std::minstd_rand random;
    std::vector<std::unique_ptr<FlowNode>> nodes;
    std::deque<Expected> expected;
    int steps = 0;
    int made = 0;
};

using longQueueSteps = DataFlowTest;

}  // namespace

TEST_F(longQueueSteps, stepsTakenAtRandomLeaveWhatASearchFromEndToEndWould) {
    for (unsigned int seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Steps steps(log, seed);
        for (int i = 0; i < 1000; ++i) {
            steps.take();
            ASSERT_EQ(steps.count(), queued());
        }
        EXPECT_EQ(steps.left(), distribute());
    }
}
