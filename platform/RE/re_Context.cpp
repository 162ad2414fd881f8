#include <RE/re_Context.h>

#include <RE/re_Join.h>
#include <RE/re_Times.h>

#include <dlfcn.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <vector>

namespace {

constexpr size_t contextCount = 2;

bool hasExtension(const char* extensions, std::string_view name)
{
    if (extensions == nullptr)
        return false;
    return re_join(" ", extensions, " ").find(re_join(" ", name, " ")) != std::string::npos;
}

template <class Function>
Function entryPoint(const char* name)
{
    return reinterpret_cast<Function>(eglGetProcAddress(name));
}

/// A display to try, in words.
struct Candidate
{
    std::string name;
    EGLenum platform;
    void* native;
    bool isSoftware;
};

/// Looks for OpenGL once and keeps what it finds for as long as the process lives.
class Search
{
public:
    Search()
    {
        const re_Timer timer(&RE_GPUTimes::compile);
        search();
    }

    RE_GPUReport report;
    std::array<std::unique_ptr<re_Context>, contextCount> contexts;

private:
    void search()
    {
        const char* set = std::getenv("KREILUGE_GPU");
        const std::string_view wish = set != nullptr && *set != '\0' ? set : "auto";
        if (wish == "off")
            return refuse("KREILUGE_GPU", "off");
        if (wish != "auto" && wish != "software")
            return refuse("KREILUGE_GPU", re_join("'", wish, "'; expected off, software or auto"));
        // libepoxy ends the process when it misses one of these.
        if (dlopen("libEGL.so.1", RTLD_LAZY) == nullptr)
            return refuse("libEGL.so.1", "not found");
        if (dlopen("libOpenGL.so.0", RTLD_LAZY) == nullptr && dlopen("libGL.so.1", RTLD_LAZY) == nullptr)
            return refuse("libOpenGL.so.0, libGL.so.1", "not found");
        for (const Candidate& candidate : candidates(wish == "software")) {
            if (attempt(candidate, wish == "software"))
                return;
            for (std::unique_ptr<re_Context>& refused : contexts)
                refused.reset();
        }
        if (report.refused.isEmpty())
            refuse("EGL", "no device");
    }

    void refuse(const std::string& what, const std::string& why)
    {
        report.refused.append(report.refused.isEmpty() ? "" : "\n").append(what).append(": ").append(why);
    }

    /// Devices of the machine, those in software, and what needs no device.
    std::vector<Candidate> candidates(bool softwareOnly)
    {
        std::vector<Candidate> hardware, software;
        const char* extensions = eglQueryString(EGL_NO_DISPLAY, EGL_EXTENSIONS);
        if (hasExtension(extensions, "EGL_EXT_device_enumeration") ||
            hasExtension(extensions, "EGL_EXT_device_base")) {
            const auto queryDevices = entryPoint<PFNEGLQUERYDEVICESEXTPROC>("eglQueryDevicesEXT");
            const auto queryString = entryPoint<PFNEGLQUERYDEVICESTRINGEXTPROC>("eglQueryDeviceStringEXT");
            std::array<EGLDeviceEXT, 32> devices{};
            EGLint count = 0;
            if (queryDevices != nullptr && queryString != nullptr)
                queryDevices(static_cast<EGLint>(devices.size()), devices.data(), &count);
            for (EGLint i = 0; i < count; ++i) {
                const EGLDeviceEXT device = devices[static_cast<size_t>(i)];
                const bool isSoftware =
                    hasExtension(queryString(device, EGL_EXTENSIONS), "EGL_MESA_device_software");
                (isSoftware ? software : hardware)
                    .push_back({re_join("EGL device ", std::to_string(i), isSoftware ? " (software)" : ""),
                                EGL_PLATFORM_DEVICE_EXT, device, isSoftware});
            }
        }
        std::vector<Candidate> all = softwareOnly ? std::vector<Candidate>() : hardware;
        all.insert(all.end(), software.begin(), software.end());
        if (hasExtension(extensions, "EGL_MESA_platform_surfaceless"))
            all.push_back(
                {"EGL without a device", EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, false});
        return all;
    }

    bool attempt(const Candidate& candidate, bool softwareOnly)
    {
        const auto getDisplay = entryPoint<PFNEGLGETPLATFORMDISPLAYEXTPROC>("eglGetPlatformDisplayEXT");
        const EGLDisplay display = getDisplay != nullptr
                                       ? getDisplay(candidate.platform, candidate.native, nullptr)
                                       : EGL_NO_DISPLAY;
        if (display == EGL_NO_DISPLAY || eglInitialize(display, nullptr, nullptr) == EGL_FALSE) {
            refuse(candidate.name, "cannot be opened");
            return false;
        }
        const char* extensions = eglQueryString(display, EGL_EXTENSIONS);
        for (const char* needed : {"EGL_KHR_surfaceless_context", "EGL_KHR_no_config_context"})
            if (!hasExtension(extensions, needed)) {
                refuse(candidate.name, re_join("lacks ", needed));
                return false;
            }
        for (std::unique_ptr<re_Context>& made : contexts)
            if (!makeContext(display, made)) {
                refuse(candidate.name, "no OpenGL 4.3");
                return false;
            }
        const re_CurrentContext current(contexts[0].get());
        if (!current.isCurrent()) {
            refuse(candidate.name, "its context cannot be used");
            return false;
        }
        const auto text = [](GLenum what) {
            const auto* known = reinterpret_cast<const char*>(glGetString(what));
            return std::string(known != nullptr ? known : "unknown");
        };
        const std::string renderer = text(GL_RENDERER);
        report.software = candidate.isSoftware;
        for (const char* name : {"llvmpipe", "softpipe", "swrast", "Software", "Basic Render"})
            report.software = report.software || renderer.find(name) != std::string::npos;
        if (softwareOnly && !report.software) {
            refuse(candidate.name, re_join(renderer, " is no software"));
            return false;
        }
        report.name = UT_String(renderer).append(", OpenGL ").append(text(GL_VERSION));
        report.found = true;
        return true;
    }

    static bool makeContext(EGLDisplay display, std::unique_ptr<re_Context>& made)
    {
        static constexpr EGLint wanted[] = {EGL_CONTEXT_MAJOR_VERSION,
                                            4,
                                            EGL_CONTEXT_MINOR_VERSION,
                                            3,
                                            EGL_CONTEXT_OPENGL_PROFILE_MASK,
                                            EGL_CONTEXT_OPENGL_CORE_PROFILE_BIT,
                                            EGL_NONE};
        const EGLenum former = eglQueryAPI();
        eglBindAPI(EGL_OPENGL_API);
        const EGLContext context = eglCreateContext(display, EGL_NO_CONFIG_KHR, EGL_NO_CONTEXT, wanted);
        eglBindAPI(former);
        if (context != EGL_NO_CONTEXT)
            made = std::make_unique<re_Context>(display, context);
        return context != EGL_NO_CONTEXT;
    }
};

/// Never destroyed: threads may compute until the process ends.
Search& found()
{
    static auto* const search = new Search;
    return *search;
}

GLuint compile(const std::string& text, UT_String& error)
{
    const auto logOf = [](GLuint object, auto getLength, auto getLog) {
        GLint length = 0;
        getLength(object, GL_INFO_LOG_LENGTH, &length);
        std::string log(static_cast<size_t>(length) + 1, '\0');
        getLog(object, length, nullptr, log.data());
        return UT_String(log.c_str());
    };
    const GLuint shader = glCreateShader(GL_COMPUTE_SHADER);
    const char* source = text.c_str();
    glShaderSource(shader, 1, &source, nullptr);
    glCompileShader(shader);
    GLint done = GL_FALSE;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &done);
    if (done == GL_FALSE) {
        error = logOf(shader, glGetShaderiv, glGetShaderInfoLog);
        glDeleteShader(shader);
        return 0;
    }
    const GLuint program = glCreateProgram();
    glAttachShader(program, shader);
    glLinkProgram(program);
    glDeleteShader(shader);
    glGetProgramiv(program, GL_LINK_STATUS, &done);
    if (done == GL_FALSE) {
        error = logOf(program, glGetProgramiv, glGetProgramInfoLog);
        glDeleteProgram(program);
        return 0;
    }
    return program;
}

} // namespace

const RE_GPUReport& REfindGPU()
{
    return found().report;
}

GLuint re_Context::program(const std::string& text, UT_String& error)
{
    if (const auto known = programs_.find(text); known != programs_.end())
        return known->second;
    const re_Timer timer(&RE_GPUTimes::compile);
    const GLuint program = compile(text, error);
    if (program == 0)
        return 0;
    if (programs_.size() >= mostPrograms) {
        for (const auto& [former, name] : programs_)
            glDeleteProgram(name);
        programs_.clear();
    }
    programs_.emplace(text, program);
    re_count(&RE_GPUTimes::programs);
    return program;
}

GLuint re_Context::takeBuffer(int64_t bytes)
{
    if (const auto known = buffers_.find(bytes); known != buffers_.end()) {
        const GLuint buffer = known->second;
        buffers_.erase(known);
        bufferBytes_ -= bytes;
        return buffer;
    }
    GLuint buffer = 0;
    glGenBuffers(1, &buffer);
    glBindBuffer(GL_SHADER_STORAGE_BUFFER, buffer);
    glBufferData(GL_SHADER_STORAGE_BUFFER, bytes, nullptr, GL_DYNAMIC_COPY);
    return buffer;
}

void re_Context::giveBuffer(GLuint buffer, int64_t bytes)
{
    if (bytes > mostBufferBytes) {
        glDeleteBuffers(1, &buffer);
        return;
    }
    if (bufferBytes_ + bytes > mostBufferBytes) { // of other sizes, as it seems
        for (const auto& [size, name] : buffers_)
            glDeleteBuffers(1, &name);
        buffers_.clear();
        bufferBytes_ = 0;
    }
    buffers_.emplace(bytes, buffer);
    bufferBytes_ += bytes;
}

re_CurrentContext::re_CurrentContext(re_Context* given)
    : formerApi_(eglQueryAPI()), formerDisplay_(eglGetCurrentDisplay()),
      formerContext_(eglGetCurrentContext()), formerDraw_(eglGetCurrentSurface(EGL_DRAW)),
      formerRead_(eglGetCurrentSurface(EGL_READ)), context_(given)
{
    static std::atomic<size_t> turn = 0;
    for (size_t i = 0; context_ == nullptr && i < contextCount; ++i) {
        std::unique_lock attempt(found().contexts[i]->mutex_, std::try_to_lock);
        if (attempt.owns_lock()) {
            context_ = found().contexts[i].get();
            lock_ = std::move(attempt);
        }
    }
    if (context_ == nullptr)
        context_ = found().contexts[turn++ % contextCount].get();
    if (!lock_.owns_lock())
        lock_ = std::unique_lock(context_->mutex_);
    eglBindAPI(EGL_OPENGL_API);
    isCurrent_ =
        eglMakeCurrent(context_->display_, EGL_NO_SURFACE, EGL_NO_SURFACE, context_->context_) == EGL_TRUE;
}

re_CurrentContext::~re_CurrentContext()
{
    eglMakeCurrent(context_->display_, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    eglBindAPI(formerApi_);
    if (formerContext_ != EGL_NO_CONTEXT)
        eglMakeCurrent(formerDisplay_, formerDraw_, formerRead_, formerContext_);
}
