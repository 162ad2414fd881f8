#pragma once

#include <PXL/PXL_LookupChannel.h>
#include <SYS/SYS_API.h>

#include <cstdint>
#include <vector>

/// A value at a time.
struct CL_Key
{
    float time;
    float value;
};

/// A channel: a value over time, from samples at a steady rate or from keys. Linear in between, the end
/// values outside; NaN takes the first value, and a track without values is 0.
class PLATFORM_API CL_Track
{
public:
    /// `rate` samples per unit of time from `start` on. A rate that is not above 0 leaves only the first.
    CL_Track(float start, float rate, std::vector<float> samples);
    /// In any order; those whose time is not finite are left out. Of several at one time the last one counts
    /// from there on.
    explicit CL_Track(const std::vector<CL_Key>& keys);

    float evaluate(float time) const;

    /// Samples or keys.
    int64_t entries() const { return static_cast<int64_t>(values_.size()); }
    CL_Key entry(int64_t index) const;

    /// Sampled tracks, those without values among them, answer evaluate() by channel() too.
    bool isSampled() const { return times_.empty(); }
    PXL_LookupChannel channel() const;

private:
    std::vector<float> times_; ///< of the keys
    std::vector<float> values_;
    float start_ = 0.0f;
    float rate_ = 0.0f;
};
