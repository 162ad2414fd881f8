#pragma once

#include <RU/shape/ru_Outline.h>

/// The edges of what closed outlines wind around.
///
/// All edges are cut where they cross or touch. A part stays where one of its sides is inside and the other is not,
/// and those that stay are joined to outlines again, which have the inside on their left.
class ru_Boundary
{
public:
    enum class Inside {
        anyWinding,      ///< the outlines go around it in either direction
        positiveWinding, ///< more often counterclockwise, y up
    };

    explicit ru_Boundary(Inside inside) : inside_(inside) {}

    /// Adds a closed outline. `isHelper` tells by the number of an edge whether it only counts for windings, because
    /// no part of it can be on the boundary; it is not cut then.
    void add(const ru_Outline& outline, const std::vector<char>& isHelper = {});
    std::vector<ru_Outline> outlines();

private:
    struct Cut
    {
        double part; ///< of the edge
        size_t node;
    };
    struct Edge
    {
        size_t from, to; ///< nodes
        bool isHelper;
        std::vector<Cut> cuts = {};
    };
    struct Piece
    {
        size_t from, to; ///< nodes
        double featherFrom, featherTo;
    };

    const ru_OutlinePoint& start(const Edge& edge) const { return nodes_[edge.from]; }
    const ru_OutlinePoint& end(const Edge& edge) const { return nodes_[edge.to]; }
    size_t rowOf(double y) const;
    void sortIntoRows();
    void cutAll();
    void cross(Edge& a, Edge& b);
    void touch(Edge& edge, size_t node);
    int windingBeside(size_t edge, const ru_OutlinePoint& place) const;
    void keepPieces();
    void cancelPieces();
    std::vector<ru_Outline> joined() const;

    Inside inside_;
    std::vector<ru_OutlinePoint> nodes_;
    std::vector<Edge> edges_;
    std::vector<std::vector<size_t>> rows_; ///< edges by the heights that they reach, then from the left
    double low_ = 0.0, rowHeight_ = 1.0, extent_ = 0.0;
    std::vector<Piece> pieces_;
};
