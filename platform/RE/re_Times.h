#pragma once

#include <RE/RE_OpenGL.h>
#include <UT/UT_StopWatch.h>

/// Counts the time until its end as a step of computations.
class re_Timer
{
public:
    explicit re_Timer(double RE_GPUTimes::*step) : step_(step) {}
    ~re_Timer();
    re_Timer(const re_Timer&) = delete;
    re_Timer& operator=(const re_Timer&) = delete;

private:
    double RE_GPUTimes::*step_;
    UT_StopWatch watch_;
};

void re_count(int64_t RE_GPUTimes::*what);
