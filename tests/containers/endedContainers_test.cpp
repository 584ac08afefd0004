// endedContainers_test.cpp - that each operation of a container which has been destroyed is stopped
// by the checked build. Removing no elements of an array is not: there is nothing to look at.

#include <functional>
#include <new>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxDictionary.h"
#include "kelvofxds/containers/fxSet.h"
#include "kelvofxds/containers/fxStrSet.h"
#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/str/fxStr.h"
#include "tests/support/misuse.h"

namespace {

// A container whose destructor has run.
template <class Container>
struct Ended {
    Ended() : container(*new (room) Container) { container.~Container(); }
    alignas(Container) unsigned char room[sizeof(Container)];
    Container& container;
};

// Operations of the base, whose table of operations a destroyed container has in the end.
template <class Base>
struct Use {
    const char* operation;
    std::function<void(Base&)> call;
};

const int element = 5;

const Use<fxIntArray> arrayUses[] = {
    {"setMaxLength", [](fxIntArray& a) { a.fxArray::setMaxLength(3); }},
    {"resize", [](fxIntArray& a) { a.fxArray::resize(1); }},
    {"destroy", [](fxIntArray& a) { a.fxArray::destroy(); }},
    {"append", [](fxIntArray& a) { a.fxArray::append(&element); }},
    {"insert", [](fxIntArray& a) { a.fxArray::insert(&element, 0); }},
};

const fxStr key("key");

const Use<fxStrStrDictionary> dictionaryUses[] = {
    {"find", [](fxStrStrDictionary& d) { d.fxDictionary::find(&key); }},
    {"findCreate", [](fxStrStrDictionary& d) { d.fxDictionary::findCreate(&key); }},
    {"remove", [](fxStrStrDictionary& d) { d.fxDictionary::remove(&key); }},
    {"cut", [](fxStrStrDictionary& d) { d.fxDictionary::cut(&key); }},
    {"cleanup", [](fxStrStrDictionary& d) { d.fxDictionary::cleanup(); }},
};

const Use<fxStrSet> setUses[] = {
    {"find", [](fxStrSet& s) { s.fxSet::find(&key); }},
    {"contains", [](fxStrSet& s) { s.fxSet::contains(&key); }},
    {"add", [](fxStrSet& s) { s.fxSet::add(&key); }},
    {"remove", [](fxStrSet& s) { s.fxSet::remove(&key); }},
    {"cleanup", [](fxStrSet& s) { s.fxSet::cleanup(); }},
};

template <class Container, unsigned int n>
void expectEachToStop(const std::string& className, const Use<Container> (&uses)[n]) {
    for (const Use<Container>& use : uses) {
        SCOPED_TRACE(use.operation);
        Container alive;
        use.call(alive);
        if (!libraryIsChecked || endsAreWatched)
            continue;
        Ended<Container> ended;
        EXPECT_EXIT(use.call(ended.container), testing::KilledBySignal(SIGABRT),
                    testing::Eq(className + "::" + use.operation +
                                ": the object has been destroyed already\n"));
    }
}

}  // namespace

TEST(endedContainersDeathTest, everyOperationOfAnArrayIsStopped) {
    expectEachToStop("fxArray", arrayUses);
}

TEST(endedContainersDeathTest, everyOperationOfADictionaryIsStopped) {
    expectEachToStop("fxDictionary", dictionaryUses);
}

TEST(endedContainersDeathTest, everyOperationOfASetIsStopped) {
    expectEachToStop("fxSet", setUses);
}

TEST(endedContainersDeathTest, nothingIsAppendedToAnArrayThatHasEnded) {
    if (!libraryIsChecked || endsAreWatched)
        return;
    fxIntArray other;
    other.append(&element);
    Ended<fxIntArray> ended;
    EXPECT_EXIT(ended.container.fxArray::append(other), testing::KilledBySignal(SIGABRT),
                testing::Eq("fxArray::append: the object has been destroyed already\n"));
}
