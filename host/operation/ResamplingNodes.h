#pragma once

#include <host/operation/Projection.h>
#include <host/operation/Resampling.h>

namespace host {

/// Resizes, moves, turns and pins pictures. The projections are made for each image of a picture, by its windows.
class ProjectionNode : public ResamplingNode
{
public:
    struct Plan
    {
        Window display, data;    ///< of the output
        Projection fromOutput{}; ///< places of the output's pixels to those of the input's
    };
    using Planner = std::function<Plan(const Image& image)>;

    ProjectionNode(Planner planner, const Resampling& resampling, const PlaneSettings& settings)
        : ResamplingNode(resampling), planner_(std::move(planner)), settings_(settings)
    {
    }

    Picture plan(const std::vector<const Picture*>& inputs) override;
    Window needs(size_t input, const Window& window) const override;
    Block pixels(size_t plane, const Window& rect, Feed& feed) const override;

private:
    Planner planner_;
    PlaneSettings settings_;
    struct Source
    {
        Projection projection; ///< to places in the window
        Window window;         ///< of the input
        bool operator==(const Source&) const = default;
    };
    std::vector<Source> sources_;  ///< that differ
    std::vector<size_t> sourceOf_; ///< by plane
};

/// Takes each pixel from the place that a map names: red from 0 at the left to 1 at the right of the display
/// window, green from 0 at its bottom to 1 at its top.
class WarpNode : public ResamplingNode
{
public:
    WarpNode(const Resampling& resampling, const PlaneSettings& settings)
        : ResamplingNode(resampling), settings_(settings)
    {
    }

    Picture plan(const std::vector<const Picture*>& inputs) override;
    Window needs(size_t input, const Window& window) const override;
    Block pixels(size_t plane, const Window& rect, Feed& feed) const override;

private:
    static constexpr size_t image = 0, map = 1; ///< inputs

    PlaneSettings settings_;
    std::vector<Window> displays_; ///< of the image, by plane
    size_t mapPlane_ = 0;
};

} // namespace host
