#pragma once

#include <RU/RU_API.h>
#include <UT/UT_FloatArray.h>
#include <UT/UT_Vector2.h>

#include <cstdint>
#include <memory>

class ru_CurveTable;

/// A smooth curve through key points, as in a curves colour correction: a piecewise cubic Bezier curve
/// (x(t), y(t)) whose handles follow from the keys, read as y of x.
///
/// addPoint() the keys in any order, create() the curve, evaluate() it. Keys that change after create()
/// count from the next create() on.
///
/// Interior handles lie along T = s d1 + (1 - s) d2, d1 and d2 the directions from the key before and to the
/// key behind, l1 and l2 their lengths, s = l1 / (l1 + l2); their lengths are 0.166666 (l1 + l2), at most
/// half the way to the neighbour. The end handles are a third (0.33333) of the way to the neighbour long. The
/// weight draws a key's handles towards the straight lines to its neighbours: 0 is smooth, 1 straight.
/// Units: values as the images hold them, 0.0 black and 1.0 white; nothing is clamped. Keys whose differences
/// overflow a float give NaN.
/// Null: a curve of less than two keys, one not created yet, or one for which memory ran out, is 0
/// everywhere.
/// Threads: evaluate() only reads; any number of threads may call it after create().
/// Cost: create() takes at most some 0.4 ms per key and makes a table of at most 16 KB per key, which copies
/// of the curve share. A row takes about as long as a gamma, a value by itself ten times as long as in a row;
/// places near which the curve is vertical or folds back are solved on each call, some fifty times slower.
class RU_API RU_ColorCurve
{
public:
    /// Behind all keys that have no greater x.
    void addPoint(float x, float y, float weight);

    /// Builds the curve from the keys. With `extend` it goes on straight outside the keys, in the direction
    /// of the end handles; otherwise it is flat there. Vertical handles extend with a slope of 1e20 or -1e20.
    void create(bool extend);

    /// Back to a curve as constructed.
    void reset() { *this = RU_ColorCurve(); }

    /// y at x; NaN gives the y at which the last segment starts.
    float evaluate(float x) const;
    /// `count` values, bit for bit as one by one. `in` and `out` are the same row or apart.
    void evaluate(const float* in, float* out, int64_t count) const;

    int64_t keyCount() const { return keyX_.entries(); }
    float keyX(int64_t key) const { return keyX_(key); }
    float keyY(int64_t key) const { return keyY_(key); }
    float keyWeight(int64_t key) const { return keyWeight_(key); }

    /// Of the last create(): key, its outgoing handle, the next key's incoming handle, next key, and so on.
    const UT_Vector2Array& controlPoints() const { return controlPoints_; }
    int builtCount() const { return builtCount_; }
    bool extend() const { return extend_; }
    /// The slopes outside the keys, of the last create(true).
    float preslope() const { return preslope_; }
    float postslope() const { return postslope_; }

private:
    UT_Vector2 key(int64_t index) const { return {keyX_(index), keyY_(index)}; }
    void build();
    void buildHandles(UT_Vector2Array& out, UT_Vector2Array& in) const;
    void applyWeights(UT_Vector2Array& out, UT_Vector2Array& in) const;

    UT_FloatArray keyX_;
    UT_FloatArray keyY_;
    UT_FloatArray keyWeight_;
    UT_Vector2Array controlPoints_;
    float preslope_ = 0.0f;
    float postslope_ = 0.0f;
    bool extend_ = false;
    int builtCount_ = 0;

    std::shared_ptr<const ru_CurveTable> table_; ///< for evaluate(); null: 0 everywhere
};
