#include <bench/bench.h>

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

const bool added = addPeers({
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
