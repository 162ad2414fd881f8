#include <host/Writer.h>

#include <host/Error.h>
#include <host/Format.h>
#include <host/Header.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <random>
#include <unistd.h>

namespace host {

namespace fs = std::filesystem;

struct Writer::File
{
    std::unique_ptr<OIIO::ImageOutput> output;
};

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
    const std::string compression = spec.get_string_attribute("compression");
    static const std::vector<std::string> lossless = {"none", "rle", "zip", "zips", "piz", "lzw", "packbits"};
    if (std::find(lossless.begin(), lossless.end(), compression) != lossless.end())
        return compression;
    return compression == "pxr24" && !hasFloat ? compression : "zip";
}

/// The header of the output: the input's, less what would convert values, speaks of the old pixels or cannot
/// be written from top to bottom.
OIIO::ImageSpec outputSpec(const Image& image, const std::string& fileFormat)
{
    OIIO::ImageSpec spec = image.header->spec;
    spec.nchannels = static_cast<int>(image.channels.size());
    spec.x = image.data.x;
    spec.y = image.data.y;
    spec.width = image.data.width;
    spec.height = image.data.height;
    spec.full_x = image.display.x;
    spec.full_y = image.display.y;
    spec.full_width = image.display.width;
    spec.full_height = image.display.height;
    spec.tile_width = spec.tile_height = spec.tile_depth = 0;

    spec.channelnames.clear();
    spec.channelformats.clear();
    bool mixed = false, hasFloat = false;
    for (const Channel& channel : image.channels) {
        spec.channelnames.push_back(channel.name);
        spec.channelformats.push_back(typeOf(channel.format));
        mixed = mixed || channel.format != image.channels.front().format;
        hasFloat = hasFloat || channel.format == PXL_FORMAT_float32;
    }
    spec.format = typeOf(image.channels.front().format);
    if (!mixed)
        spec.channelformats.clear();

    for (const char* stale :
         {"oiio:BitsPerSample", "oiio:SHA-1", "oiio:AverageColor", "oiio:ConstantColor", "oiio:subimages",
          "tiff:RowsPerStrip", "openexr:lineOrder", "openexr:levelmode"})
        spec.erase_attribute(stale);
    spec.attribute("planarconfig", "contig");
    spec.attribute("compression", losslessCompression(spec, hasFloat));
    if (fileFormat != "tiff") // the one format that says which of the two its alpha is
        spec.attribute("oiio:UnassociatedAlpha", 1);
    return spec;
}

std::string resolveLinks(const std::string& path)
{
    std::error_code error;
    const fs::path resolved = fs::weakly_canonical(fs::absolute(path, error), error);
    return error ? path : resolved.string();
}

/// Makes an empty file of a new name beside `target`, with its extension; empty when that is not possible.
std::string makeTemporary(const fs::path& target)
{
    std::random_device random;
    for (int tries = 0; tries < 100; ++tries) {
        std::string path = (target.parent_path() / ".").string();
        path.append(target.stem().string()).append(".").append(std::to_string(random()));
        path.append(target.extension().string());
        const int file = ::open(path.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0666);
        if (file >= 0) {
            ::close(file);
            return path;
        }
        if (errno != EEXIST)
            return {};
    }
    return {};
}

} // namespace

Writer::Writer(const std::string& path, const Image& image)
    : file_(std::make_unique<File>()), path_(path), target_(resolveLinks(path))
{
    std::error_code ignored;
    const fs::path directory = fs::path(target_).parent_path();
    if (fs::exists(target_, ignored) && !fs::is_regular_file(target_, ignored))
        fail("it is no ordinary file");
    if (!fs::is_directory(directory, ignored))
        fail("there is no directory '" + directory.string() + "'");
    file_->output = OIIO::ImageOutput::create(target_);
    if (file_->output == nullptr) {
        OIIO::geterror();
        fail("no image format is known by the extension '" + fs::path(path_).extension().string() +
             "'; .exr, .tif and .png are");
    }
    temporary_ = makeTemporary(target_);
    if (temporary_.empty())
        fail(std::strerror(errno));
    try {
        open(image);
        checkStored(image);
    } catch (...) {
        file_->output.reset();
        ::unlink(temporary_.c_str());
        throw;
    }
}

Writer::~Writer()
{
    if (file_->output == nullptr)
        return;
    file_->output.reset();
    ::unlink(temporary_.c_str());
}

void Writer::open(const Image& image)
{
    const OIIO::ImageSpec spec = outputSpec(image, file_->output->format_name());
    if (!spec.channelformats.empty() && !file_->output->supports("channelformats"))
        fail(std::string(file_->output->format_name()) +
             " stores all channels in one format and these differ; choose one with --depth");
    if (!file_->output->open(temporary_, spec))
        fail(file_->output->geterror());
    top_ = image.data.y;
    rowsPerCall_ = rowsPerCall(file_->output->format_name(), file_->output->spec());
}

/// The file layer converts quietly what a format cannot hold; that is an error here.
void Writer::checkStored(const Image& image)
{
    const OIIO::ImageSpec& stored = file_->output->spec();
    const std::string format = file_->output->format_name();
    if (stored.nchannels != static_cast<int>(image.channels.size()) ||
        (stored.alpha_channel >= 0 && !file_->output->supports("alpha")))
        fail(format + " cannot hold " + std::to_string(image.channels.size()) + " channels");
    for (size_t c = 0; c < image.channels.size(); ++c) {
        const unsigned char wanted = image.channels[c].format;
        if (stored.channelformat(static_cast<int>(c)) != typeOf(wanted))
            fail(format + " cannot hold " + formatName(wanted) +
                 " values; choose another --depth or file format");
    }
    const bool hasOrigin = image.data.x != 0 || image.data.y != 0;
    if ((hasOrigin && !file_->output->supports("origin")) ||
        (image.data != image.display && !file_->output->supports("displaywindow")))
        notes_.push_back("'" + path_ + "': " + format + " has no windows; the pixels of the data window, " +
                         describe(image.data) + ", become the whole picture");
    if (format == "jpeg")
        notes_.push_back("'" + path_ + "': jpeg keeps an approximation of the pixels only");
}

void Writer::write(int yBegin, int yEnd, const void* pixels)
{
    if (!file_->output->write_scanlines(yBegin, yEnd, 0, OIIO::TypeUnknown, pixels))
        fail(file_->output->geterror());
}

int Writer::callEnd(int y) const
{
    return y + rowsPerCall_ - (y - top_) % rowsPerCall_;
}

void Writer::commit()
{
    if (!file_->output->close())
        fail(file_->output->geterror());
    if (std::rename(temporary_.c_str(), target_.c_str()) != 0)
        fail(std::strerror(errno));
    file_->output.reset();
}

void Writer::fail(const std::string& reason) const
{
    throw Error(Error::Kind::Write,
                "cannot write '" + path_ + "': " + (reason.empty() ? "unknown reason" : reason));
}

} // namespace host
