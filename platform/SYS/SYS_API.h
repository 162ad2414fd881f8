#pragma once

/// Marks what the platform library exports; everything else in it is hidden.
#define PLATFORM_API __attribute__((visibility("default")))
