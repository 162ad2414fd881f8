#pragma once

#include <host/operation/MultipliedNode.h>

#include <RU/filter/RU_FilterArea.h>

namespace host {

/// Where the pixels of a rectangle take their values from, row after row: the centre and the size of the
/// footprint of each, in pixels of a plane's window, whose corner is 0, 0. NaN: nowhere, the pixel is 0.
struct Footprints
{
    std::vector<double> u, v, width, height;
};

/// How pixels are weighed, and what lies beyond the edges of an image.
struct Resampling
{
    enum class Filter { Nearest, Box, Triangle, Gaussian, CatmullRom, Mitchell, Lanczos3, Hann };

    Filter filter = Filter::Lanczos3;
    RU_FILTER_WRAP wrap = RU_FILTER_CLAMP;
};

const std::vector<std::string>& resamplingFilters(); ///< the names, in the order of Resampling::Filter
const std::vector<std::string>& resamplingWraps();   ///< in the order of RU_FILTER_WRAP

/// A node that weighs the pixels under footprints, in float, with RU_FilterArea. Boxes average the area of
/// pixels; the other filters take pixels as points at their centres, as most programs do.
///
/// Places are rounded to 1/4096 of a pixel or less: their sums are exact then, and how the picture is cut does not
/// show.
/// Footprints are cut where a filter would weigh more than a thousand pixels in a row or column.
class ResamplingNode : public MultipliedNode
{
protected:
    explicit ResamplingNode(const Resampling& resampling);

    /// Footprints for a rectangle of the output.
    using Places = std::function<void(const Window& rect, Footprints& out)>;

    /// planPlanes(), with a note where floats keep less than the planes hold.
    Picture planFloats(const Planes& in, size_t input, const PlaneSettings& settings);

    /// Says how many pixels of the input a piece of the output spans at the most, from edge to edge of its
    /// footprints without what a filter reaches beyond them: the fewer, the finer are places.
    void setSpan(double pixels);
    static constexpr int pieceSide = 128; ///< of the output

    /// How far around its centre a footprint of a size is read.
    double reachOf(double size) const;

    /// What of a plane's window is read for places from low to high, the reach included.
    Window readOf(const Window& window, double lowU, double lowV, double highU, double highV) const;

    Block resample(size_t plane, const Window& rect, const Places& places, Feed& feed) const;

private:
    /// The library's sampler and memory for pieces.
    struct Workspace;
    void samplePiece(size_t plane, const Window& rect, const Places& places, Feed& feed, Workspace& workspace,
                     Block& out) const;
    void keepInReach(const Window& window, Footprints& prints) const;
    Outside outside() const;
    Block loadWrapped(const Feed::Wish& wish, const Window& window, Feed& feed) const;

    Resampling resampling_;
    UT_FilterType type_;
    double support_;
    double placesPerPixel_ = 4096.0; ///< a power of 2
};

} // namespace host
