#include "kelvofxds/containers/fxBoundingBox.h"

#include <climits>
#include <cstddef>
#include <ostream>
#include <type_traits>

#include <gtest/gtest.h>

static_assert(sizeof(fxBoundingBox) == 16, "four words");
static_assert(offsetof(fxBoundingBox, x) == 0, "fields in order");
static_assert(offsetof(fxBoundingBox, y) == 4, "fields in order");
static_assert(offsetof(fxBoundingBox, width) == 8, "fields in order");
static_assert(offsetof(fxBoundingBox, height) == 12, "fields in order");
static_assert(std::is_same<decltype(fxBoundingBox::x), int>::value, "signed words");
static_assert(!std::is_polymorphic<fxBoundingBox>::value, "no table");
static_assert(std::is_trivially_copyable<fxBoundingBox>::value, "a plain value");

namespace {

struct Span {
    int edge, extent;
};

struct Case {
    Span a, b, result;
};

std::ostream& operator<<(std::ostream& out, const Case& c) {
    return out << c.a.edge << "+" << c.a.extent << " and " << c.b.edge << "+" << c.b.extent;
}

// Both axes follow one rule. What happens along the axis under test must not
// depend on the other one, along which the boxes are the same, touch, or are
// empty.
const Span otherAxis[][2] = {{{3, 4}, {3, 4}}, {{0, 5}, {5, 5}}, {{1, 0}, {2, 0}}};

using Operation = fxBoundingBox (fxBoundingBox::*)(const fxBoundingBox&) const;

void expectSpans(Operation operation, const Case& c) {
    SCOPED_TRACE(testing::Message() << c);
    for (const auto& other : otherAxis) {
        const fxBoundingBox ax(c.a.edge, other[0].edge, c.a.extent, other[0].extent);
        const fxBoundingBox bx(c.b.edge, other[1].edge, c.b.extent, other[1].extent);
        const fxBoundingBox alongX = (ax.*operation)(bx);
        EXPECT_EQ(c.result.edge, alongX.x);
        EXPECT_EQ(c.result.extent, alongX.width);
        const fxBoundingBox ay(other[0].edge, c.a.edge, other[0].extent, c.a.extent);
        const fxBoundingBox by(other[1].edge, c.b.edge, other[1].extent, c.b.extent);
        const fxBoundingBox alongY = (ay.*operation)(by);
        EXPECT_EQ(c.result.edge, alongY.y);
        EXPECT_EQ(c.result.extent, alongY.height);
    }
}

// The same either way round.
void expectSymmetric(Operation operation, const Case& c) {
    expectSpans(operation, c);
    expectSpans(operation, {c.b, c.a, c.result});
}

void expectBox(int x, int y, int width, int height, const fxBoundingBox& box) {
    EXPECT_EQ(x, box.x);
    EXPECT_EQ(y, box.y);
    EXPECT_EQ(width, box.width);
    EXPECT_EQ(height, box.height);
}

}  // namespace

TEST(fxBoundingBox, isMadeFromItsFields) {
    const fxBoundingBox box(1, -2, 3, 4);
    expectBox(1, -2, 3, 4, box);
    EXPECT_EQ(1, box.getX());
    EXPECT_EQ(-2, box.getY());
    EXPECT_EQ(3, box.getWidth());
    EXPECT_EQ(4, box.getHeight());
    expectBox(0, 0, 0, 0, fxBoundingBox());
}

// Intersection.

TEST(fxBoundingBox, intersectionOfBoxesThatMeet) {
    const Case cases[] = {
        {{0, 10}, {5, 10}, {5, 5}},       // overlapping
        {{0, 10}, {2, 3}, {2, 3}},        // one within the other
        {{0, 10}, {0, 10}, {0, 10}},      // the same
        {{0, 10}, {0, 4}, {0, 4}},        // from one edge
        {{0, 10}, {6, 4}, {6, 4}},        // to one far edge
        {{0, 10}, {9, 10}, {9, 1}},       // by one
        {{-10, 15}, {-5, 20}, {-5, 10}},  // below 0
        {{-10, 5}, {-8, 1}, {-8, 1}},
    };
    for (const Case& c : cases)
        expectSymmetric(&fxBoundingBox::intersect, c);
}

TEST(fxBoundingBox, intersectionOfBoxesThatTouchOrAreApartIsEmpty) {
    const Case cases[] = {
        {{0, 10}, {10, 10}, {0, 0}},  {{0, 10}, {11, 10}, {0, 0}}, {{5, 10}, {15, 1}, {0, 0}},
        {{-20, 5}, {-15, 5}, {0, 0}}, {{-20, 5}, {7, 5}, {0, 0}},
    };
    for (const Case& c : cases)
        expectSymmetric(&fxBoundingBox::intersect, c);
}

TEST(fxBoundingBox, deliberateIntersectionWithAnEmptyBoxInsideKeepsItsEdge) {
    expectSymmetric(&fxBoundingBox::intersect, {{0, 10}, {5, 0}, {5, 0}});
    // At an edge its own far edge is not behind the other's edge.
    expectSymmetric(&fxBoundingBox::intersect, {{0, 10}, {10, 0}, {0, 0}});
    // Equal edges: the far edge is this box's, so the two ways differ.
    expectSpans(&fxBoundingBox::intersect, {{5, 10}, {5, 0}, {5, 0}});
    expectSpans(&fxBoundingBox::intersect, {{5, 0}, {5, 10}, {0, 0}});
    expectSpans(&fxBoundingBox::intersect, {{5, 0}, {5, 0}, {0, 0}});
}

TEST(fxBoundingBox, intersectionTakesTheSmallerOfNegativeExtentsToo) {
    expectSymmetric(&fxBoundingBox::intersect, {{0, 10}, {5, -3}, {5, -3}});
    // The far edge, -5, is below the other's edge.
    expectSymmetric(&fxBoundingBox::intersect, {{0, -5}, {5, 10}, {0, 0}});
    expectSpans(&fxBoundingBox::intersect, {{0, -5}, {0, 10}, {0, 0}});
    expectSpans(&fxBoundingBox::intersect, {{0, 10}, {0, -5}, {0, -5}});
}

TEST(fxBoundingBox, intersectionDisjointAlongOneAxisKeepsTheOther) {
    const fxBoundingBox a(0, 0, 10, 10);
    expectBox(5, 0, 5, 0, a.intersect(fxBoundingBox(5, 20, 10, 10)));
    expectBox(0, 5, 0, 5, a.intersect(fxBoundingBox(20, 5, 10, 10)));
    expectBox(0, 0, 0, 0, a.intersect(fxBoundingBox(20, 20, 10, 10)));
    expectBox(5, 7, 5, 3, a.intersect(fxBoundingBox(5, 7, 10, 10)));
}

TEST(fxBoundingBox, intersectionComparesSigned) {
    expectSymmetric(&fxBoundingBox::intersect,
                    {{INT_MIN, 10}, {INT_MIN + 4, 10}, {INT_MIN + 4, 6}});
    expectSymmetric(&fxBoundingBox::intersect, {{-1, 10}, {0, INT_MAX}, {0, 9}});
}

// Far edges past 2^31 - 1 wrap to negative numbers, behind which everything is.
TEST(fxBoundingBox, intersectionsFarEdgesWrapAt32Bits) {
    expectSpans(&fxBoundingBox::intersect, {{INT_MAX - 5, 10}, {INT_MAX - 2, 1}, {0, 0}});
    expectSpans(&fxBoundingBox::intersect, {{INT_MAX - 2, 1}, {INT_MAX - 5, 10}, {0, 0}});
    // -2^31 - 1 wraps to 2^31 - 1, and the difference from -2^31 to -1.
    expectSpans(&fxBoundingBox::intersect, {{INT_MIN, -1}, {INT_MIN, 7}, {INT_MIN, -1}});
    // Far edges beyond 16 bits do not.
    expectSymmetric(&fxBoundingBox::intersect, {{30000, 5000}, {32000, 9000}, {32000, 3000}});
}

TEST(fxBoundingBox, operationsLeaveTheirBoxesAlone) {
    const fxBoundingBox a(0, 1, 10, 11), b(5, 6, 12, 13);
    a.intersect(b);
    a.bound(b);
    expectBox(0, 1, 10, 11, a);
    expectBox(5, 6, 12, 13, b);
    expectBox(0, 1, 10, 11, a.intersect(a));
    expectBox(0, 1, 10, 11, a.bound(a));
}

// Bounding.

TEST(fxBoundingBox, boundReachesFromTheLesserEdgeToTheGreaterFarEdge) {
    const Case cases[] = {
        {{0, 10}, {5, 10}, {0, 15}},
        {{0, 10}, {2, 3}, {0, 10}},
        {{0, 10}, {20, 5}, {0, 25}},
        {{0, 10}, {10, 10}, {0, 20}},
        {{-10, 3}, {5, 1}, {-10, 16}},
        {{-20, 5}, {-10, 5}, {-20, 15}},
        {{-32768, 1}, {0, 1}, {-32768, 32769}},
        {{0, 32767}, {5, 5}, {0, 32767}},  // the last far edge that does not wrap
    };
    for (const Case& c : cases)
        expectSymmetric(&fxBoundingBox::bound, c);
}

TEST(fxBoundingBox, boundWithAnEmptyBoxIsTheOther) {
    expectSymmetric(&fxBoundingBox::bound, {{0, 10}, {50, 0}, {0, 10}});
    expectSymmetric(&fxBoundingBox::bound, {{-7, 0}, {3, 4}, {3, 4}});
    // Nothing is computed then, so nothing wraps.
    expectSymmetric(&fxBoundingBox::bound, {{30000, 5000}, {50, 0}, {30000, 5000}});
    expectSymmetric(&fxBoundingBox::bound, {{INT_MAX, INT_MAX}, {50, 0}, {INT_MAX, INT_MAX}});
}

TEST(fxBoundingBox, boundOfTwoEmptyBoxesIsTheOther) {
    expectSpans(&fxBoundingBox::bound, {{1, 0}, {2, 0}, {2, 0}});
    expectSpans(&fxBoundingBox::bound, {{2, 0}, {1, 0}, {1, 0}});
}

TEST(fxBoundingBox, boundTreatsTheAxesApart) {
    expectBox(0, 7, 15, 3, fxBoundingBox(0, 0, 10, 0).bound(fxBoundingBox(5, 7, 10, 3)));
    expectBox(5, 0, 10, 10, fxBoundingBox(0, 0, 0, 10).bound(fxBoundingBox(5, 7, 10, 3)));
}

// 35000 is -30536 in 16 bits.
TEST(fxBoundingBox, deliberateBoundsFarEdgesWrapAt16Bits) {
    const Case cases[] = {
        {{30000, 5000}, {0, 10}, {0, 10}},
        {{30000, 5000}, {30000, 5000}, {30000, -60536}},
        {{0, 32768}, {0, 5}, {0, 5}},                 // 32768 is -32768
        {{0, 32768}, {1, 32767}, {0, -32768}},        // both are
        {{0, 65536}, {0, 7}, {0, 7}},                 // 65536 is 0
        {{-40000, 5}, {-40000, 6}, {-40000, 65542}},  // -39994 is 25542
        {{0x10000, 5}, {0x10002, 5}, {0x10000, 7 - 0x10000}},
    };
    for (const Case& c : cases)
        expectSymmetric(&fxBoundingBox::bound, c);
}

// The far edge, 5, is 2^31 + 5 from the least number, which wraps.
TEST(fxBoundingBox, boundsExtentWrapsAt32Bits) {
    expectSymmetric(&fxBoundingBox::bound, {{INT_MIN, 1}, {0, 5}, {INT_MIN, INT_MIN + 5}});
}

// A negative extent is not empty.
TEST(fxBoundingBox, boundComputesWithNegativeExtents) {
    expectSymmetric(&fxBoundingBox::bound, {{0, -5}, {10, 5}, {0, 15}});
    expectSymmetric(&fxBoundingBox::bound, {{0, -5}, {-20, 5}, {-20, 15}});
}
