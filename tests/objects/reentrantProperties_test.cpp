#include <functional>
#include <memory>
#include <utility>

#include <gtest/gtest.h>

#include "kelvofxds/values/fxProperty.h"
#include "tests/support/dataFlow.h"

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
