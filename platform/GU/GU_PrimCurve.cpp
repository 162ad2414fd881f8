#include <GU/GU_PrimCurve.h>

#include <algorithm>
#include <cmath>

namespace {

using Values = GEO_Detail::Values;
using Piece = GU_PrimCurve::Piece;

constexpr int deepest = 10; ///< halvings of a piece

/// The largest distance between places of a piece and of its chord at the same parameter, or more.
double deviation(const Piece& piece)
{
    double largest = 0.0;
    for (size_t i = 2; i < piece.size(); ++i) {
        double square = 0.0;
        for (size_t k = 0; k < 3; ++k) {
            const double bend = piece[i][k] - 2.0 * piece[i - 1][k] + piece[i - 2][k];
            square += bend * bend;
        }
        largest = std::max(largest, square);
    }
    const auto degree = static_cast<double>(piece.size() - 1);
    return degree * (degree - 1.0) / 8.0 * std::sqrt(largest);
}

/// Leaves the first half in `piece`. Result: the second one.
Piece halve(Piece& piece)
{
    Piece second(piece.size());
    const size_t last = piece.size() - 1;
    for (size_t round = 0; round <= last; ++round) {
        second[last - round] = piece[last];
        for (size_t i = last; i > round; --i)
            for (size_t k = 0; k < piece[i].size(); ++k)
                piece[i][k] = 0.5 * (piece[i - 1][k] + piece[i][k]);
    }
    return second;
}

/// Appends what comes behind the first point of a piece.
void flatten(Piece& piece, double tolerance, int depth, std::vector<Values>& points)
{
    const double error = deviation(piece);
    if (depth == deepest || !(error > tolerance) || !std::isfinite(error)) {
        points.push_back(piece.back());
        return;
    }
    Piece second = halve(piece);
    flatten(piece, tolerance, depth + 1, points);
    flatten(second, tolerance, depth + 1, points);
}

} // namespace

bool GU_PrimCurve::hasAllPoints() const
{
    for (int64_t i = 0; i < vertexCount(); ++i)
        if (vertexPoint(i) < 0)
            return false;
    return true;
}

std::vector<Values> GU_PrimCurve::flattened(const GEO_Detail& detail, double tolerance) const
{
    std::vector<Values> points;
    for (Piece& piece : pieces(detail)) {
        if (points.empty())
            points.push_back(piece.front());
        flatten(piece, tolerance, 0, points);
    }
    if (isClosed() && points.size() > 1)
        points.pop_back();
    return points;
}
