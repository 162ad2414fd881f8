#include <bench/bench.h>

#include <vips/vips.h>

#include <memory>

namespace bench::libvips {

using Image = std::shared_ptr<VipsImage>;

/// vips_maplut with a table made beforehand, written over the output.
template <class T, VipsBandFormat Format>
Work table(Planes& planes)
{
    const auto image = [](void* data, int width, int height) { // a header only
        const size_t bytes = static_cast<size_t>(width) * static_cast<size_t>(height) * sizeof(T);
        return Image(vips_image_new_from_memory(data, bytes, width, height, 1, Format), g_object_unref);
    };
    constexpr int size = 1 << (8 * sizeof(T));
    const auto codes = std::make_shared<std::vector<T>>();
    for (int i = 0; i < size; ++i)
        codes->push_back(encode<T>(gammaAdd(static_cast<double>(i) / (size - 1))));
    return [&planes, image, codes, lut = image(codes->data(), size, 1),
            from = image(planes.input, planes.in.width(), planes.in.height())] {
        VipsImage* mapped = nullptr;
        vips_maplut(from.get(), &mapped, lut.get(), nullptr);
        vips_image_write(mapped, image(planes.output, planes.out.width(), planes.out.height()).get());
        g_object_unref(mapped);
    };
}

/// Noise of libvips' own kind, in two dimensions, written over the output.
template <int (*Make)(VipsImage**, int, int, ...)>
Work noise(Planes& planes)
{
    return [&planes] {
        const int width = planes.out.width(), height = planes.out.height();
        VipsImage* made = nullptr;
        Make(&made, width, height, "cell_size", noiseCell, nullptr);
        const Image to(
            vips_image_new_from_memory(planes.output, planes.bytes(), width, height, 1, VIPS_FORMAT_FLOAT),
            g_object_unref);
        vips_image_write(made, to.get());
        g_object_unref(made);
    };
}

const bool added = [] {
    VIPS_INIT("kreiluge_bench");
    vips_concurrency_set(1);
    vips_cache_set_max(0); // every call does its work
    return addPeers({
        {"gamma_add/uint8", "vips_maplut", table<uint8_t, VIPS_FORMAT_UCHAR>},
        {"gamma_add/uint16", "vips_maplut", table<uint16_t, VIPS_FORMAT_USHORT>},
        {"noise_perlin/float", "vips_perlin", noise<vips_perlin>, Agreement::none},
        {"noise_cellular/float", "vips_worley", noise<vips_worley>, Agreement::none},
    });
}();

} // namespace bench::libvips
