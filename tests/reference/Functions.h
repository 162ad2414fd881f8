#pragma once

#include <PXL/PXL_Caps.h>
#include <RU/pixelfunc/RU_PixelFunction.h>

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace reference {

/// A pixel function with certain parameters, and what is expected of it.
struct Function
{
    std::string kernel; ///< "ru_Add"
    std::shared_ptr<RU_PixelFunction> object;

    /// The result for a value of a component. Steps that round on the way do so here too.
    std::function<double(float v, int c)> exact;
    double ulp; ///< allowed error in units of the last place; 0: the very number

    /// The kernel of an instruction set on a row.
    void (*run)(const RU_PixelFunction&, PXL_InstructionSet, float* values, int64_t count, int component);

    bool perComponent = false;
    double least = 0.0; ///< errors of results below this count as those of one this large
};

inline void PrintTo(const Function& function, std::ostream* out)
{
    *out << function.kernel;
}

/// The catalogue: every class, with parameters that reach each of its cases.
const std::vector<Function>& functions();

} // namespace reference
