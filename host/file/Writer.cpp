#include <host/file/Writer.h>

#include <host/file/Format.h>
#include <host/file/Header.h>
#include <host/text/Names.h>
#include <host/text/Text.h>

#include <OpenImageIO/filesystem.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <random>
#include <sys/stat.h>
#include <unistd.h>

namespace host {

namespace fs = std::filesystem;

namespace {

/// The temporary file, as the libraries of the file formats write to it. What goes wrong is kept here and
/// looks done to them: some end the program on a full disk, others leave half a file without a word.
class WatchedFile : public OIIO::Filesystem::IOProxy
{
public:
    explicit WatchedFile(const std::string& path)
        : IOProxy(path, Write), file_(std::fopen(path.c_str(), "wb")), error_(file_ == nullptr ? errno : 0)
    {
    }
    ~WatchedFile() override { finish(); }

    const char* proxytype() const override { return "watched"; }
    size_t size() const override { return static_cast<size_t>(size_); }

    bool seek(int64_t offset) override
    {
        note(error_ == 0 && ::fseeko(file_, offset, SEEK_SET) != 0);
        m_pos = offset;
        return true;
    }

    size_t write(const void* bytes, size_t count) override
    {
        note(error_ == 0 && std::fwrite(bytes, 1, count, file_) != count);
        m_pos += static_cast<int64_t>(count);
        size_ = std::max(size_, m_pos);
        return count;
    }

    size_t pwrite(const void* bytes, size_t count, int64_t offset) override
    {
        const int64_t here = m_pos;
        seek(offset);
        write(bytes, count);
        seek(here);
        return count;
    }

    /// The first error, as errno has it; 0 for none.
    int firstError() const { return error_; }

    /// Stores what waits to be; the object takes no more.
    void finish()
    {
        if (file_ != nullptr) {
            const int result = std::fclose(file_);
            note(result != 0 && error_ == 0);
        }
        file_ = nullptr;
    }

private:
    void note(bool failed)
    {
        if (failed)
            error_ = errno;
    }

    std::FILE* file_;
    int64_t size_ = 0;
    int error_;
};

} // namespace

struct Writer::File
{
    std::unique_ptr<WatchedFile> watched; ///< for file formats that can do with it; outlives the output
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
    if (::stat(path.c_str(), &status) == 0 && ::gmtime_r(&status.st_mtime, &date) != nullptr)
        std::strftime(text, sizeof(text), "%Y:%m:%d %H:%M:%S", &date);
    return text;
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
    if (fileFormat == "openexr") // which has no place for them, and says so on the terminal
        spec.erase_attribute("ICCProfile.*");
    if (spec.find_attribute("DateTime") == nullptr)
        spec.attribute("DateTime", dateOf(image.path));
    if (fileFormat != "tiff") // the one format that says which of the two its alpha is
        spec.attribute("oiio:UnassociatedAlpha", 1);
    return spec;
}

/// The file that a path means, also where it is a link to one that does not exist yet.
std::string resolveLinks(const std::string& path)
{
    std::error_code error;
    fs::path resolved = fs::absolute(path, error);
    for (int links = 0; links < 40 && fs::is_symlink(resolved, error); ++links)
        resolved = resolved.parent_path() / fs::read_symlink(resolved, error);
    resolved = fs::weakly_canonical(resolved, error);
    return error ? path : resolved.string();
}

/// The file layer converts quietly what a format cannot hold; this says what it would do so with.
std::string lostValues(const Image& image, const OIIO::ImageOutput& output, const OIIO::ImageSpec& stored)
{
    const std::string format = output.format_name();
    if (stored.nchannels != static_cast<int>(image.channels.size()) ||
        (stored.alpha_channel >= 0 && !output.supports("alpha")))
        return format + " cannot hold " + std::to_string(image.channels.size()) + " channels";
    for (size_t c = 0; c < image.channels.size(); ++c) {
        const unsigned char wanted = image.channels[c].format;
        if (stored.channelformat(static_cast<int>(c)) != typeOf(wanted))
            return format + " cannot hold " + formatName(wanted) +
                   " values; choose another --depth or file format";
    }
    return {};
}

/// Makes an empty file of a new name beside `target`, with its extension and, when it exists, its
/// permissions; empty when that is not possible.
std::string makeTemporary(const fs::path& target)
{
    std::random_device random;
    for (int tries = 0; tries < 100; ++tries) {
        std::string path = (target.parent_path() / ".").string();
        path.append(std::to_string(random())).append(target.extension().string());
        const int file = ::open(path.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0666);
        if (file >= 0) {
            if (struct stat old = {}; ::stat(target.c_str(), &old) == 0)
                ::fchmod(file, old.st_mode & 0777);
            ::close(file);
            return path;
        }
        if (errno != EEXIST)
            return {};
    }
    return {};
}

/// Whether a file that was written unwatched can be read to its last row.
bool isComplete(const std::string& path)
{
    const auto input = OIIO::ImageInput::open(path);
    const OIIO::ImageSpec spec = input != nullptr ? input->spec() : OIIO::ImageSpec();
    std::vector<char> row(spec.scanline_bytes(true));
    const bool complete =
        input != nullptr && input->read_scanline(spec.y + spec.height - 1, 0, OIIO::TypeUnknown, row.data());
    OIIO::geterror(); // nor may it stay for others
    if (input != nullptr)
        input->geterror();
    return complete;
}

} // namespace

bool holdsWindow(const std::string& path, const Window& data)
{
    const auto output = OIIO::ImageOutput::create(path);
    OIIO::geterror();
    const bool negative = data.x < 0 || data.y < 0;
    return output == nullptr || (output->supports("origin") && output->supports("displaywindow") &&
                                 (!negative || output->supports("negativeorigin")));
}

std::optional<bool> straightIn(const std::string& path)
{
    const std::string extension = extensionOf(path);
    if (extension == ".exr")
        return false;
    return extension == ".tif" || extension == ".tiff" ? std::nullopt : std::optional(true);
}

Writer::Writer(const std::string& path, const Image& image)
    : file_(std::make_unique<File>()), path_(path), target_(resolveLinks(path))
{
    std::error_code ignored;
    const fs::path directory = fs::path(target_).parent_path();
    if (fs::exists(target_, ignored) && !fs::is_regular_file(target_, ignored))
        fail("it is no ordinary file");
    if (fs::exists(target_, ignored) && ::access(target_.c_str(), W_OK) != 0)
        fail(std::strerror(errno));
    if (!fs::is_directory(directory, ignored))
        fail("there is no directory '" + directory.string() + "'", Error::Kind::Output);
    file_->output = OIIO::ImageOutput::create(target_);
    if (file_->output == nullptr) {
        OIIO::geterror();
        fail("no image format is known by the extension '" + fs::path(path_).extension().string() +
                 "'; .exr, .tif and .png are",
             Error::Kind::Output);
    }
    temporary_ = makeTemporary(target_);
    if (temporary_.empty())
        fail(std::strerror(errno), Error::Kind::Output);
    try {
        tryOnePixel(image);
        open(image);
        noteLosses(image);
    } catch (...) {
        abandon();
        throw;
    }
}

Writer::~Writer()
{
    abandon();
}

/// Removes the temporary file, unless it has become the target.
void Writer::abandon()
{
    if (file_->output == nullptr)
        return;
    file_->output->geterror();
    file_->output.reset();
    ::unlink(temporary_.c_str());
}

void Writer::open(const Image& image)
{
    const OIIO::ImageSpec spec = outputSpec(image, file_->output->format_name());
    if (!spec.channelformats.empty() && !file_->output->supports("channelformats"))
        fail(std::string(file_->output->format_name()) +
                 " stores all channels in one format and these differ; choose one with --depth",
             Error::Kind::Output);
    // TIFF reads its directories again to link them, which the file layer leaves out here.
    if (file_->output->supports("ioproxy") && file_->output->format_name() != std::string("tiff")) {
        file_->watched = std::make_unique<WatchedFile>(temporary_);
        file_->output->set_ioproxy(file_->watched.get());
    }
    check(file_->output->open(temporary_, spec));
    top_ = image.data.y;
    rowsPerCall_ = rowsPerCall(file_->output->format_name(), file_->output->spec());
}

/// Finds out what would not be stored as it is, on a whole file of one pixel: one given up half-way makes
/// some file formats complain on the terminal.
void Writer::tryOnePixel(const Image& image)
{
    Image pixel = image;
    pixel.data = pixel.display = {0, 0, 1, 1};
    open(pixel);
    const std::vector<char> blank(static_cast<size_t>(pixel.pixelBytes) + 16);
    file_->output->write_scanline(0, 0, OIIO::TypeUnknown, blank.data());
    const OIIO::ImageSpec stored = file_->output->spec();
    close();
    if (const std::string loss = lostValues(image, *file_->output, stored); !loss.empty())
        fail(loss, Error::Kind::Output);
}

/// Notes what of the image beside its values gets lost.
void Writer::noteLosses(const Image& image)
{
    const std::string format = file_->output->format_name();
    const bool hasOrigin = image.data.x != 0 || image.data.y != 0;
    if ((hasOrigin && !file_->output->supports("origin")) ||
        (image.data != image.display && !file_->output->supports("displaywindow")))
        notes_.push_back("'" + path_ + "': " + format + " has no windows; the pixels of the data window, " +
                         describe(image.data) + ", become the whole picture");
    if (format == "openexr" && image.header->spec.find_attribute("ICCProfile") != nullptr)
        notes_.push_back("'" + path_ + "': openexr has no colour profiles; the input's is left out");
    if (format == "jpeg" || format == "webp")
        notes_.push_back("'" + path_ + "': " + format + " keeps an approximation of the pixels only");
}

void Writer::write(const Band& band, int yBegin, int yEnd, const std::function<void()>& checkStopped)
{
    for (int y = yBegin; y < yEnd;) {
        checkStopped();
        const int next = std::min(yEnd, y + rowsPerCall_ - (y - top_) % rowsPerCall_);
        check(file_->output->write_scanlines(y, next, 0, OIIO::TypeUnknown, band.row(y)));
        y = next;
    }
}

void Writer::commit()
{
    close();
    if (file_->watched == nullptr && !isComplete(temporary_))
        fail("the file came out incomplete; is the disk full?");
    if (std::rename(temporary_.c_str(), target_.c_str()) != 0)
        fail(std::strerror(errno));
    file_->output.reset();
}

void Writer::close()
{
    check(file_->output->close());
    if (file_->watched != nullptr)
        file_->watched->finish();
    check(true);
}

/// Throws when the file layer or the file itself has failed.
void Writer::check(bool done)
{
    const std::string reason = done ? "" : file_->output->geterror();
    if (const int error = file_->watched != nullptr ? file_->watched->firstError() : 0; error != 0)
        fail(std::strerror(error));
    if (!done)
        fail(reason);
}

void Writer::fail(const std::string& reason, Error::Kind kind) const
{
    std::string text = reason.empty() ? "unknown reason" : firstLine(reason);
    const size_t place = temporary_.empty() ? std::string::npos : text.find(temporary_); // which nobody knows
    if (place != std::string::npos)
        text.replace(place, temporary_.size(), path_);
    throw Error(kind, "cannot write '" + path_ + "': " + text);
}

} // namespace host
