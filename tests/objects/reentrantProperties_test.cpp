#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "kelvofxds/objects/fxMessageEvent.h"
#include "kelvofxds/str/fxStr.h"
#include "kelvofxds/values/fxProperty.h"
#include "tests/support/dataFlow.h"
#include "tests/support/heapCalls.h"

// What the destroy functions of properties may do.

namespace {

using Action = std::function<void()>;

// A property that runs `action` when it goes.
fxProperty* actingProperty(unsigned int tag, Action action) {
    return new fxProperty(static_cast<unsigned short>(tag), new Action(std::move(action)),
                          [](void* value) {
                              const std::unique_ptr<Action> owned(static_cast<Action*>(value));
                              (*owned)();
                          });
}

unsigned short tagOf(unsigned int tag) { return static_cast<unsigned short>(tag); }

class reentrantProperties : public DataFlowTest {};

}  // namespace

TEST_F(reentrantProperties, replacedPropertyFindsTheNewOne) {
    fxObj object;
    fxProperty* found = nullptr;
    unsigned int number = 0;
    object.setProperty(actingProperty(5, [&] {
        found = object.findProperty(tagOf(5));
        number = object.getNumberOfProperties();
    }));
    auto* replacement = new fxProperty(tagOf(5), 1L);
    object.setProperty(replacement);
    EXPECT_EQ(replacement, found);
    EXPECT_EQ(1U, number);
}

TEST_F(reentrantProperties, replacedPropertySetsAndRemovesOthers) {
    for (const unsigned int tag : {4U, 6U}) {
        for (const bool removing : {false, true}) {
            SCOPED_TRACE(testing::Message() << tag << ", removing " << removing);
            fxObj object;
            object.setProperty(new fxProperty(tagOf(4), 1L));
            object.setProperty(new fxProperty(tagOf(6), 1L));
            auto* fresh = new fxProperty(tagOf(tag), 2L);
            object.setProperty(actingProperty(5, [&] {
                object.removeProperty(tagOf(tag));
                if (!removing)
                    object.setProperty(fresh);
            }));
            auto* replacement = new fxProperty(tagOf(5), 1L);
            object.setProperty(replacement);
            EXPECT_EQ(replacement, object.findProperty(tagOf(5)));
            EXPECT_EQ(1, replacement->count);
            EXPECT_EQ(removing ? nullptr : fresh, object.findProperty(tagOf(tag)));
            EXPECT_EQ(removing ? 2U : 3U, object.getNumberOfProperties());
            if (removing)
                delete fresh;
        }
    }
}

TEST_F(reentrantProperties, replacedPropertyRemovesItsReplacement) {
    fxObj object;
    int ends = 0;
    object.setProperty(actingProperty(5, [&] { object.removeProperty(tagOf(5)); }));
    object.setProperty(actingProperty(5, [&] { ++ends; }));
    EXPECT_EQ(1, ends);
    EXPECT_EQ(0U, object.getNumberOfProperties());
}

TEST_F(reentrantProperties, removedPropertyIsOutOfTheWay) {
    fxObj object;
    auto* fresh = new fxProperty(tagOf(5), 2L);
    object.setProperty(new fxProperty(tagOf(4), 1L));
    object.setProperty(actingProperty(5, [&] {
        EXPECT_EQ(nullptr, object.findProperty(tagOf(5)));
        EXPECT_EQ(1U, object.getNumberOfProperties());
        object.removeProperty(tagOf(4));
        object.setProperty(fresh);
    }));
    object.removeProperty(tagOf(5));
    ASSERT_EQ(1U, object.getNumberOfProperties());
    EXPECT_EQ(fresh, object.getProperty(0));
    EXPECT_EQ(1, fresh->count);
}

TEST_F(reentrantProperties, removedPropertyDeletesItsObject) {
    auto* object = new fxObj;
    int ends = 0;
    object->setProperty(actingProperty(4, [&] { ++ends; }));
    object->setProperty(actingProperty(5, [&] { delete object; }));
    object->removeProperty(tagOf(5));
    EXPECT_EQ(1, ends);
}

TEST_F(reentrantProperties, propertyDeletesAnotherObject) {
    FlowNode node(log, "node");
    auto* other = new FlowNode(log, "other");
    node.connect("out", other, "in");
    other->connect("out", &node, "in");
    node.send(1);
    other->send(2);
    fxObj object;
    object.setProperty(actingProperty(5, [&] { delete other; }));
    object.removeProperty(tagOf(5));
    EXPECT_EQ(0U, node.out->getNumberOfConnections());
    EXPECT_EQ(0U, sources(node.in));
    EXPECT_EQ("node=2", distribute());
}

// The object's properties one after the other, while all of them go.

TEST_F(reentrantProperties, propertiesThatGoTogetherFindEachOther) {
    for (const bool dying : {false, true}) {
        for (const unsigned int tag : {1U, 2U, 3U}) {
            SCOPED_TRACE(testing::Message() << tag << (dying ? ", dying" : ""));
            auto* object = new fxObj;
            int ends = 0;
            for (const unsigned int each : {1U, 2U, 3U}) {
                object->setProperty(actingProperty(each, [&, each] {
                    ++ends;
                    if (each == tag) {
                        EXPECT_EQ(nullptr, object->findProperty(tagOf(each)));
                        for (const unsigned int any : {1U, 2U, 3U})
                            object->findProperty(tagOf(any));
                    }
                }));
            }
            if (!dying) {
                object->removeAllProperties();
                EXPECT_EQ(0U, object->getNumberOfProperties());
            }
            delete object;
            EXPECT_EQ(3, ends);
        }
    }
}

TEST_F(reentrantProperties, propertiesThatGoTogetherRemoveEachOther) {
    for (const bool dying : {false, true}) {
        for (const unsigned int tag : {1U, 2U, 3U}) {
            SCOPED_TRACE(testing::Message() << tag << (dying ? ", dying" : ""));
            auto* object = new fxObj;
            int ends = 0;
            for (const unsigned int each : {1U, 2U, 3U}) {
                object->setProperty(actingProperty(each, [&, each] {
                    ++ends;
                    for (const unsigned int any : {3U, 1U, 2U}) {
                        if (each == tag)
                            object->removeProperty(tagOf(any));
                    }
                }));
            }
            if (!dying) {
                object->removeAllProperties();
                EXPECT_EQ(0U, object->getNumberOfProperties());
            }
            delete object;
            EXPECT_EQ(3, ends) << "each went once";
        }
    }
}

TEST_F(reentrantProperties, propertySetWhileAllGoIsReleasedWithTheObject) {
    for (const bool dying : {false, true}) {
        for (const unsigned int fresh : {0U, 2U, 9U}) {
            SCOPED_TRACE(testing::Message() << fresh << (dying ? ", dying" : ""));
            auto* object = new fxObj;
            int ends = 0;
            object->setProperty(actingProperty(1, [&] { ++ends; }));
            object->setProperty(actingProperty(2, [&] {
                ++ends;
                object->setProperty(actingProperty(fresh, [&] { ++ends; }));
            }));
            object->setProperty(actingProperty(3, [&] { ++ends; }));
            if (!dying)
                object->removeAllProperties();
            delete object;
            EXPECT_EQ(4, ends);
        }
    }
}

TEST_F(reentrantProperties, propertyDeletesItsObjectWhileAllGo) {
    for (const unsigned int tag : {1U, 2U, 3U}) {
        SCOPED_TRACE(tag);
        auto* object = new fxObj;
        fxObj other;
        int ends = 0;
        for (const unsigned int each : {1U, 2U, 3U}) {
            object->setProperty(actingProperty(each, [&, each] {
                ++ends;
                if (each == tag)
                    delete object;
            }));
        }
        other.setProperty(actingProperty(1, [&] { object->removeAllProperties(); }));
        other.setProperty(new fxProperty(tagOf(2), 1L));
        other.removeAllProperties();
        EXPECT_EQ(3, ends);
        EXPECT_EQ(0U, other.getNumberOfProperties()) << "the other one goes on";
    }
}

TEST_F(reentrantProperties, dyingObjectIsDisconnectedByItsProperty) {
    // Below, between and above the tags of the channel properties, as far as
    // there is room.
    const FlowNode namesTheTags(log);
    for (const unsigned int tag : {0U, 1U, 2U, 60000U}) {
        if (tag == fxProperty::findTag("inputs") || tag == fxProperty::findTag("outputs"))
            continue;
        SCOPED_TRACE(tag);
        FlowNode node(log, "node");
        auto* object = new FlowNode(log, "object");
        node.connect("out", object, "in");
        object->connect("out", &node, "in");
        node.send(1);
        object->setProperty(actingProperty(tag, [&] {
            node.disconnect("out", object, "in");
            object->disconnect("out", &node, "in");
            object->removeInput("in");
            object->removeOutput("out");
        }));
        delete object;
        EXPECT_EQ(0U, queued());
        EXPECT_EQ(0U, node.out->getNumberOfConnections());
        EXPECT_EQ(0U, sources(node.in));
    }
}

TEST_F(reentrantProperties, dyingObjectTakesAnotherWithIt) {
    // The other one disconnects itself from the dying object in its own end.
    struct Leaving : public FlowNode {
        Leaving(FlowLog& flowLog, FlowNode* n) : FlowNode(flowLog, "leaving"), neighbour(n) {}
        ~Leaving() override {
            disconnect("out", neighbour, "in");
            neighbour->disconnect("out", this, "in");
        }
        FlowNode* neighbour;
    };
    auto* object = new FlowNode(log, "object");
    auto* leaving = new Leaving(log, object);
    leaving->connect("out", object, "in");
    object->connect("out", leaving, "in");
    leaving->send(1);
    object->setProperty(new fxProperty(tagOf(60000), static_cast<fxObj*>(leaving)));
    delete object;
    EXPECT_EQ(0U, queued());
}

// What is set while all go.

namespace {

// A property that, whenever it goes, sets one like it.
struct Renewal {
    fxObj* object;
    int ends = 0;

    void set() { object->setProperty(new fxProperty(tagOf(5), this, renew)); }
    static void renew(void* value) {
        auto* self = static_cast<Renewal*>(value);
        ++self->ends;
        self->set();
    }
};

}  // namespace

TEST_F(reentrantProperties, removalOfAllLeavesWhatIsSetMeanwhile) {
    auto* object = new fxObj;
    Renewal renewal{object};
    int ends = 0;
    object->setProperty(actingProperty(4, [&] { ++ends; }));
    renewal.set();
    object->setProperty(actingProperty(6, [&] { ++ends; }));
    object->removeAllProperties();
    EXPECT_EQ(2, ends);
    EXPECT_EQ(1, renewal.ends);
    ASSERT_EQ(1U, object->getNumberOfProperties());
    EXPECT_EQ(5, object->getProperty(0)->getTag());
    object->removeAllProperties();
    EXPECT_EQ(2, renewal.ends);
    delete object;
    EXPECT_EQ(4 + 100, renewal.ends)
        << "the one there, the one set meanwhile, and those that are released at once";
}

TEST_F(reentrantProperties, removalOfAllLeavesWhatTookTheSameTag) {
    fxObj object;
    auto* fresh = new fxProperty(tagOf(2), 7L);
    int ends = 0;
    object.setProperty(actingProperty(1, [&] { object.setProperty(fresh); }));
    object.setProperty(actingProperty(2, [&] { ++ends; }));
    object.removeAllProperties();
    EXPECT_EQ(1, ends);
    ASSERT_EQ(1U, object.getNumberOfProperties());
    EXPECT_EQ(fresh, object.getProperty(0));
    EXPECT_EQ(1, fresh->count);
}

TEST_F(reentrantProperties, removalOfAllLeavesAPropertyThatIsTakenAndSetAgain) {
    fxObj object;
    auto* moved = new fxProperty(tagOf(2), 7L);
    ++moved->count;
    object.setProperty(actingProperty(1, [&] {
        object.removeProperty(tagOf(2));
        object.setProperty(moved);
    }));
    object.setProperty(moved);
    object.removeAllProperties();
    ASSERT_EQ(1U, object.getNumberOfProperties());
    EXPECT_EQ(2, moved->count);
    object.removeAllProperties();
    EXPECT_EQ(1, moved->count);
    delete moved;
}

TEST_F(reentrantProperties, removalOfAllWithinItselfTakesWhatIsThereThen) {
    fxObj object;
    std::string ends;
    object.setProperty(actingProperty(1, [&] {
        object.setProperty(actingProperty(7, [&] { ends += '7'; }));
        object.removeAllProperties();
        object.setProperty(actingProperty(8, [&] { ends += '8'; }));
    }));
    object.setProperty(actingProperty(2, [&] { ends += '2'; }));
    object.removeAllProperties();
    EXPECT_EQ("27", ends);
    ASSERT_EQ(1U, object.getNumberOfProperties());
    EXPECT_EQ(8, object.getProperty(0)->getTag());
}

TEST_F(reentrantProperties, dyingObjectReleasesAtOnceWhatIsSetInItsLastWalk) {
    auto* object = new fxObj;
    std::string ends;
    unsigned int found = 0;
    object->setProperty(actingProperty(1, [&] {
        object->setProperty(actingProperty(2, [&] {
            object->setProperty(actingProperty(3, [&] { ends += '3'; }));
            found = object->getNumberOfProperties();
            ends += '2';
        }));
        ends += '1';
    }));
    delete object;
    EXPECT_EQ("132", ends);
    EXPECT_EQ(0U, found);
}

TEST_F(reentrantProperties, dyingObjectReleasesWhatThoseSetThatItReleasesAtOnce) {
    auto* object = new fxObj;
    std::string ends;
    auto* held = new FlowNode(log, "held");
    ++held->count;
    object->setProperty(actingProperty(1, [&] {
        object->setProperty(actingProperty(2, [&] {
            object->setProperty(actingProperty(3, [&] {
                for (const char* word : {"a", "b", "c"})
                    object->setProperty(actingProperty(4, [&ends, word] { ends += word; }));
                object->setProperty(new fxProperty(tagOf(4), ::strdup("owned"), 1));
                object->setProperty(new fxProperty(tagOf(4), fxStr("a string's text")));
                object->setProperty(new fxProperty(tagOf(4), static_cast<fxObj*>(held)));
                object->setProperty(new fxProperty(tagOf(4), new SpyData(1)));
                EXPECT_EQ("1abc", ends) << "at once";
                EXPECT_EQ(0, SpyData::alive);
                EXPECT_EQ(1, held->count);
                ends += '3';
            }));
            ends += '2';
        }));
        ends += '1';
    }));
    delete object;
    EXPECT_EQ("1abc32", ends);
    delete held;
}

TEST_F(reentrantProperties, dyingObjectReleasesAnyNumberThatAreSetOneAfterTheOther) {
    for (const int times : {99, 100, 101, 300}) {
        SCOPED_TRACE(times);
        auto* object = new fxObj;
        int ends = 0;
        object->setProperty(actingProperty(1, [&] {
            object->setProperty(actingProperty(2, [&] {
                for (int i = 0; i < times; ++i)
                    object->setProperty(actingProperty(3, [&ends] { ++ends; }));
            }));
        }));
        delete object;
        EXPECT_EQ(times, ends);
    }
}

TEST_F(reentrantProperties, deliberateDestroyFunctionsOfADyingObjectSetAHundredDeep) {
    // Each sets those behind it, and two kinds of text, as often as told.
    struct Endless {
        fxObj* object;
        int times;
        int ends = 0;

        static void renew(void* value) {
            auto* self = static_cast<Endless*>(value);
            const bool inAWalk = ++self->ends <= 2;
            for (int i = 0; i < (inAWalk ? 1 : self->times); ++i)
                self->object->setProperty(new fxProperty(tagOf(5), self, renew));
            self->object->setProperty(new fxProperty(tagOf(6), ::strdup("owned"), 1));
            self->object->setProperty(new fxProperty(tagOf(6), fxStr("a string's text")));
        }
    };
    for (const int times : {1, 2, 10}) {
        SCOPED_TRACE(times);
        const long blocks = heapCalls().blocks;
        auto* object = new fxObj;
        Endless endless{object, times};
        object->setProperty(new fxProperty(tagOf(5), &endless, Endless::renew));
        delete object;
        EXPECT_EQ(2 + 100, endless.ends) << "one in each walk, and those set at once";
        EXPECT_EQ(blocks, heapCalls().blocks) << "texts go in any case";
    }
}

TEST_F(reentrantProperties, dyingObjectLeavesPropertiesThatOthersHoldWhole) {
    auto* object = new fxObj;
    fxObj other;
    int ends = 0;
    other.setProperty(actingProperty(9, [&] { ++ends; }));
    fxProperty* shared = other.getProperty(0);
    object->setProperty(actingProperty(1, [&] {
        object->setProperty(actingProperty(2, [&] {
            object->setProperty(actingProperty(3, [&] { object->setProperty(shared); }));
            object->setProperty(shared);
        }));
    }));
    delete object;
    EXPECT_EQ(1, shared->count);
    EXPECT_EQ(0, ends);
    other.removeAllProperties();
    EXPECT_EQ(1, ends);
}

TEST_F(reentrantProperties, dyingObjectsMessageSetsAProperty) {
    auto* object = new fxObj;
    int ends = 0;
    // The message goes when the object has no properties any more.
    object->setProperty(actingProperty(1, [&] {
        fx_theEventHandler->postEvent(
            new fxMessageEvent(
                new fxInputChannel(fxDT_int, object, nullptr, 0),
                new SpyData(1, [&] { object->setProperty(actingProperty(7, [&] { ++ends; })); })),
            0);
    }));
    delete object;
    EXPECT_EQ(1, ends);
    EXPECT_EQ(0U, queued());
}

TEST_F(reentrantProperties, dyingObjectTakesNoChannelsInItsLastWalk) {
    auto* object = new fxObj;
    const void* first = nullptr;
    const void* last = this;
    const void* lastOutput = this;
    object->setProperty(actingProperty(60000, [&] {
        first = object->addInput("in", fxDT_int, object, receiver(FlowNode::receiveInt), 0);
        object->setProperty(actingProperty(60001, [&] {
            object->removeProperty("inputs");
            last = object->addInput("in", fxDT_int, object, receiver(FlowNode::receiveInt), 0);
            lastOutput = object->addOutput("out", fxDT_int);
        }));
    }));
    delete object;
    EXPECT_NE(nullptr, first);
    EXPECT_EQ(nullptr, last);
    EXPECT_EQ(nullptr, lastOutput);
}
