#pragma once

#include <RU/pixelfunc/RU_ShaderBuilder.h>
#include <UT/UT_Lock.h>
#include <UT/UT_PtrArray.h>

#include <cstdint>
#include <memory>

class RU_PixelFunction;
class ru_PixelSteps;
class ru_RowSteps;
struct ru_ComponentSteps;
template <class Function>
struct ru_Forms;

/// One value of one component.
using RU_ScalarForm = float (*)(RU_PixelFunction* function, float value, int component);
/// One pixel: pointers to its red, green, blue and alpha values, null where a component is absent.
using RU_VectorForm = void (*)(RU_PixelFunction* function, float** components, const bool* scope);
/// `count` values of one component: the scalar form on each, bit for bit.
struct RU_RowForm
{
    /// `in` and `out` are the same row or apart.
    void (*run)(RU_PixelFunction* function, const float* in, float* out, int64_t count, int component);
    /// For the library's own functions: what they consist of, which a chain joins with their neighbours.
    void (*addSteps)(const RU_PixelFunction& function, int component, ru_RowSteps& steps) = nullptr;
};
/// `count` pixels: rows of red, green, blue and alpha values, null in both where a component is absent. A row
/// of `out` is that of `in` or apart from all of them; what the function does not change is copied. The
/// vector form on each pixel, bit for bit.
using RU_VectorRowForm = void (*)(RU_PixelFunction* function, const float* const* in, float* const* out,
                                  int64_t count, const bool* scope);

/// The base of the colour operations that form chains: add, gamma, log and so on.
///
/// A chain is evaluated on values or on pixels, one at a time or in rows, and on the GPU, where each function
/// contributes the body of one GLSL function and its parameters. RU_PixelEngine runs chains over tiles.
///
/// Units: linear or display values as the images hold them, 0.0 black and 1.0 white; nothing is clamped
/// unless a function says so. A function touches only components in its scope; missing components are
/// skipped.
/// Ownership: functions are made with new and linked with setNext(); deleting the head deletes the chain.
/// Parameters are fixed at construction; a chain must not change once one of its engines was built.
/// Threads: the build calls lock; process calls only read, and may run on many threads after building.
/// Building a shader writes into the head: buildShader() does it under a lock, the calls that it consists of do
/// not.
class RU_API RU_PixelFunction
{
public:
    RU_PixelFunction() = default;
    RU_PixelFunction(const RU_PixelFunction&) = delete;
    RU_PixelFunction& operator=(const RU_PixelFunction&) = delete;

    /// Deletes the rest of the chain too.
    virtual ~RU_PixelFunction();

    /// The result for a component depends on other components.
    virtual bool needAllComponents() const { return false; }
    /// The components are treated differently.
    virtual bool eachComponentDifferent() const { return false; }
    virtual RU_ScalarForm getPixelFunction() const;
    virtual RU_VectorForm getVectorFunction() const;
    /// Writes the body of the GLSL function and declares its parameters; empty: it does nothing there.
    virtual void getPixelShader(UT_String& body);
    virtual RU_RowForm getRowFunction() const;
    virtual RU_VectorRowForm getVectorRowFunction() const;
    /// The vector form is the scalar form on each component.
    bool takesSingleValues() const { return getVectorRowFunction() == defaultVectorRowFunction; }

    void setNext(RU_PixelFunction* next) { next_ = next; }
    RU_PixelFunction* next() const { return next_; }

    /// Which of red, green, blue and alpha the function applies to; all by default.
    void setScope(const bool* scope);
    const bool* getScope() const { return scope_; }
    bool isScoped(int component) const { return scope_[component]; }
    /// True unless the four flags are equal.
    bool isPartialScope() const;

    /// From this function to the end of the chain: does any need all components?
    bool areAllComponentsNeeded() const;
    /// From this function to the end of the chain: does any treat components differently, by itself or by
    /// scope?
    bool isComponentDependent() const;

    /// Fill the evaluation lists of the chain that starts here, once; cheap when they are filled already.
    void buildPixelEngine();
    void buildVectorEngine();

    /// The chain on one value. Unchanged before buildPixelEngine().
    float processValue(float value, int component) const;
    /// The chain on `count` values; processValue() on each, bit for bit. `in` and `out` are the same row or
    /// apart.
    void processRow(const float* in, float* out, int64_t count, int component) const;
    /// The chain on one pixel. Unchanged before buildVectorEngine().
    void processValues(float** components) const;
    /// The chain on `count` pixels; processValues() on each, bit for bit.
    void processRows(const float* const* in, float* const* out, int64_t count) const;
    /// The chain as steps over pixels, after buildVectorEngine().
    const ru_PixelSteps& pixelSteps() const { return *pixelSteps_; }

    // Shaders. The head of a chain collects what its functions declare.

    void setNumComps(int count) { shader_.setNumComps(count); }
    bool usesNumCompsGlobal() const { return shader_.usesNumComps(); }
    const UT_String& getShaderCode() const { return shader_.shaderCode(); }
    const UT_String& getFunctionCode() const { return shader_.functionCode(); }
    const UT_String& getLocals() const { return shader_.locals(); }
    const RU_ShaderBuilder& shader() const { return shader_; }

    /// The chain's shader for `numComps` components, as two texts: functions, and statements that take the
    /// variable `value` through the chain. Constants and arrays are handed to `gpu`. For any number of threads.
    void buildShader(RE_OGLComputeGPU* gpu, int numComps, UT_String& functions, UT_String& statements);
    /// The same without the lock, for the components that setNumComps() said; the head keeps the texts.
    void buildShaderEngine(RE_OGLComputeGPU* gpu);

    /// getPixelShader() of function number `index` of a shader that `head` collects for `gpu`.
    void declareShader(RU_PixelFunction& head, RE_OGLComputeGPU* gpu, int index, UT_String& body);

protected:
    static float defaultPixelFunction(RU_PixelFunction* function, float value, int component);
    static void defaultVectorFunction(RU_PixelFunction* function, float** components, const bool* scope);
    static void defaultRowFunction(RU_PixelFunction* function, const float* in, float* out, int64_t count,
                                   int component);
    /// The row form on each component.
    static void defaultVectorRowFunction(RU_PixelFunction* function, const float* const* in,
                                         float* const* out, int64_t count, const bool* scope);
    /// For a class that has a vector form of its own and no rows: that form on each pixel.
    static void pixelByPixel(RU_PixelFunction* function, const float* const* in, float* const* out,
                             int64_t count, const bool* scope);

    // For getPixelShader(). `vectorSize` is 1 to 4; names get the function's index appended.

    int getNumComps() const { return builder_->numComps(); }
    int getFunctionIndex() const { return builder_->functionIndex(); }

    /// An input parameter, or an array of `count` of them.
    void addConstant(const char* name, RE_GPUType type, int vectorSize, const void* data, int count);
    /// A variable of the main program that the function writes.
    void addLocal(const char* name, RE_GPUType type, int vectorSize);
    /// An array under its plain name.
    void addArray(const char* name, RE_GPUType type, int vectorSize, int width, int height, const void* data);
    /// An array from four planes, one per component.
    void addArray(const char* name, RE_GPUType type, int vectorSize, int width, int height, const void* d0,
                  const void* d1, const void* d2, const void* d3);
    /// A GLSL function that several functions of a chain may share; emitted once.
    void addFunction(const char* name, const char* code);
    /// A variable of the program that the function reads. Known: "num_comps"; others are ignored.
    void usesGlobal(const char* name);
    /// Leaves the function out of this shader, whatever its body is.
    void skipFunction();

private:
    void rememberScalarFunction() const;
    void appendToEngine(RU_PixelFunction* function, int64_t entries);

    RU_PixelFunction* next_ = nullptr;
    UT_Lock lock_;
    UT_PtrArray<RU_ScalarForm> pixelEngine_;
    UT_PtrArray<RU_VectorForm> vectorEngine_;
    UT_PtrArray<RU_PixelFunction*> engineFunctions_;              ///< of the entry with the same index
    mutable RU_ScalarForm scalarFunction_ = defaultPixelFunction; ///< for the default vector and row forms
    bool scope_[4] = {true, true, true, true};

    RU_ShaderBuilder* builder_ = nullptr; ///< the head's, while this function declares its shader
    RU_ShaderBuilder shader_;             ///< of the chain that starts here
    UT_Lock shaderLock_;                  ///< held while it builds and its texts are copied

    std::shared_ptr<const ru_ComponentSteps> rowSteps_; ///< made along with the pixel engine
    std::shared_ptr<const ru_PixelSteps> pixelSteps_;   ///< made along with the vector engine
};
