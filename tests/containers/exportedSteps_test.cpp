// exportedSteps_test.cpp - the steps of iterators that the library exports although hosts have them
// inline: a host that was compiled without inlining, or by another compiler, calls the library's.

#include <dlfcn.h>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxDictionary.h"
#include "kelvofxds/containers/fxSet.h"
#include "kelvofxds/containers/fxStrSet.h"
#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/str/fxStr.h"

namespace {

// The library's own function of that name, whatever others the program has.
template <class Function>
Function* libraryFunction(const char* name) {
    void* const library = ::dlopen("libkelvofxds.so.1", RTLD_NOW | RTLD_NOLOAD);
    void* const found = library ? ::dlsym(library, name) : nullptr;
    EXPECT_NE(nullptr, found) << name;
    return reinterpret_cast<Function*>(found);
}

const unsigned int entries = 20;

// A member is called as a function whose first argument is the object.
template <class Iter>
using Getter = void*(const Iter*);
template <class Iter>
using Stepper = void(Iter*);

}  // namespace

TEST(exportedSteps, walkASetAsTheInlineOnesDo) {
    const auto getKey = libraryFunction<Getter<fxSetIter>>("_ZNK9fxSetIter6getKeyEv");
    const auto step = libraryFunction<Stepper<fxSetIter>>("_ZN9fxSetIterppEv");
    fxStrSet set(3);  // short enough for chains
    for (unsigned int i = 0; i < entries; ++i)
        set.add(fxStr(static_cast<int>(i), "%d"));
    fxSetIter inlined(set), called(set);

    unsigned int n = 0;
    for (; inlined.getKey(); ++inlined, step(&called), ++n)
        EXPECT_EQ(inlined.getKey(), getKey(&called));

    EXPECT_EQ(nullptr, getKey(&called));
    EXPECT_EQ(entries, n);
}

TEST(exportedSteps, stayOnWhatFollowsARemovedKey) {
    const auto getKey = libraryFunction<Getter<fxSetIter>>("_ZNK9fxSetIter6getKeyEv");
    const auto step = libraryFunction<Stepper<fxSetIter>>("_ZN9fxSetIterppEv");
    fxStrSet set(1);
    set.add("a");
    set.add("b");
    fxSetIter called(set);
    const fxStr first(*static_cast<fxStr*>(getKey(&called)));

    set.remove(first);

    EXPECT_EQ(nullptr, getKey(&called));
    step(&called);
    ASSERT_NE(nullptr, getKey(&called));
    EXPECT_NE(first, *static_cast<fxStr*>(getKey(&called)));
    step(&called);
    step(&called);
    EXPECT_EQ(nullptr, getKey(&called));
}

TEST(exportedSteps, walkADictionaryAsTheInlineOnesDo) {
    const auto getKey = libraryFunction<Getter<fxDictIter>>("_ZNK10fxDictIter6getKeyEv");
    const auto getValue = libraryFunction<Getter<fxDictIter>>("_ZNK10fxDictIter8getValueEv");
    const auto step = libraryFunction<Stepper<fxDictIter>>("_ZN10fxDictIterppEv");
    fxStrStrDictionary dictionary(3);
    for (unsigned int i = 0; i < entries; ++i)
        dictionary.add(fxStr(static_cast<int>(i), "%d"), "value");
    fxDictIter inlined(dictionary), called(dictionary);

    unsigned int n = 0;
    for (; inlined.getKey(); ++inlined, step(&called), ++n) {
        EXPECT_EQ(inlined.getKey(), getKey(&called));
        EXPECT_EQ(inlined.getValue(), getValue(&called));
    }

    EXPECT_EQ(nullptr, getKey(&called));
    EXPECT_EQ(nullptr, getValue(&called));
    EXPECT_EQ(entries, n);
}
