#pragma once

#include <PXL/PXL_Caps.h>

#include <cstdint>
#include <limits>
#include <random>
#include <vector>

namespace reference {

/// Cases that depend on a seed alone. Tests trace the seed, so that a failure names it.
class Random
{
public:
    explicit Random(uint64_t seed) : engine_(seed) {}

    uint64_t bits() { return engine_(); }
    bool oneIn(int n) { return between(1, n) == 1; }
    int between(int low, int high)
    {
        return low + static_cast<int>(bits() % static_cast<uint64_t>(high - low + 1));
    }
    double between(double low, double high)
    {
        return low + (high - low) * static_cast<double>(bits() >> 11) * 0x1p-53;
    }

private:
    std::mt19937_64 engine_;
};

/// Numbers where functions misbehave first.
inline std::vector<float> specialFloats()
{
    using F = std::numeric_limits<float>;
    std::vector<float> values;
    for (const float v : {0.0f,          F::denorm_min(),
                          F::min(),      1e-20f,
                          0.25f,         0.49999997f,
                          0.5f,          0.99999994f,
                          1.0f,          1.0000001f,
                          1.5f,          0.7853982f,
                          1.5707964f,    2.0f,
                          3.0f,          4.0f,
                          100.0f,        8388609.0f,
                          16777216.0f,   1e20f,
                          F::max(),      F::infinity(),
                          F::quiet_NaN()})
        for (const float sign : {1.0f, -1.0f})
            values.push_back(v * sign);
    return values;
}

/// A number around [0, 1], now and then a special one.
inline float anyFloat(Random& random)
{
    static const std::vector<float> special = specialFloats();
    return random.oneIn(8) ? special[random.bits() % special.size()]
                           : static_cast<float>(random.between(-0.5, 1.5));
}

/// The instruction sets that this processor can run.
inline std::vector<PXL_InstructionSet> runnableSets()
{
    std::vector<PXL_InstructionSet> sets;
#define APPEND(SET)                                                                                          \
    if (PXL_InstructionSet::SET <= PXLwidestInstructionSet())                                                \
        sets.push_back(PXL_InstructionSet::SET);
    PXL_FOR_EACH_INSTRUCTION_SET(APPEND)
#undef APPEND
    return sets;
}

} // namespace reference
