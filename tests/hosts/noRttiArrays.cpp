// noRttiArrays.cpp - a host without run-time type information whose classes are arrays. Exits with
// 0 when they are sorted and searched as such.
//
// Compiled with -fno-rtti and -fno-exceptions: the tables of its classes lead to no description.
// Also built without position independence: then the tables of its classes lead to stand-ins of its
// own.

#include <cstdio>
#include <cstring>
#include <string>

#include "kelvofxds/containers/fxTypedArrays.h"
#include "kelvofxds/str/fxStrArray.h"

namespace {

// Pairs that are ordered by their second half.
struct Pair {
    int name;
    int rank;
};

class PairArray : public fxArray {
public:
    PairArray() : fxArray(static_cast<unsigned short>(sizeof(Pair)), 0) {}
    ~PairArray() override { destroy(); }
    const char* className() const override { return "PairArray"; }
    int compareElements(const void* a, const void* b) const override {
        return static_cast<const Pair*>(a)->rank - static_cast<const Pair*>(b)->rank;
    }
    void add(int name, int rank) {
        const Pair pair = {name, rank};
        append(&pair);
    }
};

class PlainArray : public fxArray {
public:
    PlainArray() : fxArray(static_cast<unsigned short>(sizeof(int)), 0) {}
    ~PlainArray() override { destroy(); }
    const char* className() const override { return "PlainArray"; }
};

// Strings in the opposite order.
class BackwardArray : public fxStrArray {
public:
    const char* className() const override { return "BackwardArray"; }
    int compareElements(const void* a, const void* b) const override {
        return fxStrArray::compareElements(b, a);
    }
};

// Strings, and every operation on them watched, so that only the transcription is fxStrArray's.
class WatchedArray : public fxStrArray {
public:
    const char* className() const override { return "WatchedArray"; }
    void createElements(void* at, unsigned int bytes) override {
        fxStrArray::createElements(at, bytes);
    }
    void destroyElements(void* at, unsigned int bytes) override {
        fxStrArray::destroyElements(at, bytes);
    }
    void copyElements(const void* from, void* to, unsigned int bytes) const override {
        fxStrArray::copyElements(from, to, bytes);
    }
    int compareElements(const void* a, const void* b) const override {
        return fxStrArray::compareElements(a, b);
    }
};

int ranksOf(const PairArray& array) {
    int digits = 0;
    for (unsigned int i = 0; i < array.length(); ++i)
        digits = 10 * digits + static_cast<const Pair*>(array.at(i))->rank;
    return digits;
}

std::string textsOf(const fxStrArray& array) {
    std::string texts;
    for (unsigned int i = 0; i < array.length(); ++i)
        texts += std::string(array[i].c_str()) + " ";
    return texts;
}

// As the sort's final placement leaves them: the last exchange is of 3 and 1.
bool sortsByItsOwnComparison() {
    PairArray array;
    array.add(1, 2);
    array.add(2, 3);
    array.add(3, 1);
    array.qsort();
    return ranksOf(array) == 333;
}

bool findsByItsOwnComparison() {
    PairArray array;
    array.add(1, 2);
    array.add(2, 3);
    const Pair wanted = {77, 3};
    return array.find(&wanted) == 1;
}

bool findsByBytes() {
    PlainArray array;
    for (int i = 0; i < 10; ++i)
        array.append(&i);
    const int wanted = 7;
    return array.find(&wanted) == 7;
}

template <class Array>
std::string sortedTexts() {
    Array array;
    for (const char* text : {"b", "d", "a", "c", "e"})
        array.append(text);
    fxArray& base = array;
    base.qsort();
    return textsOf(array);
}

bool exchangesStrings() {
    return sortedTexts<fxStrArray>() == "a b c d e " &&
           sortedTexts<BackwardArray>() == "e d c b a " &&
           sortedTexts<WatchedArray>() == "a b c d e ";
}

}  // namespace

int main() {
    const struct {
        bool (*holds)();
        const char* complaint;
    } checks[] = {
        {sortsByItsOwnComparison, "an array is not sorted by its own comparison"},
        {findsByItsOwnComparison, "an array does not find by its own comparison"},
        {findsByBytes, "an array without a comparison of its own does not find by bytes"},
        {exchangesStrings, "an array of strings is not sorted by exchanges"},
    };
    int failures = 0;
    for (const auto& check : checks) {
        if (check.holds())
            continue;
        std::fprintf(stderr, "%s\n", check.complaint);
        ++failures;
    }
    return failures == 0 ? 0 : 1;
}
