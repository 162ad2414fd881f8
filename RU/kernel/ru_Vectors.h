#pragma once

#include <RU/kernel/ru_Kernels.h>

/// Vectors in memory, at any address.
namespace RU_ISA {

template <class Vector>
RU_INLINE Vector loadVector(const void* from)
{
    Vector vector;
    __builtin_memcpy(&vector, from, sizeof vector);
    return vector;
}

template <class Vector>
RU_INLINE void storeVector(void* to, Vector vector)
{
    __builtin_memcpy(to, &vector, sizeof vector);
}

} // namespace RU_ISA
