#include <host/file/Format.h>
#include <host/file/InputFile.h>
#include <host/file/openimageio/Entries.h>
#include <host/file/openimageio/Header.h>
#include <host/text/Error.h>
#include <host/text/Names.h>

#include <algorithm>
#include <climits>
#include <cstring>

namespace host::openimageio {

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
std::string obstacle(const OIIO::ImageSpec& spec)
{
    if (spec.deep)
        return "holds deep pixels; flat ones are read";
    if (spec.depth > 1)
        return "is a volume; pictures are read";
    for (const char* attribute : {"tiff:ColorSpace", "jpeg:ColorSpace"}) {
        static const std::vector<std::string> converted = {
            "CMYK", "YCbCrK", "color separated", "CIELAB", "ICCLAB", "ITULAB", "LOGL", "LOGLUV"};
        const std::string space = spec.get_string_attribute(attribute);
        if (std::find(converted.begin(), converted.end(), space) != converted.end())
            return "is a " + space + " picture; convert it to RGB first";
    }
    const auto fits = [](int64_t begin, int64_t size) { return size > 0 && begin + size <= INT_MAX; };
    if (!fits(spec.x, spec.width) || !fits(spec.y, spec.height))
        return "has no pixels at a place that can be";
    return {};
}

/// How many images a file holds, as far as it matters.
int countImages(OIIO::ImageInput& input)
{
    if (const int told = input.spec().get_int_attribute("oiio:subimages"); told > 0)
        return told;
    constexpr int many = 1000;
    int count = 1;
    while (count < many && input.seek_subimage(count, 0))
        ++count;
    input.geterror(); // there is no other one, as it should be
    return count;
}

/// Whether a file's colours are straight. Not all readers of the file layer say so.
bool isStraight(const Image& image)
{
    static const std::vector<std::string> silent = {"bmp", "dds", "gif", "heif", "ico", "jpeg2000"};
    return image.hasAlpha() && (image.header->spec.get_int_attribute("oiio:UnassociatedAlpha") != 0 ||
                                std::find(silent.begin(), silent.end(), image.fileFormat) != silent.end());
}

/// What applications call the part of a file that is the picture itself.
bool isMain(const std::string& part)
{
    static const std::vector<std::string> names = {"",      "rgba",   "rgb",     "main",    "beauty",
                                                   "color", "colour", "default", "combined"};
    std::string small = part;
    std::transform(small.begin(), small.end(), small.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return std::find(names.begin(), names.end(), small) != names.end();
}

class FileReader : public Reader
{
public:
    explicit FileReader(const std::string& path);
    void read(size_t part, int yBegin, int yEnd, void* pixels) override;
    int callEnd(size_t part, int y) const override;

private:
    bool open();
    void addPart(int index);
    void namePlanes();
    void note(const Image& image);
    void goTo(size_t part, int y);
    void readFileTiles(size_t part, int y);
    [[noreturn]] void fail(const std::string& reason) const;

    std::string file_;
    std::unique_ptr<OIIO::ImageInput> input_;
    std::vector<int> images_;      ///< by part: its number in the file
    std::vector<int> rowsPerCall_; ///< by part
    size_t part_ = 0;              ///< what was read last
    int next_ = INT_MIN;           ///< the row after it
    std::vector<char> tileRow_;    ///< of a tiled part: one row of its tiles
    size_t tilePart_ = 0;
    int tileRowBegin_ = 0, tileRowEnd_ = 0;
};

bool FileReader::open()
{
    OIIO::ImageSpec keep;
    keep.attribute("oiio:UnassociatedAlpha", 1);
    input_ = OIIO::ImageInput::open(file_, &keep);
    return input_ != nullptr;
}

FileReader::FileReader(const std::string& path)
{
    const InputFile wanted(path);
    picture_.path = path;
    file_ = wanted.file;
    checkReadable(wanted.file, path);
    if (!open())
        fail(OIIO::geterror());
    OIIO::ImageInput& input = *input_;
    if (input.format_name() == std::string("jpeg") && isCutJpeg(wanted.file))
        fail("the file is cut off");
    if (input.format_name() == std::string("psd") && isCmykPsd(wanted.file))
        throw Error(Error::Kind::Read, "'" + path + "' is a CMYK picture; convert it to RGB first");
    const int count = countImages(input);
    if (wanted.index >= count)
        throw Error(Error::Kind::NoInput, "'" + wanted.file + "' holds " + std::to_string(count) +
                                              (count == 1 ? " image" : " images") + "; there is no [" +
                                              std::to_string(wanted.index) + "], they count from [0]");
    const bool hasParts = input.format_name() == std::string("openexr");
    if (wanted.index < 0 && count > 1 && !hasParts)
        throw Error(Error::Kind::Read, "'" + path + "' holds " + std::to_string(count) +
                                           " images; choose one as in '" + path + "[0]'");
    const int first = std::max(0, wanted.index);
    const int end = wanted.index < 0 ? count : first + 1;
    for (int index = first; index < end; ++index)
        addPart(index);
    namePlanes();
    for (const Image& image : picture_.parts)
        note(image);
}

void FileReader::addPart(int index)
{
    OIIO::ImageInput& input = *input_;
    if (!input.seek_subimage(index, 0))
        fail(input.geterror());
    const OIIO::ImageSpec& spec = input.spec();
    Image image;
    image.path = picture_.path;
    image.part = spec.get_string_attribute("oiio:subimagename");
    if (const std::string why = obstacle(spec); !why.empty())
        throw Error(Error::Kind::Read,
                    "'" + picture_.path + "'" +
                        (index > 0 && !image.part.empty() ? ", part '" + image.part + "', " : " ") + why);
    image.fileFormat = input.format_name();
    image.data = {spec.x, spec.y, spec.width, spec.height};
    image.display = {spec.full_x, spec.full_y, spec.full_width, spec.full_height};
    for (int c = 0; c < spec.nchannels; ++c)
        image.channels.push_back({spec.channel_name(c), formatOf(spec.channelformat(c), picture_.path)});
    image.header = std::make_shared<Header>(Header{spec});
    image.arrange();
    image.straight = isStraight(image);
    images_.push_back(index);
    rowsPerCall_.push_back(rowsPerCall(image.fileFormat, spec));
    picture_.parts.push_back(std::move(image));
}

/// Makes the parts layers of their own, but for the main one, and the names of planes different.
void FileReader::namePlanes()
{
    std::vector<std::string> taken;
    bool hasMain = picture_.parts.size() == 1;
    for (Image& image : picture_.parts) {
        if (picture_.parts.size() > 1 && (hasMain || !isMain(image.part)))
            image.layer = image.part;
        else
            hasMain = true;
        image.arrange();
        for (Plane& plane : image.planes) {
            const auto isTaken = [&](const std::string& name) {
                return std::find(taken.begin(), taken.end(), name) != taken.end();
            };
            std::string name = plane.name;
            if (isTaken(name) && !image.part.empty())
                name = image.part;
            const std::string wanted = name;
            for (int i = 2; isTaken(name); ++i)
                name = wanted + "-" + std::to_string(i);
            plane.name = name;
            taken.push_back(name);
        }
    }
}

void FileReader::note(const Image& image)
{
    const OIIO::ImageSpec& spec = image.header->spec;
    const auto add = [&](const std::string& text) {
        const std::string line = "'" + picture_.path + "': " + text;
        if (std::find(notes_.begin(), notes_.end(), line) == notes_.end())
            notes_.push_back(line);
    };
    const int bits = spec.get_int_attribute("oiio:BitsPerSample");
    const unsigned char format = image.channels.front().format;
    if (bits > 0 && bits != 8 * PXLbytesPerElement(format))
        add("its values have " + std::to_string(bits) + (bits == 1 ? " bit" : " bits") +
            "; they are read, and written, as " + formatName(format));
    if (const int turn = spec.get_int_attribute("Orientation", 1); turn != 1)
        add("it is to be shown turned or mirrored (orientation " + std::to_string(turn) +
            "); the pixels stay as they are stored, and so does the tag");
    if (image.fileFormat == "hdr")
        add("hdr holds 8 bits and one exponent a pixel");
    if (image.fileFormat == "heif")
        add("heif holds an approximation, and is read as uint8 whatever its depth is");
    if (image.fileFormat == "webp" && image.hasAlpha())
        add("webp is read with its colours multiplied by alpha");
}

/// Leads the file layer to a row: its own ways back to an earlier one forget how the file was opened, and
/// those to another part take the channels of the last one.
void FileReader::goTo(size_t part, int y)
{
    const bool isBack = part < part_ || (part == part_ && y < next_);
    if (isBack && picture_.parts[part].fileFormat != "openexr" && !open())
        fail(OIIO::geterror());
    if (!input_->seek_subimage(images_[part], 0))
        fail(input_->geterror());
    part_ = part;
}

void FileReader::read(size_t part, int yBegin, int yEnd, void* pixels)
{
    const Image& image = picture_.parts[part];
    goTo(part, yBegin);
    next_ = yEnd;
    if (image.header->spec.tile_width == 0) {
        if (!input_->read_native_scanlines(images_[part], 0, yBegin, yEnd, 0, pixels))
            fail(input_->geterror());
        return;
    }
    char* target = static_cast<char*>(pixels);
    const int64_t rowBytes = image.rowBytes();
    for (int y = yBegin; y < yEnd;) {
        if (part != tilePart_ || y < tileRowBegin_ || y >= tileRowEnd_)
            readFileTiles(part, y);
        const int rows = std::min(yEnd, tileRowEnd_) - y;
        std::memcpy(target, tileRow_.data() + (y - tileRowBegin_) * rowBytes,
                    static_cast<size_t>(rows * rowBytes));
        target += rows * rowBytes;
        y += rows;
    }
}

int FileReader::callEnd(size_t part, int y) const
{
    const int rows = rowsPerCall_[part];
    return y + rows - (y - picture_.parts[part].data.y) % rows;
}

/// Reads the row of file tiles that `y` lies in. One tile at a time: the file layer's calls for several are
/// not safe for images that end within a tile.
void FileReader::readFileTiles(size_t part, int y)
{
    const Image& image = picture_.parts[part];
    const OIIO::ImageSpec& spec = image.header->spec;
    const int begin = spec.y + (y - spec.y) / spec.tile_height * spec.tile_height;
    tileRowBegin_ = tileRowEnd_ = begin; // none, should it fail
    const int end = std::min(begin + spec.tile_height, spec.y + spec.height);
    tileRow_.resize(static_cast<size_t>(image.rowBytes() * spec.tile_height));
    const int64_t tileBytes = spec.tile_width * image.pixelBytes;
    std::vector<char> tile(static_cast<size_t>(tileBytes * spec.tile_height));
    for (int x = 0; x < spec.width; x += spec.tile_width) {
        if (!input_->read_native_tile(images_[part], 0, spec.x + x, begin, 0, tile.data()))
            fail(input_->geterror());
        const int64_t bytes = std::min(spec.tile_width, spec.width - x) * image.pixelBytes;
        for (int row = 0; row < end - begin; ++row)
            std::memcpy(tileRow_.data() + row * image.rowBytes() + x * image.pixelBytes,
                        tile.data() + row * tileBytes, static_cast<size_t>(bytes));
    }
    tilePart_ = part;
    tileRowEnd_ = end;
}

void FileReader::fail(const std::string& reason) const
{
    const bool known = !reason.empty();
    throw Error(Error::Kind::Read, "cannot read '" + picture_.path +
                                       "': " + (known ? firstLine(reason) : "the file is damaged"));
}

} // namespace

std::unique_ptr<Reader> openReader(const std::string& path)
{
    return std::make_unique<FileReader>(path);
}

} // namespace host::openimageio
