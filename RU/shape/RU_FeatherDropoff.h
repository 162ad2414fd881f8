#pragma once

#include <RU/RU_API.h>

/// How a soft edge falls off, f(x) from 0 at the rim (x = 0) to 1 at the full side (x = 1):
///
///     X(enumerator, name, formula)
///
/// 1.0523 brings the exponentials close to 0 and 1 at the ends, not onto them.
#define RU_FOR_EACH_FEATHER_DROPOFF(X)                                                                       \
    X(RU_DROPOFF_LINEAR, "linear", "x")                                                                      \
    X(RU_DROPOFF_GAUSSIAN, "gaussian", "1.0523 (1 - e^(-3 x^2))")                                            \
    X(RU_DROPOFF_EASE_OUT, "ease-out", "1.0523 (1 - e^(-3 x))")                                              \
    X(RU_DROPOFF_EASE_IN, "ease-in", "1.0523 (e^(-3 (1 - x)) - 1) + 1")                                      \
    X(RU_DROPOFF_SMOOTH, "smooth", "0.5 - 0.5 cos(pi x)")

enum RU_FeatherDropoff : int {
#define RU_ENUMERATOR(NAME, TEXT, FORMULA) NAME,
    RU_FOR_EACH_FEATHER_DROPOFF(RU_ENUMERATOR)
#undef RU_ENUMERATOR
};

/// f(x), the same bits on every processor. x is limited to 0 to 1, NaN is 0; a kind that is not listed is linear.
RU_API float RUfeatherDropoff(RU_FeatherDropoff kind, float x);
