#include <RU/pixelfunc/RU_ShaderBuilder.h>

#include <string>
#include <string_view>

namespace {

/// The macro that the shader prelude defines for a type; empty where there is none.
const char* glslType(RE_GPUType type, int vectorSize)
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

} // namespace

void RU_ShaderBuilder::begin(RE_OGLComputeGPU* gpu, int index)
{
    gpu_ = gpu;
    functionIndex_ = index;
}

UT_String RU_ShaderBuilder::numbered(const char* name) const
{
    return UT_String(name).append(std::to_string(functionIndex_));
}

void RU_ShaderBuilder::addParameter(const char* qualifier, const char* type, const UT_String& name, int count)
{
    UT_String& declarations = parameterDeclarations_;
    declarations.append(qualifier).append(type).append(" ").append(name.view());
    if (count > 1)
        declarations.append("[").append(std::to_string(count)).append("]");
    callArguments_.append(",").append(name.view());
}

void RU_ShaderBuilder::addConstant(const char* name, RE_GPUType type, int vectorSize, const void* data,
                                   int count)
{
    const UT_String unique = numbered(name);
    addParameter(", in ", glslType(type, vectorSize), unique, count);
    gpu_->setConstant(unique.buffer(), type, vectorSize, data, count, false);
}

void RU_ShaderBuilder::addLocal(const char* name, RE_GPUType type, int vectorSize)
{
    const UT_String unique = numbered(name);
    addParameter(", out ", glslType(type, vectorSize), unique, 1);
    localDeclarations_.append(glslType(type, vectorSize)).append(" ").append(unique.view()).append(";\n");
}

void RU_ShaderBuilder::addArray(const char* name, RE_GPUType type, int vectorSize, int width, int height,
                                const void* data)
{
    gpu_->setArray2D(name, type, vectorSize, width, height, data);
}

void RU_ShaderBuilder::addArray(const char* name, RE_GPUType type, int vectorSize, int width, int height,
                                const void* d0, const void* d1, const void* d2, const void* d3)
{
    const UT_String unique = numbered(name);
    addParameter(", out ", glslType(type, vectorSize), unique, 1);
    gpu_->setArray2D(unique.buffer(), type, vectorSize, width, height, d0, d1, d2, d3);
}

void RU_ShaderBuilder::addFunction(const char* name, const char* code)
{
    if (addedFunctionNames_.sortedInsert(name))
        addedFunctionCode_.append(code).append("\n");
}

void RU_ShaderBuilder::usesGlobal(const char* name)
{
    if (usesNumComps_ || std::string_view(name) != "num_comps")
        return;
    usesNumComps_ = true;
    callArguments_.append(", num_comps");
    parameterDeclarations_.append(", in int num_comps");
}
