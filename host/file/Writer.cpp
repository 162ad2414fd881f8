#include <host/file/Writer.h>

#include <host/file/Format.h>
#include <host/file/OutputHeader.h>
#include <host/file/Reader.h>
#include <host/file/Temporary.h>
#include <host/file/WatchedFile.h>
#include <host/text/Names.h>
#include <host/text/Text.h>

#include <OpenImageIO/hash.h>

#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace host {

namespace fs = std::filesystem;

struct Writer::File
{
    const FileFormat* format = nullptr;
    std::vector<OIIO::ImageSpec> specs;   ///< of all parts, as they are to be stored
    std::unique_ptr<WatchedFile> watched; ///< for file formats that can do with it; outlives the output
    std::unique_ptr<OIIO::ImageOutput> output;
    size_t part = 0;
    std::vector<int> tops; ///< by part: the first row of what is to be written
    int rowsPerCall = 1;
    uint64_t hash = 0; ///< of all rows, where they are read back
};

namespace {

uint64_t hashRow(const void* row, int64_t bytes, uint64_t before)
{
    return OIIO::xxhash::xxhash(row, static_cast<size_t>(bytes), before);
}

bool holdsWindow(const FileFormat& format, const Window& data, const Window& display)
{
    if (format.windows == FileFormat::Windows::Positive) {
        const bool sameSize = data.width == display.width && data.height == display.height;
        return display.x == 0 && display.y == 0 && data.x >= 0 && data.y >= 0 &&
               (data == display || !sameSize); // a size of its own is what TIFF knows a display window by
    }
    return format.windows == FileFormat::Windows::All;
}

/// What the file layer itself would only find out when it is too late, or quietly convert; empty when a file
/// of a format can hold an image.
std::string obstacle(const FileFormat& format, const Image& image)
{
    const auto count = static_cast<int>(image.channels.size());
    if (!format.channels.empty() &&
        std::find(format.channels.begin(), format.channels.end(), count) == format.channels.end()) {
        std::vector<std::string> counts;
        for (const int channels : format.channels)
            counts.push_back(std::to_string(channels));
        return "cannot hold " + std::to_string(count) + (count == 1 ? " channel" : " channels") + " but " +
               joined(counts, " or ");
    }
    for (const Channel& channel : image.channels) {
        if (std::find(format.depths.begin(), format.depths.end(), channel.format) == format.depths.end())
            return std::string("cannot hold ") + formatName(channel.format) +
                   " values; choose another --depth or file format";
        if (channel.format != image.channels.front().format && !format.holdsMixedDepths())
            return "stores all channels in one format and these differ; choose one with --depth";
    }
    if (format.longestSide > 0 && std::max(image.data.width, image.data.height) > format.longestSide)
        return "cannot hold more than " + std::to_string(format.longestSide) + " pixels in a row or column";
    return {};
}

std::string obstacle(const FileFormat& format, const Picture& picture)
{
    if (picture.parts.size() > 1 && !format.holdsParts())
        return "holds one image and these are " + std::to_string(picture.parts.size()) +
               " parts; read one, as in 'file.exr[0]', or write an .exr file";
    for (const Image& part : picture.parts) {
        if (part.channels.empty())
            return "cannot hold a part without channels";
        if (std::string why = obstacle(format, part); !why.empty())
            return why;
        if (part.display != picture.first().display)
            return "holds one display window for all parts and these have several";
    }
    return {};
}

/// The channels that are to be read as other ones than they are.
std::string lostNames(const FileFormat& format, const Image& image)
{
    std::string all;
    std::vector<std::string> names;
    for (const Channel& channel : image.channels) {
        all += channel.name;
        names.push_back(channel.name);
    }
    const bool usual = all == "Y" || all == "YA" || all == "RGB" || all == "RGBA";
    return usual || format.holdsNames() ? "" : joined(names);
}

std::string unknownFormat(const std::string& path)
{
    const auto output = OIIO::ImageOutput::create(path);
    OIIO::geterror();
    const std::string others = "; .exr, .tif and .png are";
    return output != nullptr ? std::string(output->format_name()) +
                                   " files would not keep the pixels and are not written" + others
                             : "no image format is known by the extension '" +
                                   fs::path(path).extension().string() + "'" + others;
}

/// Whether a file that was written unwatched could have grown on; if not, its end may be missing.
bool hasRoom(const std::string& path)
{
    const int file = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
    const off_t size = file >= 0 ? ::lseek(file, 0, SEEK_END) : -1;
    const bool grew = size >= 0 && ::write(file, "", 1) == 1 && ::ftruncate(file, size) == 0;
    return file >= 0 && ::close(file) == 0 && grew;
}

/// Whether a file that was written unwatched can be read to its last row.
bool isComplete(const std::string& path)
{
    try {
        Reader reader(path);
        const Window& data = reader.image().data;
        std::vector<char> row(static_cast<size_t>(reader.image().rowBytes()));
        reader.read(data.y + data.height - 1, data.y + data.height, row.data());
        return true;
    } catch (const Error&) {
        return false;
    }
}

} // namespace

bool holdsWindow(const std::string& path, const Window& data, const Window& display)
{
    const FileFormat* format = fileFormatOf(path);
    return format == nullptr || holdsWindow(*format, data, display);
}

bool holdsWindow(const std::string& path, const Window&)
{
    const FileFormat* format = fileFormatOf(path);
    return format == nullptr || format->windows == FileFormat::Windows::All;
}

std::optional<bool> straightIn(const std::string& path)
{
    const FileFormat* format = fileFormatOf(path);
    if (format == nullptr || format->alpha == FileFormat::Alpha::Both)
        return std::nullopt;
    return format->alpha == FileFormat::Alpha::Straight;
}

Writer::Writer(const std::string& path, const Image& image) : Writer(path, Picture{path, {image}}) {}

Writer::Writer(const std::string& path, const Picture& picture)
    : file_(std::make_unique<File>()), path_(path), target_(resolveLinks(path))
{
    checkTarget();
    file_->format = fileFormatOf(target_);
    if (file_->format == nullptr)
        fail(unknownFormat(target_), Error::Kind::Output);
    if (const std::string why = obstacle(*file_->format, picture); !why.empty())
        fail(file_->format->name + " " + why, Error::Kind::Output);
    clearTemporaries(fs::path(target_).parent_path().string());
    temporary_ = makeTemporary(target_);
    if (temporary_.empty())
        fail(std::strerror(errno), Error::Kind::Output);
    try {
        open(picture);
        for (const Image& part : picture.parts)
            noteLosses(part);
    } catch (...) {
        abandon();
        throw;
    }
}

Writer::~Writer()
{
    abandon();
}

void Writer::checkTarget() const
{
    std::error_code ignored;
    const fs::path directory = fs::path(target_).parent_path();
    if (fs::exists(target_, ignored) && !fs::is_regular_file(target_, ignored))
        fail("it is no ordinary file");
    if (fs::exists(target_, ignored) && ::access(target_.c_str(), W_OK) != 0)
        fail(std::strerror(errno));
    if (!fs::is_directory(directory, ignored))
        fail("there is no directory '" + directory.string() + "'", Error::Kind::Output);
}

/// Removes the temporary file, unless it has become the target.
void Writer::abandon()
{
    if (temporary_.empty())
        return;
    if (file_->output != nullptr)
        file_->output->geterror();
    file_->output.reset();
    ::unlink(temporary_.c_str());
    temporary_.clear();
}

void Writer::open(const Picture& picture)
{
    Picture stored = picture;
    for (Image& part : stored.parts) {
        file_->tops.push_back(part.data.y);
        if (!holdsWindow(*file_->format, part.data, part.display))
            part.data = part.display = {0, 0, part.data.width, part.data.height};
    }
    file_->specs = outputSpecs(stored, *file_->format);
    file_->output = OIIO::ImageOutput::create(file_->format->name);
    OIIO::ImageOutput& output = *file_->output;
    if (file_->format->check == FileFormat::Check::Watched) {
        file_->watched = std::make_unique<WatchedFile>(temporary_);
        output.set_ioproxy(file_->watched.get());
    }
    const auto parts = static_cast<int>(file_->specs.size());
    check(parts > 1 ? output.open(temporary_, parts, file_->specs.data())
                    : output.open(temporary_, file_->specs.front()));
    beginPart();
}

void Writer::beginPart()
{
    const OIIO::ImageSpec& wanted = file_->specs[file_->part];
    const OIIO::ImageSpec& got = file_->output->spec();
    bool same = got.nchannels == wanted.nchannels && got.width == wanted.width && got.height == wanted.height;
    for (int c = 0; same && c < wanted.nchannels; ++c)
        same = got.channelformat(c) == wanted.channelformat(c);
    if (!same)
        fail(file_->format->name + " would store the pixels otherwise than they are", Error::Kind::Output);
    file_->rowsPerCall = rowsPerCall(file_->format->name, got);
}

/// Notes what of an image beside its values gets lost.
void Writer::noteLosses(const Image& image)
{
    const FileFormat& format = *file_->format;
    const auto note = [&](const std::string& text) {
        const std::string line = "'" + path_ + "': " + format.name + " " + text;
        if (std::find(notes_.begin(), notes_.end(), line) == notes_.end())
            notes_.push_back(line);
    };
    const Window whole{0, 0, image.data.width, image.data.height};
    const bool isWhole = image.data == whole && image.display == whole;
    if (!isWhole && !holdsWindow(format, image.data, image.display))
        note((format.windows == FileFormat::Windows::None ? "has no windows" : "cannot hold these windows") +
             std::string("; the pixels of the data window, ") + describe(image.data) +
             ", become the whole picture");
    if (format.name == "openexr" && image.header->spec.find_attribute("ICCProfile") != nullptr)
        note("has no colour profiles; the input's is left out");
    if (const std::string names = lostNames(format, image); !names.empty())
        note("has no names of channels; " + names + " are known by their order only");
    if (format.approximates)
        note("keeps an approximation of the pixels only");
}

void Writer::write(const Band& band, int yBegin, int yEnd, const std::function<void()>& checkStopped)
{
    const int top = file_->tops[file_->part];
    const int shift = file_->specs[file_->part].y - top;
    for (int y = yBegin; y < yEnd;) {
        checkStopped();
        const int next = std::min(yEnd, y + file_->rowsPerCall - (y - top) % file_->rowsPerCall);
        check(file_->output->write_scanlines(y + shift, next + shift, 0, OIIO::TypeUnknown, band.row(y)));
        for (; y < next; ++y)
            if (file_->format->check == FileFormat::Check::AllRows)
                file_->hash = hashRow(band.row(y), band.rowBytes(), file_->hash);
    }
}

void Writer::nextPart()
{
    ++file_->part;
    check(file_->output->open(temporary_, file_->specs[file_->part], OIIO::ImageOutput::AppendSubimage));
    beginPart();
}

void Writer::finish()
{
    check(file_->output->close());
    if (file_->watched != nullptr)
        file_->watched->finish();
    check(true);
    file_->output.reset();
    if (file_->format->check != FileFormat::Check::Watched && !hasRoom(temporary_))
        fail(std::strerror(errno));
    if (file_->format->check == FileFormat::Check::AllRows)
        checkRows();
    if (file_->format->check == FileFormat::Check::LastRow && !isComplete(temporary_))
        fail("the file came out incomplete");
    isFinished_ = true;
}

void Writer::commit()
{
    if (!isFinished_)
        finish();
    if (std::rename(temporary_.c_str(), target_.c_str()) != 0)
        fail(std::strerror(errno));
    temporary_.clear();
}

/// Throws when the file does not give back every row that was written.
void Writer::checkRows() const
{
    const OIIO::ImageSpec& wanted = file_->specs.front();
    bool same = false;
    try {
        Reader reader(temporary_);
        const Image& image = reader.image();
        same = image.data == Window{wanted.x, wanted.y, wanted.width, wanted.height} &&
               image.rowBytes() == static_cast<int64_t>(wanted.scanline_bytes(true));
        const int end = image.data.y + image.data.height;
        uint64_t hash = 0;
        Band band;
        for (int y = image.data.y; same && y < end;) {
            const int next = std::min(end, reader.callEnd(y));
            band.reset(image, y, next);
            reader.read(y, next, band.row(y));
            for (; y < next; ++y)
                hash = hashRow(band.row(y), band.rowBytes(), hash);
        }
        same = same && hash == file_->hash;
    } catch (const Error&) {
        same = false;
    }
    if (!same)
        fail("it does not give back what was written; unless the disk is full, choose another file format");
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
