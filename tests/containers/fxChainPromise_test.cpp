// fxChainPromise_test.cpp - classes of a host that promise what an index needs, and those that
// do not.

#include <cstdlib>
#include <cstring>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxSet.h"
#include "kelvofxds/containers/fxStrSet.h"
#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/transcribe/fxBinaryOTDict.h"
#include "tests/support/recordingTranscriber.h"

namespace {

int numberAt(const void* p) {
    int number;
    std::memcpy(&number, p, sizeof number);
    return number;
}

// The smallest dictionary of ints that a host would write; it counts how often
// it is asked. Four keys each have one hash.
class Walking : public fxDictionary {
public:
    explicit Walking(unsigned int numBuckets = 0)
        : fxDictionary(sizeof(int), sizeof(int), numBuckets) {}
    ~Walking() override { cleanup(); }
    const char* className() const override { return "Walking"; }
    unsigned int hashKey(const void* key) const override {
        ++hashed;
        return unsigned(numberAt(key)) / 4;
    }
    int compareKeys(const void* a, const void* b) const override {
        ++compared;
        if (throws)
            throw 1;
        return numberAt(a) != numberAt(b);
    }
    void copyKey(const void* from, void* to) const override { std::memcpy(to, from, sizeof(int)); }
    void copyValue(const void* from, void* to) const override {
        std::memcpy(to, from, sizeof(int));
    }
    void createValue(void* value) const override { std::memset(value, 0, sizeof(int)); }
    unsigned char xdrKey(fxTranscriber& t, void* key) override {
        return t.xdr(static_cast<int*>(key), 1);
    }
    unsigned char xdrValue(fxTranscriber& t, void* value) override {
        return t.xdr(static_cast<int*>(value), 1);
    }

    void add(int key, int value) { addInternal(&key, &value); }
    int at(int key) const {
        const void* value = find(&key);
        return value ? numberAt(value) : -1;
    }
    void drop(int key) { remove(&key); }
    int taken(int key) {
        void* value = cut(&key);
        const int number = value ? numberAt(value) : -1;
        std::free(value);
        return number;
    }
    // The entries as they lie.
    std::string contents() const {
        std::string text;
        for (unsigned int i = 0; i < bucketCount(); ++i) {
            text += "|";
            for (const fxDictBucket* b = buckets[i]; b; b = b->next)
                text += std::to_string(numberAt(b->kvmem)) + "=" +
                        std::to_string(numberAt(valueOf(b))) + " ";
        }
        return text;
    }
    void promiseNow() { equalKeysHashEqually(); }

    mutable unsigned int hashed = 0, compared = 0;
    bool throws = false;
};

class Promising : public Walking {
public:
    explicit Promising(unsigned int numBuckets = 0) : Walking(numBuckets) {
        equalKeysHashEqually();
    }
};

// Says nothing itself, and means other keys by equal ones than its base does.
class ByTens : public Promising {
public:
    using Promising::Promising;
    int compareKeys(const void* a, const void* b) const override {
        ++compared;
        return numberAt(a) / 10 != numberAt(b) / 10;
    }
    unsigned int hashKey(const void*) const override { return 0; }
};

// Has entries, many of them in an index, before the class derived from it is there.
class Filled : public Walking {
public:
    explicit Filled(int n) : Walking(1) {
        equalKeysHashEqually();
        for (int i = 0; i < n; ++i)
            add(10 * i, i);
    }
};

// Equal keys do not hash equally, which one bucket allows.
class FilledByTens : public Filled {
public:
    using Filled::Filled;
    int compareKeys(const void* a, const void* b) const override {
        return numberAt(a) / 10 != numberAt(b) / 10;
    }
    unsigned int hashKey(const void* key) const override { return unsigned(numberAt(key)); }
};

class NumberSet : public fxSet {
public:
    NumberSet() : fxSet(sizeof(int), 0) { equalKeysHashEqually(); }
    ~NumberSet() override { cleanup(); }
    int compareKeys(const void* a, const void* b) const override {
        ++compared;
        return fxSet::compareKeys(a, b);
    }
    unsigned char xdrKey(fxTranscriber&, void*) override { return 0; }
    mutable unsigned int compared = 0;
};

template <class Dictionary>
void fill(Dictionary& d, int n) {
    for (int i = 0; i < n; ++i)
        d.add(i, i + 100000);
}

unsigned int comparisonsOfAFind(const Walking& d, int key) {
    const unsigned int before = d.compared;
    EXPECT_EQ(key + 100000, d.at(key));
    return d.compared - before;
}

const int many = 3000;
const int longest = 120;  // comparisons that a walk to the oldest of `many` entries needs, at least

}  // namespace

TEST(fxChainPromise, aClassThatPromisesIsAskedLessOften) {
    Promising d;
    fill(d, many);
    for (int key = 0; key < many; key += 97)
        EXPECT_GE(4u, comparisonsOfAFind(d, key)) << key;
    EXPECT_EQ(-1, d.at(many + 1));
}

TEST(fxChainPromise, aClassThatSaysNothingIsAskedForEveryEntryOfTheWalk) {
    Walking d(1);
    fill(d, 100);
    for (int key = 0; key < 100; ++key)
        EXPECT_EQ(unsigned(100 - key), comparisonsOfAFind(d, key));
    EXPECT_EQ(200u, d.hashed) << "once for an operation";
}

TEST(fxChainPromise, thePromiseIsNotInherited) {
    ByTens d;
    for (int i = 0; i < 10000; i += 10)
        d.add(i, i);
    d.compared = 0;
    EXPECT_EQ(0, d.at(9));
    EXPECT_EQ(1000u, d.compared);
    EXPECT_EQ(990, d.at(999));
}

TEST(fxChainPromise, whatABaseHasPromisedAndUsedDoesNotBindADerivedClass) {
    for (int n = 1; n < 100; ++n) {
        FilledByTens d(n);
        for (int round = 0; round < 3; ++round) {
            for (int i = 0; i < n; ++i)
                ASSERT_EQ(i, d.at(10 * i + 9)) << n << ", " << round;
        }
        d.add(10 * n, n);
        ASSERT_EQ(n, d.at(10 * n + 5));
        d.drop(7);
        ASSERT_EQ(-1, d.at(0)) << n;
    }
}

TEST(fxChainPromise, aPromiseHasNoEffectOnceThereAreEntries) {
    Walking d(1);
    d.add(0, 100000);
    d.promiseNow();
    for (int i = 1; i < 100; ++i)
        d.add(i, i + 100000);
    EXPECT_EQ(100u, comparisonsOfAFind(d, 0));
}

TEST(fxChainPromise, setsPromiseToo) {
    NumberSet s;
    for (int i = 0; i < many; ++i)
        EXPECT_NE(nullptr, s.add(&i));
    s.compared = 0;
    for (int i = 0; i < 2 * many; ++i)
        EXPECT_EQ(i < many ? 1 : 0, s.contains(&i));
    EXPECT_GE(unsigned(many + longest), s.compared);
}

TEST(fxChainPromise, whatAHostThrowsDuringALookUpPassesThroughAndNothingIsLost) {
    Promising d;
    fill(d, many);
    d.throws = true;
    EXPECT_THROW(d.at(5), int);
    EXPECT_THROW(d.drop(5), int);
    EXPECT_THROW(d.add(5, 6), int);
    d.throws = false;
    for (int key = 0; key < many; ++key)
        EXPECT_EQ(key + 100000, d.at(key));
}

TEST(fxChainPromise, aPromisingClassAnswersLikeOneThatWalks) {
    const unsigned int seed = 77;
    std::printf("seed %u\n", seed);
    std::mt19937 random(seed);
    for (int round = 0; round < 30; ++round) {
        const unsigned int buckets = 1 + unsigned(random()) % 40;
        Promising a(buckets);
        Walking b(buckets);
        for (int i = 0; i < 1500; ++i) {
            const int key = int(unsigned(random()) % 400);
            switch (random() % 8) {
                case 0:
                    EXPECT_EQ(b.taken(key), a.taken(key));
                    break;
                case 1:
                    a.drop(key);
                    b.drop(key);
                    break;
                case 2:
                    EXPECT_EQ(b.at(key), a.at(key));
                    break;
                default:
                    a.add(key, i);
                    b.add(key, i);
            }
        }
        EXPECT_EQ(b.contents(), a.contents());
        EXPECT_EQ(b.length(), a.length());
    }
}

TEST(fxChainPromise, duplicatesOfAStreamComeToLightOneAfterTheOther) {
    Promising d;
    RecordingTranscriber t(RecordingTranscriber::reader);
    const unsigned int copies = 50;
    t.give(copies * 2).give(unsigned(sizeof(int))).give(unsigned(sizeof(int))).give(3u);
    for (unsigned int i = 0; i < copies; ++i)
        t.give(4).give(int(i)).give(1u).give(int(1000 + i)).give(0).give(1u);
    ASSERT_EQ(1, d.doxdr(t));
    EXPECT_EQ(-1, d.at(8008)) << "a walk to the end of that bucket";
    for (unsigned int i = copies; i-- > 0;) {
        EXPECT_EQ(int(i), d.at(4));
        d.drop(4);
    }
    EXPECT_EQ(-1, d.at(4));
}

TEST(fxChainPromise, objectTablesPromise) {
    fxBinaryOTDict d;
    for (unsigned int i = 0; i < 2000; ++i)
        d.addNew(i * 4, i);
    unsigned int key = 16;
    const unsigned int absent = 17;
    EXPECT_EQ(4, numberAt(d.find(&key)));
    EXPECT_EQ(nullptr, d.find(&absent));
    d.addNew(16, 99);
    EXPECT_EQ(99, numberAt(d.find(&key))) << "the one in front";
    d.remove(&key);
    EXPECT_EQ(4, numberAt(d.find(&key)));
    d.removeAll();
    EXPECT_EQ(nullptr, d.find(&key));
    d.addNew(16, 7);
    EXPECT_EQ(7, numberAt(d.find(&key)));
}

// A host's class that is derived from one of the library's may do with the
// chains what it likes.

TEST(fxChainPromise, chainsOfAHostsOwnClassMayBeChangedByHand) {
    class Own : public fxStrStrDictionary {
    public:
        using fxStrStrDictionary::fxStrStrDictionary;
        void loseFirst() {
            fxDictBucket* b = buckets[0];
            buckets[0] = b->next;
            destroyKey(b->kvmem);
            destroyValue(valueOf(b));
            std::free(b->kvmem);
            delete b;
            --numItems;
        }
    };
    Own d(1);
    for (int i = 0; i < 200; ++i)
        d.add(fxStr(i, "application.resource.%d"), fxStr(i, "%d"));
    EXPECT_EQ(nullptr, d.find("application.resource.x"));
    d.loseFirst();
    EXPECT_EQ(nullptr, d.find("application.resource.199"));
    EXPECT_STREQ("0", d.find("application.resource.0")->c_str());
}

// What a container of strings knows of sizes holds also for those who know
// only its base.

TEST(fxChainPromise, theBasesReadingOfAContainerOfStringsWeighsClaims) {
    fxStrStrDictionary d;
    fxStrSet s;
    fxStrSet copy(s);
    fxDictionary& asDictionary = d;
    for (fxSet* set : {static_cast<fxSet*>(&s), static_cast<fxSet*>(&copy)}) {
        RecordingTranscriber t(RecordingTranscriber::reader);
        t.give(1u).give(0x08000000u).give(1u).giveStr("a").give(0u);
        EXPECT_EQ(0, set->doxdr(t));
    }
    RecordingTranscriber t(RecordingTranscriber::reader);
    t.give(1u).give(0x08000000u).give(8u).give(1u).giveStr("a").giveStr("b").give(0u);
    EXPECT_EQ(0, asDictionary.doxdr(t));
}
