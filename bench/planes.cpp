#include <bench/bench.h>

#include <algorithm>
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
    std::minstd_rand random(1);
    std::normal_distribution<> grain(0.0, 0.03);
    const int width = size.width, height = size.height;
    withType(format, [&]<class T>(T) {
        for (int c = 0; c < components; ++c) {
            T* whole = static_cast<T*>(region.getImageData(c));
            for (int y = 0; y < height + 2; ++y)
                for (int x = 0; x < width + 2; ++x) { // up to a little above white, where the format can
                    const double shapes = 0.5 + 0.4 * std::sin(x * 0.013 + c * 2.0) * std::cos(y * 0.017 + c);
                    const double edges = (x / 97 + y / 61) % (c + 2) * 0.2;
                    whole[y * (width + 2) + x] = encode<T>(std::max(0.0, shapes + edges + grain(random)));
                }
            T* tile = nullptr;
            in.tiles[c]->getImageData(tile);
            for (int y = 0; y < height; ++y)
                std::copy_n(whole + (y + 1) * (width + 2) + 1, width, tile + y * width);
            for (int64_t i = 0; i < in.itemCount; ++i)
                static_cast<T*>(input)[i * components + c] = tile[i];
        }
    });
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
