#include <RE/re_Context.h>
#include <RE/re_Program.h>
#include <RE/re_Times.h>
#include <SYS/SYS_Half.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace {

/// By thread, as a computation may be gone when somebody asks.
UT_String& lastError()
{
    thread_local UT_String error;
    return error;
}

/// A constant's values in the type in which a program takes them.
re_Constant makeConstant(const char* name, RE_GPUType type, int vectorSize, const void* data, int count,
                         bool normalize)
{
    re_Constant made{name, type, vectorSize, count, {}, {}};
    const int side = type >= RE_GPU_MATRIX2 ? type - RE_GPU_MATRIX2 + 2 : 1;
    const auto elements = static_cast<size_t>(int64_t(vectorSize) * count * side * side);
    const auto floats = [&]<class T>(const T* values) { made.floats.assign(values, values + elements); };
    const auto integers = [&]<class T>(const T* values, double white) {
        for (size_t i = 0; i < elements; ++i)
            if (normalize)
                made.floats.push_back(static_cast<float>(static_cast<double>(values[i]) / white));
            else
                made.integers.push_back(static_cast<int32_t>(values[i]));
    };
    switch (type) {
    case RE_GPU_UINT8:
        integers(static_cast<const uint8_t*>(data), 255.0);
        break;
    case RE_GPU_UINT16:
        integers(static_cast<const uint16_t*>(data), 65535.0);
        break;
    case RE_GPU_UINT32:
        integers(static_cast<const uint32_t*>(data), 4294967295.0);
        break;
    case RE_GPU_INT8:
        integers(static_cast<const int8_t*>(data), 127.0);
        break;
    case RE_GPU_INT16:
        integers(static_cast<const int16_t*>(data), 32767.0);
        break;
    case RE_GPU_INT32:
        integers(static_cast<const int32_t*>(data), 2147483647.0);
        break;
    case RE_GPU_FLOAT16:
        floats(static_cast<const fpreal16*>(data));
        break;
    default:
        floats(static_cast<const float*>(data));
    }
    return made;
}

void setUniform(GLuint program, const re_Constant& constant)
{
    const GLint at = glGetUniformLocation(program, constant.name.c_str());
    if (at < 0) // nothing reads it
        return;
    const GLsizei count = constant.count;
    const float* floats = constant.floats.data();
    const int32_t* integers = constant.integers.data();
    if (constant.type == RE_GPU_MATRIX2)
        return glUniformMatrix2fv(at, count, GL_FALSE, floats);
    if (constant.type == RE_GPU_MATRIX3)
        return glUniformMatrix3fv(at, count, GL_FALSE, floats);
    if (constant.type == RE_GPU_MATRIX4)
        return glUniformMatrix4fv(at, count, GL_FALSE, floats);
    const bool isFloat = !constant.floats.empty();
    switch (constant.vectorSize) {
    case 1:
        return isFloat ? glUniform1fv(at, count, floats) : glUniform1iv(at, count, integers);
    case 2:
        return isFloat ? glUniform2fv(at, count, floats) : glUniform2iv(at, count, integers);
    case 3:
        return isFloat ? glUniform3fv(at, count, floats) : glUniform3iv(at, count, integers);
    default:
        return isFloat ? glUniform4fv(at, count, floats) : glUniform4iv(at, count, integers);
    }
}

class OpenGLCompute : public RE_OGLComputeGPU
{
public:
    ~OpenGLCompute() override
    {
        if (!buffers_.empty()) {
            const re_CurrentContext current(context_);
            giveBuffers();
        }
    }

    void setConstant(const char* name, RE_GPUType type, int vectorSize, const void* data, int count,
                     bool normalize) override
    {
        declared_.constants.push_back(makeConstant(name, type, vectorSize, data, count, normalize));
    }

    void setArray2D(const char* name, RE_GPUType type, int vectorSize, int width, int height,
                    const void* data) override
    {
        const re_Array& array = add(declared_.inputs, name, type, vectorSize, width, height);
        const auto* bytes = static_cast<const uint8_t*>(data);
        inputs_.emplace_back(bytes, bytes + array.bytes());
    }

    void setArray2D(const char* name, RE_GPUType type, int vectorSize, int width, int height, const void* d0,
                    const void* d1, const void* d2, const void* d3) override
    {
        const re_Array& array = add(declared_.inputs, name, type, vectorSize, width, height);
        const void* const planes[] = {d0, d1, d2, d3};
        const auto element = static_cast<size_t>(re_Layout(type).bits / 8);
        const auto components = static_cast<size_t>(vectorSize);
        std::vector<uint8_t> together(static_cast<size_t>(array.bytes()));
        for (size_t at = 0; at < together.size(); at += element)
            if (const void* plane = planes[at / element % components]; plane != nullptr)
                std::memcpy(&together[at],
                            static_cast<const uint8_t*>(plane) + at / element / components * element,
                            element);
        inputs_.push_back(std::move(together));
    }

    void setOutputArray2D(const char* name, RE_GPUType type, int vectorSize, int width, int height,
                          void* data) override
    {
        add(declared_.outputs, name, type, vectorSize, width, height);
        outputs_.push_back(data);
    }

    bool setProgram(const char* name, const char* text, bool normalize) override
    {
        lastError() = REfindGPU().found ? UT_String() : REfindGPU().refused;
        if (!REfindGPU().found)
            return false;
        name_ = name;
        program_ = re_program(declared_, text, normalize);
        return true;
    }

    bool compute(UT_String& error, bool wait) override
    {
        error.clear();
        if (program_.empty() || declared_.outputs.empty())
            return failed("no program, or no output", error);
        re_CurrentContext current;
        context_ = &current.context();
        UT_String why;
        if (!current.isCurrent())
            return failed("the OpenGL context cannot be used", error);
        if (!run(current.context(), why) || !finish(wait, why)) {
            giveBuffers();
            return failed(why.view(), error);
        }
        return true;
    }

    void getResults() override
    {
        if (buffers_.empty())
            return;
        const re_CurrentContext current(context_);
        const re_Timer timer(&RE_GPUTimes::readBack);
        for (size_t i = 0; i < outputs_.size(); ++i) {
            glBindBuffer(GL_SHADER_STORAGE_BUFFER, buffers_[inputs_.size() + i].name);
            glGetBufferSubData(GL_SHADER_STORAGE_BUFFER, 0, declared_.outputs[i].bytes(), outputs_[i]);
        }
        UT_String why;
        if (!isWell(why))
            failed(why.view(), why);
        giveBuffers();
    }

private:
    static const re_Array& add(std::vector<re_Array>& arrays, const char* name, RE_GPUType type,
                               int vectorSize, int width, int height)
    {
        return arrays.emplace_back(re_Array{name, type, vectorSize, static_cast<uint32_t>(std::max(width, 0)),
                                            static_cast<uint32_t>(std::max(height, 0))});
    }

    bool run(re_Context& context, UT_String& error)
    {
        while (glGetError() != GL_NO_ERROR) {
        }
        const GLuint program = context.program(program_, error);
        if (program == 0 || !fillBuffers(error))
            return false;
        re_count(&RE_GPUTimes::computations);
        const re_Timer timer(&RE_GPUTimes::run);
        const re_Array& size = declared_.outputs[0];
        const uint32_t count = size.width * size.height;
        glUseProgram(program);
        glUniform1ui(glGetUniformLocation(program, "RE_width"), size.width);
        glUniform1ui(glGetUniformLocation(program, "RE_count"), count);
        for (const re_Constant& constant : declared_.constants)
            setUniform(program, constant);
        for (const re_Array& input : declared_.inputs)
            glUniform2ui(glGetUniformLocation(program, ("RE_size_" + input.name).c_str()), input.width,
                         input.height);
        constexpr uint32_t mostGroups = 65535; // in each direction, everywhere
        const uint64_t perGroup = uint64_t(re_groupSize) * declared_.pixelsPerInvocation();
        const auto groups = static_cast<uint32_t>((count + perGroup - 1) / perGroup);
        if (groups > 0)
            glDispatchCompute(std::min(groups, mostGroups), (groups + mostGroups - 1) / mostGroups, 1);
        return true;
    }

    bool fillBuffers(UT_String& error)
    {
        const re_Timer timer(&RE_GPUTimes::upload);
        GLint most = 0;
        glGetIntegerv(GL_MAX_SHADER_STORAGE_BLOCK_SIZE, &most);
        giveBuffers();
        for (size_t i = 0; i < declared_.inputs.size() + declared_.outputs.size(); ++i) {
            const bool isInput = i < inputs_.size();
            const re_Array& array = isInput ? declared_.inputs[i] : declared_.outputs[i - inputs_.size()];
            const int64_t bytes = (std::max<int64_t>(array.bytes(), 1) + 3) / 4 * 4;
            if (bytes > most) {
                error = UT_String("array ").append(array.name).append(": larger than the GPU allows");
                return false;
            }
            buffers_.push_back({context_->takeBuffer(bytes), bytes});
            glBindBufferBase(GL_SHADER_STORAGE_BUFFER, static_cast<GLuint>(i), buffers_[i].name);
            if (isInput)
                glBufferSubData(GL_SHADER_STORAGE_BUFFER, 0, array.bytes(), inputs_[i].data());
        }
        return true;
    }

    static bool finish(bool wait, UT_String& error)
    {
        glMemoryBarrier(GL_BUFFER_UPDATE_BARRIER_BIT);
        if (wait) {
            const re_Timer timer(&RE_GPUTimes::run);
            glFinish();
        }
        return isWell(error);
    }

    static bool isWell(UT_String& error)
    {
        const GLenum code = glGetError();
        if (code != GL_NO_ERROR)
            error = UT_String("OpenGL error ").append(std::to_string(code));
        return code == GL_NO_ERROR;
    }

    bool failed(std::string_view why, UT_String& error) const
    {
        lastError() = UT_String(name_.view()).append(": ").append(why);
        error = lastError();
        return false;
    }

    void giveBuffers()
    {
        for (const Buffer& buffer : buffers_)
            context_->giveBuffer(buffer.name, buffer.bytes);
        buffers_.clear();
    }

    struct Buffer
    {
        GLuint name;
        int64_t bytes;
    };

    re_Declared declared_;
    std::vector<std::vector<uint8_t>> inputs_;
    std::vector<void*> outputs_;
    UT_String name_;
    std::string program_;
    re_Context* context_ = nullptr; ///< that the buffers are in
    std::vector<Buffer> buffers_;
};

} // namespace

const UT_String& RElastGPUError()
{
    return lastError();
}

std::unique_ptr<RE_OGLComputeGPU> REmakeOpenGLCompute()
{
    return std::make_unique<OpenGLCompute>();
}
