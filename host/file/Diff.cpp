#include <host/file/Diff.h>

#include <host/file/Bands.h>
#include <host/file/Format.h>
#include <host/file/Reader.h>
#include <host/text/Error.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace host {

namespace {

const Channel* findChannel(const Image& image, const std::string& name)
{
    const auto found = std::find_if(image.channels.begin(), image.channels.end(),
                                    [&](const Channel& channel) { return channel.name == name; });
    return found != image.channels.end() ? &*found : nullptr;
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

/// One row of a channel in both images, as interleaved pixels.
struct RowPair
{
    const char* a;
    const char* b;
    int64_t strideA, strideB;
    Window row;
};

void countDifference(ChannelDiff& result, double a, double b, int x, int y, double codesPerUnit)
{
    ++result.differing;
    const double difference = std::abs(a - b);
    if (!std::isfinite(difference)) {
        ++result.notNumbers;
    } else if (difference > result.largest) {
        result.largest = difference;
        result.x = x;
        result.y = y;
        result.a = a * codesPerUnit;
        result.b = b * codesPerUnit;
    }
}

template <class A, class B>
void compareRow(const RowPair& pair, ChannelDiff& result)
{
    constexpr bool sameFormat = std::is_same_v<A, B>;
    constexpr double codesPerUnit = sameFormat ? PXL_FormatOf<A>::white : 1;
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
        if (sameFormat || (valueA != valueB && !(std::isnan(valueA) && std::isnan(valueB))))
            countDifference(result, valueA, valueB, pair.row.x + i, pair.row.y, codesPerUnit);
    }
    result.values += pair.row.width;
}

} // namespace

bool DiffReport::same() const
{
    return headers.empty() && std::all_of(channels.begin(), channels.end(),
                                          [](const ChannelDiff& channel) { return channel.differing == 0; });
}

DiffReport diff(const std::string& pathA, const std::string& pathB, const CancelSwitch* cancel)
{
    Reader readerA(pathA), readerB(pathB);
    const Image& a = readerA.image();
    const Image& b = readerB.image();
    DiffReport report;
    compareHeaders(a, b, report.headers);
    if (a.data != b.data)
        return report;
    std::vector<std::pair<const Channel*, const Channel*>> pairs;
    for (const Channel& channel : a.channels) {
        if (const Channel* other = findChannel(b, channel.name)) {
            pairs.emplace_back(&channel, other);
            report.channels.push_back({channel.name});
        }
    }
    const int end = a.data.y + a.data.height;
    Band rowsA, rowsB;
    for (int y = a.data.y; y < end;) {
        checkStopped(cancel);
        const int next = std::min({readerA.callEnd(y), readerB.callEnd(y), end});
        rowsA.reset(a, y, next);
        rowsB.reset(b, y, next);
        readerA.read(y, next, rowsA.row(y));
        readerB.read(y, next, rowsB.row(y));
        for (; y < next; ++y) {
            const Window row{a.data.x, y, a.data.width, 1};
            for (size_t i = 0; i < pairs.size(); ++i) {
                const Channel* inA = pairs[i].first;
                const Channel* inB = pairs[i].second;
                const RowPair pair{rowsA.row(y) + inA->offset, rowsB.row(y) + inB->offset, a.pixelBytes,
                                   b.pixelBytes, row};
                PXLwithElement(inA->format, [&]<class A>() {
                    PXLwithElement(inB->format,
                                   [&]<class B>() { compareRow<A, B>(pair, report.channels[i]); });
                });
            }
        }
    }
    return report;
}

} // namespace host
