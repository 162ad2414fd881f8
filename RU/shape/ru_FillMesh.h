#pragma once

#include <RU/shape/ru_FillEdges.h>

#include <cstdint>
#include <vector>

/// An edge of an outline, from its upper end to its lower one, and how it changes the winding number of what is to
/// its right.
struct ru_MeshEdge
{
    static constexpr int32_t mostChange = 32767;

    ru_FillPoint from, to;
    int32_t change;
};

/// Triangles by how they are best drawn: alone, or, where they share edges, by the outline of them all, in which what
/// two of them share cancels.
struct ru_FillMesh
{
    /// For an image of so many rows of pixels and samples in each.
    ru_FillMesh(const std::vector<ru_FillTriangle>& triangles, int64_t height, int samples);

    std::vector<int32_t> alone; ///< triangles
    std::vector<ru_MeshEdge> outline;
};
