#include <host/file/Reader.h>

#include <host/file/Format.h>
#include <host/file/Header.h>
#include <host/text/Error.h>
#include <host/text/Names.h>

#include <algorithm>
#include <cstring>
#include <filesystem>

namespace host {

struct Reader::File
{
    std::unique_ptr<OIIO::ImageInput> input;
};

namespace {

/// The storage format of a channel type, or a read error.
unsigned char formatOf(const OIIO::TypeDesc& type, const std::string& path)
{
    switch (type.basetype) {
    case OIIO::TypeDesc::UINT8:
        return PXL_FORMAT_uint8;
    case OIIO::TypeDesc::UINT16:
        return PXL_FORMAT_uint16;
    case OIIO::TypeDesc::UINT32:
        return PXL_FORMAT_uint32;
    case OIIO::TypeDesc::HALF:
        return PXL_FORMAT_half;
    case OIIO::TypeDesc::FLOAT:
        return PXL_FORMAT_float32;
    default:
        throw Error(Error::Kind::Read, "'" + path + "' is stored as " + std::string(type.c_str()) +
                                           "; uint8, uint16, uint32, half and float are read");
    }
}

/// What would have to be converted, or left out, to be read; empty when there is no such thing.
std::string obstacle(OIIO::ImageInput& input)
{
    const OIIO::ImageSpec& spec = input.spec();
    if (spec.deep)
        return "holds deep pixels; flat ones are read";
    if (spec.depth > 1)
        return "is a volume; pictures are read";
    if (spec.get_string_attribute("tiff:ColorSpace") == "CMYK" ||
        spec.get_string_attribute("jpeg:ColorSpace") == "CMYK")
        return "is a CMYK picture; convert it to RGB first";
    if (input.seek_subimage(1, 0))
        return "holds several images; split it into files of one image";
    input.geterror(); // there is no second one, as it should be
    return input.seek_subimage(0, 0) ? "" : input.geterror();
}

} // namespace

Reader::Reader(const std::string& path) : file_(std::make_unique<File>())
{
    std::error_code ignored;
    if (!std::filesystem::exists(path, ignored))
        throw Error(Error::Kind::NoInput, "no such file: '" + path + "'");
    image_.path = path;
    if (std::filesystem::is_directory(path, ignored))
        fail("it is a directory");

    OIIO::ImageSpec keep;
    keep.attribute("oiio:UnassociatedAlpha", 1);
    file_->input = OIIO::ImageInput::open(path, &keep);
    if (file_->input == nullptr)
        fail(OIIO::geterror());
    OIIO::ImageInput& input = *file_->input;
    if (const std::string why = obstacle(input); !why.empty())
        throw Error(Error::Kind::Read, "'" + path + "' " + why);

    const OIIO::ImageSpec& spec = input.spec();
    image_.fileFormat = input.format_name();
    image_.data = {spec.x, spec.y, spec.width, spec.height};
    image_.display = {spec.full_x, spec.full_y, spec.full_width, spec.full_height};
    for (int c = 0; c < spec.nchannels; ++c)
        image_.channels.push_back({spec.channel_name(c), formatOf(spec.channelformat(c), path)});
    image_.arrange();
    image_.header = std::make_shared<Header>(Header{spec});
    rowsPerCall_ = rowsPerCall(image_.fileFormat, spec);
}

Reader::~Reader() = default;

void Reader::read(int yBegin, int yEnd, void* pixels)
{
    if (image_.header->spec.tile_width == 0) {
        if (!file_->input->read_native_scanlines(0, 0, yBegin, yEnd, 0, pixels))
            fail(file_->input->geterror());
        return;
    }
    char* target = static_cast<char*>(pixels);
    const int64_t rowBytes = image_.rowBytes();
    for (int y = yBegin; y < yEnd;) {
        if (y < tileRowBegin_ || y >= tileRowEnd_)
            readFileTiles(y);
        const int rows = std::min(yEnd, tileRowEnd_) - y;
        std::memcpy(target, tileRow_.data() + (y - tileRowBegin_) * rowBytes,
                    static_cast<size_t>(rows * rowBytes));
        target += rows * rowBytes;
        y += rows;
    }
}

int Reader::callEnd(int y) const
{
    return y + rowsPerCall_ - (y - image_.data.y) % rowsPerCall_;
}

/// Reads the row of file tiles that `y` lies in. One tile at a time: the file layer's calls for several are
/// not safe for images that end within a tile.
void Reader::readFileTiles(int y)
{
    const OIIO::ImageSpec& spec = image_.header->spec;
    tileRowBegin_ = spec.y + (y - spec.y) / spec.tile_height * spec.tile_height;
    tileRowEnd_ = std::min(tileRowBegin_ + spec.tile_height, spec.y + spec.height);
    tileRow_.resize(static_cast<size_t>(image_.rowBytes() * spec.tile_height));
    const int64_t tileBytes = spec.tile_width * image_.pixelBytes;
    std::vector<char> tile(static_cast<size_t>(tileBytes * spec.tile_height));
    for (int x = 0; x < spec.width; x += spec.tile_width) {
        if (!file_->input->read_native_tile(0, 0, spec.x + x, tileRowBegin_, 0, tile.data()))
            fail(file_->input->geterror());
        const int64_t bytes = std::min(spec.tile_width, spec.width - x) * image_.pixelBytes;
        for (int row = 0; row < tileRowEnd_ - tileRowBegin_; ++row)
            std::memcpy(tileRow_.data() + row * image_.rowBytes() + x * image_.pixelBytes,
                        tile.data() + row * tileBytes, static_cast<size_t>(bytes));
    }
}

void Reader::fail(const std::string& reason) const
{
    const bool known = !reason.empty();
    throw Error(Error::Kind::Read,
                "cannot read '" + image_.path + "': " + (known ? firstLine(reason) : "the file is damaged"));
}

} // namespace host
