#include <bench/bench.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <utility>

namespace bench {

namespace {

template <class Visit>
void withType(unsigned char format, Visit visit)
{
    switch (format) {
#define BENCH_CASE(CODE, TYPE, WHITE, NAME)                                                                  \
    case CODE:                                                                                               \
        visit(static_cast<TYPE>(0));                                                                         \
        break;
        PXL_FOR_EACH_FORMAT(BENCH_CASE)
#undef BENCH_CASE
    }
}

template <class T>
double decode(T code)
{
    return static_cast<double>(code) / PXL_FormatOf<T>::white;
}

/// Soft shapes, hard edges and grain, from `least` up to a little above white, where the format can. A fourth
/// component is a soft alpha, by which the others are multiplied.
template <class T>
void draw(TIL_Region& region, double least, double shift)
{
    std::minstd_rand random(1);
    std::normal_distribution<> grain(0.0, 0.03);
    const int components = region.plane->componentCount, width = region.width();
    for (int c = 0; c < components; ++c) {
        T* values = static_cast<T*>(region.getImageData(c));
        for (int y = 0; y < region.height(); ++y)
            for (int x = 0; x < width; ++x) {
                const double shapes =
                    0.5 + 0.4 * std::sin(x * 0.013 + shift + c * 2.0) * std::cos(y * 0.017 + shift + c);
                const double edges = (x / 97 + y / 61) % (c + 2) * 0.2;
                double value = std::max(least, shapes + edges + grain(random));
                if (components == 4) {
                    const double alpha = 0.5 + 0.7 * std::sin(x * 0.011 - shift) * std::cos(y * 0.007);
                    value = (c == 3 ? 1.0 : std::min(value, 1.0)) * std::clamp(alpha, least, 1.0);
                }
                values[y * width + x] = encode<T>(value);
            }
    }
}

/// Component c of `count` pixels.
template <class T>
void interleave(const T* plane, T* pixels, int c, int components, int64_t count)
{
    for (int64_t i = 0; i < count; ++i)
        pixels[i * components + c] = plane[i];
}

} // namespace

Planes::Planes(PXL_Format format, unsigned char components, const Size& size)
    : plane(format, components), in(plane, 0, 0, size.width - 1, size.height - 1), out(in),
      region(plane, -1, -1, size.width, size.height)
{
    tiles_.reserve(2u * components);
    for (TIL_TileList* list : {&in, &out})
        for (int c = 0; c < components; ++c)
            list->tiles[c] = &tiles_.emplace_back(format, size.width, size.height);
    if (components == 1) {
        in.tiles[0]->getImageData(input);
        out.tiles[0]->getImageData(output);
    } else {
        for (TIL_Buffer& pixels : pixels_)
            pixels = TIL_Buffer(static_cast<int64_t>(bytes()));
        input = pixels_[0].data();
        output = pixels_[1].data();
    }
    withType(format, [&]<class T>(T) {
        draw<T>(region, 0.0, 0.0);
        for (int c = 0; c < components; ++c) {
            const T* whole = static_cast<const T*>(region.getImageData(c));
            T* tile = nullptr;
            in.tiles[c]->getImageData(tile);
            for (int y = 0; y < size.height; ++y)
                std::copy_n(whole + (y + 1) * (size.width + 2) + 1, size.width, tile + y * size.width);
            interleave(tile, static_cast<T*>(input), c, components, in.itemCount);
        }
    });
}

Planes::Second& Planes::second()
{
    if (second_ != nullptr)
        return *second_;
    static const TIL_Plane maskPlane(PXL_FORMAT_float32, 1);
    second_.reset(new Second{
        TIL_Region(plane, 0, 0, in.x2, in.y2), TIL_Region(maskPlane, 0, 0, in.x2, in.y2), {}, nullptr});
    withType(plane.formatCode, [&]<class T>(T) {
        draw<T>(second_->region, 1.0 / 32, 1.0);
        second_->pixels = second_->region.getImageData(0);
        if (components() == 1)
            return;
        second_->memory = TIL_Buffer(static_cast<int64_t>(bytes()));
        second_->pixels = second_->memory.data();
        for (int c = 0; c < components(); ++c)
            interleave(static_cast<const T*>(second_->region.getImageData(c)),
                       static_cast<T*>(second_->pixels), c, components(), in.itemCount);
    });
    auto* mask = static_cast<float*>(second_->mask.getImageData(0));
    for (int y = 0; y <= in.y2; ++y)
        for (int x = 0; x <= in.x2; ++x) {
            const double value = 0.5 + 0.7 * std::sin(x * 0.009) * std::cos(y * 0.011);
            *mask++ = static_cast<float>(encode<uint8_t>(value) / 255.0);
        }
    return *second_;
}

std::shared_ptr<TIL_Region> Planes::around(const RU_Border& border) const
{
    auto wide = std::make_shared<TIL_Region>(plane, -border.left, -border.bottom, in.x2 + border.right,
                                             in.y2 + border.top);
    withType(plane.formatCode, [&]<class T>(T) {
        for (int c = 0; c < components(); ++c) {
            const T* tile = nullptr;
            std::as_const(*in.tiles[c]).getImageData(tile);
            T* to = static_cast<T*>(wide->getImageData(c));
            for (int y = wide->y1; y <= wide->y2; ++y)
                for (int x = wide->x1; x <= wide->x2; ++x)
                    *to++ = tile[std::clamp(y, 0, in.y2) * in.width() + std::clamp(x, 0, in.x2)];
        }
    });
    return wide;
}

void Planes::refill()
{
    for (int c = 0; c < components(); ++c) {
        const void* from = nullptr;
        void* to = nullptr;
        in.tiles[c]->getImageData(from);
        out.tiles[c]->getImageData(to);
        std::memcpy(to, from, bytes() / plane.componentCount);
    }
    std::memcpy(output, input, bytes());
}

std::vector<double> Planes::tileResult() const
{
    std::vector<double> result(static_cast<size_t>(values()));
    withType(plane.formatCode, [&]<class T>(T) {
        for (int c = 0; c < components(); ++c) {
            const T* tile = nullptr;
            std::as_const(*out.tiles[c]).getImageData(tile);
            for (int64_t i = 0; i < out.itemCount; ++i)
                result[static_cast<size_t>(i * components() + c)] = decode(tile[i]);
        }
    });
    return result;
}

std::vector<double> Planes::bareResult() const
{
    std::vector<double> result(static_cast<size_t>(values()));
    withType(plane.formatCode, [&]<class T>(T) {
        const T* codes = static_cast<const T*>(output);
        std::transform(codes, codes + values(), result.begin(), decode<T>);
    });
    return result;
}

} // namespace bench
