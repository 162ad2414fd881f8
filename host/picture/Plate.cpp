#include <host/picture/Plate.h>

#include <host/file/Bands.h>
#include <host/file/Format.h>
#include <host/file/Writer.h>
#include <host/graph/Pipeline.h>
#include <host/picture/PlatePicture.h>
#include <host/text/Error.h>
#include <host/text/Text.h>

#include <cmath>

namespace host {

namespace {

float displayValue(float linear)
{
    return linear <= 0.0031308f ? linear * 12.92f : 1.055f * std::pow(linear, 1.0f / 2.4f) - 0.055f;
}

void drawRow(const PlatePicture& picture, const PlateSettings& settings, int y, void* pixels)
{
    const size_t channels = settings.alpha ? 4 : 3;
    std::vector<float> row(static_cast<size_t>(settings.width) * channels);
    float* value = row.data();
    for (int x = 0; x < settings.width; ++x) {
        const Colour colour = picture.colour(x, y);
        for (const float linear : {colour.r, colour.g, colour.b})
            *value++ = settings.format >= PXL_FORMAT_float32 ? linear : displayValue(linear);
        if (settings.alpha)
            *value++ = picture.alpha(x, y);
    }
    convertFormat(PXL_FORMAT_float32, row.data(), settings.format, pixels, static_cast<int64_t>(row.size()));
}

} // namespace

void drawPlate(const std::string& path, const PlateSettings& settings)
{
    constexpr int64_t mostPixels = int64_t{1} << 32;
    if (settings.width < 16 || settings.height < 16 || settings.width * int64_t{settings.height} > mostPixels)
        refuse("size " + std::to_string(settings.width) + "x" + std::to_string(settings.height) +
               " is not from 16x16 to 4 gigapixels");
    const Image image = newImage(settings.width, settings.height, settings.alpha ? 4 : 3, settings.format,
                                 "kreiluge test plate");
    const PlatePicture picture(settings.width, settings.height);
    const Tiling tiling(image.data, image.rowBytes(), 16);
    Writer writer(path, image);
    Band bands[3];
    const auto checkStopped = [&] { host::checkStopped(settings.cancel); };

    Pipeline pipeline;
    pipeline.bands = tiling.bands;
    pipeline.threads = settings.threads;
    pipeline.fill = [&](int64_t band, int slot) {
        bands[slot].reset(image, tiling.bandBegin(band), tiling.bandEnd(band));
        return bands[slot].yEnd() - bands[slot].yBegin();
    };
    pipeline.work = [&](int64_t, int slot, int piece, int) {
        checkStopped();
        const int y = bands[slot].yBegin() + piece;
        drawRow(picture, settings, y, bands[slot].row(y));
    };
    pipeline.drain = [&](int64_t, int slot) {
        writer.write(bands[slot], bands[slot].yBegin(), bands[slot].yEnd(), checkStopped);
        if (settings.progress)
            settings.progress(bands[slot].yEnd(), settings.height);
    };
    pipeline.run();
    checkStopped();
    writer.commit();
}

unsigned char usualFormat(const std::string& path)
{
    const std::string extension = extensionOf(path);
    if (extension == ".exr")
        return PXL_FORMAT_half;
    if (extension == ".hdr")
        return PXL_FORMAT_float32;
    return extension == ".png" || extension == ".tif" || extension == ".tiff" ? PXL_FORMAT_uint16
                                                                              : PXL_FORMAT_uint8;
}

} // namespace host
