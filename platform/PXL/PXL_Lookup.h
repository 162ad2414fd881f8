#pragma once

#include <PXL/PXL_LookupChannel.h>
#include <SYS/SYS_API.h>

#include <cstdint>
#include <vector>

/// A look-up table: one or more channels of samples, spread evenly over a domain from the first to the last
/// sample. Linear in between, the end samples outside; NaN takes the first sample. The domain may run
/// downwards. One without width, or a single sample, gives the first sample everywhere.
class PLATFORM_API PXL_Lookup
{
public:
    /// `samples` has one channel after the other, equally many of each; what is left over is not used. None
    /// at all, or no channel, makes one channel that is 0. At most 2^31 - 1 samples to a channel.
    PXL_Lookup(float first, float last, int channels, std::vector<float> samples);

    int channels() const { return channels_; }
    int64_t samplesPerChannel() const { return int64_t(shape_.last) + 1; }
    /// All samples, channel after channel.
    const float* data() const { return samples_.data(); }

    PXL_LookupChannel channel(int index) const;

private:
    std::vector<float> samples_;
    PXL_LookupChannel shape_; ///< without the samples
    int channels_;
};
