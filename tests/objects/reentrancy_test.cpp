#include <algorithm>
#include <deque>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/dataFlow.h"

// What receivers may do while a value is delivered to them. Most tests try it
// in every setting: each way of sending, one to four connections, each
// receiver as the one that acts, with and without conversions.

namespace {

struct Setting {
    fxObj::fxSendFlags flags;
    unsigned int connections;
    unsigned int actor;
    bool converting;
};

using Words = std::vector<std::string>;

std::string joined(const Words& words) {
    FlowLog log;
    for (const std::string& word : words)
        log.note(word);
    return log.take();
}

// A sender and the receivers "a", "b", ... connected to it, one of which acts.
class Scene {
public:
    explicit Scene(const Setting& s) : setting(s), sender(new FlowNode(log, "sender")) {
        for (unsigned int i = 0; i < setting.connections; ++i) {
            const std::string name(1, static_cast<char>('a' + i));
            const unsigned short type = setting.converting ? fxDT_fxBool : fxDT_int;
            receivers.push_back(new FlowNode(log, name, type));
            sender->connect("out", receivers[i], "in");
            order.push_back(i);
        }
        if (setting.flags == fxObj::fxSendUrgent)
            std::reverse(order.begin(), order.end());
    }
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;
    ~Scene() {
        delete sender;
        for (const FlowNode* node : receivers)
            delete node;
    }

    bool isNow() const { return setting.flags == fxObj::fxSendNow; }
    FlowNode& actor() { return *receivers[setting.actor]; }
    void destroy(unsigned int i) { delete std::exchange(receivers[i], nullptr); }
    void destroySender() { delete std::exchange(sender, nullptr); }
    void disconnect(unsigned int i) { sender->disconnect("out", receivers[i], "in"); }
    unsigned int connections() const { return sender->out->getNumberOfConnections(); }

    /// Sends `value` and distributes events until there are none. A bar stands
    /// before what another call of distributeEvents delivers.
    std::string send(int value) {
        log.take();
        sender->sendData(sender->out, new SpyData(value), setting.flags);
        bool bar = isNow();
        for (; fx_theEventHandler->numberOfEvents() != 0; bar = true) {
            if (bar)
                log.note("|");
            fx_theEventHandler->distributeEvents();
        }
        return log.take();
    }

    // What is expected to be noted.

    static std::string word(unsigned int i, int value) {
        return std::string(1, static_cast<char>('a' + i)) + '=' + std::to_string(value);
    }

    /// A value for each receiver, in the order of delivery, but for some.
    Words words(int value, const std::function<bool(unsigned int)>& isLeftOut = {}) const {
        Words result;
        for (unsigned int i : order) {
            if (!isLeftOut || !isLeftOut(i))
                result.push_back(word(i, value));
        }
        return result;
    }
    std::string all(int value) const { return joined(words(value)); }
    std::string allBut(unsigned int out, int value) const {
        return joined(words(value, [out](unsigned int i) { return i == out; }));
    }
    std::string upToActor(int value) const {
        return joined(words(value, [this](unsigned int i) { return isAfterActor(i); }));
    }
    bool isAfterActor(unsigned int i) const {
        return std::find(order.begin(), order.end(), i) >
               std::find(order.begin(), order.end(), setting.actor);
    }

    /// What distributing the messages of the first value notes when `react`
    /// changes the queue as the actor receives its own.
    std::string distributed(const std::function<void(std::deque<std::string>&)>& react) const {
        const Words first = words(1);
        std::deque<std::string> queue(first.begin(), first.end());
        Words noted;
        while (!queue.empty()) {
            if (!noted.empty())
                noted.emplace_back("|");
            for (std::size_t bound = queue.size(); bound != 0; --bound) {
                const std::string delivered = queue.front();
                queue.pop_front();
                noted.push_back(delivered);
                if (delivered == word(setting.actor, 1))
                    react(queue);
            }
        }
        return joined(noted);
    }

    const Setting setting;
    FlowLog log;
    FlowNode* sender;
    std::vector<FlowNode*> receivers;

private:
    std::vector<unsigned int> order;  // of delivery
};

const char* nameOf(fxObj::fxSendFlags flags) {
    return flags == fxObj::fxSendNow ? "now" : flags == fxObj::fxSendUrgent ? "urgent" : "queued";
}

class reentrancy : public DataFlowTest {
protected:
    static void inEachSetting(const std::function<void(Scene&)>& body) {
        for (const fxObj::fxSendFlags flags :
             {fxObj::fxSendQueued, fxObj::fxSendNow, fxObj::fxSendUrgent}) {
            for (unsigned int n = 1; n <= 4; ++n) {
                for (unsigned int actor = 0; actor < n; ++actor) {
                    for (const bool converting : {false, true})
                        inSetting({flags, n, actor, converting}, body);
                }
            }
        }
    }

    /// In each setting with each of the receivers that do not act.
    static void withEachOther(const std::function<void(Scene&, unsigned int)>& body) {
        for (unsigned int other = 0; other < 4; ++other) {
            SCOPED_TRACE(testing::Message() << "the other one is " << other);
            inEachSetting([&](Scene& scene) {
                if (other != scene.setting.actor && other < scene.setting.connections)
                    body(scene, other);
            });
        }
    }

private:
    static void inSetting(const Setting& setting, const std::function<void(Scene&)>& body) {
        SCOPED_TRACE(testing::Message() << nameOf(setting.flags) << ", " << setting.connections
                                        << " connections, acting is " << setting.actor
                                        << (setting.converting ? ", converting" : ""));
        Scene scene(setting);
        body(scene);
    }
};

}  // namespace

// Connections.

TEST_F(reentrancy, receiverDisconnectsItself) {
    inEachSetting([](Scene& scene) {
        const unsigned int actor = scene.setting.actor;
        scene.actor().reaction = [&] { scene.disconnect(actor); };
        EXPECT_EQ(scene.all(1), scene.send(1));
        EXPECT_EQ(scene.setting.connections - 1, scene.connections());
        EXPECT_EQ(1U, scene.actor().in->count);
        EXPECT_EQ(scene.allBut(actor, 2), scene.send(2));
    });
}

TEST_F(reentrancy, receiverDisconnectsAnother) {
    withEachOther([](Scene& scene, unsigned int other) {
        const bool misses = scene.isNow() && scene.isAfterActor(other);
        scene.actor().reaction = [&] { scene.disconnect(other); };
        EXPECT_EQ(misses ? scene.allBut(other, 1) : scene.all(1), scene.send(1));
        EXPECT_EQ(1U, scene.receivers[other]->in->count);
        EXPECT_EQ(scene.allBut(other, 2), scene.send(2));
    });
}

TEST_F(reentrancy, receiverDisconnectsAll) {
    inEachSetting([](Scene& scene) {
        scene.actor().reaction = [&] {
            for (unsigned int i = 0; i < scene.setting.connections; ++i)
                scene.disconnect(i);
        };
        EXPECT_EQ(scene.isNow() ? scene.upToActor(1) : scene.all(1), scene.send(1));
        EXPECT_EQ(0U, scene.connections());
        EXPECT_EQ("", scene.send(2));
    });
}

TEST_F(reentrancy, receiverConnectsMore) {
    inEachSetting([](Scene& scene) {
        FlowNode more(scene.log, "more");
        scene.actor().reaction = [&] { scene.sender->connect("out", &more, "in"); };
        EXPECT_EQ(scene.all(1), scene.send(1));
        Words second = scene.words(2);
        second.insert(scene.setting.flags == fxObj::fxSendUrgent ? second.begin() : second.end(),
                      "more=2");
        EXPECT_EQ(joined(second), scene.send(2));
    });
}

TEST_F(reentrancy, receiverConnectsOneMoreForAWhile) {
    inEachSetting([](Scene& scene) {
        FlowNode more(scene.log, "more");
        scene.actor().reaction = [&] {
            scene.sender->connect("out", &more, "in");
            scene.sender->disconnect("out", &more, "in");
        };
        EXPECT_EQ(scene.all(1), scene.send(1));
        EXPECT_EQ(scene.all(2), scene.send(2));
    });
}

TEST_F(reentrancy, receiverReconnectsItself) {
    inEachSetting([](Scene& scene) {
        scene.actor().reaction = [&] {
            scene.disconnect(scene.setting.actor);
            scene.sender->connect("out", &scene.actor(), "in");
        };
        EXPECT_EQ(scene.all(1), scene.send(1));
        Words second = scene.words(2, [&](unsigned int i) { return i == scene.setting.actor; });
        second.insert(scene.setting.flags == fxObj::fxSendUrgent ? second.begin() : second.end(),
                      Scene::word(scene.setting.actor, 2));
        EXPECT_EQ(joined(second), scene.send(2));
    });
}

// A connection that is made while a value is sent at once does not get it, not
// even one that was there when the sending began and was broken meanwhile.
TEST_F(reentrancy, receiverReconnectsAnother) {
    withEachOther([](Scene& scene, unsigned int other) {
        const bool misses = scene.isNow() && scene.isAfterActor(other);
        scene.actor().reaction = [&] {
            scene.disconnect(other);
            scene.sender->connect("out", scene.receivers[other], "in");
        };
        EXPECT_EQ(misses ? scene.allBut(other, 1) : scene.all(1), scene.send(1));
        EXPECT_EQ(scene.setting.connections, scene.connections());
    });
}

TEST_F(reentrancy, secondConnectionOfAReceiverThatDisconnectsOnce) {
    for (const bool converting : {false, true}) {
        Scene scene({fxObj::fxSendNow, 1, 0, converting});
        scene.sender->out->add(scene.actor().in);
        scene.actor().reaction = [&] { scene.disconnect(0); };
        EXPECT_EQ("a=1 a=1", scene.send(1));
        EXPECT_EQ("a=2", scene.send(2));
    }
}

// Objects.

TEST_F(reentrancy, receiverDeletesItsOwnObject) {
    inEachSetting([](Scene& scene) {
        const unsigned int actor = scene.setting.actor;
        scene.actor().reaction = [&] { scene.destroy(actor); };
        EXPECT_EQ(scene.all(1), scene.send(1));
        EXPECT_EQ(scene.setting.connections - 1, scene.connections());
        EXPECT_EQ(scene.allBut(actor, 2), scene.send(2));
    });
}

TEST_F(reentrancy, receiverDeletesItsOwnObjectWithMoreMessagesQueued) {
    inEachSetting([](Scene& scene) {
        const unsigned int actor = scene.setting.actor;
        FlowNode other(scene.log, "other");
        other.connect("out", &scene.actor(), "in");
        other.connect("out", &other, "in");
        scene.actor().reaction = [&] {
            other.send(3, fxObj::fxSendUrgent);
            other.send(4, fxObj::fxSendQueued);
            scene.destroy(actor);
        };
        const auto queueOthers = [](std::deque<std::string>& queue) {
            queue.push_front("other=3");
            queue.push_back("other=4");
        };
        EXPECT_EQ(
            scene.isNow() ? scene.all(1) + " | other=3 other=4" : scene.distributed(queueOthers),
            scene.send(1));
    });
}

TEST_F(reentrancy, receiverDeletesAnother) {
    withEachOther([](Scene& scene, unsigned int other) {
        scene.actor().reaction = [&] { scene.destroy(other); };
        EXPECT_EQ(scene.isAfterActor(other) ? scene.allBut(other, 1) : scene.all(1), scene.send(1));
        EXPECT_EQ(scene.setting.connections - 1, scene.connections());
        EXPECT_EQ(scene.allBut(other, 2), scene.send(2));
    });
}

TEST_F(reentrancy, receiverDeletesTheSender) {
    inEachSetting([](Scene& scene) {
        scene.actor().reaction = [&] { scene.destroySender(); };
        EXPECT_EQ(scene.isNow() ? scene.upToActor(1) : scene.all(1), scene.send(1));
        for (const FlowNode* node : scene.receivers) {
            EXPECT_EQ(0U, sources(node->in));
            EXPECT_EQ(1U, node->in->count);
        }
    });
}

TEST_F(reentrancy, receiverDeletesEverything) {
    inEachSetting([](Scene& scene) {
        scene.actor().reaction = [&] {
            for (unsigned int i = 0; i < scene.setting.connections; ++i)
                scene.destroy(i);
            scene.destroySender();
        };
        EXPECT_EQ(scene.upToActor(1), scene.send(1));
    });
}

TEST_F(reentrancy, selfConnectedObjectDeletesItself) {
    for (const fxObj::fxSendFlags flags :
         {fxObj::fxSendQueued, fxObj::fxSendNow, fxObj::fxSendUrgent}) {
        for (const unsigned short type : {fxDT_int, fxDT_fxBool, fxDT_void}) {
            SCOPED_TRACE(testing::Message() << nameOf(flags) << ", type " << type);
            auto* object = new FlowNode(log, "self", type);
            object->connect("out", object, "in");
            object->reaction = [&] { delete object; };
            object->sendData(object->out, new SpyData(1), flags);
            fx_theEventHandler->distributeEvents();
            EXPECT_EQ(type == fxDT_void ? "self=" : "self=1", log.take());
            EXPECT_EQ(0, SpyData::alive);
        }
    }
}

// Channels.

TEST_F(reentrancy, receiverRemovesTheOutput) {
    inEachSetting([](Scene& scene) {
        scene.actor().reaction = [&] { scene.sender->removeOutput("out"); };
        EXPECT_EQ(scene.isNow() ? scene.upToActor(1) : scene.all(1), scene.send(1));
        for (const FlowNode* node : scene.receivers)
            EXPECT_EQ(0U, sources(node->in));
    });
}

TEST_F(reentrancy, receiverReplacesTheOutput) {
    inEachSetting([](Scene& scene) {
        scene.actor().reaction = [&] {
            scene.sender->out = scene.sender->addOutput("out", fxDT_int);
            scene.sender->connect("out", &scene.actor(), "in");
        };
        EXPECT_EQ(scene.isNow() ? scene.upToActor(1) : scene.all(1), scene.send(1));
        EXPECT_EQ(Scene::word(scene.setting.actor, 2), scene.send(2));
    });
}

TEST_F(reentrancy, receiverRemovesItsOwnInput) {
    inEachSetting([](Scene& scene) {
        const unsigned int actor = scene.setting.actor;
        scene.actor().reaction = [&] { scene.actor().removeInput("in"); };
        EXPECT_EQ(scene.all(1), scene.send(1));
        EXPECT_EQ(scene.allBut(actor, 2), scene.send(2));
    });
}

TEST_F(reentrancy, receiverRemovesTheInputOfAnother) {
    withEachOther([](Scene& scene, unsigned int other) {
        // What is queued for a link is not what is queued for its input.
        const bool flushed = scene.isNow() || !scene.setting.converting;
        scene.actor().reaction = [&] { scene.receivers[other]->removeInput("in"); };
        EXPECT_EQ(flushed && scene.isAfterActor(other) ? scene.allBut(other, 1) : scene.all(1),
                  scene.send(1));
        EXPECT_EQ(scene.allBut(other, 2), scene.send(2));
    });
}

TEST_F(reentrancy, receiverAddsInputsAgain) {
    inEachSetting([](Scene& scene) {
        void (*const noteNew)(void*, int) = [](void* target, int value) {
            static_cast<FlowLog*>(target)->note("new=" + std::to_string(value));
        };
        scene.actor().reaction = [&] {
            for (FlowNode* node : scene.receivers)
                node->addInput("in", fxDT_int, &scene.log, receiver(noteNew), 0);
        };
        EXPECT_EQ(scene.all(1), scene.send(1));
        EXPECT_EQ(scene.all(2), scene.send(2)) << "through the old channels";
        scene.sender->connect("out", &scene.actor(), "in");
        Words third = scene.words(3);
        third.insert(scene.setting.flags == fxObj::fxSendUrgent ? third.begin() : third.end(),
                     "new=3");
        EXPECT_EQ(joined(third), scene.send(3));
    });
}

// Sending again.

TEST_F(reentrancy, receiverSendsAgain) {
    inEachSetting([](Scene& scene) {
        const Words again = scene.words(2);
        scene.actor().reaction = [&] { scene.sender->send(2, scene.setting.flags); };
        if (scene.isNow()) {
            Words expected = scene.words(1);
            expected.insert(expected.begin() + static_cast<int>(scene.setting.actor) + 1,
                            again.begin(), again.end());
            EXPECT_EQ(joined(expected), scene.send(1));
            return;
        }
        const bool atFront = scene.setting.flags == fxObj::fxSendUrgent;
        EXPECT_EQ(scene.distributed([&](std::deque<std::string>& queue) {
            queue.insert(atFront ? queue.begin() : queue.end(), again.begin(), again.end());
        }),
                  scene.send(1));
    });
}

TEST_F(reentrancy, receiversAnswerEachOther) {
    FlowNode a(log, "a");
    FlowNode b(log, "b", fxDT_float);
    a.connect("out", &b, "in");
    b.connect("out", &a, "in");
    a.reaction = [&] { a.send(3, fxObj::fxSendNow); };
    b.reaction = [&] { b.send(2, fxObj::fxSendNow); };
    a.send(1, fxObj::fxSendNow);
    EXPECT_EQ("b=1.000000 a=2 b=3.000000", log.take());

    a.reaction = [&] { a.send(3); };
    b.reaction = [&] { b.send(2); };
    a.send(1);
    EXPECT_EQ("b=1.000000", distribute());
    EXPECT_EQ("a=2", distribute());
    EXPECT_EQ("b=3.000000", distribute());
}

TEST_F(reentrancy, innerSendEndsTheOuterOne) {
    for (const bool converting : {false, true}) {
        Scene scene({fxObj::fxSendNow, 3, 1, converting});
        scene.actor().reaction = [&] {
            scene.receivers[2]->reaction = [&] { scene.destroySender(); };
            scene.sender->send(2, fxObj::fxSendNow);
        };
        EXPECT_EQ("a=1 b=1 a=2 b=2 c=2", scene.send(1));
    }
}

TEST_F(reentrancy, innerSendDisconnectsForTheOuterOneToo) {
    for (const bool converting : {false, true}) {
        Scene scene({fxObj::fxSendNow, 4, 1, converting});
        scene.actor().reaction = [&] {
            scene.receivers[2]->reaction = [&] {
                scene.disconnect(0);
                scene.disconnect(2);
            };
            scene.sender->send(2, fxObj::fxSendNow);
        };
        EXPECT_EQ("a=1 b=1 a=2 b=2 c=2 d=2 d=1", scene.send(1));
        EXPECT_EQ("b=3 d=3", scene.send(3));
    }
}

TEST_F(reentrancy, receiverSendsAgainToLatestOnlyInputs) {
    FlowNode sender(log);
    FlowNode a(log, "a", fxDT_int, 1);
    FlowNode b(log, "b", fxDT_fxBool, 1);
    FlowNode c(log, "c", fxDT_int, 1);
    for (FlowNode* node : {&a, &b, &c})
        sender.connect("out", node, "in");
    b.reaction = [&] { sender.send(2); };
    sender.send(1);
    EXPECT_EQ("a=1 b=1 a=2", distribute()) << "c's message is replaced behind a's and b's";
    EXPECT_EQ("b=2 c=2", distribute());

    b.reaction = [&] { sender.send(4, fxObj::fxSendUrgent); };
    sender.send(3);
    EXPECT_EQ("a=3 b=3 c=4", distribute());
    EXPECT_EQ("b=4 a=4", distribute());

    b.reaction = [&] { sender.send(6, fxObj::fxSendNow); };
    sender.send(5);
    EXPECT_EQ("a=5 b=5 a=6 b=6 c=6", distribute()) << "c's message is dropped";
}

// Events.

TEST_F(reentrancy, receiverPostsEvents) {
    for (const bool atFront : {false, true}) {
        SCOPED_TRACE(atFront ? "at the front" : "at the back");
        inEachSetting([&](Scene& scene) {
            scene.actor().reaction = [&] {
                fx_theEventHandler->postEvent(new NoteEvent(scene.log, "event"), atFront);
            };
            if (scene.isNow()) {
                EXPECT_EQ(scene.all(1) + " | event ~event", scene.send(1));
                return;
            }
            EXPECT_EQ(scene.distributed([&](std::deque<std::string>& queue) {
                queue.insert(atFront ? queue.begin() : queue.end(), "event ~event");
            }),
                      scene.send(1));
        });
    }
}

TEST_F(reentrancy, receiverRemovesAllEvents) {
    inEachSetting([](Scene& scene) {
        scene.actor().reaction = [] {
            fx_theEventHandler->removeEvents([](fxEvent*, void*) -> unsigned char { return 1; },
                                             nullptr);
        };
        EXPECT_EQ(scene.isNow() ? scene.all(1) : scene.upToActor(1), scene.send(1));
        EXPECT_EQ(0, SpyData::alive);
    });
}

TEST_F(reentrancy, receiverFlushesTheInputsOfAll) {
    inEachSetting([](Scene& scene) {
        scene.actor().reaction = [&] {
            for (unsigned int i = 0; i < scene.setting.connections; ++i)
                (*scene.sender->out)[i]->flush();
        };
        EXPECT_EQ(scene.isNow() ? scene.all(1) : scene.upToActor(1), scene.send(1));
        EXPECT_EQ(0, SpyData::alive);
    });
}

TEST_F(reentrancy, receiverDistributesEvents) {
    inEachSetting([](Scene& scene) {
        fx_theEventHandler->postEvent(new NoteEvent(scene.log, "older"), 0);
        scene.actor().reaction = [] { fx_theEventHandler->distributeEvents(); };
        Words expected = scene.words(1);
        const auto older = scene.isNow()
                               ? expected.begin() + static_cast<int>(scene.setting.actor) + 1
                           : scene.setting.flags == fxObj::fxSendUrgent ? expected.end()
                                                                        : expected.begin();
        expected.insert(older, "older ~older");
        EXPECT_EQ(joined(expected), scene.send(1));
        EXPECT_EQ(0, SpyData::alive);
    });
}
