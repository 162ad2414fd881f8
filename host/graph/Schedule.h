#pragma once

#include <host/graph/Graph.h>

#include <vector>

namespace host {

/// The steps that one part of the outputs is made by. A step is a plane of a node; it stands behind those that
/// it uses.
class Schedule
{
public:
    /// A plane of an output.
    struct Goal
    {
        size_t output;
        Picture::Place place;
    };

    struct Step
    {
        size_t node, plane;
        std::vector<Use> uses;
        std::vector<size_t> inputs; ///< by use, its step
        std::vector<Goal> goals;
        int consumers = 0; ///< uses and goals
    };

    Schedule(const Graph& graph, size_t part);

    const std::vector<Step>& steps() const { return steps_; }

    /// For windows of the outputs, empty ones for those without that part, the window that each step has to
    /// compute.
    void windows(const std::vector<Window>& outputs, std::vector<Window>& result) const;

private:
    struct Place
    {
        size_t node, plane;
    };
    size_t stepOf(const Place& goal);
    size_t& known(const Place& place) { return known_[place.node][place.plane]; }
    bool addStep(const Place& place, std::vector<Place>& missing);

    const Graph& graph_;
    std::vector<Step> steps_;
    std::vector<std::vector<size_t>> known_; ///< by node and plane its step and one; 0: none yet
};

/// The bands and tiles that a part of all outputs is cut into at once. Outputs of other sizes are cut in
/// proportion to their display windows. Where a node of the graph likes strips and none reads far
/// more for them, tiles are as wide as the picture, and a band has one for each thread.
class Grid
{
public:
    Grid(const Graph& graph, size_t part, int tile, int threads);

    int64_t bands() const { return bands_; }
    int rows() const { return ends_.y - begins_.y; }
    int pieces(int64_t band) const;

    /// By output the rectangle of a tile, or that of a whole band, within its data window; empty for outputs
    /// without the part.
    void tile(int64_t band, int piece, std::vector<Window>& result) const;
    void band(int64_t band, std::vector<Window>& result) const;

    /// Rows of the largest output that are done behind a band.
    int rowsDone(int64_t band) const { return bandEnd(band) - begins_.y; }

private:
    struct Place
    {
        int x, y;
    };
    struct Output
    {
        Window data, display;
    };

    int bandBegin(int64_t band) const { return begins_.y + static_cast<int>(band * bandRows_); }
    int bandEnd(int64_t band) const;
    void cutTiles(const Graph& graph, int64_t rowBytes, int tile, int threads);
    void cut(const Place& begin, const Place& end, std::vector<Window>& result) const;

    std::vector<Output> outputs_;
    Output largest_;
    Place begins_{}, ends_{}; ///< of all outputs, from the corner of the largest one's display window
    int tileWidth_ = 0, tileRows_ = 0, columns_ = 0, bandRows_ = 0;
    int64_t bands_ = 0;
};

} // namespace host
