#include "kelvofxds/core/fxRef.h"

#include <map>
#include <set>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/destructors.h"

namespace {

class Unknown;  // never defined

// Named with an incomplete class, which is complete where the members are defined.
class Later;
class Early {
public:
    Early();
    ~Early();
    fxRef<Later>& later() { return ref; }

private:
    fxRef<Later> ref;
};

class Later : public fxRCObj {
public:
    ~Later() override { ++ended; }
    int value = 7;
    static int ended;
};
int Later::ended = 0;

Early::Early() : ref(new Later) {}
Early::~Early() = default;

using Thing = CountedEnd<fxRCObj>;

class Special : public Thing {
public:
    int number = 3;
};

Thing* newThing() {
    Thing::destroyed = Thing::freed = 0;
    return new Thing;
}

// The counted part is not its first one, and only the holder may delete it.
struct Front {
    virtual ~Front() = default;
    int word = 1;
};
class Behind : public Front, public fxRCObj {
public:
    static int ended;

protected:
    ~Behind() override { ++ended; }
};
int Behind::ended = 0;

}  // namespace

static_assert(sizeof(fxRef<Thing>) == sizeof(Thing*), "exactly a pointer");
static_assert(sizeof(fxRef<Unknown>) == sizeof(void*), "an incomplete class will do");
static_assert(std::is_nothrow_move_constructible_v<fxRef<Thing>>, "vectors move it");
static_assert(std::is_nothrow_move_assignable_v<fxRef<Thing>>, "vectors move it");
static_assert(std::is_nothrow_default_constructible_v<fxRef<Thing>>, "it holds nothing");
static_assert(std::is_convertible_v<fxRef<Special>, fxRef<Thing>>, "to the base");
static_assert(!std::is_convertible_v<fxRef<Thing>, fxRef<Special>>, "not back");
static_assert(!std::is_assignable_v<fxRef<Special>&, fxRef<Thing>>, "not back");
static_assert(!std::is_convertible_v<fxRef<Thing>, bool>, "only where a condition is meant");
static_assert(!std::is_convertible_v<fxRef<Thing>, Thing*>, "get() says it");

// Holding.

TEST(fxRef, holdsNothingAtFirst) {
    fxRef<Thing> ref;
    fxRef<Thing> null(nullptr);
    fxRef<Thing> nothing(static_cast<Thing*>(nullptr));
    for (const auto* each : {&ref, &null, &nothing}) {
        EXPECT_EQ(nullptr, each->get());
        EXPECT_FALSE(*each);
    }
}

TEST(fxRef, addsOneAndDeletesAtZero) {
    Thing* thing = newThing();
    {
        fxRef<Thing> ref(thing);
        EXPECT_EQ(thing, ref.get());
        EXPECT_TRUE(ref);
        EXPECT_EQ(1, thing->count);
        EXPECT_EQ(thing, &*ref);
        EXPECT_EQ(1, ref->count);
        EXPECT_EQ(0, Thing::destroyed);
    }
    EXPECT_EQ(1, Thing::destroyed);
    EXPECT_EQ(1, Thing::freed);
}

TEST(fxRef, leavesWhatOthersHold) {
    Thing* thing = newThing();
    thing->count = 1;
    { fxRef<Thing> ref(thing); }
    EXPECT_EQ(1, thing->count);
    EXPECT_EQ(0, Thing::destroyed);
    delete thing;
}

TEST(fxRef, deletesAtExactlyZeroOnly) {
    Thing* thing = newThing();
    {
        fxRef<Thing> ref(thing);
        thing->count = 0;
    }
    EXPECT_EQ(-1, thing->count);
    EXPECT_EQ(0, Thing::destroyed);
    delete thing;
}

TEST(fxRef, copiesCount) {
    Thing* thing = newThing();
    {
        fxRef<Thing> first(thing);
        const fxRef<Thing> second(first);
        EXPECT_EQ(2, thing->count);
        fxRef<Thing> third;
        third = second;
        EXPECT_EQ(3, thing->count);
        EXPECT_EQ(thing, third.get());
    }
    EXPECT_EQ(1, Thing::destroyed);
}

TEST(fxRef, movesDoNotCount) {
    Thing* thing = newThing();
    fxRef<Thing> first(thing);
    fxRef<Thing> second(std::move(first));
    EXPECT_EQ(1, thing->count);
    EXPECT_EQ(nullptr, first.get());
    fxRef<Thing> third;
    third = std::move(second);
    EXPECT_EQ(1, thing->count);
    EXPECT_EQ(nullptr, second.get());
    EXPECT_EQ(thing, third.get());
}

TEST(fxRef, aMoveGivesUpWhatWasHeld) {
    Thing* old = newThing();
    fxRef<Thing> target(old);
    fxRef<Thing> source(new Thing);
    target = std::move(source);
    EXPECT_EQ(1, Thing::destroyed);
    EXPECT_EQ(1, target->count);
}

TEST(fxRef, movingTheSameObjectGivesUpOneShare) {
    Thing* thing = newThing();
    fxRef<Thing> a(thing), b(thing);
    a = std::move(b);
    EXPECT_EQ(1, thing->count);
    EXPECT_EQ(nullptr, b.get());
    EXPECT_EQ(0, Thing::destroyed);
}

TEST(fxRef, assigningWhatIsHeldDoesNothing) {
    Thing* thing = newThing();
    fxRef<Thing> ref(thing);
    fxRef<Thing>& same = ref;
    ref = same;
    ref = std::move(same);
    ref = thing;
    ref.reset(thing);
    EXPECT_EQ(thing, ref.get());
    EXPECT_EQ(1, thing->count);
    EXPECT_EQ(0, Thing::destroyed);
}

TEST(fxRef, replacingDeletesTheOldObject) {
    Thing* thing = newThing();
    Thing* other = new Thing;
    fxRef<Thing> ref(thing);
    ref = other;
    EXPECT_EQ(1, Thing::destroyed);
    EXPECT_EQ(1, other->count);
    ref = nullptr;
    EXPECT_EQ(2, Thing::destroyed);
    EXPECT_FALSE(ref);
    ref.reset();
    EXPECT_EQ(2, Thing::destroyed);
    ref = new Thing;
    ref = {};
    EXPECT_FALSE(ref);
    EXPECT_EQ(3, Thing::destroyed);
}

namespace {
// Looks, while it ends, at the pointer that held it.
class Looking : public fxRCObj {
public:
    ~Looking() override { seen = holder->get(); }
    fxRef<Looking>* holder = nullptr;
    static Looking* seen;
};
Looking* Looking::seen = nullptr;
}  // namespace

TEST(fxRef, theNewObjectIsInPlaceWhenTheOldOneEnds) {
    fxRef<Looking> ref(new Looking);
    ref->holder = &ref;
    fxRef<Looking> next(new Looking);
    next->holder = &next;
    ref = next;
    EXPECT_EQ(next.get(), Looking::seen);
    ref.reset();
}

namespace {
class Chained : public fxRCObj {
public:
    ~Chained() override { ++ended; }
    fxRef<Chained> next;
    static int ended;
};
int Chained::ended = 0;
}  // namespace

TEST(fxRef, aChainIsGivenUpLinkByLink) {
    Chained::ended = 0;
    fxRef<Chained> head(new Chained);
    for (int i = 1; i < 1000000; ++i) {
        fxRef<Chained> front(new Chained);
        front->next = std::move(head);
        head = std::move(front);
    }
    for (int i = 0; i < 500000; ++i)
        head = head->next;
    while (head)
        head = std::move(head->next);
    EXPECT_EQ(1000000, Chained::ended);
}

// Giving up without deleting.

TEST(fxRef, releasedObjectIsAsNew) {
    Thing* thing = newThing();
    fxRef<Thing> ref(thing);
    EXPECT_EQ(thing, ref.release());
    EXPECT_EQ(0, thing->count);
    EXPECT_EQ(0, Thing::destroyed);
    EXPECT_FALSE(ref);
    ref = thing;
    EXPECT_EQ(1, thing->count);
}

TEST(fxRef, releaseLeavesTheOtherHoldersTheirs) {
    Thing* thing = newThing();
    const fxRef<Thing> other(thing);
    fxRef<Thing> ref(thing);
    EXPECT_EQ(thing, ref.release());
    EXPECT_EQ(1, thing->count);
}

TEST(fxRef, releaseOfNothingIsNull) {
    fxRef<Thing> ref;
    EXPECT_EQ(nullptr, ref.release());
}

// Other classes.

TEST(fxRef, aRefToADerivedClassBecomesOneToItsBase) {
    Thing::destroyed = Thing::freed = 0;
    fxRef<Special> special(new Special);
    fxRef<Thing> copy(special);
    EXPECT_EQ(2, special->count);
    fxRef<Thing> assigned;
    assigned = special;
    EXPECT_EQ(3, special->count);
    fxRef<const fxRCObj> base(copy);
    EXPECT_EQ(4, base->count);
    fxRef<Thing> moved;
    moved = std::move(special);
    EXPECT_EQ(4, moved->count);
    EXPECT_EQ(nullptr, special.get());
    fxRef<fxRCObj> movedOn(std::move(moved));
    EXPECT_EQ(4, movedOn->count);
}

TEST(fxRef, theCountedPartNeedNotComeFirst) {
    Behind::ended = 0;
    {
        fxRef<Behind> ref(new Behind);
        fxRef<fxRCObj> base(ref);
        EXPECT_EQ(2, ref->count);
        EXPECT_TRUE(ref == base);
    }
    EXPECT_EQ(1, Behind::ended);
}

TEST(fxRef, theClassMayBeIncompleteWhereItIsNamed) {
    Later::ended = 0;
    {
        Early early;
        EXPECT_EQ(7, early.later()->value);
    }
    EXPECT_EQ(1, Later::ended);
}

// Comparison.

TEST(fxRef, comparesAddresses) {
    Special objects[2];
    for (Special& each : objects)
        each.count = 1;
    const fxRef<Special> a(&objects[0]), b(&objects[1]);
    const fxRef<Thing> baseOfA(a);
    Thing* const pointerToB = &objects[1];
    EXPECT_TRUE(a == a && a == baseOfA && a == &objects[0] && &objects[0] == a && b == pointerToB);
    EXPECT_FALSE(a == b || a == pointerToB || pointerToB == baseOfA || a == nullptr ||
                 nullptr == a);
    EXPECT_TRUE(a != b && a != pointerToB && pointerToB != a && a != nullptr && nullptr != a);
    EXPECT_FALSE(a != a || a != baseOfA || a != &objects[0] || &objects[0] != a);
    EXPECT_TRUE(a < b && a < pointerToB && baseOfA < b && &objects[0] < b && nullptr < a);
    EXPECT_FALSE(b < a || pointerToB < a || a < a || a < nullptr);
}

TEST(fxRef, comparesWithNull) {
    const fxRef<Thing> none;
    EXPECT_TRUE(none == nullptr && nullptr == none);
    EXPECT_FALSE(none != nullptr || nullptr != none);
    EXPECT_FALSE(none < nullptr || nullptr < none);
}

TEST(fxRef, swapExchangesWithoutCounting) {
    Special one, two;
    one.count = two.count = 1;
    fxRef<Special> a(&one), b(&two);
    a.swap(b);
    EXPECT_EQ(&two, a.get());
    EXPECT_EQ(&one, b.get());
    swap(a, b);
    EXPECT_EQ(&one, a.get());
    EXPECT_EQ(2, one.count);
    EXPECT_EQ(2, two.count);
}

TEST(fxRef, standsInContainers) {
    Later::ended = 0;
    {
        std::vector<fxRef<Later>> all;
        for (int i = 0; i < 100; ++i)
            all.push_back(new Later);
        const std::set<fxRef<Later>> each(all.begin(), all.end());
        EXPECT_EQ(100u, each.size());
        for (const auto& ref : all)
            EXPECT_EQ(2, ref->count);
        std::map<int, fxRef<Later>> one;
        one[1] = all[0];
        all.clear();
        EXPECT_EQ(2, one[1]->count);
    }
    EXPECT_EQ(100, Later::ended);
}
