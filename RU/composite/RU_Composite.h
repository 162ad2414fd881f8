#pragma once

#include <RU/RU_API.h>

// The compositing operations, all there is to know of them; enum, loops, names and documentation come from
// here. In the formulas d and s are a destination and a source colour, dA and sA the alphas beside them, of
// which full is 1. The columns: enumerator, name, formula, the alphas that it reads, what it is computed in,
// and what is done without the source's alpha, without the destination's, and without both: an operation, or
// exactly COPY (d = s), KEEP (d = d) or ZERO (d = 0). ERASE is d * (1 - sA).
// What it is computed in: CODES, for 8 and 16 bits; BYTES, where colours and alphas have 8 bits, and in float
// otherwise.
// clang-format off
#define RU_FOR_EACH_COMPOSITE_TYPE(X)                                                                        \
    X(OVER, "over", s + (1 - sA) * d, SOURCE, BYTES, COPY, OVER, COPY)                                       \
    X(UNDER, "under", d + (1 - dA) * s, DESTINATION, BYTES, UNDER, KEEP, KEEP)                               \
    X(ATOP, "atop", s * dA + (1 - sA) * d, BOTH, BYTES, INSIDE, OVER, COPY)                                  \
    X(INSIDE, "inside", s * dA, DESTINATION, BYTES, INSIDE, COPY, COPY)                                      \
    X(OUTSIDE, "outside", s * (1 - dA), DESTINATION, BYTES, OUTSIDE, ZERO, ZERO)                             \
    X(SCREEN, "screen", s + d - s * d, NEITHER, BYTES, SCREEN, SCREEN, SCREEN)                               \
    X(ADD, "add", s + d, NEITHER, CODES, ADD, ADD, ADD)                                                      \
    X(SUBTRACT, "subtract", d - s, NEITHER, CODES, SUBTRACT, SUBTRACT, SUBTRACT)                             \
    X(DIFFERENCE, "difference", abs(s - d), NEITHER, CODES, DIFFERENCE, DIFFERENCE, DIFFERENCE)              \
    X(MULTIPLY, "multiply", s * d, NEITHER, BYTES, MULTIPLY, MULTIPLY, MULTIPLY)                             \
    X(MINIMUM, "minimum", min(d, s), NEITHER, CODES, MINIMUM, MINIMUM, MINIMUM)                              \
    X(MAXIMUM, "maximum", max(d, s), NEITHER, CODES, MAXIMUM, MAXIMUM, MAXIMUM)                              \
    X(AVERAGE, "average", (s + d) / 2, NEITHER, CODES, AVERAGE, AVERAGE, AVERAGE)                            \
    X(XOR, "xor", s * (1 - dA) + d * (1 - sA), BOTH, BYTES, OUTSIDE, ERASE, ZERO)                            \
    X(SUBTRACT_REVERSED, "subtract_reversed", s - d, NEITHER, CODES, SUBTRACT_REVERSED, SUBTRACT_REVERSED,   \
      SUBTRACT_REVERSED)
// clang-format on

enum RU_CompositeType : int {
#define RU_COMPOSITE_ENUMERATOR(TYPE, ...) RU_COMP_##TYPE,
    RU_FOR_EACH_COMPOSITE_TYPE(RU_COMPOSITE_ENUMERATOR)
#undef RU_COMPOSITE_ENUMERATOR
};

// The element types of a colour and its alpha that are composited.
#define RU_FOR_EACH_COMPOSITE_PAIR(X)                                                                        \
    X(float, float)                                                                                          \
    X(unsigned char, unsigned char)                                                                          \
    X(unsigned char, unsigned short)                                                                         \
    X(unsigned char, float)                                                                                  \
    X(unsigned short, unsigned short)                                                                        \
    X(unsigned short, unsigned char)                                                                         \
    X(unsigned short, float)                                                                                 \
    X(float, unsigned char)                                                                                  \
    X(float, unsigned short)

// Those of an alpha, or a colour, by itself.
#define RU_FOR_EACH_COMPOSITE_FORMAT(X)                                                                      \
    X(float)                                                                                                 \
    X(unsigned char)                                                                                         \
    X(unsigned short)

/// Combines a source into a destination, in place, by one of the operations of Porter and Duff or of the
/// arithmetic ones beside them: the formulas of the list above, value by value.
///
/// Inputs: bare arrays of count1 * count2 values; only the product counts, and nothing is done unless it is
/// above 0. Any of them may be the same memory; they do not overlap otherwise.
/// Units: colours keep the scale of their codes, 0 to 255 or 0 to 65535; alphas are normalised to 0 to 1, and
/// so is one of two colours that are multiplied. Where both are of 16 bits, over, under and atop divide the
/// alpha by 65355, so that full is a little above 1. Integer results are clamped to their type and rounded by
/// floor(x + 0.5), NaN becomes 0. Float results are as they come; beside integer alphas they are clamped to
/// -1e32 to 1e32. Of equal values minimum and maximum keep the destination's.
/// Null: an alpha that is null is full everywhere, and the operation takes its short-cut; copies, zeros and
/// what is kept are exact.
/// Result: none; another `type` than those of the list does nothing.
/// Threads: any number may call at once.
/// Cost: one pass over the arrays that the operation reads; nothing is allocated. Arrays of more than 128
/// values on 16-byte boundaries (8-bit values: 8) go the fastest.
class RU_API RU_Composite
{
public:
    RU_Composite() = delete;

#define RU_COMPOSITE_DECLARE(T, U)                                                                           \
    static void composite(RU_CompositeType type, int count1, int count2, T* dst, const U* dstAlpha,          \
                          const T* src, const U* srcAlpha);
    RU_FOR_EACH_COMPOSITE_PAIR(RU_COMPOSITE_DECLARE)
#undef RU_COMPOSITE_DECLARE

    /// The alphas of the same operation, into dstAlpha: the formulas with the alphas as the colours too; full
    /// is white. Atop leaves dstAlpha as it is. A null srcAlpha is full everywhere.
#define RU_COMPOSITE_DECLARE_ALPHA(T)                                                                        \
    static void compositeAlpha(RU_CompositeType type, int count1, int count2, T* dstAlpha, const T* srcAlpha);
    RU_FOR_EACH_COMPOSITE_FORMAT(RU_COMPOSITE_DECLARE_ALPHA)
#undef RU_COMPOSITE_DECLARE_ALPHA

    /// The same for values that cannot be mixed, such as depths and normals: the operations up to outside
    /// select. A place has geometry where any of the geometry planes that are not null holds anything but
    /// zero, NaN too.
    ///
    ///     over     s with geometry and sA > 0, else d; without srcAlpha s
    ///     under    d with geometry and dA > 0, else s; without dstAlpha d
    ///     atop     s with geometry and every given alpha > 0, else d; without both s
    ///     inside   s where dA > 0, else 0; without dstAlpha s
    ///     outside  s where dA < 1, else 0; without dstAlpha 0
    ///
    /// The others are those of composite().
    static void compositeGeo(RU_CompositeType type, int count1, int count2, float* dst, const float* dstAlpha,
                             const float* src, const float* srcAlpha, const float* const geometry[4]);
};
