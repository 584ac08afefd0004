#include <cstdio>

#include <gtest/gtest.h>
#include <unistd.h>

#include "kelvofxds/core/fxToolkit.h"
#include "kelvofxds/objects/fxObj.h"
#include "kelvofxds/str/fxStrArray.h"
#include "kelvofxds/values/fxData.h"
#include "kelvofxds/values/fxProperty.h"
#include "tests/support/heapCalls.h"

namespace {
const unsigned short noTag = 65535;
static_assert(fxProperty::noTag == noTag, "the value that is no tag");

// Tags are handed out but once, so each test runs in a process of its own that
// has not handed out any.
class fxPropertyTagsDeathTest : public testing::Test {
protected:
    fxPropertyTagsDeathTest() {
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        fxInitializeToolkit();
    }
};

[[noreturn]] void endChild() {
    std::fflush(stdout);
    ::_exit(testing::Test::HasFailure() ? 1 : 0);
}

const auto succeeds = testing::ExitedWithCode(0);
}  // namespace

TEST_F(fxPropertyTagsDeathTest, tagsAreHandedOutInOrderFromZero) {
    const auto check = [] {
        EXPECT_EQ(0u, fx_propertyNames->length());
        EXPECT_EQ(noTag, fxProperty::findTag("zero")) << "the table is empty";
        for (unsigned short i = 0; i < 120; ++i) {
            const fxStr name(static_cast<int>(i), "name %d");
            EXPECT_EQ(i, fxProperty::allocNewTag(name.c_str()));
            EXPECT_EQ(i + 1u, fx_propertyNames->length()) << "one entry per tag";
            EXPECT_EQ(name, (*fx_propertyNames)[i]);
        }
        for (unsigned short i = 0; i < 120; ++i)
            EXPECT_EQ(i, fxProperty::findTag(fxStr(static_cast<int>(i), "name %d").c_str()));
        EXPECT_EQ(noTag, fxProperty::findTag("name 120"));
        EXPECT_EQ(noTag, fxProperty::findTag("name"));
        EXPECT_EQ(noTag, fxProperty::findTag("Name 1"));
        endChild();
    };
    EXPECT_EXIT(check(), succeeds, "");
}

TEST_F(fxPropertyTagsDeathTest, channelsAreTheFirstTagsInTheOrderOfTheirUse) {
    const auto check = [] {
        fxObj object;
        object.addOutput("out", fxDT_int);
        EXPECT_EQ(0, fxProperty::findTag("outputs"));
        EXPECT_EQ(noTag, fxProperty::findTag("inputs"));
        object.addInput("in", fxDT_int, nullptr, nullptr, 0);
        EXPECT_EQ(1, fxProperty::findTag("inputs"));
        EXPECT_EQ(2, fxProperty::allocNewTag("third"));
        endChild();
    };
    EXPECT_EXIT(check(), succeeds, "");
}

TEST_F(fxPropertyTagsDeathTest, nameIsCopied) {
    const auto check = [] {
        char name[] = "name";
        const unsigned short tag = fxProperty::allocNewTag(name);
        name[0] = 'f';
        EXPECT_EQ(tag, fxProperty::findTag("name"));
        EXPECT_EQ(noTag, fxProperty::findTag("fame"));
        endChild();
    };
    EXPECT_EXIT(check(), succeeds, "");
}

TEST_F(fxPropertyTagsDeathTest, deliberateAllocationDoesNotLookForTheName) {
    const auto check = [] {
        EXPECT_EQ(0, fxProperty::allocNewTag("name"));
        EXPECT_EQ(1, fxProperty::allocNewTag("name"));
        EXPECT_EQ(0, fxProperty::findTag("name")) << "the first of them";
        EXPECT_EQ(2, fxProperty::allocNewTag("other"));
        endChild();
    };
    EXPECT_EXIT(check(), succeeds, "");
}

TEST_F(fxPropertyTagsDeathTest, tagBelowTheLengthOfTheTableTakesItsPlace) {
    const auto check = [] {
        fx_propertyNames->resize(3);
        EXPECT_EQ(0, fxProperty::allocNewTag("a"));
        EXPECT_EQ(1, fxProperty::allocNewTag("b"));
        EXPECT_EQ(3u, fx_propertyNames->length());
        EXPECT_EQ(2, fxProperty::allocNewTag("c"));
        EXPECT_EQ(3, fxProperty::allocNewTag("d"));
        EXPECT_EQ(4u, fx_propertyNames->length());
        EXPECT_EQ(1, fxProperty::findTag("b"));
        EXPECT_EQ(3, fxProperty::findTag("d"));
        endChild();
    };
    EXPECT_EXIT(check(), succeeds, "");
}

TEST_F(fxPropertyTagsDeathTest, tableIsConstructedUnlessItExists) {
    const auto check = [] {
        fxStrArray* const names = fx_propertyNames;
        ASSERT_NE(nullptr, names);
        fxProperty::allocNewTag("name");
        fxProperty::constructPropertyNames();
        EXPECT_EQ(names, fx_propertyNames);
        EXPECT_EQ(1u, names->length());
        fxProperty::destroyPropertyNames();
        EXPECT_EQ(nullptr, fx_propertyNames);
        fxProperty::destroyPropertyNames();
        fxProperty::constructPropertyNames();
        ASSERT_NE(nullptr, fx_propertyNames);
        EXPECT_EQ(0u, fx_propertyNames->length());
        endChild();
    };
    EXPECT_EXIT(check(), succeeds, "");
}

TEST_F(fxPropertyTagsDeathTest, tableIsDeletedWithItsNames) {
    const auto check = [] {
        fxProperty::destroyPropertyNames();
        const long blocks = heapCalls().blocks;
        fxProperty::constructPropertyNames();
        for (const char* name : {"first", "second"})
            fxProperty::allocNewTag(name);
        fxProperty::destroyPropertyNames();
        EXPECT_EQ(blocks, heapCalls().blocks);
        endChild();
    };
    EXPECT_EXIT(check(), succeeds, "");
}

TEST_F(fxPropertyTagsDeathTest, deliberateTagsAreNeverReused) {
    const auto check = [] {
        EXPECT_EQ(0, fxProperty::allocNewTag("a"));
        EXPECT_EQ(1, fxProperty::allocNewTag("b"));
        fxProperty::destroyPropertyNames();
        EXPECT_EQ(noTag, fxProperty::findTag("a")) << "there is no table";
        fxProperty::constructPropertyNames();
        EXPECT_EQ(noTag, fxProperty::findTag("a"));
        EXPECT_EQ(2, fxProperty::allocNewTag("c"));
        EXPECT_EQ(3u, fx_propertyNames->length()) << "the tag is the index";
        EXPECT_EQ(2, fxProperty::findTag("c"));
        EXPECT_EQ(3, fxProperty::allocNewTag("d"));
        endChild();
    };
    EXPECT_EXIT(check(), succeeds, "");
}

TEST_F(fxPropertyTagsDeathTest, allocationMakesAMissingTable) {
    const auto check = [] {
        fxProperty::destroyPropertyNames();
        EXPECT_EQ(0, fxProperty::allocNewTag("a"));
        EXPECT_EQ(0, fxProperty::findTag("a"));
        endChild();
    };
    EXPECT_EXIT(check(), succeeds, "");
}

TEST_F(fxPropertyTagsDeathTest, tagsRunOutBeforeTheValueThatIsNone) {
    const auto check = [] {
        fx_propertyNames->resize(noTag);  // spares the growth by one entry a tag
        for (unsigned int tag = 0; tag < noTag; ++tag) {
            if (fxProperty::allocNewTag("name") != tag)
                ADD_FAILURE() << tag;
        }
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(noTag, fxProperty::allocNewTag("one too many"));
            EXPECT_EQ(noTag + 0u, fx_propertyNames->length());
        }
        EXPECT_EQ(noTag, fxProperty::findTag("one too many"));
        EXPECT_EQ("name", (*fx_propertyNames)[0]) << "nothing starts over";
        endChild();
    };
    EXPECT_EXIT(check(), succeeds, "");
}
