#include <host/graph/CombinePlanes.h>

#include <host/file/Format.h>

#include <RU/composite/RU_ChromaAdjust.h>

#include <cstring>
#include <new>

namespace host {

namespace {

constexpr Components onlyFirst{true, false, false, false};

/// Full inside of a window, 0 elsewhere.
template <class T>
void fillWindow(T* alpha, const Window& rect, const Window& window)
{
    constexpr T full = PXL_FormatOf<T>::white;
    const Window inside = intersection(rect, window);
    std::fill_n(alpha, static_cast<int64_t>(rect.width) * rect.height, T{0});
    for (int y = inside.y; y < inside.y + inside.height; ++y)
        std::fill_n(alpha + static_cast<int64_t>(y - rect.y) * rect.width + (inside.x - rect.x), inside.width,
                    full);
}

/// One side of a composite in a rectangle.
template <class T>
struct Loaded
{
    T* values[4] = {}; ///< of the wanted components, the own alpha among them
    T* alpha = nullptr;
};

/// Loads the wanted components; those that the plane lacks are 0. Uses the sets of tiles `set` and `set` + 1.
template <class T>
Loaded<T> loadSide(const CompositeInput& side, const Components& wanted, const std::vector<Band>& in,
                   const Window& rect, int set, Workspace& workspace)
{
    constexpr unsigned char format = PXL_FormatOf<T>::code;
    const size_t count = static_cast<size_t>(rect.width) * static_cast<size_t>(rect.height);
    const bool own = side.alpha == CompositeInput::Alpha::Own;
    const Components loaded{wanted[0], wanted[1], wanted[2], wanted[3] || own};
    const PlanePixels::Arrays arrays = PlanePixels::arraysOf(workspace.tiles(format, set), loaded);
    Loaded<T> result;
    for (size_t c = 0; c < 4; ++c) {
        result.values[c] = static_cast<T*>(arrays[c]);
        if (loaded[c] && !side.plane.pixels.present()[c])
            std::memset(arrays[c], 0, count * sizeof(T));
    }
    side.plane.load(in, rect, format, arrays, workspace);
    if (own)
        result.alpha = result.values[3];
    if (own || side.alpha == CompositeInput::Alpha::Full)
        return result;
    workspace.tiles(format, set + 1)->getImageData(result.alpha);
    if (side.other)
        side.other->load(in, rect, format, {result.alpha}, workspace);
    else
        fillWindow(result.alpha, rect, side.window);
    return result;
}

void multiply(float* values, const float* alpha, int64_t count)
{
    for (int64_t i = 0; i < count; ++i)
        values[i] *= alpha[i];
}

/// Values without an alpha stay.
void divide(float* values, const float* alpha, int64_t count)
{
    for (int64_t i = 0; i < count; ++i)
        values[i] = alpha[i] != 0.0f ? values[i] / alpha[i] : values[i];
}

void eachColour(const Loaded<float>& side, void (*work)(float*, const float*, int64_t), int64_t count)
{
    for (int c = 0; c < 3 && side.alpha != nullptr; ++c)
        if (side.values[c] != nullptr)
            work(side.values[c], side.alpha, count);
}

TIL_TileList tilesOf(TIL_Tile* tiles, const Components& present, const TIL_Plane& codes, const Window& rect)
{
    TIL_TileList list(codes, rect.x, rect.y, rect.x + rect.width - 1, rect.y + rect.height - 1);
    for (size_t c = 0; c < 4; ++c)
        list.tiles[c] = present[c] ? &tiles[c] : nullptr;
    return list;
}

/// Part of an input as a region of the library's.
TIL_Region* regionOf(const std::optional<PlaneInput>& input, const TIL_Plane& codes,
                     const std::vector<Band>& in, const Window& rect, Workspace& workspace)
{
    if (!input)
        return nullptr;
    TIL_Region& region = workspace.region(codes, input->pixels.present(), rect);
    input->load(in, rect, codes.formatCode, PlanePixels::arraysOf(region), workspace);
    return &region;
}

} // namespace

CompositeInput::CompositeInput(const Image& image, const Plane& of, size_t band, const Window& output)
    : plane(image, of, band), window(image.data)
{
    const Plane* source = image.alphaOf(of);
    if (source == nullptr) {
        alpha = intersection(window, output) == output ? Alpha::Full : Alpha::Window;
        return;
    }
    alpha = of.alpha ? Alpha::Own : Alpha::Other;
    if (alpha == Alpha::Own)
        return;
    Plane single = *source;
    single.channel = {source->channel[3], -1, -1, -1};
    other.emplace(image, single, band);
}

CompositePlane::CompositePlane(const Sides& sides, const PlanePixels& out, bool colour, unsigned char format,
                               const Combination::CompositeSettings& settings)
    : sides_(sides), out_(out), colour_(colour), format_(format), settings_(settings)
{
}

void CompositePlane::run(const std::vector<Band>& in, Band& out, const Window& rect,
                         Workspace& workspace) const
{
    switch (format_) {
    case PXL_FORMAT_uint8:
        return runAs<unsigned char>(in, out, rect, workspace);
    case PXL_FORMAT_uint16:
        return runAs<unsigned short>(in, out, rect, workspace);
    default:
        return runAs<float>(in, out, rect, workspace);
    }
}

template <class T>
void CompositePlane::runAs(const std::vector<Band>& in, Band& out, const Window& rect,
                           Workspace& workspace) const
{
    constexpr bool isFloat = std::is_same_v<T, float>;
    const bool ownAlpha = sides_.first.alpha == CompositeInput::Alpha::Own;
    const Components& present = sides_.first.plane.pixels.present();
    const int64_t count = static_cast<int64_t>(rect.width) * rect.height;
    const Loaded<T> d = loadSide<T>(sides_.first, present, in, rect, 0, workspace);
    const Loaded<T> s = loadSide<T>(sides_.second, present, in, rect, 2, workspace);
    if constexpr (isFloat)
        if (settings_.premultiply && colour_) {
            eachColour(d, multiply, count);
            eachColour(s, multiply, count);
        }
    for (int c = 0; c < (ownAlpha ? 3 : 4); ++c) {
        if (d.values[c] == nullptr)
            continue;
        if constexpr (isFloat)
            if (!colour_) {
                const float* const geometry[4] = {s.values[0], s.values[1], s.values[2],
                                                  ownAlpha ? nullptr : s.values[3]};
                RU_Composite::compositeGeo(settings_.type, rect.width, rect.height, d.values[c], d.alpha,
                                           s.values[c], s.alpha, geometry);
                continue;
            }
        RU_Composite::composite(settings_.type, rect.width, rect.height, d.values[c], d.alpha, s.values[c],
                                s.alpha);
    }
    if (ownAlpha || (settings_.unpremultiply && sides_.first.other)) // the colours above took the old one
        RU_Composite::compositeAlpha(settings_.type, rect.width, rect.height, d.alpha, s.alpha);
    if constexpr (isFloat)
        if (settings_.unpremultiply && colour_ && sides_.first.alpha != CompositeInput::Alpha::Window)
            eachColour(d, divide, count);
    out_.store(format_, {d.values[0], d.values[1], d.values[2], d.values[3]}, out, rect, workspace);
}

BlendPlane::BlendPlane(const PlaneInput& first, const std::optional<PlaneInput>& second,
                       const std::optional<PlaneInput>& matte, const PlanePixels& out, const TIL_Plane& codes,
                       const Combination::BlendSettings& settings)
    : first_(first), second_(second), matte_(matte), out_(out), codes_(codes),
      matteCodes_(PXL_FORMAT_float32, 4), weighted_(settings.weights.has_value()),
      blend_(std::make_unique<RU_Blend>())
{
    blend_->blendFactor = settings.mix;
    blend_->swapMaskedInputs = settings.swap;
    blend_->useBlendFactor = !weighted_;
    if (weighted_) {
        blend_->firstWeight = settings.weights->at(0);
        blend_->secondWeight = settings.weights->at(1);
    }
}

void BlendPlane::run(const std::vector<Band>& in, Band& out, const Window& rect, Workspace& workspace) const
{
    TIL_Tile* tiles = workspace.tiles(codes_.formatCode);
    TIL_TileList list = tilesOf(tiles, first_.pixels.present(), codes_, rect);
    const PlanePixels::Arrays arrays = PlanePixels::arraysOf(tiles, first_.pixels.present());
    first_.load(in, rect, codes_.formatCode, arrays, workspace);
    const TIL_Region* second = regionOf(second_, codes_, in, rect, workspace);
    const TIL_Region* matte = regionOf(matte_, matteCodes_, in, rect, workspace);
    const int done =
        weighted_ ? blend_->filter(&list, second, 0.0f, workspace.stop, workspace.thread, nullptr)
                  : blend_->binary(&list, second, matte, 0.0f, workspace.stop, workspace.thread, nullptr);
    if (done == 0)
        throw std::bad_alloc();
    out_.store(codes_.formatCode, arrays, out, rect, workspace);
}

ChromaPlane::ChromaPlane(const PlaneInput& first, const PlaneInput& matte, const PlanePixels& out,
                         const TIL_Plane& codes, const Combination::ChromaSettings& settings)
    : first_(first), matte_(matte), out_(out), codes_(codes), backing_(settings.backing)
{
}

void ChromaPlane::run(const std::vector<Band>& in, Band& out, const Window& rect, Workspace& workspace) const
{
    TIL_Tile* tiles = workspace.tiles(codes_.formatCode);
    TIL_TileList list = tilesOf(tiles, first_.pixels.present(), codes_, rect);
    const PlanePixels::Arrays arrays = PlanePixels::arraysOf(tiles, first_.pixels.present());
    first_.load(in, rect, codes_.formatCode, arrays, workspace);
    const PlanePixels::Arrays matte =
        PlanePixels::arraysOf(workspace.tiles(PXL_FORMAT_float32, 1), onlyFirst);
    matte_.load(in, rect, PXL_FORMAT_float32, matte, workspace);
    RU_ChromaAdjust adjust; // one for each call, for it holds the matte
    adjust.matte = static_cast<const float*>(matte[0]);
    adjust.backingRed = backing_[0];
    adjust.backingGreen = backing_[1];
    adjust.backingBlue = backing_[2];
    if (adjust.pixelAdjust(&list, &list, 0.0f, workspace.stop, workspace.thread, nullptr) == 0)
        throw std::bad_alloc();
    out_.store(codes_.formatCode, arrays, out, rect, workspace);
}

} // namespace host
