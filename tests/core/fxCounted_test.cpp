#include "kelvofxds/core/fxCounted.h"

#include <type_traits>

#include <gtest/gtest.h>

#include "tests/support/destructors.h"

static_assert(sizeof(Counted) == 8, "the same shape as fxRCObj");
static_assert(std::has_virtual_destructor<Counted>::value, "RPtr_base deletes through the base");
static_assert(std::is_same<decltype(Counted::count), int>::value, "the count is signed");
static_assert(sizeof(RPtr_base) == 4, "one pointer, no table");
static_assert(!std::is_polymorphic<RPtr_base>::value, "no table");
static_assert(!std::is_copy_constructible<RPtr_base>::value &&
                  !std::is_copy_assignable<RPtr_base>::value,
              "a copy would give up a reference it never took");

namespace {

using Target = CountedEnd<Counted>;

Target* newTarget(int count) {
    Target::destroyed = Target::freed = 0;
    Target* target = new Target;
    target->count = count;
    return target;
}

}  // namespace

TEST(Counted, countFollowsTheTable) {
    Counted object;
    EXPECT_EQ(4, reinterpret_cast<char*>(&object.count) - reinterpret_cast<char*>(&object));
}

TEST(Counted, destructorsAreWords0And1OfTheTable) { expectDestructorsAtWords0And1<Counted>(); }

TEST(Counted, newObjectHasCountZero) {
    Counted object;
    EXPECT_EQ(0, object.count);
}

TEST(Counted, copiesStartAtZeroAndAssignmentKeepsTheCount) {
    Counted object;
    object.count = 2;
    Counted copy(object);
    EXPECT_EQ(0, copy.count);
    copy.count = 7;
    copy = object;
    EXPECT_EQ(7, copy.count);
}

TEST(RPtr_base, constructionLeavesTheCountAlone) {
    Target* target = newTarget(1);
    {
        RPtr_base pointer(target);
        EXPECT_EQ(1, target->count);
    }
    EXPECT_EQ(1, Target::destroyed);
}

TEST(RPtr_base, nullPointerIsLeftAlone) {
    Target::destroyed = 0;
    {
        RPtr_base byDefault;
        RPtr_base null(nullptr);
    }
    EXPECT_EQ(0, Target::destroyed);
}

TEST(RPtr_base, destructorDecrementsWhileOthersHoldTheObject) {
    Target* target = newTarget(3);
    { RPtr_base pointer(target); }
    EXPECT_EQ(2, target->count);
    { RPtr_base pointer(target); }
    EXPECT_EQ(1, target->count);
    EXPECT_EQ(0, Target::destroyed);
    { RPtr_base pointer(target); }
    EXPECT_EQ(1, Target::destroyed);
    EXPECT_EQ(1, Target::freed);
}

TEST(RPtr_base, deliberateACountOfZeroOrLessIsDeletedToo) {
    for (int count : {1, 0, -1, -5}) {
        SCOPED_TRACE(count);
        Target* target = newTarget(count);
        { RPtr_base pointer(target); }
        EXPECT_EQ(1, Target::destroyed);
        EXPECT_EQ(1, Target::freed);
    }
}
