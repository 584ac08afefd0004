// fxChainIndex_test.cpp - the index beside the chains answers what a walk would.

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxStrSet.h"
#include "kelvofxds/containers/fxStrStrDictionary.h"
#include "kelvofxds/containers/fxVoidPtrDict.h"
#include "tests/support/recordingTranscriber.h"

// Random operations on two containers, of which one walks its chains because
// its class is a host's, and the other may have an index.

namespace {

// How many operations a container gets. A long run asks for more.
unsigned long operations() {
    const char* wanted = std::getenv("KELVOFXDS_OPERATIONS");
    return wanted ? std::strtoul(wanted, nullptr, 10) : 30000;
}

// The keys.

std::string repeatedly(const std::string& text, unsigned int n) {
    std::string result;
    for (unsigned int i = 0; i < n; ++i)
        result += text;
    return result;
}

// Texts of all kinds: short, with a common beginning, with NULs inside, alike
// up to a NUL, alike for fxStr::hash, and long.
std::string keyOf(unsigned int kind, unsigned int n) {
    const std::string number = std::to_string(n);
    switch (kind) {
        case 0:
            return number.substr(0, 3);
        case 1:
            return "application.resource." + number;
        case 2:
            return number + '\0' + std::string(n % 3, 'x');
        case 3:
            return "same" + std::string(1, '\0') + number;
        case 4:
            return "sameword" + number;
        case 5:
            return repeatedly(number, 1 + n % 40);
        default:
            return std::string("samewor\0", 8) + number;
    }
}

// The containers, each with the operations that they are to have alike.

template <class Iter>
class PlaceOf : public Iter {
public:
    using Iter::Iter;
    unsigned int place() const { return this->bucketIndex; }
    unsigned int state() const { return this->flags; }
};

template <class Base>
class Walks : public Base {
public:
    using Base::Base;
};

fxStr strOf(const std::string& text) {
    return fxStr(text.data(), static_cast<unsigned int>(text.size()));
}

void giveEntry(RecordingTranscriber& t, const std::string& key, const fxStrStrDictionary*) {
    t.giveStr(key).giveStr("v" + std::to_string(t.bytes.size()));
}
void giveEntry(RecordingTranscriber& t, const std::string& key, const fxStrSet*) { t.giveStr(key); }
void giveSizes(RecordingTranscriber& t, const fxStrStrDictionary*) {
    t.give(unsigned(sizeof(fxStr))).give(unsigned(sizeof(fxStr)));
}
void giveSizes(RecordingTranscriber& t, const fxStrSet*) { t.give(unsigned(sizeof(fxStr))); }

std::string whole(const fxStr& s) { return std::string(s.c_str(), s.length()); }

struct StrStr {
    using Indexed = fxStrStrDictionary;
    using Iter = fxStrStrDictionaryIter;
    static const bool isRead = true;
    static std::string add(Indexed& d, const fxStr& key, unsigned int n) {
        d.add(key, fxStr(std::to_string(n).c_str()));
        return "";
    }
    static std::string find(Indexed& d, const fxStr& key) {
        void* entry = nullptr;
        const auto* value = static_cast<const fxStr*>(d.fxDictionary::find(&key, &entry));
        if (!value)
            return entry ? "stray" : "none";
        return whole(*static_cast<fxStr*>(static_cast<fxDictBucket*>(entry)->kvmem)) + "=" +
               whole(*value);
    }
    static std::string other(Indexed& d, const fxStr& key, unsigned int n) {
        if (n % 2 != 0)
            return whole(d.findCreate(key));
        auto* value = static_cast<fxStr*>(d.cut(&key));
        if (!value)
            return "none";
        const std::string text = whole(*value);
        value->~fxStr();
        std::free(value);
        return text;
    }
    static std::string algebra(Indexed& d, Indexed& o, unsigned int) {
        d = o;
        return "";
    }
    static std::string at(const Iter& iter) {
        return iter.key() ? whole(*iter.key()) + "=" + whole(*iter.value()) : "none";
    }
};

struct VoidPtr {
    using Indexed = fxVoidPtrDict;
    using Iter = fxVoidPtrDictIter;
    static const bool isRead = false;
    static void* number(unsigned int n) { return reinterpret_cast<void*>(std::uintptr_t(n)); }
    static std::string text(void* const* value) {
        return value ? std::to_string(reinterpret_cast<std::uintptr_t>(*value)) : "none";
    }
    static std::string add(Indexed& d, const fxStr& key, unsigned int n) {
        d.add(key, number(n));
        return "";
    }
    static std::string find(Indexed& d, const fxStr& key) { return text(d.find(key)); }
    static std::string other(Indexed& d, const fxStr& key, unsigned int n) {
        if (n % 2 != 0)
            return text(&d.findCreate(key));
        void* block = d.cut(&key);
        const std::string result = text(static_cast<void**>(block));
        std::free(block);
        return result;
    }
    static std::string algebra(Indexed& d, Indexed& o, unsigned int) {
        d = o;
        return "";
    }
    static std::string at(const Iter& iter) {
        return iter.key() ? whole(*iter.key()) + "=" + text(iter.value()) : "none";
    }
};

struct Strs {
    using Indexed = fxStrSet;
    using Iter = fxStrSetIter;
    static const bool isRead = true;
    static std::string add(Indexed& s, const fxStr& key, unsigned int) {
        const fxSetBucket* b = s.add(key);
        return b ? whole(*static_cast<fxStr*>(b->key)) : "none";
    }
    static std::string find(Indexed& s, const fxStr& key) {
        const fxStr* found = s.find(key);
        return (found ? whole(*found) : "none") + (s.contains(key) ? "+" : "-");
    }
    static std::string other(Indexed& s, const fxStr& key, unsigned int) { return find(s, key); }
    static std::string algebra(Indexed& s, Indexed& o, unsigned int n) {
        if (n % 3 == 0)
            s |= o;
        else if (n % 3 == 1)
            s -= o;
        else
            s &= o;
        return "";
    }
    static std::string at(const Iter& iter) { return iter.key() ? whole(*iter.key()) : "none"; }
};

// A pair of containers and what is done to both.
template <class Kind>
class Pair {
    using Indexed = typename Kind::Indexed;
    using Walking = Walks<Indexed>;
    using Iter = PlaceOf<typename Kind::Iter>;

public:
    explicit Pair(unsigned int seed) : random(seed) { start(); }

    /// One operation on both; false once they differ.
    bool step() {
        const unsigned int choice = unsigned(random()) % 1000;
        const fxStr key = strOf(anyKey());
        const unsigned int n = unsigned(random());
        if (choice < grows)
            return alike(Kind::add(*indexed, key, n), Kind::add(*walking, key, n));
        if (choice < 700)
            return alike(Kind::find(*indexed, key), Kind::find(*walking, key));
        if (choice < 900) {
            indexed->remove(key);
            walking->remove(key);
            return true;
        }
        if (choice < 970)
            return alike(Kind::other(*indexed, key, n), Kind::other(*walking, key, n));
        if (choice < 990)
            return moveIters();
        return rarely(n, key);
    }

    /// Whether both hold the same entries in the same places and order.
    bool same() const {
        Iter x(*indexed);
        Iter y(*walking);
        for (; x.key() && y.key(); ++x, ++y) {
            if (x.place() != y.place() || Kind::at(x) != Kind::at(y))
                return false;
        }
        return !x.key() && !y.key() && indexed->length() == walking->length();
    }

private:
    void start() {
        const unsigned int counts[] = {1, 2, 31, 31, 64, 1000};
        const unsigned int buckets = counts[random() % 6];
        indexed = std::make_unique<Indexed>(buckets);
        walking = std::make_unique<Walking>(buckets);
        kinds = 1 + unsigned(random()) % 7;
        firstKind = unsigned(random()) % 7;
        most = 20U << random() % 6;
        grows = 250 + 50 * (unsigned(random()) % 6);
    }

    std::string anyKey() {
        const unsigned int kind = (firstKind + unsigned(random()) % kinds) % 7;
        return keyOf(kind, unsigned(random()) % most);
    }

    static bool alike(const std::string& a, const std::string& b) {
        EXPECT_EQ(b, a);
        return a == b;
    }

    bool moveIters() {
        if (!a || random() % 8 == 0) {
            a = std::make_unique<Iter>(*indexed);
            b = std::make_unique<Iter>(*walking);
        }
        ++*a;
        ++*b;
        if (a->key() && random() % 2 == 0) {
            const fxStr key = *a->key();
            indexed->remove(key);
            walking->remove(key);
        }
        return alike(Kind::at(*a), Kind::at(*b)) && a->state() == b->state();
    }

    bool rarely(unsigned int n, const fxStr& key) {
        if (n % 7 == 0)
            return same() && (start(), true);
        if (n % 7 == 1) {
            indexed->cleanup();
            walking->cleanup();
            return same();
        }
        if constexpr (Kind::isRead) {
            if (n % 7 < 5)
                return read();
        }
        Indexed other(n % 5);
        for (unsigned int i = 0; i < n % 50; ++i)
            Kind::add(other, strOf(anyKey()), n + i);
        Kind::add(other, key, n);
        return alike(Kind::algebra(*indexed, other, n), Kind::algebra(*walking, other, n)) &&
               same();
    }

    // Keys where a stream puts them, some of them more than once.
    bool read() {
        const unsigned int items = unsigned(random()) % 300;
        const unsigned int buckets = 1 + unsigned(random()) % 40;
        const unsigned int places = 1 + unsigned(random()) % buckets;
        RecordingTranscriber first(RecordingTranscriber::reader);
        const Indexed* what = nullptr;
        first.give(items);
        giveSizes(first, what);
        first.give(buckets);
        for (unsigned int i = 0; i < items; ++i) {
            const std::string key = anyKey();
            giveEntry(first, key, what);
            const fxStr s = strOf(key);
            const bool isHome = random() % 4 != 0;
            first.give((isHome ? s.hash() : unsigned(random()) % places) % buckets);
        }
        RecordingTranscriber second(RecordingTranscriber::reader, first.bytes);
        const bool both = indexed->doxdr(first) == 1 && walking->doxdr(second) == 1;
        EXPECT_TRUE(both);
        return both && same();
    }

    std::mt19937 random;
    std::unique_ptr<Indexed> indexed;
    std::unique_ptr<Walking> walking;
    std::unique_ptr<Iter> a, b;
    unsigned int kinds = 0, firstKind = 0, most = 0, grows = 0;
};

template <class Kind>
void compareFor(unsigned long steps) {
    const unsigned int seed = 20240917;
    std::printf("seed %u, %lu operations\n", seed, steps);
    Pair<Kind> pair(seed);
    for (unsigned long i = 0; i < steps; ++i) {
        ASSERT_TRUE(pair.step()) << "operation " << i;
        if (i % 512 == 0) {
            ASSERT_TRUE(pair.same()) << "operation " << i;
        }
    }
    ASSERT_TRUE(pair.same());
}

}  // namespace

TEST(fxChainIndex, dictionariesOfStringsAnswerLikeAWalk) { compareFor<StrStr>(operations()); }

TEST(fxChainIndex, dictionariesOfPointersAnswerLikeAWalk) { compareFor<VoidPtr>(operations()); }

TEST(fxChainIndex, setsOfStringsAnswerLikeAWalk) { compareFor<Strs>(operations()); }
