#include <host/Plate.h>

#include <host/Bands.h>
#include <host/Error.h>
#include <host/Format.h>
#include <host/Header.h>
#include <host/Pipeline.h>
#include <host/PlatePicture.h>
#include <host/Writer.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <filesystem>

namespace host {

namespace {

Image plateImage(const PlateSettings& settings)
{
    const bool linear = settings.format >= PXL_FORMAT_float32;
    OIIO::ImageSpec spec(settings.width, settings.height, settings.alpha ? 4 : 3, OIIO::TypeDesc::UNKNOWN);
    spec.attribute("ImageDescription", "kreiluge test plate");
    spec.attribute("oiio:ColorSpace", linear ? "Linear" : "sRGB");
    spec.attribute("oiio:UnassociatedAlpha", 1);
    Image image;
    image.data = image.display = {0, 0, settings.width, settings.height};
    for (const std::string& name : spec.channelnames)
        image.channels.push_back({name, settings.format});
    image.arrange();
    image.header = std::make_shared<Header>(Header{spec});
    return image;
}

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
    const Image image = plateImage(settings);
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
    std::string extension = std::filesystem::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (extension == ".exr")
        return PXL_FORMAT_half;
    return extension == ".png" || extension == ".tif" || extension == ".tiff" ? PXL_FORMAT_uint16
                                                                              : PXL_FORMAT_uint8;
}

} // namespace host
