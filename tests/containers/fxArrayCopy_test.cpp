// fxArrayCopy_test.cpp - who copies the elements of arrays, and what is left when that fails.

#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/containers/fxTypedArrays.h"
#include "tests/support/testArrays.h"

namespace {

using Ints = std::vector<int>;

// Its copies are of the elements' tenfold.
class TenfoldArray : public fxIntArray {
public:
    using fxIntArray::fxIntArray;
    void copyElements(const void* from, void* to, unsigned int bytes) const override {
        for (unsigned int i = 0; i < bytes / sizeof(int); ++i)
            static_cast<int*>(to)[i] = 10 * static_cast<const int*>(from)[i];
    }
};

// Throws its own kind of exception where it is told to.
class ThrowingArray : public CountingArray {
public:
    struct Failure {};
    enum Place { nowhere, copying, creating, ending, bringing };

    ThrowingArray() : CountingArray{1, 2, 3} { setMaxLength(3); }
    ~ThrowingArray() override { throwsWhile = nowhere; }
    void getmem() override {
        throwIf(bringing);
        CountingArray::getmem();
    }
    void createElements(void* at, unsigned int bytes) override {
        throwIf(creating);
        CountingArray::createElements(at, bytes);
    }
    void destroyElements(void* at, unsigned int bytes) override {
        throwIf(ending);
        CountingArray::destroyElements(at, bytes);
    }
    void copyElements(const void* from, void* to, unsigned int bytes) const override {
        throwIf(copying);
        CountingArray::copyElements(from, to, bytes);
    }

    Place throwsWhile = nowhere;

private:
    void throwIf(Place place) const {
        if (place == throwsWhile)
            throw Failure();
    }
};

void appendOne(ThrowingArray& array) { array.append(array.at(0)); }
void appendAll(ThrowingArray& array) { array.append(array); }
void insertOne(ThrowingArray& array) { array.insert(array.at(0), 1); }
void insertAll(ThrowingArray& array) { array.insert(CountingArray{8, 9}, 1); }
void removeOne(ThrowingArray& array) { array.remove(1, 1); }
void lengthen(ThrowingArray& array) { array.resize(5); }
void shorten(ThrowingArray& array) { array.resize(1); }
void reserve(ThrowingArray& array) { array.setMaxLength(9); }
void extract(ThrowingArray& array) { array.raw_extract(1, 2); }
void copyAll(ThrowingArray& array) { array.raw_copy(); }

}  // namespace

// The copy constructor of the typed arrays

TEST(fxArrayCopy, elementsAreCopiedByTheSource) {
    TenfoldArray source;
    appendInts(source, {1, 2, 3});
    ASSERT_EQ((Ints{10, 20, 30}), intsOf(source));
    ASSERT_EQ(16u, source.getMaxLen());

    const fxIntArray copy(static_cast<const fxIntArray&>(source));
    EXPECT_EQ((Ints{100, 200, 300}), intsOf(copy));
    EXPECT_EQ(16u, copy.getMaxLen());
    EXPECT_EQ(0, copy[3]) << "spare bytes are zero";
    EXPECT_EQ((Ints{10, 20, 30}), intsOf(source));

    const TenfoldArray same(source);
    EXPECT_EQ((Ints{100, 200, 300}), intsOf(same));
}

// A host's exception passes through the library.

TEST(fxArrayCopy, aStepThatThrowsLeavesTheElements) {
    const struct {
        const char* name;
        void (*step)(ThrowingArray&);
        ThrowingArray::Place place;
    } cases[] = {{"append", appendOne, ThrowingArray::copying},
                 {"append, growing", appendOne, ThrowingArray::bringing},
                 {"append of an array", appendAll, ThrowingArray::copying},
                 {"append of an array, growing", appendAll, ThrowingArray::bringing},
                 {"insert", insertOne, ThrowingArray::copying},
                 {"insert, growing", insertOne, ThrowingArray::bringing},
                 {"insert of an array", insertAll, ThrowingArray::copying},
                 {"insert of an array, growing", insertAll, ThrowingArray::bringing},
                 {"remove", removeOne, ThrowingArray::ending},
                 {"resize to more", lengthen, ThrowingArray::creating},
                 {"resize to more, growing", lengthen, ThrowingArray::bringing},
                 {"resize to less", shorten, ThrowingArray::ending},
                 {"setMaxLength", reserve, ThrowingArray::bringing},
                 {"raw_extract", extract, ThrowingArray::copying},
                 {"raw_copy", copyAll, ThrowingArray::copying}};
    for (const auto& c : cases) {
        for (unsigned int capacity : {3u, 8u}) {
            SCOPED_TRACE(testing::Message() << c.name << ", capacity " << capacity);
            ThrowingArray array;
            array.setMaxLength(capacity);
            array.throwsWhile = c.place;
            const bool grows = c.place != ThrowingArray::bringing || capacity == 3 ||
                               c.step == lengthen || c.step == reserve;
            if (!grows)
                continue;
            EXPECT_THROW(c.step(array), ThrowingArray::Failure);
            EXPECT_EQ((Ints{1, 2, 3}), array.values());
            EXPECT_LE(array.getLen(), array.getMaxLen());

            array.throwsWhile = ThrowingArray::nowhere;
            array.add(4);
            array.add(5);
            EXPECT_EQ((Ints{1, 2, 3, 4, 5}), array.values());
        }
    }
}

// What a shorter array has lost has ended, so it cannot come back.
TEST(fxArrayCopy, resizeToLessWhoseGetmemThrowsHasTheElementsThatStay) {
    for (unsigned int n : {0u, 1u, 2u}) {
        for (unsigned int capacity : {3u, 8u}) {
            SCOPED_TRACE(testing::Message() << n << " elements, capacity " << capacity);
            CountingArray::resetCounts();
            {
                ThrowingArray array;
                array.setMaxLength(capacity);
                array.throwsWhile = ThrowingArray::bringing;
                EXPECT_THROW(array.resize(n), ThrowingArray::Failure);
                EXPECT_EQ(static_cast<int>(3 - n), CountingArray::destroyed);
                Ints expected = {1, 2, 3};
                expected.resize(n);
                EXPECT_EQ(expected, array.values());
                EXPECT_LE(array.getLen(), array.getMaxLen());

                array.throwsWhile = ThrowingArray::nowhere;
                array.add(4);
                expected.push_back(4);
                EXPECT_EQ(expected, array.values());
            }
            EXPECT_EQ(0, CountingArray::alive());
        }
    }
}

// The capacity that is left fits the block, whichever it is.
TEST(fxArrayCopy, getmemThatThrowsWhenItHasBroughtTheBlockLeavesACapacityThatFits) {
    class LateArray : public fxIntArray {
    public:
        ~LateArray() override { throws = false; }
        void getmem() override {
            fxIntArray::getmem();
            if (throws)
                throw 1;
        }
        bool throws = false;
    };
    for (unsigned int capacity : {5u, 100u}) {
        SCOPED_TRACE(capacity);
        LateArray array;
        appendInts(array, {1, 2, 3});
        array.setMaxLength(50);
        array.throws = true;
        EXPECT_THROW(array.setMaxLength(capacity), int);
        EXPECT_EQ((Ints{1, 2, 3}), intsOf(array));
        EXPECT_LE(array.getMaxLen(), 4 * capacity);
        std::memset(array.at(3), 1, array.getMaxLen() - array.getLen());
        array.throws = false;
        array.setMaxLength(200);
        EXPECT_EQ((Ints{1, 2, 3}), intsOf(array));
    }
}
