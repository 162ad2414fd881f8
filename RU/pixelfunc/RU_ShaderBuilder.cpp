#include <RU/pixelfunc/RU_ShaderBuilder.h>

#include <RE/RE_ShaderType.h>

#include <string>
#include <string_view>

namespace {

constexpr const char* numCompsParameter = ", in int num_comps";
constexpr const char* numCompsArgument = ", num_comps";

bool isUniform(const bool* scope)
{
    return scope[1] == scope[0] && scope[2] == scope[0] && scope[3] == scope[0];
}

} // namespace

void RU_ShaderBuilder::beginProgram()
{
    for (UT_String* text : {&shaderCode_, &functionCode_, &locals_, &localDeclarations_, &addedFunctionCode_})
        text->clear();
    addedFunctionNames_.clear();
    usesNumComps_ = false;
}

void RU_ShaderBuilder::begin(RE_OGLComputeGPU* gpu, int index)
{
    gpu_ = gpu;
    functionIndex_ = index;
    skipped_ = false;
    parameterDeclarations_ = usesNumComps_ ? numCompsParameter : "";
    callArguments_ = usesNumComps_ ? numCompsArgument : "";
}

void RU_ShaderBuilder::defineAndCall(const UT_String& body, const bool* scope)
{
    if (body.isEmpty() || skipped_)
        return;
    const std::string name = "function" + std::to_string(functionIndex_);
    functionCode_.append("\nVEC4 ").append(name).append("(VEC4 value ").append(parameterDeclarations_.view());
    functionCode_.append(")\n{\n").append(body.view()).append("\n  return value;\n}\n");
    if (isUniform(scope)) {
        shaderCode_.append("value = ").append(name).append("( value").append(callArguments_.view());
        shaderCode_.append(");\n");
        return;
    }
    shaderCode_.append("value = mix(value, ").append(name).append("(value").append(callArguments_.view());
    shaderCode_.append("),VEC4(");
    for (int c = 0; c < 4; ++c) // as text: a locale may have commas in numbers
        shaderCode_.append(c == 0 ? "" : ",").append(scope[c] ? "1.000000" : "0.000000");
    shaderCode_.append("));\n");
}

void RU_ShaderBuilder::endProgram()
{
    functionCode_ = addedFunctionCode_.append("\n").append(functionCode_.view());
    locals_ = localDeclarations_;
    shaderCode_ = localDeclarations_.append("\n").append(shaderCode_.view());
    for (UT_String* text :
         {&addedFunctionCode_, &localDeclarations_, &parameterDeclarations_, &callArguments_})
        text->clear();
    addedFunctionNames_.clear();
    gpu_ = nullptr;
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
    addParameter(", in ", REshaderType(type, vectorSize), unique, count);
    gpu_->setConstant(unique.buffer(), type, vectorSize, data, count, false);
}

void RU_ShaderBuilder::addLocal(const char* name, RE_GPUType type, int vectorSize)
{
    const UT_String unique = numbered(name);
    addParameter(", out ", REshaderType(type, vectorSize), unique, 1);
    localDeclarations_.append(REshaderType(type, vectorSize)).append(" ").append(unique.view()).append(";\n");
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
    addParameter(", out ", REshaderType(type, vectorSize), unique, 1);
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
    callArguments_.append(numCompsArgument);
    parameterDeclarations_.append(numCompsParameter);
}
