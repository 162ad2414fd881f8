#include <RU/shape/ru_FillOutlines.h>

#include <algorithm>
#include <cmath>

namespace {

constexpr int32_t changeBias = ru_MeshEdge::mostChange + 1;

size_t at(int64_t index)
{
    return static_cast<size_t>(index);
}

uint32_t crossingOf(uint16_t column, int32_t change)
{
    return uint32_t{column} << 16 | static_cast<uint32_t>(change + changeBias);
}
int32_t changeOf(uint32_t crossing)
{
    return static_cast<int32_t>(crossing & 0xFFFF) - changeBias;
}
uint16_t columnOf(uint32_t crossing)
{
    return static_cast<uint16_t>(crossing >> 16);
}

void sortCrossings(uint32_t* crossings, int64_t count)
{
    if (count > 24) {
        std::sort(crossings, crossings + count);
        return;
    }
    for (int64_t i = 1; i < count; ++i) {
        const uint32_t moved = crossings[i];
        int64_t to = i;
        for (; to > 0 && crossings[to - 1] > moved; --to)
            crossings[to] = crossings[to - 1];
        crossings[to] = moved;
    }
}

/// The most crossings of a line.
int64_t mostOf(const int64_t* first, const int64_t* last, int64_t lines)
{
    int64_t most = 0;
    for (int64_t k = 0; k < lines; ++k)
        most = std::max(most, last[k] - first[k]);
    return most;
}

/// Goes through a line from the left, from one covered span to the next.
class Line
{
public:
    Line(const uint32_t* from, const uint32_t* to, int32_t winding) : at_(from), to_(to), winding_(winding) {}

    /// False when there is no other span.
    bool next(uint16_t columns, uint16_t& begin, uint16_t& end)
    {
        begin = 0; // unless it begins at a crossing
        while (winding_ <= 0 && at_ != to_)
            begin = step();
        if (winding_ <= 0 || done_)
            return false;
        while (winding_ > 0 && at_ != to_)
            end = step();
        if (winding_ > 0) {
            end = columns;
            done_ = true;
        }
        return true;
    }
    bool hasMore() const { return !done_ && at_ != to_; }

private:
    uint16_t step()
    {
        winding_ += changeOf(*at_);
        return columnOf(*at_++);
    }

    const uint32_t* at_;
    const uint32_t* to_;
    int32_t winding_;
    bool done_ = false;
};

void coverAll(const ru_Coverage& coverage, const ru_FillBlock& block)
{
    const int rest = static_cast<int>(block.width % 64);
    for (int64_t row = 0; row < block.height; ++row) {
        uint64_t* const words = coverage.full + row * coverage.words;
        std::fill_n(words, coverage.words, ~uint64_t{0});
        if (rest != 0)
            words[coverage.words - 1] = ~(~uint64_t{0} << rest);
    }
}

/// Pixels that a part of an edge touches, and one more at each side.
std::pair<int64_t, int64_t> pixelsOf(const ru_MeshEdge& edge, double top, double bottom, int64_t width)
{
    const double slope = (double{edge.to.x} - edge.from.x) / (double{edge.to.y} - edge.from.y);
    const auto pixel = [&](double y) {
        const double within = std::clamp(y, double{edge.from.y}, double{edge.to.y}) - edge.from.y;
        return std::floor((edge.from.x + within * slope) * static_cast<double>(width));
    };
    const auto [low, high] = std::minmax({pixel(top), pixel(bottom)});
    const auto most = static_cast<double>(width);
    return {static_cast<int64_t>(std::clamp(low - 1.0, -1.0, most)),
            static_cast<int64_t>(std::clamp(high + 1.0, -1.0, most))};
}

} // namespace

void ru_FillOutlines::clear()
{
    *this = ru_FillOutlines();
}

void ru_FillOutlines::sort(const std::vector<ru_MeshEdge>& edges, const ru_FillGrid& grid,
                           const ru_FillBuckets& buckets)
{
    clear();
    if (edges.empty())
        return;
    makeLines(edges, grid);
    const ru_FillBlock image(grid, 0, 0, grid.width, grid.height);
    for (const ru_MeshEdge& edge : edges) {
        const ru_FillEdge side(edge.from, edge.to, edge.change < 0);
        edges_.push_back({side, side.boundary(grid, image), side.slack(grid), lineFrom(grid, edge.from.y),
                          lineFrom(grid, edge.to.y), edge.change});
    }
    for (int64_t row = 0; row < buckets.down; ++row)
        sortRow(edges, grid, buckets, row);
    inBucket_.layOut(buckets.count());
    beforeBucket_.layOut(buckets.count());
}

void ru_FillOutlines::makeLines(const std::vector<ru_MeshEdge>& edges, const ru_FillGrid& grid)
{
    for (const ru_MeshEdge& edge : edges)
        for (const float place : {edge.from.y, edge.to.y})
            if (const int64_t row = grid.firstRowFrom(place);
                row < grid.rows() && grid.y[at(row)] == double{place})
                twice_.push_back(row);
    std::sort(twice_.begin(), twice_.end());
    twice_.erase(std::unique(twice_.begin(), twice_.end()), twice_.end());
    if (twice_.empty())
        return;
    lineY_.reserve(grid.y.size() + twice_.size());
    auto next = twice_.begin();
    for (int64_t row = 0; row < static_cast<int64_t>(grid.y.size()); ++row) {
        lineY_.push_back(grid.y[at(row)]);
        if (next != twice_.end() && *next == row) {
            lineY_.push_back(grid.y[at(row)]);
            ++next;
        }
    }
}

/// Where lines lie.
const double* ru_FillOutlines::linesOf(const ru_FillGrid& grid) const
{
    return twice_.empty() ? grid.y.data() : lineY_.data();
}

int64_t ru_FillOutlines::lineOf(int64_t row) const
{
    return twice_.empty() ? row
                          : row + (std::lower_bound(twice_.begin(), twice_.end(), row) - twice_.begin());
}

/// The first line below `place`; a row at the very place has one line above it and one below.
int64_t ru_FillOutlines::lineFrom(const ru_FillGrid& grid, float place) const
{
    const int64_t row = grid.firstRowFrom(place);
    const bool isAtRow = row < grid.rows() && grid.y[at(row)] == double{place};
    return lineOf(row) + (isAtRow ? 1 : 0);
}

/// Edges into a row of buckets: into those that they cross, and into the winding numbers of those to the right.
void ru_FillOutlines::sortRow(const std::vector<ru_MeshEdge>& edges, const ru_FillGrid& grid,
                              const ru_FillBuckets& buckets, int64_t row)
{
    const double* const lines = linesOf(grid);
    const int64_t top = lineOf(grid.ny * row * buckets.height);
    const int64_t bottom = lineOf(grid.ny * std::min((row + 1) * buckets.height, grid.height));
    std::vector<std::vector<Change>> ending(
        at(buckets.across + 1)); // by the column that they end in front of
    for (size_t i = 0; i < edges_.size(); ++i) {
        const Edge& edge = edges_[i];
        const int64_t first = std::max(edge.firstLine, top), last = std::min(edge.lastLine, bottom);
        if (first >= last)
            continue;
        const auto [from, to] = pixelsOf(edges[i], lines[first], lines[last - 1], grid.width);
        const int64_t behind = to < 0 ? 0 : std::min(to / buckets.width + 1, buckets.across);
        for (int64_t column = std::max<int64_t>(from, 0) / buckets.width; column < behind; ++column)
            inBucket_.add(row * buckets.across + column, static_cast<int32_t>(i));
        ending[at(behind)].push_back({first, edge.change});
        ending[at(behind)].push_back({last, -edge.change});
    }
    std::vector<Change> changes;
    for (int64_t column = 0; column < buckets.across; ++column) {
        changes.insert(changes.end(), ending[at(column)].begin(), ending[at(column)].end());
        std::sort(changes.begin(), changes.end(),
                  [](const Change& a, const Change& b) { return a.line < b.line; });
        size_t kept = 0;
        for (const Change& change : changes)
            if (kept > 0 && changes[kept - 1].line == change.line)
                changes[kept - 1].by += change.by;
            else
                changes[kept++] = change;
        changes.resize(kept);
        std::erase_if(changes, [](const Change& change) { return change.by == 0; });
        for (const Change& change : changes)
            beforeBucket_.add(row * buckets.across + column, change);
    }
}

void ru_FillOutlines::cover(const ru_FillGrid& grid, const ru_FillBlock& block, int64_t bucket,
                            const ru_Coverage& coverage, Scratch& scratch) const
{
    const std::span<const int32_t> inside = inBucket_[bucket];
    const std::span<const Change> before = beforeBucket_[bucket];
    if (inside.empty() && before.empty())
        return;
    const int64_t firstLine = lineOf(grid.ny * block.y);
    const int64_t lines = lineOf(grid.ny * (block.y + block.height)) - firstLine;
    if (inside.empty() && before.size() == 1 && before.front().line <= firstLine) {
        if (before.front().by > 0)
            coverAll(coverage, block);
        return;
    }
    auto& winding = scratch.winding;
    winding.assign(at(lines + 1), 0);
    for (const Change& change : before)
        winding[at(std::clamp<int64_t>(change.line - firstLine, 0, lines))] += change.by;
    for (int64_t line = 1; line <= lines; ++line)
        winding[at(line)] += winding[at(line - 1)];
    gather(grid, block, inside, firstLine, scratch);

    const int64_t rows = block.height * grid.ny;
    scratch.begin.assign(at(rows), 0);
    scratch.end.assign(at(rows), 0);
    for (int64_t y = 0; y < block.height; ++y) {
        const int64_t line = lineOf(grid.ny * (block.y + y)) - firstLine;
        coverRow(grid, block, y, line, lineOf(grid.ny * (block.y + y + 1)) - firstLine - line, coverage,
                 scratch);
    }
    ru_fillRows().cover(coverage, 0, block.height, scratch.begin.data(), scratch.end.data());
}

/// Where edges cross the lines of a block: those of a line lie in `crossings` from `first` to before `last`.
void ru_FillOutlines::gather(const ru_FillGrid& grid, const ru_FillBlock& block,
                             std::span<const int32_t> edges, int64_t firstLine, Scratch& scratch) const
{
    const auto lines = static_cast<int64_t>(scratch.winding.size()) - 1;
    const auto rangeOf = [&](const Edge& edge) {
        return std::pair(std::max<int64_t>(edge.firstLine - firstLine, 0),
                         std::min(edge.lastLine - firstLine, lines));
    };
    auto& first = scratch.first;
    first.assign(at(lines + 1), 0);
    for (const int32_t index : edges)
        if (const auto [from, to] = rangeOf(edges_[at(index)]); from < to) {
            ++first[at(from)];
            --first[at(to)];
        }
    int64_t total = 0, perLine = 0;
    for (int64_t& line : first) {
        perLine += line;
        line = total;
        total += perLine;
    }
    scratch.last = first;
    scratch.crossings.resize(at(total));
    scratch.columns.resize(at(lines + ru_rowGroup));
    scratch.doubts.resize(at(lines + ru_rowGroup));
    const ru_FillKernels& kernels = ru_fillRows();
    const auto offset = static_cast<double>(grid.nx * block.x);
    for (const int32_t index : edges) {
        const Edge& edge = edges_[at(index)];
        const auto [from, to] = rangeOf(edge);
        if (from >= to)
            continue;
        const ru_FillBoundary boundary = {edge.boundary.slope, edge.boundary.bias - offset};
        const double* y = linesOf(grid) + firstLine + from;
        uint16_t* columns = scratch.columns.data();
        if (kernels.cross(boundary, {0.0, static_cast<double>(block.columns), std::min(edge.slack, 0.5)}, y,
                          to - from, columns, scratch.doubts.data()) != 0)
            for (int64_t k = 0; k < to - from; ++k)
                if ((scratch.doubts[at(k / ru_rowGroup)] >> (k % ru_rowGroup) & 1) != 0)
                    columns[k] =
                        static_cast<uint16_t>(edge.side.firstColumn(block, y[k], columns[k], edge.slack));
        for (int64_t k = 0; k < to - from; ++k)
            scratch.crossings[at(scratch.last[at(from + k)]++)] = crossingOf(columns[k], edge.change);
    }
}

/// The spans of a row of pixels. The first of each row of samples goes to `begin` and `end`, to be added with those
/// of all rows; others are added here.
void ru_FillOutlines::coverRow(const ru_FillGrid& grid, const ru_FillBlock& block, int64_t pixelRow,
                               int64_t firstLine, int64_t lines, const ru_Coverage& coverage,
                               Scratch& scratch) const
{
    const auto columns = static_cast<uint16_t>(block.columns);
    const int64_t row = pixelRow * coverage.ny;
    uint16_t* const begin = scratch.begin.data() + row;
    uint16_t* const end = scratch.end.data() + row;
    const int64_t* const first = scratch.first.data() + firstLine;
    const int64_t* const last = scratch.last.data() + firstLine;
    const int32_t* const winding = scratch.winding.data() + firstLine;
    const int64_t most = mostOf(first, last, lines);
    if (most == 0 && lines == coverage.ny) {
        for (int64_t k = 0; k < lines; ++k)
            end[k] = winding[k] > 0 ? columns : 0;
        return;
    }
    if (most == 1 && lines == coverage.ny && last[lines - 1] - first[0] == lines) {
        const uint32_t* const crossings = scratch.crossings.data() + first[0];
        for (int64_t k = 0; k < lines; ++k) {
            const bool before = winding[k] > 0, behind = winding[k] + changeOf(crossings[k]) > 0;
            begin[k] = before ? uint16_t{0} : columnOf(crossings[k]);
            end[k] = behind ? columns : before ? columnOf(crossings[k]) : uint16_t{0};
        }
        return;
    }
    const double* const lineY = linesOf(grid) + lineOf(coverage.ny * block.y) + firstLine;
    std::vector<std::pair<int, Line>> more; // lines that have other spans
    int j = 0;
    for (int64_t k = 0; k < lines; ++k) {
        sortCrossings(scratch.crossings.data() + first[k], last[k] - first[k]);
        Line line(scratch.crossings.data() + first[k], scratch.crossings.data() + last[k], winding[k]);
        const bool isFirstOfRow = k == 0 || lineY[k - 1] != lineY[k];
        j += k > 0 && isFirstOfRow ? 1 : 0;
        if (!isFirstOfRow || (line.next(columns, begin[j], end[j]) && line.hasMore()))
            more.emplace_back(j, line);
    }
    uint16_t otherBegin[64], otherEnd[64];
    while (!more.empty()) {
        std::fill_n(otherBegin, coverage.ny, uint16_t{0});
        std::fill_n(otherEnd, coverage.ny, uint16_t{0});
        std::erase_if(more, [&](std::pair<int, Line>& each) {
            uint16_t from = 0, to = 0;
            if (otherEnd[each.first] != 0)
                return false; // the other line of its row; its turn comes
            if (!each.second.next(columns, from, to))
                return true;
            otherBegin[each.first] = from;
            otherEnd[each.first] = to;
            return false;
        });
        ru_fillRows().cover(coverage, pixelRow, 1, otherBegin, otherEnd);
    }
}
