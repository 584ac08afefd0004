// endedContainersChecked_test.cpp - containers that are used after their end, which the checked
// build stops in whatever operation meets them.

#include <new>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxStrSet.h"
#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/containers/fxTypedArrays.h"
#include "tests/support/misuse.h"

namespace {

const int value = 7;

const fxStr& peru() {
    static const fxStr name("Peru");
    return name;
}

// A container whose destructor has run, in memory that is still there.
template <class Container>
struct Ended {
    Ended() : container(new (room) Container) { container->~Container(); }
    Container* operator->() const { return container; }
    alignas(Container) unsigned char room[sizeof(Container)];
    Container* container;
};
using Array = Ended<fxIntArray>;
using Dictionary = Ended<fxStrStrDictionary>;
using Set = Ended<fxStrSet>;

// The base ends without its elements, so that it still has a length.
void findInAnEndedBase() {
    alignas(fxIntArray) static unsigned char room[sizeof(fxIntArray)];
    auto* array = new (room) fxIntArray(2);
    array->fxArray::~fxArray();
    array->fxArray::find(&value);
}

#define HAS_ENDED(operation) operation ": the object has been destroyed already"

const Misuse arrays[] = {
    {"destroyed as the base that it was", [] { Array(); }, [] { Array()->fxArray::~fxArray(); },
     HAS_ENDED("fxArray::~fxArray")},
    {"setMaxLength", [] { fxIntArray().setMaxLength(3); }, [] { Array()->setMaxLength(3); },
     HAS_ENDED("fxArray::setMaxLength")},
    {"insert", [] { fxIntArray().insert(&value, 0); }, [] { Array()->insert(&value, 0); },
     HAS_ENDED("fxArray::insert")},
    {"insert an array", [] { fxIntArray().insert(fxIntArray(2), 0); },
     [] { Array()->insert(fxIntArray(2), 0); }, HAS_ENDED("fxArray::insert")},
    {"append an array", [] { fxIntArray().append(fxIntArray(2)); },
     [] { Array()->append(fxIntArray(2)); }, HAS_ENDED("fxArray::append")},
    {"remove", [] { fxIntArray(2).remove(0, 1); }, [] { Array()->remove(0, 1); },
     HAS_ENDED("fxArray::remove")},
    {"find", [] { fxIntArray().find(&value); }, findInAnEndedBase, HAS_ENDED("fxArray::find")},
};

const Misuse dictionaries[] = {
    {"destroyed as the base that it was", [] { Dictionary(); },
     [] { Dictionary()->fxDictionary::~fxDictionary(); }, HAS_ENDED("fxDictionary::~fxDictionary")},
    {"addInternal", [] { fxStrStrDictionary().addInternal(&peru(), &peru()); },
     [] { Dictionary()->fxDictionary::addInternal(&peru(), &peru()); },
     HAS_ENDED("fxDictionary::addInternal")},
    {"findCreate", [] { fxStrStrDictionary().findCreate(peru()); },
     [] { Dictionary()->fxDictionary::findCreate(&peru()); },
     HAS_ENDED("fxDictionary::findCreate")},
    {"remove", [] { fxStrStrDictionary().remove(peru()); },
     [] { Dictionary()->fxDictionary::remove(&peru()); }, HAS_ENDED("fxDictionary::remove")},
    {"cut", [] { fxStrStrDictionary().fxDictionary::cut(&peru()); },
     [] { Dictionary()->fxDictionary::cut(&peru()); }, HAS_ENDED("fxDictionary::cut")},
};

const Misuse sets[] = {
    {"destroyed as the base that it was", [] { Set(); }, [] { Set()->fxSet::~fxSet(); },
     HAS_ENDED("fxSet::~fxSet")},
    {"find", [] { fxStrSet().find(&peru()); }, [] { Set()->fxSet::find(&peru()); },
     HAS_ENDED("fxSet::find")},
    {"add", [] { fxStrSet().add(peru()); }, [] { Set()->fxSet::add(&peru()); },
     HAS_ENDED("fxSet::add")},
    {"remove", [] { fxStrSet().remove(&peru()); }, [] { Set()->fxSet::remove(&peru()); },
     HAS_ENDED("fxSet::remove")},
};

}  // namespace

TEST(endedContainersCheckedDeathTest, arrays) { expectEndsToStop(arrays); }

TEST(endedContainersCheckedDeathTest, dictionaries) { expectEndsToStop(dictionaries); }

TEST(endedContainersCheckedDeathTest, sets) { expectEndsToStop(sets); }
