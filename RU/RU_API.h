#pragma once

/// Marks what the library exports; everything else in it is hidden.
#define RU_API __attribute__((visibility("default")))
