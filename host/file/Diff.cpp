#include <host/file/Diff.h>

#include <host/file/Band.h>
#include <host/file/Format.h>
#include <host/file/Reader.h>
#include <host/file/Writer.h>
#include <host/text/Error.h>
#include <host/text/Text.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <limits>
#include <memory>

namespace host {

namespace {

const Channel* findChannel(const Image& image, const std::string& name)
{
    const auto found = std::find_if(image.channels.begin(), image.channels.end(),
                                    [&](const Channel& channel) { return channel.name == name; });
    return found != image.channels.end() ? &*found : nullptr;
}

/// The channels that both images have, as each has them.
std::array<std::vector<const Channel*>, 2> commonChannels(const Image& a, const Image& b)
{
    std::array<std::vector<const Channel*>, 2> common;
    for (const Channel& channel : a.channels) {
        if (const Channel* other = findChannel(b, channel.name)) {
            common[0].push_back(&channel);
            common[1].push_back(other);
        }
    }
    return common;
}

void compareHeaders(const Image& a, const Image& b, std::vector<std::string>& lines)
{
    if (a.data != b.data)
        lines.push_back("data window: " + describe(a.data) + " and " + describe(b.data));
    if (a.display != b.display)
        lines.push_back("display window: " + describe(a.display) + " and " + describe(b.display));
    for (const Channel& channel : a.channels) {
        const Channel* other = findChannel(b, channel.name);
        if (other == nullptr)
            lines.push_back("channel " + channel.name + ": only in '" + a.path + "'");
        else if (other->format != channel.format)
            lines.push_back("channel " + channel.name + ": " + formatName(channel.format) + " and " +
                            formatName(other->format));
    }
    for (const Channel& channel : b.channels)
        if (findChannel(a, channel.name) == nullptr)
            lines.push_back("channel " + channel.name + ": only in '" + b.path + "'");
}

/// The value of a code over the full range of its format, as a double so that every code keeps its own.
template <class T>
double valueOf(T code)
{
    if constexpr (std::is_integral_v<T>)
        return code / static_cast<double>(PXL_FormatOf<T>::white);
    else
        return static_cast<float>(code);
}

/// One row of a channel in both images, as interleaved pixels, and where its differences go, if anywhere.
struct RowPair
{
    const char* a;
    const char* b;
    int64_t strideA, strideB;
    Window row;
    double tolerance; ///< below 0: bits that differ do
    float* differences;
};

/// Notes how far two values are from each other that are not the same.
void addDifference(ChannelDiff& result, const RowPair& pair, double a, double b, int i, double codesPerUnit)
{
    const double difference = std::abs(a - b);
    const bool isNumber = std::isfinite(difference);
    if (pair.differences != nullptr)
        pair.differences[i] =
            isNumber ? static_cast<float>(difference) : std::numeric_limits<float>::infinity();
    result.differing += !isNumber || difference > pair.tolerance;
    if (!isNumber) {
        ++result.notNumbers;
    } else if (difference > result.largest) {
        result.largest = difference;
        result.x = pair.row.x + i;
        result.y = pair.row.y;
        result.a = a * codesPerUnit;
        result.b = b * codesPerUnit;
    }
}

template <class A, class B>
void compareRow(const RowPair& pair, ChannelDiff& result)
{
    constexpr bool sameFormat = std::is_same_v<A, B>;
    constexpr double codesPerUnit = sameFormat ? PXL_FormatOf<A>::white : 1;
    const bool byBits = sameFormat && pair.tolerance < 0.0;
    for (int i = 0; i < pair.row.width; ++i) {
        const char* bitsA = pair.a + i * pair.strideA;
        const char* bitsB = pair.b + i * pair.strideB;
        if (sameFormat && std::memcmp(bitsA, bitsB, sizeof(A)) == 0)
            continue;
        A a;
        B b;
        std::memcpy(&a, bitsA, sizeof(A));
        std::memcpy(&b, bitsB, sizeof(B));
        const double valueA = valueOf(a), valueB = valueOf(b);
        if (byBits || (valueA != valueB && !(std::isnan(valueA) && std::isnan(valueB))))
            addDifference(result, pair, valueA, valueB, i, codesPerUnit);
    }
    result.values += pair.row.width;
}

void compareRow(unsigned char formatA, unsigned char formatB, const RowPair& pair, ChannelDiff& result)
{
    PXLwithElement(formatA, [&]<class A>() {
        PXLwithElement(formatB, [&]<class B>() { compareRow<A, B>(pair, result); });
    });
}

/// A picture of differences, which grows from top to bottom.
class DiffPicture
{
public:
    /// Of some channels of `image`.
    DiffPicture(const std::string& path, const Image& image, std::vector<const Channel*> channels)
    {
        const bool isEXR = extensionOf(path) == ".exr";
        for (const Plane& plane : image.planes)
            if (plane.alpha && !isEXR) // nothing would be seen through it
                std::erase(channels, &image.channels[static_cast<size_t>(plane.channel[3])]);
        if (channels.empty())
            refuse("'" + path + "': the images have no channels in common to show the differences of");
        image_ = newImage(image.data.width, image.data.height, static_cast<int>(channels.size()),
                          isEXR ? static_cast<unsigned char>(PXL_FORMAT_float32) : usualFormat(path),
                          "differences");
        for (size_t c = 0; c < channels.size(); ++c)
            image_.channels[c].name = channels[c]->name;
        image_.arrange();
        if (holdsWindow(path, image.data)) {
            image_.data = image.data;
            image_.display = image.display;
        }
        shown_ = std::move(channels);
        down_ = image_.data.y - image.data.y;
        row_.resize(static_cast<size_t>(image.data.width));
        codes_.resize(row_.size() * sizeof(float));
        writer_ = createWriter(path, {path, {image_}});
    }

    void begin(int y, int end) { band_.reset(image_, y + down_, end + down_); }

    /// Where the differences of a row go, all 0.
    float* row()
    {
        std::fill(row_.begin(), row_.end(), 0.0f);
        return row_.data();
    }

    /// Takes the row of a channel over, if it is shown.
    void take(const Channel* of, int y)
    {
        const auto found = std::find(shown_.begin(), shown_.end(), of);
        if (found == shown_.end())
            return;
        const Channel& channel = image_.channels[static_cast<size_t>(found - shown_.begin())];
        convertFormat(PXL_FORMAT_float32, row_.data(), channel.format, codes_.data(), image_.data.width);
        const auto bytes = static_cast<size_t>(PXLbytesPerElement(channel.format));
        char* pixel = band_.row(y + down_) + channel.offset;
        for (size_t i = 0; i < row_.size(); ++i, pixel += image_.pixelBytes)
            std::memcpy(pixel, codes_.data() + i * bytes, bytes);
    }

    void end(const CancelSwitch* cancel)
    {
        writer_->write(band_, band_.yBegin(), band_.yEnd(), [cancel] { checkStopped(cancel); });
    }

    std::vector<std::string> commit()
    {
        writer_->commit();
        return writer_->notes();
    }

private:
    Image image_;
    std::vector<const Channel*> shown_; ///< in the order of the picture's channels
    int down_ = 0;                      ///< that the picture lies below the images
    std::vector<float> row_;
    std::vector<char> codes_;
    Band band_;
    std::unique_ptr<Writer> writer_;
};

void checkPicture(const std::string& picture, std::initializer_list<std::string> inputs)
{
    std::error_code ignored;
    for (const std::string& input : inputs)
        if (std::filesystem::equivalent(input, picture, ignored))
            refuse("the picture of differences is the input, '" + input + "'; give it another name");
}

} // namespace

bool DiffReport::same() const
{
    return headers.empty() && std::all_of(channels.begin(), channels.end(),
                                          [](const ChannelDiff& channel) { return channel.differing == 0; });
}

DiffReport diff(const std::string& pathA, const std::string& pathB, const DiffSettings& settings)
{
    if (settings.tolerance && !(*settings.tolerance >= 0.0))
        refuse("tolerance: expected a number that is not below 0");
    checkPicture(settings.picture, {pathA, pathB});
    const std::unique_ptr<Reader> readerA = openReader(pathA), readerB = openReader(pathB);
    const Image& a = readerA->picture().first();
    const Image& b = readerB->picture().first();
    DiffReport report;
    compareHeaders(a, b, report.headers);
    if (a.data != b.data) {
        if (!settings.picture.empty())
            report.notes.push_back("'" + settings.picture + "' is not written: the data windows differ");
        return report;
    }
    const auto [inA, inB] = commonChannels(a, b);
    for (const Channel* channel : inA)
        report.channels.push_back({channel->name});
    std::optional<DiffPicture> picture;
    if (!settings.picture.empty())
        picture.emplace(settings.picture, a, inA);
    const int end = a.data.y + a.data.height;
    Band rowsA, rowsB;
    for (int y = a.data.y; y < end;) {
        checkStopped(settings.cancel);
        const int next = std::min({readerA->callEnd(0, y), readerB->callEnd(0, y), end});
        rowsA.reset(a, y, next);
        rowsB.reset(b, y, next);
        readerA->read(0, y, next, rowsA.row(y));
        readerB->read(0, y, next, rowsB.row(y));
        if (picture)
            picture->begin(y, next);
        for (; y < next; ++y) {
            for (size_t i = 0; i < inA.size(); ++i) {
                const RowPair pair{.a = rowsA.row(y) + inA[i]->offset,
                                   .b = rowsB.row(y) + inB[i]->offset,
                                   .strideA = a.pixelBytes,
                                   .strideB = b.pixelBytes,
                                   .row = {a.data.x, y, a.data.width, 1},
                                   .tolerance = settings.tolerance.value_or(-1.0),
                                   .differences = picture ? picture->row() : nullptr};
                compareRow(inA[i]->format, inB[i]->format, pair, report.channels[i]);
                if (picture)
                    picture->take(inA[i], y);
            }
        }
        if (picture)
            picture->end(settings.cancel);
    }
    if (picture)
        report.notes = picture->commit();
    return report;
}

} // namespace host
