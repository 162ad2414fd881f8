#pragma once

/// The GPU's data types.
enum RE_GPUType {
    RE_GPU_UINT8 = 2,
    RE_GPU_UINT16 = 3,
    RE_GPU_UINT32 = 4,
    RE_GPU_INT8 = 5,
    RE_GPU_INT16 = 6,
    RE_GPU_INT32 = 7,
    RE_GPU_FLOAT16 = 8,
    RE_GPU_FLOAT32 = 10,
    RE_GPU_MATRIX2 = 11,
    RE_GPU_MATRIX3 = 12,
    RE_GPU_MATRIX4 = 13
};
