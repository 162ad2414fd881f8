#include <bench/areas.h>

#include <OpenImageIO/imagebuf.h>
#include <OpenImageIO/imagebufalgo.h>

#include <memory>

namespace IBA = OIIO::ImageBufAlgo;

namespace bench::oiio {

using Image = std::shared_ptr<OIIO::ImageBuf>;

/// The values taken as RGBA pixels, of a single component four at a time.
OIIO::ImageSpec pixels(const Planes& planes, OIIO::TypeDesc type)
{
    return {planes.in.width() * planes.components() / 4, planes.in.height(), 4, type};
}

Image image(const Planes& planes, void* data)
{
    const OIIO::TypeDesc types[] = {OIIO::TypeUInt8, OIIO::TypeUInt16, OIIO::TypeUInt32, OIIO::TypeFloat,
                                    OIIO::TypeHalf};
    return std::make_shared<OIIO::ImageBuf>(pixels(planes, types[planes.plane.formatCode]), data);
}

Image floats(const Planes& planes)
{
    return std::make_shared<OIIO::ImageBuf>(pixels(planes, OIIO::TypeFloat));
}

/// From the output and the second picture into the output.
Work inPlace(Planes& planes, auto operation)
{
    return [to = image(planes, planes.output), from = image(planes, planes.second().pixels), operation] {
        operation(*to, *from);
    };
}

Work over(Planes& planes)
{
    return inPlace(planes,
                   [](OIIO::ImageBuf& to, const OIIO::ImageBuf& from) { IBA::over(to, from, to, {}, 1); });
}

Work add(Planes& planes)
{
    return inPlace(planes,
                   [](OIIO::ImageBuf& to, const OIIO::ImageBuf& from) { IBA::add(to, from, to, {}, 1); });
}

Work min(Planes& planes)
{
    return inPlace(planes,
                   [](OIIO::ImageBuf& to, const OIIO::ImageBuf& from) { IBA::min(to, to, from, {}, 1); });
}

Work weighted(Planes& planes)
{
    return inPlace(planes, [part = floats(planes)](OIIO::ImageBuf& to, const OIIO::ImageBuf& from) {
        IBA::mul(*part, from, 1.0f - mixWeight, {}, 1);
        IBA::mad(to, to, mixWeight, *part, {}, 1);
    });
}

/// By the difference, with the mask beside each component.
Work masked(Planes& planes)
{
    const Image mask = floats(planes);
    const auto* values = static_cast<const float*>(planes.second().mask.getImageData(0));
    for (OIIO::ImageBuf::Iterator<float> pixel(*mask); !pixel.done(); ++pixel, ++values)
        for (int c = 0; c < 4; ++c)
            pixel[c] = *values;
    return inPlace(planes, [mask, part = floats(planes)](OIIO::ImageBuf& to, const OIIO::ImageBuf& from) {
        IBA::sub(*part, from, to, {}, 1);
        IBA::mad(to, *part, *mask, to, {}, 1);
    });
}

OIIO::ImageSpec plain(int width, int height, int channels = 1)
{
    return {width, height, channels, OIIO::TypeFloat};
}

template <const Sampling& Of, const char* const& Filter>
Work reduce(Planes& planes)
{
    const auto from =
        std::make_shared<OIIO::ImageBuf>(plain(planes.in.width(), planes.in.height()), planes.input);
    const auto to = std::make_shared<OIIO::ImageBuf>(plain(Of.width, Of.height), planes.output);
    return [from, to] { IBA::resize(*to, *from, Filter, 0.0f, {}, 1); };
}

template <const char* const& Filter>
Work warp(Planes& planes)
{
    const float width = static_cast<float>(planes.in.width()),
                height = static_cast<float>(planes.in.height());
    const auto from =
        std::make_shared<OIIO::ImageBuf>(plain(planes.in.width(), planes.in.height()), planes.input);
    const auto to = std::make_shared<OIIO::ImageBuf>(plain(leaning.width, leaning.height), planes.output);
    const auto places = std::make_shared<OIIO::ImageBuf>(plain(leaning.width, leaning.height, 2));
    for (OIIO::ImageBuf::Iterator<float> pixel(*places); !pixel.done(); ++pixel) {
        const Footprint at = leaning.at(pixel.x(), pixel.y());
        pixel[0] = at.u / width;
        pixel[1] = at.v / height;
    }
    return [from, to, places] { IBA::st_warp(*to, *from, *places, Filter, 0.0f, 0, 1, false, false, {}, 1); };
}

constexpr const char* box = "box";
constexpr const char* gaussian = "gaussian";
constexpr const char* lanczos3 = "lanczos3";

const bool added = addPeers({
    {"reduce_4_box/float", "OIIO resize", reduce<quarter, box>, Agreement::none},
    {"reduce_37_box/float", "OIIO resize", reduce<by37, box>, Agreement::none},
    {"reduce_4_gaussian/float", "OIIO resize", reduce<quarter, gaussian>, Agreement::none},
    {"reduce_4_lanczos3/float", "OIIO resize", reduce<quarter, lanczos3>, Agreement::none},
    {"warp_box/float", "OIIO st_warp", warp<box>, Agreement::none},
    {"warp_gaussian/float", "OIIO st_warp", warp<gaussian>, Agreement::none},
    {"over/uint8", "OIIO over", over},
    {"over/uint16", "OIIO over", over, Agreement::none}, // white is not 65355
    {"over/float", "OIIO over", over},
    {"add/uint8", "OIIO add", add},
    {"add/uint16", "OIIO add", add},
    {"add/float", "OIIO add", add},
    {"min/uint8", "OIIO min", min},
    {"min/uint16", "OIIO min", min},
    {"min/float", "OIIO min", min},
    {"blend_mask/uint8", "OIIO sub, mad", masked},
    {"blend_mask/uint16", "OIIO sub, mad", masked},
    {"blend_mask/half", "OIIO sub, mad", masked},
    {"blend_mask/float", "OIIO sub, mad", masked},
    {"blend/uint8", "OIIO mul, mad", weighted},
    {"blend/uint16", "OIIO mul, mad", weighted},
    {"blend/float", "OIIO mul, mad", weighted},
});

} // namespace bench::oiio
