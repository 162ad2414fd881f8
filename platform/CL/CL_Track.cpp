#include <CL/CL_Track.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

CL_Track::CL_Track(float start, float rate, std::vector<float> samples)
    : values_(std::move(samples)), start_(start), rate_(rate)
{
    if (rate > 0.0f)
        return;
    rate_ = 1.0f;
    if (!values_.empty())
        values_.erase(values_.begin() + 1, values_.end());
}

CL_Track::CL_Track(const std::vector<CL_Key>& keys)
{
    std::vector<CL_Key> sorted;
    std::copy_if(keys.begin(), keys.end(), std::back_inserter(sorted),
                 [](const CL_Key& key) { return std::isfinite(key.time); });
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const CL_Key& a, const CL_Key& b) { return a.time < b.time; });
    for (const CL_Key& key : sorted) {
        times_.push_back(key.time);
        values_.push_back(key.value);
    }
}

float CL_Track::evaluate(float time) const
{
    if (isSampled())
        return channel().evaluate(time);
    if (!(time >= times_.front()))
        return values_.front();
    const auto after = std::upper_bound(times_.begin(), times_.end(), time);
    if (after == times_.end())
        return values_.back();
    const double width = double(after[0]) - after[-1];
    const float* value = values_.data() + (after - times_.begin());
    const PXL_LookupChannel between = {value - 1, after[-1], 1.0 / width, 1};
    return between.evaluate(time);
}

CL_Key CL_Track::entry(int64_t index) const
{
    const auto i = static_cast<size_t>(index);
    const double sampled = start_ + static_cast<double>(index) / rate_;
    return {isSampled() ? static_cast<float>(sampled) : times_[i], values_[i]};
}

PXL_LookupChannel CL_Track::channel() const
{
    if (values_.empty())
        return {};
    const int64_t last = std::min<int64_t>(entries(), INT32_MAX) - 1;
    return {values_.data(), start_, rate_, static_cast<int32_t>(last)};
}
