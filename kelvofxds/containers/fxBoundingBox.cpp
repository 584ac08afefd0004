#include "kelvofxds/containers/fxBoundingBox.h"

#include <algorithm>
#include <cstdint>

namespace {
// A box along one axis.
struct Span {
    int edge;
    int extent;
};

int wrappedSum(int a, int b) {
    return static_cast<int>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

int wrappedDifference(int a, int b) {
    return static_cast<int>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

// `first` does not begin behind `second`.
Span overlapInOrder(const Span& first, const Span& second) {
    const int farEdge = wrappedSum(first.edge, first.extent);
    if (second.edge >= farEdge)
        return {0, 0};
    return {second.edge, std::min(wrappedDifference(farEdge, second.edge), second.extent)};
}

Span overlap(const Span& a, const Span& b) {
    return a.edge > b.edge ? overlapInOrder(b, a) : overlapInOrder(a, b);
}

// Where the span ends, in 16 bits.
int shortFarEdge(const Span& s) {
    const auto edge = static_cast<std::uint16_t>(wrappedSum(s.edge, s.extent));
    return edge < 0x8000 ? edge : edge - 0x10000;
}

Span hull(const Span& a, const Span& b) {
    if (a.extent == 0)
        return b;
    if (b.extent == 0)
        return a;
    const int edge = std::min(a.edge, b.edge);
    return {edge, wrappedDifference(std::max(shortFarEdge(a), shortFarEdge(b)), edge)};
}
}  // namespace

fxBoundingBox fxBoundingBox::intersect(const fxBoundingBox& other) const {
    const Span alongX = overlap({x, width}, {other.x, other.width});
    const Span alongY = overlap({y, height}, {other.y, other.height});
    return fxBoundingBox(alongX.edge, alongY.edge, alongX.extent, alongY.extent);
}

fxBoundingBox fxBoundingBox::bound(const fxBoundingBox& other) const {
    const Span alongX = hull({x, width}, {other.x, other.width});
    const Span alongY = hull({y, height}, {other.y, other.height});
    return fxBoundingBox(alongX.edge, alongY.edge, alongX.extent, alongY.extent);
}
