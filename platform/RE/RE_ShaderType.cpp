#include <RE/RE_ShaderType.h>

const char* REshaderType(RE_GPUType type, int vectorSize)
{
    static constexpr const char* integers[] = {"INT", "IVEC2", "IVEC3", "IVEC4"};
    static constexpr const char* floats[] = {"FLOAT", "VEC2", "VEC3", "VEC4"};
    const bool isVector = vectorSize >= 1 && vectorSize <= 4;
    switch (type) {
    case RE_GPU_UINT8:
    case RE_GPU_UINT16:
    case RE_GPU_UINT32:
    case RE_GPU_INT8:
    case RE_GPU_INT16:
    case RE_GPU_INT32:
        return isVector ? integers[vectorSize - 1] : "";
    case RE_GPU_FLOAT16:
    case RE_GPU_FLOAT32:
        return isVector ? floats[vectorSize - 1] : "";
    case RE_GPU_MATRIX2:
        return vectorSize == 1 ? "MATRIX2" : "";
    case RE_GPU_MATRIX3:
        return vectorSize == 1 ? "MATRIX3" : "";
    case RE_GPU_MATRIX4:
        return vectorSize == 1 ? "MATRIX4" : "";
    }
    return "";
}
