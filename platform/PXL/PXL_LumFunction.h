#pragma once

/// What may stand for the luminance of a pixel: X(enumerator, name, formula).
#define PXL_FOR_EACH_LUM_FUNCTION(X)                                                                         \
    X(PXL_LUM_STANDARD, "standard", "0.3086 red + 0.6094 green + 0.082 blue")                                \
    X(PXL_LUM_NTSC, "ntsc", "0.299 red + 0.587 green + 0.114 blue")                                          \
    X(PXL_LUM_MAX, "max", "the largest of red, green and blue")                                              \
    X(PXL_LUM_MIN, "min", "the smallest of red, green and blue")                                             \
    X(PXL_LUM_AVERAGE, "average", "(red + green + blue) / 3")                                                \
    X(PXL_LUM_RED, "red", "red")                                                                             \
    X(PXL_LUM_GREEN, "green", "green")                                                                       \
    X(PXL_LUM_BLUE, "blue", "blue")                                                                          \
    X(PXL_LUM_COMP4, "comp4", "the fourth component, mostly alpha")

enum PXL_LumFunction : int {
#define PXL_ENUMERATOR(NAME, TEXT, FORMULA) NAME,
    PXL_FOR_EACH_LUM_FUNCTION(PXL_ENUMERATOR)
#undef PXL_ENUMERATOR
};
