#include <RE/re_Collector.h>
#include <RE/re_Context.h>
#include <RE/re_Program.h>
#include <RE/re_Times.h>

#include <algorithm>
#include <vector>

namespace {

/// By thread, as a computation may be gone when somebody asks.
UT_String& lastError()
{
    thread_local UT_String error;
    return error;
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

class OpenGLCompute : public re_Collector
{
public:
    ~OpenGLCompute() override
    {
        if (!buffers_.empty()) {
            const re_CurrentContext current(context_);
            if (current.isCurrent())
                giveBuffers();
        }
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
        re_CurrentContext current(buffers_.empty() ? nullptr : context_);
        context_ = &current.context();
        UT_String why;
        if (!current.isCurrent())
            return failed("the OpenGL context cannot be used", error);
        if (!run(current.context(), why) || !finish(wait, why)) {
            dropBuffers();
            return failed(why.view(), error);
        }
        return true;
    }

    bool getResults() override
    {
        UT_String why;
        if (buffers_.empty())
            return failed("nothing was computed", why);
        const re_CurrentContext current(context_);
        if (!current.isCurrent()) {
            buffers_.clear();
            return failed("the OpenGL context cannot be used", why);
        }
        const re_Timer timer(&RE_GPUTimes::readBack);
        for (size_t i = 0; i < outputs_.size(); ++i) {
            glBindBuffer(GL_SHADER_STORAGE_BUFFER, buffers_[inputs_.size() + i].name);
            glGetBufferSubData(GL_SHADER_STORAGE_BUFFER, 0, declared_.outputs[i].bytes(), outputs_[i]);
        }
        if (!isWell(why)) {
            dropBuffers();
            return failed(why.view(), why);
        }
        giveBuffers();
        return true;
    }

private:
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
        GLint64 most = 0;
        glGetInteger64v(GL_MAX_SHADER_STORAGE_BLOCK_SIZE, &most);
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

    /// After an error, as it may be theirs.
    void dropBuffers()
    {
        for (const Buffer& buffer : buffers_)
            glDeleteBuffers(1, &buffer.name);
        buffers_.clear();
    }

    struct Buffer
    {
        GLuint name;
        int64_t bytes;
    };

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
