#include <host/file/FileFormats.h>
#include <host/file/Format.h>
#include <host/file/Temporary.h>
#include <host/file/openimageio/Entries.h>
#include <host/file/openimageio/OutputHeader.h>
#include <host/file/openimageio/WatchedFile.h>
#include <host/text/Error.h>
#include <host/text/Names.h>
#include <host/text/Text.h>

#include <OpenImageIO/hash.h>

#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace host::openimageio {

namespace fs = std::filesystem;

namespace {

uint64_t hashRow(const void* row, int64_t bytes, uint64_t before)
{
    return OIIO::xxhash::xxhash(row, static_cast<size_t>(bytes), before);
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
    const std::string name = fileFormatName(path);
    const std::string others = "; .exr, .tif and .png are";
    return !name.empty() ? name + " files would not keep the pixels and are not written" + others
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
        const std::unique_ptr<Reader> reader = openimageio::openReader(path);
        const Image& image = reader->picture().first();
        const Window& data = image.data;
        std::vector<char> row(static_cast<size_t>(image.rowBytes()));
        reader->read(0, data.y + data.height - 1, data.y + data.height, row.data());
        return true;
    } catch (const Error&) {
        return false;
    }
}

class FileWriter : public Writer
{
public:
    FileWriter(const std::string& path, const Picture& picture);
    ~FileWriter() override { abandon(); }
    FileWriter(const FileWriter&) = delete;
    FileWriter& operator=(const FileWriter&) = delete;

    void write(const Band& band, int yBegin, int yEnd, const std::function<void()>& checkStopped) override;
    void nextPart() override;
    void finish() override;
    void commit() override;

private:
    void checkTarget() const;
    void open(const Picture& picture);
    void beginPart();
    void checkRows() const;
    void check(bool done);
    void abandon();
    void noteLosses(const Image& image);
    [[noreturn]] void fail(const std::string& reason, Error::Kind kind = Error::Kind::Write) const;

    std::string path_;
    std::string target_; ///< with links resolved
    std::string temporary_;
    const FileFormat* format_ = nullptr;
    std::vector<OIIO::ImageSpec> specs_;   ///< of all parts, as they are to be stored
    std::unique_ptr<WatchedFile> watched_; ///< for file formats that can do with it; outlives the output
    std::unique_ptr<OIIO::ImageOutput> output_;
    size_t part_ = 0;
    std::vector<int> tops_; ///< by part: the first row of what is to be written
    int rowsPerCall_ = 1;
    uint64_t hash_ = 0; ///< of all rows, where they are read back
    bool isFinished_ = false;
};

FileWriter::FileWriter(const std::string& path, const Picture& picture)
    : path_(path), target_(resolveLinks(path))
{
    checkTarget();
    format_ = fileFormatNamed(fileFormatName(target_));
    if (format_ == nullptr)
        fail(unknownFormat(target_), Error::Kind::Output);
    if (const std::string why = obstacle(*format_, picture); !why.empty())
        fail(format_->name + " " + why, Error::Kind::Output);
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

void FileWriter::checkTarget() const
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
void FileWriter::abandon()
{
    if (temporary_.empty())
        return;
    if (output_ != nullptr)
        output_->geterror();
    output_.reset();
    ::unlink(temporary_.c_str());
    temporary_.clear();
}

void FileWriter::open(const Picture& picture)
{
    Picture stored = picture;
    for (Image& part : stored.parts) {
        tops_.push_back(part.data.y);
        if (!format_->holdsWindow(part.data, part.display))
            part.data = part.display = {0, 0, part.data.width, part.data.height};
    }
    specs_ = outputSpecs(stored, *format_);
    output_ = OIIO::ImageOutput::create(format_->name);
    OIIO::ImageOutput& output = *output_;
    if (format_->check == FileFormat::Check::Watched) {
        watched_ = std::make_unique<WatchedFile>(temporary_);
        output.set_ioproxy(watched_.get());
    }
    const auto parts = static_cast<int>(specs_.size());
    check(parts > 1 ? output.open(temporary_, parts, specs_.data())
                    : output.open(temporary_, specs_.front()));
    beginPart();
}

void FileWriter::beginPart()
{
    const OIIO::ImageSpec& wanted = specs_[part_];
    const OIIO::ImageSpec& got = output_->spec();
    bool same = got.nchannels == wanted.nchannels && got.width == wanted.width && got.height == wanted.height;
    for (int c = 0; same && c < wanted.nchannels; ++c)
        same = got.channelformat(c) == wanted.channelformat(c);
    if (!same)
        fail(format_->name + " would store the pixels otherwise than they are", Error::Kind::Output);
    rowsPerCall_ = rowsPerCall(format_->name, got);
}

/// Notes what of an image beside its values gets lost.
void FileWriter::noteLosses(const Image& image)
{
    const FileFormat& format = *format_;
    const auto note = [&](const std::string& text) {
        const std::string line = "'" + path_ + "': " + format.name + " " + text;
        if (std::find(notes_.begin(), notes_.end(), line) == notes_.end())
            notes_.push_back(line);
    };
    const Window whole{0, 0, image.data.width, image.data.height};
    const bool isWhole = image.data == whole && image.display == whole;
    if (!isWhole && !format.holdsWindow(image.data, image.display))
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

void FileWriter::write(const Band& band, int yBegin, int yEnd, const std::function<void()>& checkStopped)
{
    const int top = tops_[part_];
    const int shift = specs_[part_].y - top;
    for (int y = yBegin; y < yEnd;) {
        checkStopped();
        const int next = std::min(yEnd, y + rowsPerCall_ - (y - top) % rowsPerCall_);
        check(output_->write_scanlines(y + shift, next + shift, 0, OIIO::TypeUnknown, band.row(y)));
        for (; y < next; ++y)
            if (format_->check == FileFormat::Check::AllRows)
                hash_ = hashRow(band.row(y), band.rowBytes(), hash_);
    }
}

void FileWriter::nextPart()
{
    ++part_;
    check(output_->open(temporary_, specs_[part_], OIIO::ImageOutput::AppendSubimage));
    beginPart();
}

void FileWriter::finish()
{
    check(output_->close());
    if (watched_ != nullptr)
        watched_->finish();
    check(true);
    output_.reset();
    if (format_->check != FileFormat::Check::Watched && !hasRoom(temporary_))
        fail(std::strerror(errno));
    if (format_->check == FileFormat::Check::AllRows)
        checkRows();
    if (format_->check == FileFormat::Check::LastRow && !isComplete(temporary_))
        fail("the file came out incomplete");
    isFinished_ = true;
}

void FileWriter::commit()
{
    if (!isFinished_)
        finish();
    if (std::rename(temporary_.c_str(), target_.c_str()) != 0)
        fail(std::strerror(errno));
    temporary_.clear();
}

/// Throws when the file does not give back every row that was written.
void FileWriter::checkRows() const
{
    const OIIO::ImageSpec& wanted = specs_.front();
    bool same = false;
    try {
        const std::unique_ptr<Reader> reader = openimageio::openReader(temporary_);
        const Image& image = reader->picture().first();
        same = image.data == Window{wanted.x, wanted.y, wanted.width, wanted.height} &&
               image.rowBytes() == static_cast<int64_t>(wanted.scanline_bytes(true));
        const int end = image.data.y + image.data.height;
        uint64_t hash = 0;
        Band band;
        for (int y = image.data.y; same && y < end;) {
            const int next = std::min(end, reader->callEnd(0, y));
            band.reset(image, y, next);
            reader->read(0, y, next, band.row(y));
            for (; y < next; ++y)
                hash = hashRow(band.row(y), band.rowBytes(), hash);
        }
        same = same && hash == hash_;
    } catch (const Error&) {
        same = false;
    }
    if (!same)
        fail("it does not give back what was written; unless the disk is full, choose another file format");
}

/// Throws when the file layer or the file itself has failed.
void FileWriter::check(bool done)
{
    const std::string reason = done ? "" : output_->geterror();
    if (const int error = watched_ != nullptr ? watched_->firstError() : 0; error != 0)
        fail(std::strerror(error));
    if (!done)
        fail(reason);
}

void FileWriter::fail(const std::string& reason, Error::Kind kind) const
{
    std::string text = reason.empty() ? "unknown reason" : firstLine(reason);
    const size_t place = temporary_.empty() ? std::string::npos : text.find(temporary_); // which nobody knows
    if (place != std::string::npos)
        text.replace(place, temporary_.size(), path_);
    throw Error(kind, "cannot write '" + path_ + "': " + text);
}

} // namespace

std::string fileFormatName(const std::string& path)
{
    const auto output = OIIO::ImageOutput::create(path);
    OIIO::geterror();
    return output != nullptr ? output->format_name() : "";
}

std::unique_ptr<Writer> createWriter(const std::string& path, const Picture& picture)
{
    return std::make_unique<FileWriter>(path, picture);
}

} // namespace host::openimageio
