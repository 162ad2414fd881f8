#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

/// A point or a direction in the plane.
struct UT_Vector2
{
    float x = 0.0f;
    float y = 0.0f;

    UT_Vector2 operator+(UT_Vector2 v) const { return {x + v.x, y + v.y}; }
    UT_Vector2 operator-(UT_Vector2 v) const { return {x - v.x, y - v.y}; }
    UT_Vector2 operator-() const { return {-x, -y}; }
    UT_Vector2 operator*(float scale) const { return {x * scale, y * scale}; }
    friend bool operator==(const UT_Vector2&, const UT_Vector2&) = default;

    /// Summed in double, where the square of a float neither overflows nor vanishes.
    float length() const
    {
        const double dx = x, dy = y;
        return static_cast<float>(std::sqrt(dx * dx + dy * dy));
    }
    /// The same direction with length 1; null stays null.
    UT_Vector2 normalized() const
    {
        const float l = length();
        return l == 0.0f ? UT_Vector2{} : UT_Vector2{x / l, y / l};
    }
};

/// A growing array of points.
class UT_Vector2Array
{
public:
    int64_t entries() const { return static_cast<int64_t>(items_.size()); }
    void append(UT_Vector2 item) { items_.push_back(item); }
    void setSize(int64_t count) { items_.resize(static_cast<size_t>(count)); }
    void clear() { items_.clear(); }

    UT_Vector2 operator()(int64_t index) const { return items_[static_cast<size_t>(index)]; }
    UT_Vector2& operator()(int64_t index) { return items_[static_cast<size_t>(index)]; }

    auto begin() const { return items_.begin(); }
    auto end() const { return items_.end(); }

    friend bool operator==(const UT_Vector2Array&, const UT_Vector2Array&) = default;

private:
    std::vector<UT_Vector2> items_;
};
