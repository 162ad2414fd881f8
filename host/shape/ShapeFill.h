#pragma once

#include <host/file/Image.h>
#include <host/shape/Shapes.h>

#include <RU/shape/RU_PolyFill.h>

namespace host {

/// The pixels that shapes are drawn into, and how the units of a file become pixels.
struct Canvas
{
    Window window;
    Place origin{};       ///< where the shapes' (0, 0) lies
    Place unit{1.0, 1.0}; ///< pixels in a unit, across and down
    bool matte = false;   ///< all components hold alpha

    /// The side of what is drawn at a time: several make a tile of usual size, and all together are not too many.
    int side() const;

    /// Of both units, for what has no direction: widths, and how far soft edges reach.
    double scale() const;
};

/// A shape at one time, ready to be drawn.
class ShapeFill
{
public:
    ShapeFill(const Shape& shape, const ShapePoints& points, const Canvas& canvas);

    /// Whether anything of it may be in a bucket.
    bool touches(int bx, int by) const;

    /// Draws a bucket of the window; many threads may, each with an index of its own.
    void draw(TIL_TileList& tiles, int bx, int by, int thread)
    {
        fill_.scanConvert(&tiles, bx, by, colour_, thread);
    }

private:
    void bring(GEO_Detail& detail, const Canvas& canvas);

    RU_PolyFill fill_;
    UT_Vector4 colour_;
    int side_;           ///< of a bucket
    Place least_, most_; ///< the corners of what it may touch, in pixels of the window
};

} // namespace host
