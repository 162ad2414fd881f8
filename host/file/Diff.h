#pragma once

#include <host/graph/LibraryCall.h>

#include <cstdint>
#include <string>
#include <vector>

namespace host {

/// How two channels of one name differ. Values differ when their bits do; where the two are stored in
/// different formats, when their values over the full range do. NaN equals NaN then.
struct ChannelDiff
{
    std::string channel;
    int64_t values = 0; ///< compared
    int64_t differing = 0;
    int64_t notNumbers = 0;  ///< of the differing ones: with NaN or an infinity on one side, not in `largest`
    double largest = 0.0;    ///< difference, over the full range of integer formats
    int x = 0, y = 0;        ///< where the largest is
    double a = 0.0, b = 0.0; ///< the values there; integer codes where both have one format
};

struct DiffReport
{
    std::vector<std::string> headers;  ///< differences in windows, channels and formats, one line each
    std::vector<ChannelDiff> channels; ///< those in both images; empty when their data windows differ
    bool same() const;
};

/// Compares two image files value by value. Metadata does not count.
DiffReport diff(const std::string& a, const std::string& b, const CancelSwitch* cancel = nullptr);

} // namespace host
