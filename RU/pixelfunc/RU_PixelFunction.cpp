#include <RU/pixelfunc/RU_PixelFunction.h>

#include <RU/pixelfunc/ru_ChainRows.h>
#include <RU/pixelfunc/ru_RowSteps.h>

#include <mutex>
#include <utility>

namespace {

void copyRows(const float* const* in, float* const* out, int64_t count)
{
    for (int c = 0; c < 4; ++c)
        ru_copyRow(in[c], out[c], count);
}

} // namespace

RU_PixelFunction::~RU_PixelFunction()
{
    // In a loop: a long chain must not exhaust the stack.
    while (next_ != nullptr) {
        RU_PixelFunction* function = next_;
        next_ = function->next_;
        function->next_ = nullptr;
        delete function;
    }
}

RU_ScalarForm RU_PixelFunction::getPixelFunction() const
{
    return defaultPixelFunction;
}

RU_VectorForm RU_PixelFunction::getVectorFunction() const
{
    rememberScalarFunction();
    return defaultVectorFunction;
}

RU_RowForm RU_PixelFunction::getRowFunction() const
{
    rememberScalarFunction();
    return {defaultRowFunction};
}

RU_VectorRowForm RU_PixelFunction::getVectorRowFunction() const
{
    return getVectorFunction() == defaultVectorFunction ? defaultVectorRowFunction : pixelByPixel;
}

void RU_PixelFunction::rememberScalarFunction() const
{
    // Written once: threads that evaluate one engine may read it while another is built.
    if (const RU_ScalarForm scalar = getPixelFunction(); scalarFunction_ != scalar)
        scalarFunction_ = scalar;
}

void RU_PixelFunction::getPixelShader(UT_String& body)
{
    body.clear();
}

void RU_PixelFunction::setScope(const bool* scope)
{
    for (int c = 0; c < 4; ++c)
        scope_[c] = scope[c];
}

bool RU_PixelFunction::isPartialScope() const
{
    return scope_[1] != scope_[0] || scope_[2] != scope_[0] || scope_[3] != scope_[0];
}

bool RU_PixelFunction::areAllComponentsNeeded() const
{
    for (const RU_PixelFunction* f = this; f != nullptr; f = f->next_)
        if (f->needAllComponents())
            return true;
    return false;
}

bool RU_PixelFunction::isComponentDependent() const
{
    for (const RU_PixelFunction* f = this; f != nullptr; f = f->next_)
        if (f->eachComponentDifferent() || f->isPartialScope())
            return true;
    return false;
}

void RU_PixelFunction::appendToEngine(RU_PixelFunction* function, int64_t entries)
{
    if (engineFunctions_.entries() < entries)
        engineFunctions_.append(function);
}

// The lists that the builders look at are set last, so that one for which memory ran out is built anew.

void RU_PixelFunction::buildPixelEngine()
{
    const std::lock_guard guard(lock_);
    if (pixelEngine_.entries() != 0)
        return;
    UT_PtrArray<RU_ScalarForm> scalars;
    const auto rows = std::make_shared<ru_ComponentSteps>();
    for (RU_PixelFunction* f = this; f != nullptr; f = f->next_) {
        scalars.append(f->getPixelFunction());
        rows->add(*f);
        appendToEngine(f, scalars.entries());
    }
    rowSteps_ = rows;
    pixelEngine_ = std::move(scalars);
}

void RU_PixelFunction::buildVectorEngine()
{
    const std::lock_guard guard(lock_);
    if (vectorEngine_.entries() != 0)
        return;
    UT_PtrArray<RU_VectorForm> vectors;
    const auto rows = std::make_shared<ru_PixelSteps>();
    for (RU_PixelFunction* f = this; f != nullptr; f = f->next_) {
        vectors.append(f->getVectorFunction());
        rows->add(*f);
        appendToEngine(f, vectors.entries());
    }
    pixelSteps_ = rows;
    vectorEngine_ = std::move(vectors);
}

float RU_PixelFunction::processValue(float value, int component) const
{
    for (int64_t i = 0; i < pixelEngine_.entries(); ++i) {
        RU_PixelFunction* function = engineFunctions_(i);
        if (function->isScoped(component))
            value = pixelEngine_(i)(function, value, component);
    }
    return value;
}

void RU_PixelFunction::processRow(const float* in, float* out, int64_t count, int component) const
{
    if (rowSteps_ != nullptr)
        rowSteps_->of[component].run(in, out, count);
    else
        ru_copyRow(in, out, count);
}

void RU_PixelFunction::processValues(float** components) const
{
    for (int64_t i = 0; i < vectorEngine_.entries(); ++i) {
        RU_PixelFunction* function = engineFunctions_(i);
        vectorEngine_(i)(function, components, function->scope_);
    }
}

void RU_PixelFunction::processRows(const float* const* in, float* const* out, int64_t count) const
{
    if (pixelSteps_ != nullptr)
        pixelSteps_->run(in, out, count);
    else
        copyRows(in, out, count);
}

float RU_PixelFunction::defaultPixelFunction(RU_PixelFunction*, float value, int)
{
    return value;
}

void RU_PixelFunction::defaultVectorFunction(RU_PixelFunction* function, float** components,
                                             const bool* scope)
{
    for (int c = 0; c < 4; ++c)
        if (components[c] != nullptr && scope[c])
            *components[c] = function->scalarFunction_(function, *components[c], c);
}

void RU_PixelFunction::defaultRowFunction(RU_PixelFunction* function, const float* in, float* out,
                                          int64_t count, int component)
{
    for (int64_t i = 0; i < count; ++i)
        out[i] = function->scalarFunction_(function, in[i], component);
}

void RU_PixelFunction::defaultVectorRowFunction(RU_PixelFunction* function, const float* const* in,
                                                float* const* out, int64_t count, const bool* scope)
{
    const RU_RowForm form = function->getRowFunction();
    for (int c = 0; c < 4; ++c)
        if (in[c] == nullptr || !scope[c])
            ru_copyRow(in[c], out[c], count);
        else
            form.run(function, in[c], out[c], count, c);
}

void RU_PixelFunction::pixelByPixel(RU_PixelFunction* function, const float* const* in, float* const* out,
                                    int64_t count, const bool* scope)
{
    copyRows(in, out, count);
    const RU_VectorForm form = function->getVectorFunction();
    for (int64_t i = 0; i < count; ++i) {
        float* pixel[4];
        for (int c = 0; c < 4; ++c)
            pixel[c] = out[c] != nullptr ? out[c] + i : nullptr;
        form(function, pixel, scope);
    }
}

void RU_PixelFunction::buildShader(RE_OGLComputeGPU* gpu, int numComps, UT_String& functions,
                                   UT_String& statements)
{
    const std::lock_guard guard(shaderLock_);
    setNumComps(numComps);
    buildShaderEngine(gpu);
    functions = getFunctionCode();
    statements = getShaderCode();
}

void RU_PixelFunction::buildShaderEngine(RE_OGLComputeGPU* gpu)
{
    shader_.beginProgram();
    int index = 0;
    for (RU_PixelFunction* f = this; f != nullptr; f = f->next_) {
        UT_String body;
        f->declareShader(*this, gpu, ++index, body);
        shader_.defineAndCall(body, f->scope_);
    }
    shader_.endProgram();
}

void RU_PixelFunction::declareShader(RU_PixelFunction& head, RE_OGLComputeGPU* gpu, int index,
                                     UT_String& body)
{
    builder_ = &head.shader_;
    builder_->begin(gpu, index);
    getPixelShader(body);
    builder_ = nullptr;
}

void RU_PixelFunction::addConstant(const char* name, RE_GPUType type, int vectorSize, const void* data,
                                   int count)
{
    builder_->addConstant(name, type, vectorSize, data, count);
}

void RU_PixelFunction::addLocal(const char* name, RE_GPUType type, int vectorSize)
{
    builder_->addLocal(name, type, vectorSize);
}

void RU_PixelFunction::addArray(const char* name, RE_GPUType type, int vectorSize, int width, int height,
                                const void* data)
{
    builder_->addArray(name, type, vectorSize, width, height, data);
}

void RU_PixelFunction::addArray(const char* name, RE_GPUType type, int vectorSize, int width, int height,
                                const void* d0, const void* d1, const void* d2, const void* d3)
{
    builder_->addArray(name, type, vectorSize, width, height, d0, d1, d2, d3);
}

void RU_PixelFunction::addFunction(const char* name, const char* code)
{
    builder_->addFunction(name, code);
}

void RU_PixelFunction::usesGlobal(const char* name)
{
    builder_->usesGlobal(name);
}

void RU_PixelFunction::skipFunction()
{
    builder_->skipFunction();
}
