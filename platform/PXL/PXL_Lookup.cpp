#include <PXL/PXL_Lookup.h>

#include <algorithm>
#include <utility>

PXL_Lookup::PXL_Lookup(float first, float last, int channels, std::vector<float> samples)
    : samples_(std::move(samples)), channels_(channels)
{
    if (channels_ < 1 || samples_.size() < static_cast<size_t>(channels_)) {
        channels_ = 1;
        samples_.assign(1, 0.0f);
    }
    const int64_t count = static_cast<int64_t>(samples_.size()) / channels_;
    shape_.last = static_cast<int32_t>(std::min<int64_t>(count, INT32_MAX) - 1);
    shape_.start = first;
    shape_.scale = first == last ? 0.0 : shape_.last / (double(last) - first);
}

PXL_LookupChannel PXL_Lookup::channel(int index) const
{
    PXL_LookupChannel channel = shape_;
    channel.samples = samples_.data() + index * samplesPerChannel();
    return channel;
}
