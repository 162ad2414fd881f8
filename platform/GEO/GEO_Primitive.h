#pragma once

#include <SYS/SYS_API.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

enum GEO_PrimitiveType : int {
    GEO_PRIMITIVE_POLYGON = 1,
    GEO_PRIMITIVE_NURBS_CURVE = 2,
    GEO_PRIMITIVE_BEZIER_CURVE = 3,
};

/// A primitive of a detail: a row of vertices, each of which is one of the detail's points.
class PLATFORM_API GEO_Primitive
{
public:
    virtual ~GEO_Primitive() = default;
    virtual GEO_PrimitiveType primitiveType() const = 0;
    virtual std::unique_ptr<GEO_Primitive> clone() const = 0;

    bool isClosed() const { return closed_; }
    int64_t vertexCount() const { return static_cast<int64_t>(points_.size()); }
    /// The number of the point that a vertex is; -1 before one was set.
    int64_t vertexPoint(int64_t vertex) const { return points_[static_cast<size_t>(vertex)]; }
    void setVertexPoint(int64_t vertex, int64_t point) { points_[static_cast<size_t>(vertex)] = point; }

protected:
    GEO_Primitive(int64_t vertices, bool closed) : points_(static_cast<size_t>(vertices), -1), closed_(closed)
    {
    }
    GEO_Primitive(const GEO_Primitive&) = default;
    GEO_Primitive& operator=(const GEO_Primitive&) = default;

    void setVertexCount(int64_t count) { points_.resize(static_cast<size_t>(count), -1); }
    void setClosed(bool closed) { closed_ = closed; }

private:
    std::vector<int64_t> points_;
    bool closed_;
};
