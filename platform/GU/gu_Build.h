#pragma once

#include <GEO/GEO_Detail.h>

#include <utility>

/// Hands a new primitive to a detail, with points for its vertices or without.
template <class P>
P* gu_addToDetail(GEO_Detail* detail, std::unique_ptr<P> primitive, bool appendPoints)
{
    P* const added = primitive.get();
    if (appendPoints)
        for (int64_t i = 0; i < added->vertexCount(); ++i)
            added->setVertexPoint(i, detail->appendPoint());
    detail->appendPrimitive(std::move(primitive));
    return added;
}
