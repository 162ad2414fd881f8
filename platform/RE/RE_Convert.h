#pragma once

#include <PXL/PXL_Format.h>
#include <RE/RE_Types.h>

/// The GPU's type of a storage format; that of float for unknown codes.
constexpr RE_GPUType REconvertPXLType(int formatCode)
{
    switch (formatCode) {
    case PXL_FORMAT_uint8:
        return RE_GPU_UINT8;
    case PXL_FORMAT_uint16:
        return RE_GPU_UINT16;
    case PXL_FORMAT_uint32:
        return RE_GPU_UINT32;
    case PXL_FORMAT_half:
        return RE_GPU_FLOAT16;
    default:
        return RE_GPU_FLOAT32;
    }
}
