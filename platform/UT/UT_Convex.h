#pragma once

#include <SYS/SYS_API.h>
#include <UT/UT_Vector2.h>

#include <cstdint>

/// A corner of a piece: a point on the outline, at `fraction` of the way from vertex `index` to the one behind
/// it (from the last to the first).
struct UT_ConvexCorner
{
    float x = 0.0f, y = 0.0f;
    int64_t index = 0;
    float fraction = 0.0f;
};

/// Cuts what a closed outline encloses into convex pieces that do not overlap. The outline is asked for, and the
/// pieces are told, by what a derived class brings.
///
/// An outline may cross and touch itself; it encloses what it winds around (the non-zero rule). Pieces run in the
/// direction of the outline, or of its larger part. A simple outline of n vertices gives at most n - 2 triangles
/// whose corners are its vertices, those of shortest diagonals cut off first; one that crosses or touches itself
/// gives trapezoids between its edges. Points that repeat, points on straight edges and whatever has no area are
/// left out. An outline with a coordinate that is not finite gives no pieces.
/// Time: about n log n for simple outlines; n times the edges that meet a horizontal line, plus the crossings, for
/// others.
class PLATFORM_API UT_Convex
{
public:
    virtual ~UT_Convex() = default;
    /// Asks for the outline and tells its pieces, each of 3 to `mostVertices` vertices; numbers below 3 count as 3.
    virtual void convex(int mostVertices);

protected:
    virtual int64_t vertexCount() const = 0;
    virtual UT_Vector2 vertexPosition(int64_t index) const = 0;

    virtual void beginPiece() = 0;
    virtual void addVertex(const UT_ConvexCorner& corner) = 0;
    virtual void endPiece() = 0;

private:
    void tell(const UT_ConvexCorner* corners, int64_t count, int64_t most);
};
