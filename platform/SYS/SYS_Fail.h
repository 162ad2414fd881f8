#pragma once

#include <SYS/SYS_API.h>

/// Prints a message, as printf() does, with an end of line, on the standard error stream and aborts. For what
/// only checked builds look at.
[[noreturn]] PLATFORM_API void SYSfail(const char* format, ...) __attribute__((format(printf, 1, 2)));
