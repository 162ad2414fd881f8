#include <SYS/SYS_Fail.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

void SYSfail(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    std::vfprintf(stderr, format, arguments);
    va_end(arguments);
    std::fputc('\n', stderr);
    std::abort();
}
