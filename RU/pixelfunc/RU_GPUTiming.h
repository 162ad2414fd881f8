#pragma once

#include <RU/RU_API.h>
#include <UT/UT_Lock.h>
#include <UT/UT_SpinLock.h>
#include <UT/UT_StopWatch.h>
#include <UT/UT_String.h>

#include <array>
#include <memory>
#include <vector>

/// The seconds that all threads together spent on one step of the GPU engine.
class RU_API RU_GPUTiming
{
public:
    explicit RU_GPUTiming(const char* name) : name_(name) {}
    RU_GPUTiming(const RU_GPUTiming&) = delete;
    RU_GPUTiming& operator=(const RU_GPUTiming&) = delete;

    /// Those of this process, for any number of threads: putting shader texts together, and running them.
    static RU_GPUTiming& buildShader();
    static RU_GPUTiming& compute();

    const UT_String& name() const { return name_; }
    double total() const;

    /// The calling thread's watch; what it shows is counted when it is stopped.
    void start() { watch().start(); }
    void stop();

private:
    static constexpr int inlineWatches = 16;

    UT_StopWatch& watch();

    UT_String name_;
    std::array<UT_StopWatch, inlineWatches> watches_; ///< by the thread's number, from 1 on
    std::vector<std::unique_ptr<UT_StopWatch>> overflow_;
    UT_Lock overflowLock_;
    mutable UT_SpinLock totalLock_;
    double total_ = 0.0;
};
