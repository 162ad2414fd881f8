#pragma once

#include <SYS/SYS_API.h>

/// A quadrilateral as the picture of the unit square, and the way back.
///
/// Vertices 0 to 3 stand for (u, v) = (0, 0), (1, 0), (1, 1), (0, 1): u runs from the edge of 0 and 3 to that of 1
/// and 2, v from the edge of 0 and 1 to that of 3 and 2. Either direction will do; edges may be parallel and two
/// neighbours may coincide, as a triangle. Where a parameter makes no difference, at such a corner, it is any in
/// range.
class PLATFORM_API UT_BilinearSampleQuad2D
{
public:
    void setVertices(float x0, float y0, float x1, float y1, float x2, float y2, float x3, float y3);

    /// Not 0 where (x, y) lies in the quadrilateral or at most 1e-6 of a parameter beside it; then u and v, in 0 to
    /// 1, map to it. Else both stay as they are. Nothing is inside what has no area.
    int sample(float x, float y, float& u, float& v) const;

private:
    struct Vector
    {
        double x = 0.0, y = 0.0;
    };
    static double cross(Vector a, Vector b) { return a.x * b.y - a.y * b.x; }

    Vector origin_, across_, up_, twist_; ///< p = origin + u across + v up + u v twist
    double size_ = 0.0;                   ///< the largest coordinate of the last three
};
