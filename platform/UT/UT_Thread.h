#pragma once

#include <SYS/SYS_API.h>

/// What is known about threads.
class PLATFORM_API UT_Thread
{
public:
    /// The calling thread's number: the smallest one from 1 on that no other living thread has that asked.
    static int getMySequentialThreadIndex();
};
