#pragma once

#include <SYS/SYS_API.h>

/// Real roots of polynomials within an interval.
///
/// Result: the number of different roots in [low, high], written to `roots` in ascending order; there is
/// room for as many as the degree. A double root is found once. A polynomial that is 0 everywhere, not
/// finite, or given an empty interval has none. Leading coefficients may be anything, 0 included: no case
/// depends on one being exactly 0.
/// Accuracy: a value within 2^-50 of the sum of its terms counts as 0. Simple roots are good to some units of
/// the last place of the interval's ends, multiple ones to what that leaves of them.
class PLATFORM_API UT_RootFinder
{
public:
    /// a t^2 + b t + c = 0
    static int quadratic(double a, double b, double c, double low, double high, double* roots);
    /// a t^3 + b t^2 + c t + d = 0
    static int cubic(double a, double b, double c, double d, double low, double high, double* roots);
};
