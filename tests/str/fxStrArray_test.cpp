#include "kelvofxds/str/fxStrArray.h"

#include <cstring>
#include <initializer_list>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "kelvofxds/core/fxTypeObj.h"
#include "kelvofxds/transcribe/fxTranscriber.h"
#include "tests/support/arraySuite.h"

static_assert(sizeof(fxStr) == 8, "two words an element");
static_assert(sizeof(fxStrArray) == sizeof(fxArray), "no fields of its own");
static_assert(std::is_base_of<fxArray, fxStrArray>::value, "an array");

// The inherited operations.

template <>
struct ArrayElements<fxStrArray> {
    static fxStr make(unsigned int i) { return fxStr(static_cast<int>(i), "element %d"); }
    static unsigned int numberOf(const fxStr& s) {
        for (unsigned int i = 0; i < 100; ++i) {
            if (s == make(i))
                return i;
        }
        return 0xFFFFFFFF;
    }
};

INSTANTIATE_ARRAY_SUITE(fxStrArray, fxStrArray);

namespace {
using Texts = std::vector<std::string>;

fxStrArray arrayOf(std::initializer_list<const char*> texts) {
    fxStrArray array;
    for (const char* text : texts)
        array.append(fxStr(text));
    return array;
}

Texts textsOf(const fxStrArray& array) {
    Texts texts;
    for (unsigned int i = 0; i < array.length(); ++i)
        texts.push_back(std::string(array[i].c_str(), array[i].length()));
    return texts;
}

std::vector<const char*> buffersOf(const fxStrArray& array) {
    std::vector<const char*> buffers;
    for (unsigned int i = 0; i < array.length(); ++i)
        buffers.push_back(array[i].c_str());
    return buffers;
}

// Raw memory for five strings with the bits of strings that a test made in it,
// so that it can end each exactly once whatever was copied over it.
struct RawStrings {
    RawStrings() { std::memset(bytes, 0xA5, sizeof bytes); }

    fxStr* at(unsigned int i) { return reinterpret_cast<fxStr*>(bytes + 8 * i); }

    alignas(fxStr) char bytes[40];
};
}  // namespace

// Class shape.

TEST(fxStrArray, typeRecordHasTheGenericName) {
    unsigned char (*const transcribe)(void*, fxTranscriber&) = &fxStrArray::xdr;
    EXPECT_STREQ("ARRAY", fxStrArray_type.name);
    EXPECT_EQ(1u, fxStrArray_type.version);
    EXPECT_EQ(&fxStrArray::newInstance, fxStrArray_type.create);
    EXPECT_EQ(&fxStrArray::deleteInstance, fxStrArray_type.destroy);
    EXPECT_EQ(transcribe, fxStrArray_type.xdr);
    EXPECT_EQ(&fxStrArray_type, &fxStrArray().getTypeObj());
}

TEST(fxStrArray, itsRecordAnswersToTheGenericName) {
    EXPECT_EQ(&fxStrArray_type, fxTypeObj::findType("ARRAY"));
}

TEST(fxStrArray, newInstanceIsEmpty) {
    auto* array = static_cast<fxStrArray*>(fxStrArray::newInstance(fxStrArray_type));
    EXPECT_EQ(0, array->count);
    EXPECT_EQ(nullptr, array->at(0));
    EXPECT_EQ(0u, array->getLen());
    EXPECT_EQ(0u, array->getMaxLen());
    EXPECT_EQ(8, array->getElemSize());
    array->append(fxStr("usable"));
    EXPECT_EQ(Texts{"usable"}, textsOf(*array));
    fxStrArray::deleteInstance(array);
}

TEST(fxStrArray, deleteInstanceRunsTheVirtualDestructor) {
    static int destroyed;
    destroyed = 0;
    struct Counting : fxStrArray {
        ~Counting() override { ++destroyed; }
    };
    fxStrArray* array = new Counting;
    array->append(fxStr("owned"));
    fxStrArray::deleteInstance(array);
    EXPECT_EQ(1, destroyed);
}

TEST(fxStrArray, deleteInstanceIgnoresNull) {
    fxStrArray::deleteInstance(nullptr);
    SUCCEED();
}

// Construction.

TEST(fxStrArray, newElementsAreEmptyStringsOnTheSharedText) {
    fxStrArray array(3);
    EXPECT_EQ(3u, array.length());
    EXPECT_EQ(24u, array.getLen());
    EXPECT_EQ(24u, array.getMaxLen());
    for (unsigned int i = 0; i < 3; ++i) {
        EXPECT_EQ(0u, array[i].length());
        EXPECT_EQ(&fxStr::emptyString, array[i].c_str());
    }
}

TEST(fxStrArray, resizeMakesEmptyStringsAndEndsStrings) {
    fxStrArray array = arrayOf({"a", "b"});
    array.resize(4);
    EXPECT_EQ((Texts{"a", "b", "", ""}), textsOf(array));
    EXPECT_EQ(&fxStr::emptyString, array[3].c_str());
    array[3] = "d";
    array.resize(1);
    EXPECT_EQ(Texts{"a"}, textsOf(array));
    array.resize(2);
    EXPECT_EQ((Texts{"a", ""}), textsOf(array));
    array.resize(0);
    EXPECT_EQ(Texts(), textsOf(array));
    EXPECT_EQ(nullptr, array.at(0));
}

TEST(fxStrArray, copyOwnsItsStrings) {
    fxStrArray array = arrayOf({"a", "", "c"});
    fxStrArray copy(array);
    EXPECT_NE(array[0].c_str(), copy[0].c_str());
    EXPECT_EQ(&fxStr::emptyString, copy[1].c_str());
    array[0] = "x";
    array.remove(2, 1);
    EXPECT_EQ((Texts{"a", "", "c"}), textsOf(copy));
}

TEST(fxStrArray, copyTakesTheElementSizeFromItsSource) {
    const fxStrArray array(0x10008, 0, nullptr);
    EXPECT_EQ(8, fxStrArray(array).getElemSize());
}

TEST(fxStrArray, copyOfAnEmptyArrayWithRoomCanBeFilled) {
    fxStrArray array;
    array.setMaxLength(2);
    fxStrArray copy(array);
    EXPECT_EQ(16u, copy.getMaxLen());
    copy.append(fxStr("a"));
    copy.append(fxStr("b"));
    EXPECT_EQ(16u, copy.getMaxLen());
    EXPECT_EQ((Texts{"a", "b"}), textsOf(copy));
}

TEST(fxStrArray, adoptsTheStringsOfABlock) {
    fxStrArray array = arrayOf({"a", "b", "c"});
    const auto buffers = buffersOf(array);
    const fxStrArray adopted(8, 16, array.raw_cut(1, 2));
    EXPECT_EQ((std::vector<const char*>{buffers[1], buffers[2]}), buffersOf(adopted));
    EXPECT_EQ((Texts{"b", "c"}), textsOf(adopted));
}

// Who owns which string.

TEST(fxStrArray, appendedAndInsertedStringsAreCopies) {
    fxStrArray array;
    fxStr text("text");
    array.append(text);
    array.insert(text, 0);
    array.append(static_cast<const void*>(&text));
    text = "changed";
    EXPECT_EQ((Texts{"text", "text", "text"}), textsOf(array));
    EXPECT_NE(array[0].c_str(), array[1].c_str());
    EXPECT_NE(array[1].c_str(), array[2].c_str());
}

TEST(fxStrArray, embeddedNulsAreKept) {
    fxStrArray array;
    array.append(fxStr("a\0b", 3));
    EXPECT_EQ((Texts{std::string("a\0b", 3)}), textsOf(fxStrArray(array)));
}

TEST(fxStrArray, ownElementCanBeAppendedToAFullArray) {
    fxStrArray array = arrayOf({"a", "b", "c", "d"});
    array.append(array[0]);
    EXPECT_EQ((Texts{"a", "b", "c", "d", "a"}), textsOf(array));
    EXPECT_NE(array[0].c_str(), array[4].c_str());
}

TEST(fxStrArray, ownElementCanBeInsertedBehindItself) {
    fxStrArray array = arrayOf({"a", "b", "c", "d"});
    array.insert(array[1], 4);
    EXPECT_EQ((Texts{"a", "b", "c", "d", "b"}), textsOf(array));
    EXPECT_NE(array[1].c_str(), array[4].c_str());
}

TEST(fxStrArray, insertedItselfOwnsEveryStringOnce) {
    for (unsigned int index = 0; index <= 3; ++index) {
        SCOPED_TRACE(index);
        fxStrArray array = arrayOf({"a", "b", "c"});
        array.insert(array, index);
        const auto buffers = buffersOf(array);
        ASSERT_EQ(6u, buffers.size());
        for (unsigned int i = 0; i < 6; ++i) {
            for (unsigned int j = 0; j < i; ++j)
                EXPECT_NE(buffers[i], buffers[j]) << i << " and " << j;
        }
    }
}

TEST(fxStrArray, cutMovesItsStrings) {
    fxStrArray array = arrayOf({"a", "b", "c", "d"});
    const auto buffers = buffersOf(array);
    const fxStrArray piece = array.cut(1, 2);
    EXPECT_EQ((std::vector<const char*>{buffers[1], buffers[2]}), buffersOf(piece));
    EXPECT_EQ((std::vector<const char*>{buffers[0], buffers[3]}), buffersOf(array));
}

TEST(fxStrArray, extractHeadAndTailCopyTheirStrings) {
    const fxStrArray array = arrayOf({"a", "b", "c"});
    const fxStrArray pieces[] = {array.extract(1, 1), array.head(2), array.tail(2)};
    const unsigned int starts[] = {1, 0, 1};
    for (unsigned int i = 0; i < 3; ++i) {
        for (unsigned int j = 0; j < pieces[i].length(); ++j) {
            SCOPED_TRACE(testing::Message() << "piece " << i << ", string " << j);
            EXPECT_EQ(pieces[i][j], array[starts[i] + j]);
            EXPECT_NE(pieces[i][j].c_str(), array[starts[i] + j].c_str());
        }
    }
}

TEST(fxStrArray, growthAndRemovalMoveStringsWithoutCopies) {
    fxStrArray array = arrayOf({"a", "b", "c", "d"});
    const auto buffers = buffersOf(array);
    array.append(fxStr("e"));
    array.insert(fxStr("f"), 0);
    array.remove(0, 1);
    array.remove(4, 1);
    EXPECT_EQ(buffers, buffersOf(array));
}

TEST(fxStrArray, swapExchangesBuffers) {
    fxStrArray array = arrayOf({"a", "b"});
    const auto buffers = buffersOf(array);
    array.swap(0, 1);
    EXPECT_EQ((std::vector<const char*>{buffers[1], buffers[0]}), buffersOf(array));
}

// The operations on elements.

TEST(fxStrArray, createElementsMakesEmptyStringsInPlace) {
    fxStrArray array;
    RawStrings raw;
    array.createElements(raw.at(1), 24);
    for (unsigned int i = 1; i <= 3; ++i) {
        EXPECT_EQ(0u, raw.at(i)->length());
        EXPECT_EQ(&fxStr::emptyString, raw.at(i)->c_str());
    }
    EXPECT_EQ('\xA5', raw.bytes[7]);
    EXPECT_EQ('\xA5', raw.bytes[32]);
    array.createElements(raw.at(4), 0);
    EXPECT_EQ('\xA5', raw.bytes[32]);
}

TEST(fxStrArray, destroyElementsEndsTheStringsOfTheRange) {
    fxStrArray array;
    RawStrings raw;
    for (unsigned int i = 0; i < 3; ++i)
        new (raw.at(i)) fxStr("a text of its own");
    array.destroyElements(raw.at(1), 16);
    EXPECT_EQ("a text of its own", *raw.at(0));
    array.destroyElements(raw.at(1), 0);
    array.destroyElements(raw.at(0), 8);
}

TEST(fxStrArray, copyElementsCopiesIntoRawMemory) {
    const fxStrArray array = arrayOf({"a", "", "c"});
    RawStrings raw;
    array.copyElements(array.at(0), raw.at(1), 24);
    for (unsigned int i = 0; i < 3; ++i)
        EXPECT_EQ(array[i], *raw.at(i + 1));
    EXPECT_NE(array[0].c_str(), raw.at(1)->c_str());
    EXPECT_EQ('\xA5', raw.bytes[7]);
    EXPECT_EQ('\xA5', raw.bytes[32]);
    fxStrArray().destroyElements(raw.at(1), 24);
}

TEST(fxStrArray, copyElementsMovesOverlappingRunsEitherWay) {
    const struct {
        unsigned int from, to;
    } cases[] = {{0, 1}, {0, 2}, {1, 0}, {2, 0}, {2, 1}, {1, 2}, {1, 1}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.from << " to " << c.to);
        fxStrArray array;
        RawStrings raw, originals;
        new (raw.at(c.from)) fxStr("first");
        new (raw.at(c.from + 1)) fxStr("second");
        new (raw.at(c.from + 2)) fxStr("third");
        std::memcpy(originals.bytes, raw.bytes + 8 * c.from, 24);

        array.copyElements(raw.at(c.from), raw.at(c.to), 24);
        EXPECT_EQ("first", *raw.at(c.to));
        EXPECT_EQ("second", *raw.at(c.to + 1));
        EXPECT_EQ("third", *raw.at(c.to + 2));
        array.destroyElements(raw.at(c.to), 24);
        array.destroyElements(originals.at(0), 24);
    }
}

TEST(fxStrArray, comparesTextsAsStrcmpDoes) {
    const fxStrArray array;
    const struct {
        fxStr a, b;
        int sign;
    } cases[] = {{"", "", 0},
                 {"a", "a", 0},
                 {"a", "b", -1},
                 {"B", "a", -1},
                 {"a", "", 1},
                 {"ab", "a", 1},
                 {"\xE4", "z", 1},
                 {"10", "9", -1},
                 {fxStr("a\0x", 3), fxStr("a\0y", 3), 0},
                 {fxStr("a\0x", 3), "a", 0},
                 {fxStr(3u), "", 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.a.c_str() << " and " << c.b.c_str());
        const int order = array.compareElements(&c.a, &c.b);
        const int reverse = array.compareElements(&c.b, &c.a);
        EXPECT_EQ(c.sign, (order > 0) - (order < 0));
        EXPECT_EQ(-c.sign, (reverse > 0) - (reverse < 0));
    }
}

TEST(fxStrArray, findMatchesByStrcmp) {
    fxStrArray array = arrayOf({"b", "a", "A"});
    array.append(fxStr("a\0x", 3));
    array.append(fxStr("c\0x", 3));
    EXPECT_EQ(1u, array.find(fxStr("a")));
    EXPECT_EQ(1u, array.find(fxStr("a\0y", 3)));
    EXPECT_EQ(3u, array.find(fxStr("a"), 2));
    EXPECT_EQ(4u, array.find(fxStr("c")));
    EXPECT_EQ(2u, array.find(fxStr("A"), 0));
    EXPECT_EQ(0xFFFFFFFFu, array.find(fxStr("a"), 4));
    EXPECT_EQ(0xFFFFFFFFu, array.find(fxStr("")));
    EXPECT_EQ(0xFFFFFFFFu, array.find(fxStr("b"), 5));
}

TEST(fxStrArray, elementsAreReachedByIndex) {
    fxStrArray array = arrayOf({"a", "b"});
    array[1] = "changed";
    const fxStrArray& same = array;
    EXPECT_EQ("changed", same[1]);
    EXPECT_EQ(array.at(1), &same[1]);
    EXPECT_TRUE((std::is_same<fxStr&, decltype(array[0])>::value));
    EXPECT_TRUE((std::is_same<const fxStr&, decltype(same[0])>::value));
}
