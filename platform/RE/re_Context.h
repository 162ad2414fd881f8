#pragma once

#include <RE/RE_OpenGL.h>

#include <epoxy/egl.h>
#include <epoxy/gl.h>

#include <map>
#include <mutex>
#include <string>

/// One of the process's OpenGL contexts, and the programs that were compiled in it.
/// Threads: through re_CurrentContext alone.
class re_Context
{
public:
    re_Context(EGLDisplay display, EGLContext context) : display_(display), context_(context) {}
    ~re_Context() { eglDestroyContext(display_, context_); }
    re_Context(const re_Context&) = delete;
    re_Context& operator=(const re_Context&) = delete;

    /// The program of this text, compiled when it is first seen; 0 and the log when it does not compile.
    GLuint program(const std::string& text, UT_String& error);

    /// A storage buffer, which may have been in use before: making one costs more than filling it.
    GLuint takeBuffer(int64_t bytes);
    /// Takes it back, when the GPU is done with it.
    void giveBuffer(GLuint buffer, int64_t bytes);

private:
    friend class re_CurrentContext;
    static constexpr size_t mostPrograms = 256;
    static constexpr int64_t mostBufferBytes = 256 << 20;

    EGLDisplay display_;
    EGLContext context_;
    std::mutex mutex_;
    std::map<std::string, GLuint> programs_;
    std::multimap<int64_t, GLuint> buffers_; ///< that nobody uses, by size
    int64_t bufferBytes_ = 0;
};

/// Holds a context for the calling thread, which has the context that it had before again afterwards.
class re_CurrentContext
{
public:
    /// Of those that were found the first that is free; `given` if there is one.
    explicit re_CurrentContext(re_Context* given = nullptr);
    ~re_CurrentContext();
    re_CurrentContext(const re_CurrentContext&) = delete;
    re_CurrentContext& operator=(const re_CurrentContext&) = delete;

    /// False where the driver did not let it be current.
    bool isCurrent() const { return isCurrent_; }
    re_Context& context() { return *context_; }

private:
    EGLenum formerApi_ = EGL_NONE;
    EGLDisplay formerDisplay_ = EGL_NO_DISPLAY;
    EGLContext formerContext_ = EGL_NO_CONTEXT;
    EGLSurface formerDraw_ = EGL_NO_SURFACE;
    EGLSurface formerRead_ = EGL_NO_SURFACE;
    re_Context* context_ = nullptr;
    std::unique_lock<std::mutex> lock_;
    bool isCurrent_ = false;
};
