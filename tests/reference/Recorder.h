#pragma once

#include <RE/RE_OGLComputeGPU.h>

#include <gtest/gtest.h>

#include <mutex>
#include <string>
#include <vector>

namespace reference {

/// What recorders of all threads saw, and what they answer.
struct Log
{
    std::mutex mutex;
    std::vector<std::string> computations;
    bool takesPrograms = true;
    std::string error;
};

class Recorder : public RE_OGLComputeGPU
{
public:
    explicit Recorder(Log& log) : log_(log) {}
    ~Recorder() override
    {
        const std::lock_guard guard(log_.mutex);
        log_.computations.push_back(calls_ + "end");
    }

    void setConstant(const char* name, RE_GPUType type, int size, const void* data, int count,
                     bool normalize) override
    {
        EXPECT_FALSE(normalize);
        std::string numbers;
        for (int i = 0; i < size * count && type == RE_GPU_INT32; ++i)
            numbers += " " + std::to_string(static_cast<const int*>(data)[i]);
        note("constant " + std::string(name) + " =" + numbers);
    }
    void setArray2D(const char* name, RE_GPUType type, int size, int width, int height,
                    const void* data) override
    {
        const auto first = static_cast<int>(*static_cast<const unsigned char*>(data));
        array("in", name, type, size, width, height);
        note(std::to_string(first));
    }
    void setArray2D(const char* name, RE_GPUType type, int size, int width, int height, const void* d0,
                    const void* d1, const void* d2, const void* d3) override
    {
        array("in", name, type, size, width, height);
        for (const void* plane : {d0, d1, d2, d3})
            note(plane ? std::to_string(*static_cast<const int*>(plane)) : "none");
    }
    void setOutputArray2D(const char* name, RE_GPUType type, int size, int width, int height, void*) override
    {
        array("out", name, type, size, width, height);
    }
    bool setProgram(const char* name, const char* text, bool normalize) override
    {
        note(std::string(name) + (normalize ? "\n" : " ?\n") + text);
        return log_.takesPrograms;
    }
    bool compute(UT_String& error, bool) override
    {
        note("compute");
        error = UT_String(log_.error);
        return log_.error.empty();
    }
    bool getResults() override
    {
        note("results");
        return true;
    }

private:
    void note(const std::string& call) { calls_ += call + "\n"; }
    void array(const std::string& what, const char* name, int type, int size, int width, int height)
    {
        note(what + " " + name + " " + std::to_string(type) + " " + std::to_string(size) + " " +
             std::to_string(width) + "x" + std::to_string(height));
    }

    Log& log_;
    std::string calls_;
};

} // namespace reference
