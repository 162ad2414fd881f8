#pragma once

/// The smallest whole number not below v; infinities and NaN pass through. Internal linkage on purpose: each
/// instruction set keeps its own copy.
[[gnu::always_inline]] static inline float SYSceil(float v)
{
    return __builtin_ceilf(v);
}
