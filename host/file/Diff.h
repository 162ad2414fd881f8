#pragma once

#include <host/text/Stop.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace host {

/// How two channels of one name differ. Values differ when their bits do; where the two are stored in
/// different formats, or with a tolerance, when their values over the full range do. NaN equals NaN then.
struct ChannelDiff
{
    std::string channel;
    int64_t values = 0; ///< compared
    int64_t differing = 0;
    int64_t notNumbers = 0;  ///< of the differing ones: with NaN or an infinity on one side, not in `largest`
    double largest = 0.0;    ///< difference, tolerated or not, over the full range of integer formats
    int x = 0, y = 0;        ///< where the largest is
    double a = 0.0, b = 0.0; ///< the values there; integer codes where both have one format
};

struct DiffReport
{
    std::vector<std::string> headers;  ///< differences in windows, channels and formats, one line each
    std::vector<ChannelDiff> channels; ///< those in both images; empty when their data windows differ
    std::vector<std::string> notes;    ///< on the picture of the differences
    bool same() const;
};

struct DiffSettings
{
    std::optional<double> tolerance; ///< differences up to this count as none
    /// An image file to write, with the differences of each channel that both images have, without their
    /// signs. Where a difference is no number, it is infinite. Float in EXR; else what is usual for the file
    /// format, 1 white, and without alpha.
    std::string picture;
    const CancelSwitch* cancel = nullptr;
};

/// Compares two image files value by value. Metadata does not count.
DiffReport diff(const std::string& a, const std::string& b, const DiffSettings& settings = {});

} // namespace host
