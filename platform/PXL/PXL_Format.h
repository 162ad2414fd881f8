#pragma once

#include <SYS/SYS_Half.h>

#include <cstdint>

/// Every storage format of a pixel component: X(code, element type, the code of white or 1, name, more...).
/// In the order of the factories of RU_Algorithm.
#define PXL_FOR_EACH_FORMAT(X, ...)                                                                          \
    X(4, fpreal16, 1, half __VA_OPT__(, ) __VA_ARGS__)                                                       \
    X(3, float, 1, float32 __VA_OPT__(, ) __VA_ARGS__)                                                       \
    X(2, unsigned int, 4294967295u, uint32 __VA_OPT__(, ) __VA_ARGS__)                                       \
    X(1, unsigned short, 65535, uint16 __VA_OPT__(, ) __VA_ARGS__)                                           \
    X(0, unsigned char, 255, uint8 __VA_OPT__(, ) __VA_ARGS__)

/// The format codes by name: PXL_FORMAT_half and so on.
enum PXL_Format : unsigned char {
#define PXL_ENUMERATOR(CODE, TYPE, WHITE, NAME) PXL_FORMAT_##NAME = CODE,
    PXL_FOR_EACH_FORMAT(PXL_ENUMERATOR)
#undef PXL_ENUMERATOR
};

/// What is fixed about the element type T: its format code, and the code of white (1 where codes are values).
template <class T>
struct PXL_FormatOf;

#define PXL_FORMAT_OF(CODE, TYPE, WHITE, NAME)                                                               \
    template <>                                                                                              \
    struct PXL_FormatOf<TYPE>                                                                                \
    {                                                                                                        \
        static constexpr unsigned char code = CODE;                                                          \
        static constexpr unsigned int white = WHITE;                                                         \
    };
PXL_FOR_EACH_FORMAT(PXL_FORMAT_OF)
#undef PXL_FORMAT_OF

/// Bytes of one element of a format; 0 for an unknown code.
constexpr int PXLbytesPerElement(int code)
{
    switch (code) {
#define PXL_CASE(CODE, TYPE, WHITE, NAME)                                                                    \
    case CODE:                                                                                               \
        return static_cast<int>(sizeof(TYPE));
        PXL_FOR_EACH_FORMAT(PXL_CASE)
#undef PXL_CASE
    default:
        return 0;
    }
}

/// The code of white over the full range of a format; 1 for float, half and unknown codes.
constexpr unsigned int PXLfullWhite(int code)
{
    switch (code) {
#define PXL_CASE(CODE, TYPE, WHITE, NAME)                                                                    \
    case CODE:                                                                                               \
        return WHITE;
        PXL_FOR_EACH_FORMAT(PXL_CASE)
#undef PXL_CASE
    default:
        return 1;
    }
}

/// Calls `work` as work.operator()<T>() for the element type T of a format; nothing for an unknown code.
template <class Work>
void PXLwithElement(int code, Work work)
{
    switch (code) {
#define PXL_CASE(CODE, TYPE, WHITE, NAME)                                                                    \
    case CODE:                                                                                               \
        return work.template operator()<TYPE>();
        PXL_FOR_EACH_FORMAT(PXL_CASE)
#undef PXL_CASE
    default:
        return;
    }
}
