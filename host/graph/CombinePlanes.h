#pragma once

#include <host/graph/Combine.h>
#include <host/graph/Job.h>

#include <RU/composite/RU_Blend.h>

#include <optional>

namespace host {

/// One plane of one of a job's inputs; beyond its window it is 0.
struct PlaneInput
{
    PlaneInput(const Image& image, const Plane& plane, size_t bandIndex)
        : pixels(image, plane), band(bandIndex)
    {
    }

    void load(const std::vector<Band>& in, const Window& rect, unsigned char format,
              const PlanePixels::Arrays& arrays, Workspace& workspace) const
    {
        pixels.load(in[band], rect, format, arrays, PlanePixels::Outside::Zero, workspace);
    }

    PlanePixels pixels;
    size_t band;
};

/// A plane and the alpha beside it. An image without alpha is full in its window.
struct CompositeInput
{
    enum class Alpha { Own, Other, Window, Full };

    /// `plane` is of the image. `output` is the window of the output.
    CompositeInput(const Image& image, const Plane& plane, size_t band, const Window& output);

    PlaneInput plane;
    Window window;
    Alpha alpha;
    std::optional<PlaneInput> other; ///< the other plane's alpha as component 0
};

/// Puts a plane of the second input over, under, ... that of the first one.
class CompositePlane : public PlaneWork
{
public:
    struct Sides
    {
        CompositeInput first, second;
    };

    /// `colour` false selects geometry instead of mixing; `format` is the one to compute in.
    CompositePlane(const Sides& sides, const PlanePixels& out, bool colour, unsigned char format,
                   const Combination::CompositeSettings& settings);

    void run(const std::vector<Band>& in, Band& out, const Window& rect, Workspace& workspace) const override;

private:
    template <class T>
    void runAs(const std::vector<Band>& in, Band& out, const Window& rect, Workspace& workspace) const;

    Sides sides_;
    PlanePixels out_;
    bool colour_;
    unsigned char format_;
    Combination::CompositeSettings settings_;
};

/// Mixes a plane of the first input with one of the second, or fades it.
class BlendPlane : public PlaneWork
{
public:
    BlendPlane(const PlaneInput& first, const std::optional<PlaneInput>& second,
               const std::optional<PlaneInput>& matte, const PlanePixels& out, const TIL_Plane& codes,
               const Combination::BlendSettings& settings);

    void run(const std::vector<Band>& in, Band& out, const Window& rect, Workspace& workspace) const override;

private:
    PlaneInput first_;
    std::optional<PlaneInput> second_, matte_;
    PlanePixels out_;
    TIL_Plane codes_;
    TIL_Plane matteCodes_;
    bool weighted_;
    std::unique_ptr<RU_Blend> blend_;
};

/// Takes a backing colour out of a plane of the first input; component 0 of the matte says where.
class ChromaPlane : public PlaneWork
{
public:
    ChromaPlane(const PlaneInput& first, const PlaneInput& matte, const PlanePixels& out,
                const TIL_Plane& codes, const Combination::ChromaSettings& settings);

    void run(const std::vector<Band>& in, Band& out, const Window& rect, Workspace& workspace) const override;

private:
    PlaneInput first_, matte_;
    PlanePixels out_;
    TIL_Plane codes_;
    std::array<float, 3> backing_;
};

} // namespace host
