// In the place of re_OpenGL*.cpp where libepoxy was not found.
#include <RE/RE_OpenGL.h>

namespace {

/// Takes everything and runs nothing.
class Nothing : public RE_OGLComputeGPU
{
public:
    void setConstant(const char*, RE_GPUType, int, const void*, int, bool) override {}
    void setArray2D(const char*, RE_GPUType, int, int, int, const void*) override {}
    void setArray2D(const char*, RE_GPUType, int, int, int, const void*, const void*, const void*,
                    const void*) override
    {
    }
    void setOutputArray2D(const char*, RE_GPUType, int, int, int, void*) override {}
    bool setProgram(const char*, const char*, bool) override { return false; }
    bool compute(UT_String& error, bool) override
    {
        error = REfindGPU().refused;
        return false;
    }
    bool getResults() override { return false; }
};

} // namespace

const RE_GPUReport& REfindGPU()
{
    static const RE_GPUReport report{false, false, {}, "OpenGL: not built in"};
    return report;
}

RE_GPUTimes REgpuTimes()
{
    return {};
}

const UT_String& RElastGPUError()
{
    return REfindGPU().refused;
}

std::unique_ptr<RE_OGLComputeGPU> REmakeOpenGLCompute()
{
    return std::make_unique<Nothing>();
}
