#include <host/file/openimageio/OutputHeader.h>

#include <host/file/InputFile.h>

#include <PXL/PXL_Format.h>

#include <algorithm>
#include <ctime>
#include <sys/stat.h>

namespace host::openimageio {

namespace {

OIIO::TypeDesc typeOf(unsigned char format)
{
    switch (format) {
    case PXL_FORMAT_uint8:
        return OIIO::TypeDesc::UINT8;
    case PXL_FORMAT_uint16:
        return OIIO::TypeDesc::UINT16;
    case PXL_FORMAT_uint32:
        return OIIO::TypeDesc::UINT32;
    case PXL_FORMAT_half:
        return OIIO::TypeDesc::HALF;
    default:
        return OIIO::TypeDesc::FLOAT;
    }
}

/// The input's compression where it keeps every value, else one that does.
std::string losslessCompression(const OIIO::ImageSpec& spec, bool hasFloat)
{
    std::string compression = spec.get_string_attribute("compression");
    static const std::vector<std::string> lossless = {"none", "rle", "zip", "zips", "piz", "lzw", "packbits"};
    if (std::find(lossless.begin(), lossless.end(), compression) != lossless.end())
        return compression;
    return compression == "pxr24" && !hasFloat ? compression : "zip";
}

/// When the input was stored. Without a date in the header the file layer writes the time of day into it, and
/// no two runs would give the same bytes.
std::string dateOf(const std::string& path)
{
    struct stat status = {};
    struct tm date = {};
    char text[32] = "2000:01:01 00:00:00"; // for what was not read from a file
    if (::stat(InputFile(path).file.c_str(), &status) == 0 && ::gmtime_r(&status.st_mtime, &date) != nullptr)
        std::strftime(text, sizeof(text), "%Y:%m:%d %H:%M:%S", &date);
    return text;
}

/// What speaks of the old file: how it was stored, and of its pixels. Writers would store the new ones so, or
/// fail to.
// clang-format off
constexpr const char* staleAttributes[] = {
    "oiio:BitsPerSample", "oiio:SHA-1", "oiio:AverageColor", "oiio:ConstantColor", "oiio:subimages",
    "oiio:UnassociatedAlpha", "openexr:lineOrder", "openexr:levelmode", "openexr:roundingmode",
    "openexr:chunkCount", "textureformat", "wrapmodes", "tiled", "dpx:ImageDescriptor", "dpx:Packing",
    "dpx:EndianType", "ico:PNG", "tiff:.*", "jpeg:.*", "png:.*", "bmp:.*"};
// clang-format on

void setChannels(OIIO::ImageSpec& spec, const Image& image)
{
    spec.nchannels = static_cast<int>(image.channels.size());
    spec.channelnames.clear();
    spec.channelformats.clear();
    bool mixed = false;
    for (const Channel& channel : image.channels) {
        spec.channelnames.push_back(channel.name);
        spec.channelformats.push_back(typeOf(channel.format));
        mixed = mixed || channel.format != image.channels.front().format;
    }
    spec.format = typeOf(image.channels.front().format);
    if (!mixed)
        spec.channelformats.clear();
    spec.alpha_channel = spec.z_channel = -1;
    for (const Plane& plane : image.planes)
        if (plane.alpha && spec.alpha_channel < 0)
            spec.alpha_channel = plane.channel[3];
}

std::string unusedName(const std::vector<std::string>& used, const std::string& wanted)
{
    std::string name = wanted;
    for (int i = 2; std::find(used.begin(), used.end(), name) != used.end(); ++i)
        name = wanted + "-" + std::to_string(i);
    return name;
}

/// What may not differ between the parts of a file.
void takeShared(OIIO::ImageSpec& spec, const OIIO::ImageSpec& first)
{
    for (const char* shared : {"PixelAspectRatio", "chromaticities", "smpte:TimeCode"}) {
        const OIIO::ParamValue* found = first.find_attribute(shared);
        const OIIO::ParamValue value = found != nullptr ? *found : OIIO::ParamValue();
        spec.erase_attribute(shared);
        if (found != nullptr)
            spec.attribute(shared, value.type(), value.data());
    }
}

OIIO::ImageSpec outputSpec(const Image& image, const FileFormat& format)
{
    OIIO::ImageSpec spec = image.header->spec;
    spec.x = image.data.x;
    spec.y = image.data.y;
    spec.width = image.data.width;
    spec.height = image.data.height;
    spec.full_x = image.display.x;
    spec.full_y = image.display.y;
    spec.full_width = image.display.width;
    spec.full_height = image.display.height;
    spec.z = spec.full_z = 0;
    spec.depth = spec.full_depth = 1;
    spec.tile_width = spec.tile_height = spec.tile_depth = 0;
    for (const char* stale : staleAttributes)
        spec.erase_attribute(stale);
    setChannels(spec, image);
    if (!format.holdsNames() && format.name != "tiff")
        spec.default_channel_names(); // some writers go by the names
    const bool hasFloat =
        std::any_of(image.channels.begin(), image.channels.end(),
                    [](const Channel& channel) { return channel.format == PXL_FORMAT_float32; });
    spec.attribute("planarconfig", "contig");
    spec.attribute("compression", losslessCompression(spec, hasFloat));
    if (format.name == "openexr") // which has no place for them, and says so on the terminal
        spec.erase_attribute("ICCProfile.*");
    if (spec.find_attribute("DateTime") == nullptr)
        spec.attribute("DateTime", dateOf(image.path));
    if (format.alpha != FileFormat::Alpha::Both || (image.straight && spec.alpha_channel >= 0))
        spec.attribute("oiio:UnassociatedAlpha", 1); // else some writers divide by alpha
    return spec;
}

} // namespace

std::vector<OIIO::ImageSpec> outputSpecs(const Picture& picture, const FileFormat& format)
{
    std::vector<OIIO::ImageSpec> specs;
    for (const Image& part : picture.parts)
        specs.push_back(outputSpec(part, format));
    std::vector<std::string> names;
    for (size_t i = 0; specs.size() > 1 && i < specs.size(); ++i) {
        const std::string& wanted = picture.parts[i].part;
        names.push_back(unusedName(names, wanted.empty() ? "part" : wanted));
        specs[i].attribute("oiio:subimagename", names.back());
        takeShared(specs[i], specs.front());
    }
    return specs;
}

} // namespace host::openimageio
