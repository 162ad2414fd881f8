#include <GU/GU_PrimRBezCurve.h>
#include <GU/gu_Build.h>

GU_PrimRBezCurve* GU_PrimRBezCurve::build(GEO_Detail* detail, int64_t vertices, int order, int closed,
                                          int appendPoints)
{
    const int64_t ends = closed ? vertices : vertices - 1;
    if (order < 2 || ends < 1 || ends % (order - 1) != 0)
        return nullptr;
    return gu_addToDetail(detail, std::make_unique<GU_PrimRBezCurve>(vertices, order, closed != 0),
                          appendPoints != 0);
}

std::vector<GU_PrimCurve::Piece> GU_PrimRBezCurve::pieces(const GEO_Detail& detail) const
{
    std::vector<Piece> pieces;
    if (!hasAllPoints())
        return pieces;
    const int64_t count = vertexCount();
    for (int64_t first = 0; first + 1 < count || (isClosed() && first < count); first += order() - 1) {
        Piece& piece = pieces.emplace_back();
        for (int64_t i = first; i < first + order(); ++i)
            piece.push_back(detail.pointValues(vertexPoint(i % count)));
    }
    return pieces;
}
