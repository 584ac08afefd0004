// fxChainedChecked_test.cpp - misuse of dictionaries, sets and iterators, which the checked build
// stops.

#include <cstdlib>
#include <new>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxStrSet.h"
#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/containers/fxVoidPtrDict.h"
#include "kelvofxds/transcribe/fxBinaryOTDict.h"
#include "tests/support/misuse.h"

namespace {

const fxStr& peru() {
    static const fxStr name("Peru");
    return name;
}
const void* const null = nullptr;

// With a single entry.
struct Capitals : fxStrStrDictionary {
    Capitals() { add(peru(), "Lima"); }
};
struct Names : fxStrSet {
    Names() { add(peru()); }
};

// Sets of ints. One has a destructor, the other forgets what it should do.
struct Tidy : fxSet {
    explicit Tidy(bool isFilled = true) : fxSet(sizeof(int), 0) {
        const int key = 7;
        if (isFilled)
            add(&key);
    }
    ~Tidy() override { cleanup(); }
    unsigned char xdrKey(fxTranscriber&, void*) override { return 0; }
};
struct Forgetful : fxSet {
    Forgetful() : fxSet(sizeof(int), 0) {}
    explicit Forgetful(int key) : Forgetful() { add(&key); }
    unsigned char xdrKey(fxTranscriber&, void*) override { return 0; }
};

struct ForgetfulDictionary : fxBinaryOTDict {
    ForgetfulDictionary() { addNew(7, 8); }
    // As if its destructor had not been written, with that of the base in its place.
    static void end() {
        alignas(ForgetfulDictionary) static unsigned char room[sizeof(ForgetfulDictionary)];
        auto* made = new (room) ForgetfulDictionary;
        made->fxDictionary::~fxDictionary();
    }
};

const Misuse nulls[] = {
    {"find", [] { Capitals().find(&peru()); }, [] { Capitals().find(null); },
     "Capitals::find: key is null"},
    {"findCreate", [] { Capitals().findCreate(&peru()); }, [] { Capitals().findCreate(null); },
     "Capitals::findCreate: key is null"},
    {"addInternal, the key", [] { Capitals().addInternal(&peru(), &peru()); },
     [] { Capitals().addInternal(null, &peru()); }, "Capitals::addInternal: key is null"},
    {"addInternal, the value", [] { Capitals().addInternal(&peru(), &peru()); },
     [] { Capitals().addInternal(&peru(), null); }, "Capitals::addInternal: value is null"},
    {"remove", [] { Capitals().remove(&peru()); }, [] { Capitals().remove(null); },
     "Capitals::remove: key is null"},
    {"cut", [] { fxVoidPtrDict().cut(&peru()); }, [] { fxVoidPtrDict().cut(null); },
     "fxVoidPtrDict::cut: key is null"},
    {"a dictionary's iterator", [] {}, [] { Capitals().addIter(nullptr); },
     "Capitals::addIter: iter is null"},
    {"a set's look-up", [] { Names().contains(&peru()); }, [] { Names().contains(null); },
     "Names::contains: key is null"},
    {"a set's key", [] { Names().find(&peru()); }, [] { Names().find(null); },
     "Names::find: key is null"},
    {"a set's new key", [] { Names().add(&peru()); }, [] { Names().add(null); },
     "Names::add: key is null"},
    {"a set's old key", [] { Names().remove(&peru()); }, [] { Names().remove(null); },
     "Names::remove: key is null"},
    {"a set's iterator", [] {}, [] { Names().addIter(nullptr); }, "Names::addIter: iter is null"},
    {"a walk of no strings",
     [] {
         Capitals capitals;
         const fxStrStrDictionaryIter iter(&capitals);
     },
     [] { const fxStrStrDictionaryIter iter(nullptr); },
     "fxStrStrDictionaryIter::fxStrStrDictionaryIter: d is null"},
    {"a walk of no pointers", [] {}, [] { const fxVoidPtrDictIter iter(nullptr); },
     "fxVoidPtrDictIter::fxVoidPtrDictIter: d is null"},
    {"a walk of no words", [] {}, [] { const fxBinaryOTDictIter iter(nullptr); },
     "fxBinaryOTDictIter::fxBinaryOTDictIter: d is null"},
    {"a walk of no keys", [] {}, [] { const fxStrSetIter iter(nullptr); },
     "fxStrSetIter::fxStrSetIter: s is null"},
};

const Misuse iterators[] = {
    {"a dictionary's, beyond its end",
     [] {
         Capitals capitals;
         fxDictIter iter(capitals);
         ++iter;
         ++iter;  // stays at the end
         EXPECT_EQ(nullptr, iter.getKey());
     },
     [] { fxDictIter().advanceToValid(); },
     "fxDictIter::advanceToValid: the iterator is at the end, or attached to nothing"},
    {"a set's, beyond its end",
     [] {
         Names names;
         fxSetIter iter(names);
         iter.advanceToValid();
     },
     [] {
         Names names;
         fxSetIter iter(names);
         iter.advanceToValid();
         iter.advanceToValid();
     },
     "fxSetIter::advanceToValid: the iterator is at the end, or attached to nothing"},
    {"one that would outlive its set",
     [] {
         fxSetIter iter;
         {
             Tidy set;
             iter = set;
         }
         EXPECT_EQ(nullptr, iter.getKey());
     },
     [] {
         fxSetIter iter;
         Forgetful set;
         const int key = 7;
         set.add(&key);
         iter = set;
         set.remove(&key);
         set.addIter(&iter);
     },
     "fxSet::~fxSet: an iterator is attached: the destructor of the class has to call cleanup()"},
};

// A set whose life is over, in memory that is still there.
template <class Container>
struct Ended {
    Ended() : container(new (room) Container) { container->~Container(); }
    alignas(Container) unsigned char room[sizeof(Container)];
    Container* container;
};

const Misuse leftovers[] = {
    {"a set that forgets its keys",
     [] {
         Tidy();
         Forgetful();
     },
     [] { Forgetful(7); },
     "fxSet::~fxSet: 1 of 31 buckets have entries: the destructor of the class has to call "
     "cleanup()"},
    {"a dictionary that forgets its entries", [] { Capitals(); }, ForgetfulDictionary::end,
     "fxDictionary::~fxDictionary: 1 of 31 buckets have entries: the destructor of the class has "
     "to call "
     "cleanup()"},
};

const Misuse ends[] = {
    {"a dictionary, destroyed twice", [] { Ended<Capitals>(); },
     [] { Ended<Capitals>().container->fxStrStrDictionary::~fxStrStrDictionary(); },
     "fxDictionary::cleanup: the object has been destroyed already"},
    {"a dictionary, used after its end", [] { Ended<Capitals>(); },
     [] { Ended<Capitals>().container->fxDictionary::find(&peru()); },
     "fxDictionary::find: the object has been destroyed already"},
    {"a set, destroyed twice", [] { Ended<Names>(); },
     [] { Ended<Names>().container->fxStrSet::~fxStrSet(); },
     "fxSet::cleanup: the object has been destroyed already"},
    {"a set, used after its end", [] { Ended<Names>(); },
     [] { Ended<Names>().container->fxSet::contains(&peru()); },
     "fxSet::contains: the object has been destroyed already"},
};

}  // namespace

TEST(fxChainedCheckedDeathTest, nullWhereAKeyOrValueHasToBe) { expectStops(nulls); }

TEST(fxChainedCheckedDeathTest, iteratorsThatLeadNowhere) { expectStops(iterators); }

TEST(fxChainedCheckedDeathTest, containersThatEndWithEntries) { expectStops(leftovers); }

TEST(fxChainedCheckedDeathTest, containersThatHaveEnded) { expectEndsToStop(ends); }
