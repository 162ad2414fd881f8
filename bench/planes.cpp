#include <bench/bench.h>

#include <algorithm>
#include <random>

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

} // namespace

Planes::Planes(PXL_Format format, int width, int height)
    : plane(format, 1), in(plane, 0, 0, width - 1, height - 1), out(in),
      region(plane, -1, -1, width, height), tiles_{{format, width, height}, {format, width, height}}
{
    in.tiles[0] = &tiles_[0];
    out.tiles[0] = &tiles_[1];
    tiles_[0].getImageData(input);
    tiles_[1].getImageData(output);
    std::minstd_rand random(1);
    std::normal_distribution<> grain(0.0, 0.03);
    withType(format, [&]<class T>(T) {
        T* whole = static_cast<T*>(region.getImageData(0));
        for (int y = 0; y < height + 2; ++y)
            for (int x = 0; x < width + 2; ++x) { // up to a little above white, where the format can
                const double shapes = 0.5 + 0.4 * std::sin(x * 0.013) * std::cos(y * 0.017);
                const double edges = (x / 97 + y / 61) % 2 * 0.2;
                whole[y * (width + 2) + x] = encode<T>(std::max(0.0, shapes + edges + grain(random)));
            }
        for (int y = 0; y < height; ++y)
            std::copy_n(whole + (y + 1) * (width + 2) + 1, width, static_cast<T*>(input) + y * width);
    });
}

std::vector<double> Planes::result() const
{
    std::vector<double> values(static_cast<size_t>(components()));
    withType(plane.formatCode, [&]<class T>(T) {
        const T* codes = static_cast<const T*>(output);
        std::transform(codes, codes + values.size(), values.begin(),
                       [](T code) { return static_cast<double>(code) / PXL_FormatOf<T>::white; });
    });
    return values;
}

} // namespace bench
