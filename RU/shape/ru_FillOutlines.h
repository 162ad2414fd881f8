#pragma once

#include <RU/shape/ru_BucketLists.h>
#include <RU/shape/ru_FillEdges.h>
#include <RU/shape/ru_FillMesh.h>

#include <cstdint>
#include <span>
#include <vector>

/// Buckets of an image, row by row.
struct ru_FillBuckets
{
    int64_t width = 0, height = 0; ///< pixels of a bucket
    int64_t across = 0, down = 0;

    int64_t count() const { return across * down; }
};

/// The outlines of meshes as coverage. Each edge changes the winding number of what lies to its right in its rows of
/// samples, and a sample is covered where that is above 0, or is where it has just ended.
///
/// A row at the very height of a corner is looked at twice: as what lies above it ends there, and as what lies below
/// it begins. Each time is a line; lines are numbered from the top.
class ru_FillOutlines
{
public:
    /// What one thread needs.
    struct Scratch
    {
        std::vector<int32_t> winding;     ///< by line of the block
        std::vector<int64_t> first, last; ///< crossings of a line
        std::vector<uint32_t> crossings;  ///< by line: a column, and how the winding number changes there
        std::vector<uint16_t> columns, begin, end;
        std::vector<uint8_t> doubts;
    };

    void clear();
    void sort(const std::vector<ru_MeshEdge>& edges, const ru_FillGrid& grid, const ru_FillBuckets& buckets);
    void cover(const ru_FillGrid& grid, const ru_FillBlock& block, int64_t bucket,
               const ru_Coverage& coverage, Scratch& scratch) const;

private:
    struct Edge
    {
        ru_FillEdge side;
        ru_FillBoundary boundary; ///< in columns of the image
        double slack;
        int64_t firstLine, lastLine; ///< and the one behind the last
        int32_t change;
    };
    struct Change
    {
        int64_t line;
        int32_t by;
    };

    void makeLines(const std::vector<ru_MeshEdge>& edges, const ru_FillGrid& grid);
    const double* linesOf(const ru_FillGrid& grid) const;
    int64_t lineOf(int64_t row) const; ///< the first of a row
    int64_t lineFrom(const ru_FillGrid& grid, float place) const;
    void sortRow(const std::vector<ru_MeshEdge>& edges, const ru_FillGrid& grid,
                 const ru_FillBuckets& buckets, int64_t row);
    void gather(const ru_FillGrid& grid, const ru_FillBlock& block, std::span<const int32_t> edges,
                int64_t firstLine, Scratch& scratch) const;
    void coverRow(const ru_FillGrid& grid, const ru_FillBlock& block, int64_t pixelRow, int64_t firstLine,
                  int64_t lines, const ru_Coverage& coverage, Scratch& scratch) const;

    std::vector<Edge> edges_;
    std::vector<int64_t> twice_;          ///< rows that have two lines, ascending
    std::vector<double> lineY_;           ///< and a group of rows more; empty where lines are rows
    ru_BucketLists<int32_t> inBucket_;    ///< edges that cross it
    ru_BucketLists<Change> beforeBucket_; ///< winding numbers at its left, as changes from line to line
};
