#include <GU/GU_PrimNURBCurve.h>
#include <GU/gu_Build.h>
#include <GU/gu_Interpolate.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace {

using Values = GEO_Detail::Values;
using Piece = GU_PrimCurve::Piece;

int fittingOrder(int64_t vertices, int order, bool closed)
{
    const int64_t lowered = std::min<int64_t>({order, vertices, 4});
    return lowered == 3 && closed ? 4 : static_cast<int>(lowered);
}

std::vector<double> evenParams(int64_t count)
{
    std::vector<double> params(static_cast<size_t>(count));
    std::iota(params.begin(), params.end(), 0.0);
    return params;
}

/// The sums of the distances between rows, none of which counts less than a small part of their mean.
std::vector<double> chordParams(const gu_Rows& rows, bool closed)
{
    const size_t n = rows.size(), steps = closed ? n : n - 1;
    std::vector<double> lengths;
    for (size_t i = 0; i < steps; ++i) {
        const Values &a = rows[i], &b = rows[(i + 1) % n];
        lengths.push_back(std::hypot(b[0] - a[0], b[1] - a[1], b[2] - a[2]));
    }
    const double mean = std::accumulate(lengths.begin(), lengths.end(), 0.0) / static_cast<double>(steps);
    std::vector<double> params = {0.0};
    for (const double length : lengths)
        params.push_back(params.back() + (mean > 0.0 ? std::max(length / mean, 1e-3) : 1.0));
    return params;
}

/// What the caller gave, where that can be used; else nothing.
std::vector<double> givenParams(const UT_FloatArray* given, size_t count)
{
    if (!given || given->entries() < static_cast<int64_t>(count))
        return {};
    std::vector<double> params(given->begin(), given->begin() + static_cast<int64_t>(count));
    const bool ascends = std::adjacent_find(params.begin(), params.end(),
                                            [](double a, double b) { return !(a < b); }) == params.end();
    return ascends && std::isfinite(params.front()) && std::isfinite(params.back()) ? params
                                                                                    : std::vector<double>();
}

/// A polynomial in its blossom: what it is at `arguments`, one for each degree, on a span of a B-spline.
Values blossom(const std::vector<double>& knots, std::vector<Values> controls, size_t span,
               const std::vector<double>& arguments)
{
    const size_t degree = arguments.size();
    for (size_t round = 1; round <= degree; ++round)
        for (size_t i = degree; i >= round; --i) {
            const size_t knot = span - degree + i;
            const double low = knots[knot], high = knots[knot + degree + 1 - round];
            const double part = (arguments[round - 1] - low) / (high - low);
            for (size_t k = 0; k < controls[i].size(); ++k)
                controls[i][k] = (1.0 - part) * controls[i - 1][k] + part * controls[i][k];
        }
    return controls.back();
}

} // namespace

GU_PrimNURBCurve::GU_PrimNURBCurve(int64_t vertices, int order, bool closed)
    : GU_PrimCurve(vertices, order, closed)
{
    shape(vertices, order, closed, evenParams(closed ? vertices + 1 : vertices));
}

void GU_PrimNURBCurve::shape(int64_t vertices, int order, bool closed, const std::vector<double>& params)
{
    setVertexCount(vertices);
    setClosed(closed);
    setOrder(fittingOrder(vertices, order, closed));
    knots_ = closed ? params : gu_openKnots(params, this->order() - 1);
}

GU_PrimNURBCurve* GU_PrimNURBCurve::build(GEO_Detail* detail, int64_t vertices, int order, int closed, int,
                                          int appendPoints)
{
    if (vertices < 2 || order < 2)
        return nullptr;
    return gu_addToDetail(detail, std::make_unique<GU_PrimNURBCurve>(vertices, order, closed != 0),
                          appendPoints != 0);
}

bool GU_PrimNURBCurve::interpGlobal(const GEO_PointArray& points, int order, int closed, int parameterisation,
                                    int, const UT_FloatArray* params)
{
    gu_Rows rows, values;
    for (int64_t i = 0; i < points.entries(); ++i) {
        const Values& all = values.emplace_back(points.detail().pointValues(points(i)));
        rows.emplace_back(all.begin(), all.begin() + 4);
        if (!std::all_of(all.begin(), all.end(), [](double v) { return std::isfinite(v); }))
            return false;
    }
    if (rows.size() < 2 || order < 2)
        return false;

    const size_t steps = closed ? rows.size() + 1 : rows.size();
    std::vector<double> at = givenParams(params, steps);
    if (at.empty())
        at = parameterisation == 0 ? evenParams(static_cast<int64_t>(steps)) : chordParams(rows, closed != 0);
    shape(points.entries(), order, closed != 0, at);
    if (this->order() > 2)
        rows =
            closed ? gu_interpolateClosed(at, rows) : gu_interpolateOpen(at, knots_, this->order() - 1, rows);
    for (int64_t i = 0; i < vertexCount(); ++i) {
        if (vertexPoint(i) < 0)
            setVertexPoint(i, points.detail().appendPoint());
        Values& own = values[static_cast<size_t>(i)];
        std::copy(rows[static_cast<size_t>(i)].begin(), rows[static_cast<size_t>(i)].end(), own.begin());
        points.detail().setPointValues(vertexPoint(i), own);
    }
    return true;
}

std::vector<Piece> GU_PrimNURBCurve::pieces(const GEO_Detail& detail) const
{
    std::vector<Piece> pieces;
    if (!hasAllPoints())
        return pieces;
    const size_t degree = static_cast<size_t>(order()) - 1, n = static_cast<size_t>(vertexCount());
    std::vector<double> knots = knots_;
    if (isClosed()) { // the knots before and behind the range, and the vertices that belong to them
        knots.clear();
        const double period = knots_.back() - knots_.front();
        for (size_t i = 0; i <= n + 2 * degree; ++i) {
            const size_t unwrapped = i + n * degree - degree;
            const auto turns = static_cast<int64_t>(unwrapped / n) - static_cast<int64_t>(degree);
            knots.push_back(knots_[unwrapped % n] + static_cast<double>(turns) * period);
        }
    }
    const size_t shift = isClosed() ? (degree - 1) / 2 : 0;
    const size_t spans = isClosed() ? n : n - degree;
    for (size_t span = degree; span < degree + spans; ++span) {
        if (!(knots[span] < knots[span + 1]))
            continue;
        std::vector<Values> controls;
        for (size_t i = span - degree; i <= span; ++i)
            controls.push_back(detail.pointValues(vertexPoint(static_cast<int64_t>((i + n - shift) % n))));
        Piece& piece = pieces.emplace_back();
        for (size_t i = 0; i <= degree; ++i) {
            std::vector<double> arguments(degree, knots[span]);
            std::fill_n(arguments.begin(), i, knots[span + 1]);
            piece.push_back(blossom(knots, controls, span, arguments));
        }
    }
    return pieces;
}
