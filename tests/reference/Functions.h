#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

#include <array>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace reference {

/// Red, green, blue, alpha; NaN where a component is absent.
using Pixel = std::array<double, 4>;

/// A pixel function with certain parameters.
struct Function
{
    std::string name;
    std::shared_ptr<RU_PixelFunction> object;

    friend void PrintTo(const Function& function, std::ostream* out) { *out << function.name; }
};

/// One of single values, and what is expected of it.
struct ValueFunction : Function
{
    /// The result for a value of a component. Steps that round on the way do so here too.
    std::function<double(float v, int c)> exact;
    double ulp = 0.0;   ///< allowed error in units of the last place; 0: the very number
    double least = 0.0; ///< errors of results below this count as those of one this large
    bool perComponent = false;
};

/// One that looks at several components of a pixel.
struct PixelFunction : Function
{
    std::function<Pixel(Pixel)> exact; ///< in steps that round to float
    double tolerance = 0.0;            ///< for a pixel around 1; 0: the very number
};

/// Every class, with parameters that reach each of its cases.
const std::vector<ValueFunction>& valueFunctions();
const std::vector<PixelFunction>& pixelFunctions();

/// Both together.
const std::vector<Function>& allFunctions();

/// The same with objects of the caller's own, which may form a chain.
std::vector<ValueFunction> newValueFunctions();
std::vector<PixelFunction> newPixelFunctions();
std::vector<Function> newFunctions();

} // namespace reference
