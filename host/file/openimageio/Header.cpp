#include <host/file/openimageio/Header.h>

#include <host/file/openimageio/Entries.h>

#include <algorithm>

namespace host::openimageio {

Image newImage(int width, int height, int channels, unsigned char format, const std::string& description)
{
    OIIO::ImageSpec spec(width, height, channels, OIIO::TypeDesc::UNKNOWN);
    spec.attribute("ImageDescription", description);
    spec.attribute("oiio:ColorSpace", format >= PXL_FORMAT_float32 ? "Linear" : "sRGB");
    Image image;
    image.data = image.display = {0, 0, width, height};
    for (const std::string& name : spec.channelnames)
        image.channels.push_back({name, format});
    image.arrange();
    image.straight = image.hasAlpha();
    image.header = std::make_shared<Header>(Header{spec});
    return image;
}

void setColourSpace(Image& image, const std::string& name)
{
    Header header = *image.header;
    for (const char* tag : {"oiio:ColorSpace", "oiio:Gamma", "ICCProfile.*", "photoshop:ICCProfile",
                            "Exif:ColorSpace", "Exif:Gamma", "dpx:Transfer", "dpx:Colorimetric"})
        header.spec.erase_attribute(tag);
    if (name != "Linear") // which may be light of any primaries
        for (const char* tag : {"chromaticities", "acesImageContainerFlag"})
            header.spec.erase_attribute(tag);
    if (!name.empty())
        header.spec.attribute("oiio:ColorSpace", name);
    image.header = std::make_shared<Header>(std::move(header));
}

int rowsPerCall(const std::string& fileFormat, const OIIO::ImageSpec& spec)
{
    constexpr int64_t callBytes = 512 << 10; // about 20 ms of packing for one thread
    const auto rowBytes = static_cast<int64_t>(spec.scanline_bytes(true));
    const int64_t rows = std::clamp<int64_t>(callBytes / std::max<int64_t>(1, rowBytes), 1, 1024);
    if (fileFormat != "openexr")
        return static_cast<int>(rows);
    // The rows that are packed as one block, by one thread.
    static const std::vector<std::pair<std::string, int>> blocks = {{"none", 1},  {"rle", 1},   {"zips", 1},
                                                                    {"piz", 32},  {"b44", 32},  {"b44a", 32},
                                                                    {"dwaa", 32}, {"dwab", 256}};
    const std::string compression = spec.get_string_attribute("compression", "zip");
    const auto known = std::find_if(blocks.begin(), blocks.end(),
                                    [&](const auto& entry) { return entry.first == compression; });
    const int64_t block = known != blocks.end() ? known->second : 16;
    const int64_t threads = std::max(1, OIIO::get_int_attribute("exr_threads", 1));
    return static_cast<int>(block * std::max<int64_t>(1, rows / block) * threads);
}

void setFileThreads(int count)
{
    OIIO::attribute("threads", count);
    OIIO::attribute("exr_threads", count);
}

} // namespace host::openimageio
