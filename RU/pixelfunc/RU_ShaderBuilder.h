#pragma once

#include <RE/RE_OGLComputeGPU.h>
#include <RU/RU_API.h>
#include <UT/UT_String.h>
#include <UT/UT_StringArray.h>

/// Collects what the functions of a chain declare for one shader: parameters, locals, shared GLSL functions,
/// and hands constants and arrays to the GPU. The head of a chain has one; functions reach it through their
/// own declaration calls.
///
/// Names get the index of the function being declared appended. Types become the macros of the program's
/// prelude: FLOAT, VEC3, INT and so on.
/// Threads: one at a time.
class RU_API RU_ShaderBuilder
{
public:
    /// Drops what was collected for the last program.
    void beginProgram();
    /// What follows is declared by function number `index` of a shader for `gpu`.
    void begin(RE_OGLComputeGPU* gpu, int index);
    int functionIndex() const { return functionIndex_; }
    /// Defines the function with that body and calls it, for the components in scope. Nothing for an empty
    /// body.
    void defineAndCall(const UT_String& body, const bool* scope);
    /// Puts the texts together and forgets the GPU.
    void endProgram();

    void setNumComps(int count) { numComps_ = count; }
    int numComps() const { return numComps_; }
    bool usesNumComps() const { return usesNumComps_; }

    // See the calls of the same names in RU_PixelFunction.
    void addConstant(const char* name, RE_GPUType type, int vectorSize, const void* data, int count);
    void addLocal(const char* name, RE_GPUType type, int vectorSize);
    void addArray(const char* name, RE_GPUType type, int vectorSize, int width, int height, const void* data);
    void addArray(const char* name, RE_GPUType type, int vectorSize, int width, int height, const void* d0,
                  const void* d1, const void* d2, const void* d3);
    void addFunction(const char* name, const char* code);
    void usesGlobal(const char* name);
    void skipFunction() { skipped_ = true; }

    /// In the GLSL signature of the function, and in its call.
    const UT_String& parameterDeclarations() const { return parameterDeclarations_; }
    const UT_String& callArguments() const { return callArguments_; }
    /// The variables of the main program that functions write.
    const UT_String& localDeclarations() const { return localDeclarations_; }
    /// The texts of the shared functions.
    const UT_String& addedFunctionCode() const { return addedFunctionCode_; }

    // The assembled program: shared functions and the chain's, and the locals with the calls behind them.
    const UT_String& functionCode() const { return functionCode_; }
    const UT_String& shaderCode() const { return shaderCode_; }
    const UT_String& locals() const { return locals_; }

private:
    UT_String numbered(const char* name) const;
    void addParameter(const char* qualifier, const char* type, const UT_String& name, int count);

    UT_String shaderCode_;
    UT_String functionCode_;
    UT_String locals_;
    UT_String callArguments_;
    UT_String parameterDeclarations_;
    UT_String localDeclarations_;
    UT_StringArray addedFunctionNames_;
    UT_String addedFunctionCode_;
    RE_OGLComputeGPU* gpu_ = nullptr;
    int functionIndex_ = 0;
    int numComps_ = 0;
    bool usesNumComps_ = false;
    bool skipped_ = false; ///< the function being declared is to be left out
};
