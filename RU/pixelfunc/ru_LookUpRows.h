#pragma once

#include <RU/kernel/ru_Kernels.h>

#include <cstdint>

/// Look-ups in tables, row by row: out = table[in]. Both rows may be the same.
struct ru_LookUpKernels : ru_KernelTable
{
    void (*bytes)(const uint8_t* table, const uint8_t* in, uint8_t* out, int64_t count);
    /// The table has 65,536 entries and one more behind them that may be read.
    void (*words)(const uint16_t* table, const uint16_t* in, uint16_t* out, int64_t count);
    /// Floats by codes; these rows are apart.
    void (*floatsOfBytes)(const float* table, const uint8_t* in, float* out, int64_t count);
    void (*floatsOfWords)(const float* table, const uint16_t* in, float* out, int64_t count);
};
