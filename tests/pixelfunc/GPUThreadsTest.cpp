#include <RE/RE_OGLComputeGPU.h>
#include <RE/RE_OpenGL.h>
#include <RU/pixelfunc/RU_AddFunc.h>
#include <RU/pixelfunc/RU_GPUPixelEngine.h>
#include <RU/pixelfunc/RU_PixelEngine.h>
#include <epoxy/egl.h>
#include <epoxy/gl.h>
#include <reference/Parity.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace reference;

namespace {

constexpr int threads = 8, rounds = 200, width = 33, height = 9;

std::atomic<int> contexts, programs, buffers, deleted;

/// Counts what is made, at libepoxy's pointers to the driver, which their first calls set.
void countObjects()
{
    contexts = programs = buffers = deleted = 0;
    static const auto createContext = epoxy_eglCreateContext;
    epoxy_eglCreateContext = [](EGLDisplay display, EGLConfig config, EGLContext with, const EGLint* wanted) {
        return ++contexts, createContext(display, config, with, wanted);
    };
    static const auto createProgram = epoxy_glCreateProgram;
    epoxy_glCreateProgram = [] { return ++programs, createProgram(); };
    static const auto genBuffers = epoxy_glGenBuffers;
    epoxy_glGenBuffers = [](GLsizei count, GLuint* names) {
        buffers += count;
        genBuffers(count, names);
    };
    static const auto deleteBuffers = epoxy_glDeleteBuffers;
    epoxy_glDeleteBuffers = [](GLsizei count, const GLuint* names) {
        deleted += count;
        deleteBuffers(count, names);
    };
}

/// As many functions as its length, so that programs differ.
std::unique_ptr<RU_PixelFunction> chainOf(int length)
{
    auto head = std::make_unique<RU_AddFunc>(0.015625f);
    RU_PixelFunction* last = head.get();
    for (int i = 1; i < length; ++i, last = last->next())
        last->setNext(new RU_AddFunc(0.03125f));
    return head;
}

template <class Engine>
uint16_t lastCode(RU_PixelFunction& chain, const Tiles& in)
{
    Tiles out(PXL_FORMAT_uint16, width, height, 1);
    Engine(&chain).pixelAdjust(&out.list, &in.list, 0.0f, nullptr, -1, nullptr);
    return out.data<uint16_t>(0)[width * height - 1];
}

} // namespace

TEST(GPUThreads, ShareContextsAndLeaveNothingBehind)
{
    if (!REfindGPU().found)
        GTEST_SKIP() << REfindGPU().refused.buffer();
    Tiles in(PXL_FORMAT_uint16, width, height, 1);
    in.data<uint16_t>(0)[width * height - 1] = 1000;
    const auto shared = chainOf(threads + 1);
    EXPECT_EQ(lastCode<RU_GPUPixelEngine>(*shared, in), lastCode<RU_PixelEngine>(*shared, in));

    countObjects();
    const EGLDisplay display =
        eglGetPlatformDisplayEXT(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
    eglInitialize(display, nullptr, nullptr);
    std::vector<std::jthread> running;
    running.reserve(threads);
    for (int t = 0; t < threads; ++t)
        running.emplace_back([&, t] {
            EGLContext mine = EGL_NO_CONTEXT;
            eglBindAPI(EGL_OPENGL_API);
            if (t % 2 == 0)
                mine = eglCreateContext(display, EGL_NO_CONFIG_KHR, EGL_NO_CONTEXT, nullptr);
            EXPECT_EQ(eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, mine), EGL_TRUE);
            const auto own = chainOf(t + 1);
            for (RU_PixelFunction* chain : {shared.get(), own.get()}) {
                const uint16_t expected = lastCode<RU_PixelEngine>(*chain, in);
                int wrong = 0;
                for (int i = 0; i < rounds; ++i)
                    wrong += lastCode<RU_GPUPixelEngine>(*chain, in) != expected ? 1 : 0;
                EXPECT_EQ(wrong, 0);
            }
            EXPECT_EQ(eglGetCurrentContext(), mine);
            eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
            if (mine != EGL_NO_CONTEXT)
                eglDestroyContext(display, mine);
        });
    running.clear();
    EXPECT_EQ(contexts, threads / 2); // the test's own
    EXPECT_LE(programs, 2 * threads + 1);
    EXPECT_LE(buffers, 2 * threads * 2); // all threads at once in both contexts; then they are used again
    EXPECT_EQ(deleted, 0);
}

TEST(GPUThreads, AnObjectMayComputeAgainInWhicheverContext)
{
    if (!REfindGPU().found)
        GTEST_SKIP() << REfindGPU().refused.buffer();
    std::atomic<int> wrong = 0;
    std::vector<std::jthread> running;
    running.reserve(threads);
    for (int t = 0; t < threads; ++t)
        running.emplace_back([&wrong, t] {
            for (int i = 0; i < rounds; ++i) {
                const float in = static_cast<float>(t);
                float out = 0.0f;
                UT_String error;
                const std::unique_ptr<RE_OGLComputeGPU> gpu = RE_OGLComputeGPU::create();
                gpu->setArray2D("red", RE_GPU_FLOAT32, 1, 1, 1, &in);
                gpu->setOutputArray2D("red", RE_GPU_FLOAT32, 1, 1, 1, &out);
                const bool done = gpu->setProgram("again", "OUT_red(IN_red + 1.0);", true) &&
                                  gpu->compute(error, false) && gpu->compute(error, true) &&
                                  gpu->getResults();
                wrong += done && out == in + 1.0f && !gpu->getResults() ? 0 : 1;
            }
        });
    running.clear();
    EXPECT_EQ(wrong, 0);
}
