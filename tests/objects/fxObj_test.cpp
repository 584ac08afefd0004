#include "kelvofxds/objects/fxObj.h"

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/values/fxProperty.h"
#include "tests/support/dataFlow.h"
#include "tests/support/vtable.h"

#pragma GCC diagnostic ignored "-Winvalid-offsetof"

struct fxObjLayout {
    static_assert(offsetof(fxObj, properties) == 8, "behind table and count");
    static_assert(sizeof(fxObj) == 12, "nothing else");
    static_assert(fxObj::fxSendQueued == 0, "the value of the flag");
    static_assert(fxObj::fxSendNow == 1, "the value of the flag");
    static_assert(fxObj::fxSendUrgent == 2, "the value of the flag");

    static const fxVoidPtrArray* properties(const fxObj& o) { return o.properties; }
};

namespace {

unsigned short asTag(unsigned int tag) { return static_cast<unsigned short>(tag); }

fxProperty* numberProperty(unsigned int tag) { return new fxProperty(asTag(tag), 1L); }

// Made at most once, so that the tests can be repeated.
unsigned short tagNamed(const char* name) {
    const unsigned short tag = fxProperty::findTag(name);
    return tag == fxProperty::noTag ? fxProperty::allocNewTag(name) : tag;
}

// A property that counts in `ends` how often it goes.
fxProperty* endingProperty(unsigned int tag, int& ends) {
    return new fxProperty(asTag(tag), &ends, [](void* value) { ++*static_cast<int*>(value); });
}

std::vector<unsigned int> tagsOf(const fxObj& object) {
    std::vector<unsigned int> tags;
    for (unsigned int i = 0; i < object.getNumberOfProperties(); ++i)
        tags.push_back(object.getProperty(i)->getTag());
    return tags;
}

class Named : public fxObj {
public:
    const char* className() const override { return "Named"; }
};

class Defining : public fxObj {
public:
    void subClassMustDefine(const char* method) const override {
        std::fprintf(stderr, "asked for %s\n", method);
        ::_exit(3);
    }
};

class fxObjTest : public DataFlowTest {};
using fxObjDeathTest = fxObjTest;

}  // namespace

TEST_F(fxObjTest, slotsFollowThoseOfTheBase) {
    EXPECT_EQ(2U, vtableWord(&fxObj::className));
    EXPECT_EQ(3U, vtableWord(static_cast<unsigned char (fxObj::*)(fxTranscriber&)>(&fxObj::xdr)));
    EXPECT_EQ(4U, vtableWord(&fxObj::getTypeObj));
    EXPECT_EQ(5U, vtableWord(&fxObj::xdrFail));
    EXPECT_EQ(6U, vtableWord(&fxObj::xdrSuccess));
    EXPECT_EQ(7U, vtableWord(&fxObj::connect));
    EXPECT_EQ(8U, vtableWord(&fxObj::disconnect));
    EXPECT_EQ(9U, vtableWord(&fxObj::subClassMustDefine));
}

TEST_F(fxObjTest, newObjectHasCountZeroAndNoProperties) {
    fxObj object;
    EXPECT_EQ(0, object.count);
    EXPECT_EQ(nullptr, fxObjLayout::properties(object));
    EXPECT_EQ(0U, object.getNumberOfProperties());
    EXPECT_EQ(nullptr, object.getProperty(0));
    EXPECT_EQ(nullptr, object.getProperty(7));
}

TEST_F(fxObjTest, nameAndRecordAreTheBases) {
    fxObj object;
    EXPECT_STREQ("fxXDRObj", object.className());
    EXPECT_EQ(&fxXDRObj_type, &object.getTypeObj());
}

// Setting.

TEST_F(fxObjTest, setPropertyHoldsOneReferenceAndReturnsTheObject) {
    fxObj object;
    fxProperty* property = numberProperty(4);
    EXPECT_EQ(&object, &object.setProperty(property));
    EXPECT_EQ(1, property->count);
    EXPECT_NE(nullptr, fxObjLayout::properties(object));
    EXPECT_EQ(1U, object.getNumberOfProperties());
    EXPECT_EQ(property, object.getProperty(0));
}

TEST_F(fxObjTest, propertiesAreSortedByTagWhateverTheOrderTheyAreSetIn) {
    const std::vector<unsigned int> sorted = {0, 7, 0x7FFF, 0x8000, 65535};
    std::vector<unsigned int> order = sorted;
    do {
        SCOPED_TRACE(testing::PrintToString(order));
        fxObj object;
        for (unsigned int tag : order)
            object.setProperty(numberProperty(tag));

        EXPECT_EQ(sorted, tagsOf(object));
        for (unsigned int tag : sorted) {
            fxProperty* found = object.findProperty(asTag(tag));
            ASSERT_NE(nullptr, found);
            EXPECT_EQ(tag, found->getTag());
            EXPECT_EQ(1, found->count);
        }
    } while (std::next_permutation(order.begin(), order.end()));
}

TEST_F(fxObjTest, manyPropertiesStaySorted) {
    fxObj object;
    std::vector<unsigned int> sorted;
    for (unsigned int i = 0; i < 1009; ++i) {
        object.setProperty(numberProperty(i * 577 % 1009));  // each number below 1009 once
        sorted.push_back(i);
    }
    EXPECT_EQ(sorted, tagsOf(object));
}

TEST_F(fxObjTest, equalTagReplacesInItsSlotAndReleasesTheOldOne) {
    for (unsigned int tag : {1U, 2U, 3U}) {
        SCOPED_TRACE(tag);
        int ends = 0;
        fxObj object;
        for (unsigned int each : {1U, 2U, 3U})
            object.setProperty(endingProperty(each, ends));
        fxProperty* replacement = numberProperty(tag);

        EXPECT_EQ(&object, &object.setProperty(replacement));
        EXPECT_EQ(1, ends);
        EXPECT_EQ(1, replacement->count);
        EXPECT_EQ((std::vector<unsigned int>{1, 2, 3}), tagsOf(object));
        EXPECT_EQ(replacement, object.getProperty(tag - 1));
    }
}

TEST_F(fxObjTest, replacedPropertyOfAnotherHolderLosesOneReference) {
    int ends = 0;
    fxProperty* property = endingProperty(5, ends);
    fxObj other;
    other.setProperty(property);
    {
        fxObj object;
        object.setProperty(property);
        EXPECT_EQ(2, property->count);
        object.setProperty(numberProperty(5));
        EXPECT_EQ(1, property->count);
    }
    EXPECT_EQ(0, ends);
    other.setProperty(numberProperty(5));
    EXPECT_EQ(1, ends);
}

TEST_F(fxObjTest, settingTheSamePropertyAgainChangesNothing) {
    int ends = 0;
    {
        fxObj object;
        fxProperty* property = endingProperty(5, ends);
        object.setProperty(property);
        EXPECT_EQ(&object, &object.setProperty(property));
        EXPECT_EQ(1, property->count);
        EXPECT_EQ(1U, object.getNumberOfProperties());
        EXPECT_EQ(0, ends);
    }
    EXPECT_EQ(1, ends);
}

// Removing.

TEST_F(fxObjTest, removePropertyReleasesItAndClosesTheGap) {
    const struct {
        unsigned int tag;
        std::vector<unsigned int> left;
    } cases[] = {{10, {20, 30}}, {20, {10, 30}}, {30, {10, 20}}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.tag);
        int ends = 0;
        fxObj object;
        for (unsigned int tag : {10U, 20U, 30U})
            object.setProperty(endingProperty(tag, ends));

        EXPECT_EQ(&object, &object.removeProperty(asTag(c.tag)));
        EXPECT_EQ(1, ends);
        EXPECT_EQ(c.left, tagsOf(object));
        EXPECT_EQ(nullptr, object.findProperty(asTag(c.tag)));
    }
}

TEST_F(fxObjTest, removedPropertyOfAnotherHolderLosesOneReference) {
    fxProperty* property = numberProperty(5);
    fxObj object;
    fxObj other;
    object.setProperty(property);
    other.setProperty(property);
    object.removeProperty(asTag(5));
    EXPECT_EQ(1, property->count);
    EXPECT_EQ(property, other.findProperty(asTag(5)));
}

TEST_F(fxObjTest, removingAnAbsentTagDoesNothing) {
    int ends = 0;
    fxObj object;
    EXPECT_EQ(&object, &object.removeProperty(asTag(20)));
    EXPECT_EQ(nullptr, fxObjLayout::properties(object));

    object.setProperty(endingProperty(20, ends));
    for (unsigned int tag : {0U, 19U, 21U, 65535U})
        EXPECT_EQ(&object, &object.removeProperty(asTag(tag)));
    EXPECT_EQ(0, ends);
    EXPECT_EQ((std::vector<unsigned int>{20}), tagsOf(object));
}

TEST_F(fxObjTest, removePropertyByName) {
    const unsigned short tag = tagNamed("fxObjTest.removed");
    int ends = 0;
    fxObj object;
    object.setProperty(endingProperty(tag, ends));
    EXPECT_EQ(&object, &object.removeProperty("fxObjTest.unknown"));
    EXPECT_EQ(0, ends);
    EXPECT_EQ(&object, &object.removeProperty("fxObjTest.removed"));
    EXPECT_EQ(1, ends);
    EXPECT_EQ(0U, object.getNumberOfProperties());
    EXPECT_EQ(&object, &object.removeProperty("fxObjTest.removed"));
    EXPECT_EQ(1, ends);
}

TEST_F(fxObjTest, removingAnUnknownNameRemovesWhatIsTaggedAsNone) {
    int ends = 0;
    fxObj object;
    object.setProperty(endingProperty(65535, ends));
    object.removeProperty("fxObjTest.unknown");
    EXPECT_EQ(1, ends);
    EXPECT_EQ(0U, object.getNumberOfProperties());
}

TEST_F(fxObjTest, removeAllPropertiesKeepsTheArray) {
    int ends = 0;
    fxObj object;
    object.removeAllProperties();
    EXPECT_EQ(nullptr, fxObjLayout::properties(object));

    fxProperty* shared = endingProperty(2, ends);
    fxObj other;
    other.setProperty(shared);
    object.setProperty(endingProperty(1, ends))
        .setProperty(shared)
        .setProperty(endingProperty(3, ends));
    const fxVoidPtrArray* array = fxObjLayout::properties(object);
    object.removeAllProperties();
    EXPECT_EQ(2, ends);
    EXPECT_EQ(1, shared->count);
    EXPECT_EQ(0U, object.getNumberOfProperties());
    EXPECT_EQ(array, fxObjLayout::properties(object));
    EXPECT_EQ(0U, array->length());
    EXPECT_EQ(0U, array->getMaxLen()) << "resized, to nothing";
}

TEST_F(fxObjTest, emptiedObjectTakesPropertiesAgain) {
    fxObj object;
    object.setProperty(numberProperty(9)).removeAllProperties();
    object.setProperty(numberProperty(8)).setProperty(numberProperty(7));
    EXPECT_EQ((std::vector<unsigned int>{7, 8}), tagsOf(object));
    object.removeProperty(asTag(7)).removeProperty(asTag(8));
    object.setProperty(numberProperty(6));
    EXPECT_EQ((std::vector<unsigned int>{6}), tagsOf(object));
}

// Finding. The rows are the binary search done by hand: low 0, high n - 1,
// middle (low + high) / 2; the index is the last middle.

TEST_F(fxObjTest, findPropertyStoresTheLastProbedIndex) {
    const struct {
        std::vector<unsigned int> tags;
        struct {
            unsigned int tag, index;
        } rows[11];
        unsigned int numberOfRows;
    } cases[] = {
        {{10}, {{5, 0}, {10, 0}, {15, 0}}, 3},
        {{10, 20}, {{5, 0}, {10, 0}, {15, 1}, {20, 1}, {25, 1}}, 5},
        {{10, 20, 30}, {{5, 0}, {10, 0}, {15, 0}, {20, 1}, {25, 2}, {30, 2}, {35, 2}}, 7},
        {{10, 20, 30, 40},
         {{5, 0}, {10, 0}, {15, 0}, {20, 1}, {25, 2}, {30, 2}, {35, 3}, {40, 3}, {45, 3}},
         9},
        {{10, 20, 30, 40, 50},
         {{5, 0},
          {10, 0},
          {15, 1},
          {20, 1},
          {25, 1},
          {30, 2},
          {35, 3},
          {40, 3},
          {45, 4},
          {50, 4},
          {55, 4}},
         11},
    };
    for (const auto& c : cases) {
        fxObj object;
        for (unsigned int tag : c.tags)
            object.setProperty(numberProperty(tag));
        for (unsigned int i = 0; i < c.numberOfRows; ++i) {
            const auto& row = c.rows[i];
            SCOPED_TRACE(testing::Message() << row.tag << " among " << c.tags.size());
            const bool present = row.tag % 10 == 0;
            unsigned int index = 77;
            fxProperty* found = object.findProperty(asTag(row.tag), &index);
            EXPECT_EQ(row.index, index);
            EXPECT_EQ(present ? object.getProperty(row.index) : nullptr, found);
            EXPECT_EQ(found, object.findProperty(asTag(row.tag), nullptr));
            EXPECT_EQ(found, object.findProperty(asTag(row.tag)));
        }
    }
}

TEST_F(fxObjTest, findPropertyInAnEmptiedObjectStoresZero) {
    fxObj object;
    object.setProperty(numberProperty(10)).removeAllProperties();
    unsigned int index = 77;
    EXPECT_EQ(nullptr, object.findProperty(asTag(10), &index));
    EXPECT_EQ(0U, index);
}

TEST_F(fxObjTest, objectThatNeverHadAPropertyLeavesTheIndexAlone) {
    fxObj object;
    unsigned int index = 77;
    EXPECT_EQ(nullptr, object.findProperty(asTag(10), &index));
    EXPECT_EQ(77U, index);
    EXPECT_EQ(nullptr, object.findProperty(asTag(10), nullptr));
    EXPECT_EQ(77U, index);
}

TEST_F(fxObjTest, findPropertyByName) {
    const unsigned short first = tagNamed("fxObjTest.first");
    const unsigned short second = tagNamed("fxObjTest.second");
    fxObj object;
    fxProperty* property = numberProperty(second);
    object.setProperty(numberProperty(first)).setProperty(property);
    unsigned int index = 77;
    EXPECT_EQ(property, object.findProperty("fxObjTest.second", &index));
    EXPECT_EQ(1U, index);
    EXPECT_EQ(property, object.findProperty("fxObjTest.second", nullptr));
    EXPECT_EQ(property, object.findProperty("fxObjTest.second"));

    object.removeProperty(first);
    EXPECT_EQ(nullptr, object.findProperty("fxObjTest.first", &index));
    EXPECT_EQ(0U, index);
}

TEST_F(fxObjTest, unknownNameStoresZeroEvenWithoutProperties) {
    fxObj object;
    unsigned int index = 77;
    EXPECT_EQ(nullptr, object.findProperty("fxObjTest.unknown", &index));
    EXPECT_EQ(0U, index);
    EXPECT_EQ(nullptr, object.findProperty("fxObjTest.unknown", nullptr));

    index = 77;
    object.setProperty(numberProperty(65535));
    EXPECT_EQ(nullptr, object.findProperty("fxObjTest.unknown", &index));
    EXPECT_EQ(0U, index);
}

TEST_F(fxObjTest, knownNameLeavesTheIndexAloneWithoutProperties) {
    tagNamed("fxObjTest.known");
    fxObj object;
    unsigned int index = 77;
    EXPECT_EQ(nullptr, object.findProperty("fxObjTest.known", &index));
    EXPECT_EQ(77U, index);
}

// Life and death.

TEST_F(fxObjTest, destructionReleasesEveryProperty) {
    int ends = 0;
    fxProperty* shared = endingProperty(2, ends);
    fxObj other;
    other.setProperty(shared);
    {
        fxObj object;
        object.setProperty(endingProperty(1, ends))
            .setProperty(shared)
            .setProperty(endingProperty(3, ends));
    }
    EXPECT_EQ(2, ends);
    EXPECT_EQ(1, shared->count);
}

TEST_F(fxObjTest, propertiesGoWhenOnlyTheBaseIsLeft) {
    static std::string name;
    {
        Named object;
        object.setProperty(new fxProperty(asTag(1), static_cast<fxObj*>(&object), [](void* value) {
            name = static_cast<const fxObj*>(value)->className();
        }));
        EXPECT_STREQ("Named", object.className());
    }
    EXPECT_EQ("fxXDRObj", name);
}

TEST_F(fxObjTest, copyHasAFreshCountAndNoProperties) {
    fxObj object;
    object.count = 3;
    object.addOutput("out", fxDT_int);
    object.setProperty(numberProperty(fxProperty::allocNewTag("a number")));
    fxObj copy(object);
    EXPECT_EQ(0, copy.count);
    EXPECT_EQ(0U, copy.getNumberOfProperties());
    EXPECT_EQ(nullptr, fxObjLayout::properties(copy));
    EXPECT_EQ(2U, object.getNumberOfProperties());
}

TEST_F(fxObjTest, assignmentLeavesCountAndPropertiesToBothSides) {
    fxObj object;
    object.setProperty(numberProperty(1));
    fxObj target;
    target.count = 2;
    target.setProperty(numberProperty(7)).setProperty(numberProperty(8));
    target = object;
    EXPECT_EQ(2, target.count);
    EXPECT_EQ((std::vector<unsigned int>{7, 8}), tagsOf(target));
    EXPECT_EQ((std::vector<unsigned int>{1}), tagsOf(object));
}

TEST_F(fxObjDeathTest, subClassMustDefineIsFatal) {
    fxObj object;
    Named named;
    EXPECT_EXIT(object.subClassMustDefine("run"), testing::KilledBySignal(SIGABRT),
                "^fxXDRObj: Sub class must define method \"run\"\n$");
    EXPECT_EXIT(named.subClassMustDefine("run"), testing::KilledBySignal(SIGABRT),
                "^Named: Sub class must define method \"run\"\n$");
}

TEST_F(fxObjDeathTest, compareIsFatalUnlessDefined) {
    fxObj object;
    Named named;
    EXPECT_EXIT(object.compare(&named), testing::KilledBySignal(SIGABRT),
                "^fxXDRObj: Sub class must define method \"compare\"\n$");
    EXPECT_EXIT(named.compare(nullptr), testing::KilledBySignal(SIGABRT),
                "^Named: Sub class must define method \"compare\"\n$");
}

TEST_F(fxObjDeathTest, compareAsksThroughTheVirtualTable) {
    Defining object;
    EXPECT_EXIT(object.compare(&object), testing::ExitedWithCode(3), "^asked for compare\n$");
}
