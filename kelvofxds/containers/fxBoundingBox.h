// fxBoundingBox.h - a rectangle on an integer grid.
#pragma once

#include "kelvofxds/core/fxExport.h"

/// An axis-aligned rectangle that covers `x` up to but not including
/// `x + width`, and likewise in y.
///
/// A plain value of four words. The two axes are independent: an extent of 0 is
/// empty along that axis only. Comparisons are signed; sums and differences
/// that leave 32 bits wrap. Every operation is O(1).
class FX_EXPORT fxBoundingBox {
public:
    /// At the origin, empty along both axes.
    fxBoundingBox() : x(0), y(0), width(0), height(0) {}
    fxBoundingBox(int left, int top, int extentX, int extentY)
        : x(left), y(top), width(extentX), height(extentY) {}

    /// Left edge.
    int getX() const { return x; }
    /// Top edge.
    int getY() const { return y; }
    /// Extent along x; 0 means empty along x.
    int getWidth() const { return width; }
    /// Extent along y; 0 means empty along y.
    int getHeight() const { return height; }

    /// What both boxes cover. Along an axis on which they do not meet, touching
    /// boxes included, edge and extent are 0; the other axis keeps its overlap.
    /// Deliberate: a box that is empty along an axis but lies within the other
    /// keeps its edge.
    fxBoundingBox intersect(const fxBoundingBox& other) const;

    /// The smallest box that holds both. Along an axis on which one of them is
    /// empty it takes the other one's edge and extent.
    /// Deliberate: far edges are computed in 16 bits, so that they wrap from
    /// 32767 to -32768; edges and extents are not.
    fxBoundingBox bound(const fxBoundingBox& other) const;

    int x;       ///< Left edge.
    int y;       ///< Top edge.
    int width;   ///< Extent along x.
    int height;  ///< Extent along y.
};
