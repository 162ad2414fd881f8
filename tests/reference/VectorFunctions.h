#pragma once

#include <reference/Functions.h>

#include <array>

namespace reference {

/// Red, green, blue, alpha; NaN where a component is absent.
using Pixel = std::array<double, 4>;

/// A function that looks at several components of a pixel, and what is expected of it.
struct VectorFunction
{
    std::string name;
    std::shared_ptr<RU_PixelFunction> object;
    std::function<Pixel(Pixel)> exact; ///< in steps that round to float
    double tolerance;                  ///< for a pixel around 1; 0: the very number
};

inline void PrintTo(const VectorFunction& function, std::ostream* out)
{
    *out << function.name;
}

/// Every class, with parameters that reach each of its cases.
const std::vector<VectorFunction>& vectorFunctions();

} // namespace reference
