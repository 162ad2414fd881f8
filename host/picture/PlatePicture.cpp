#include <host/picture/PlatePicture.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numbers>

namespace host {

namespace {

constexpr float pi = std::numbers::pi_v<float>;
constexpr float margin = 0.04f; ///< of the width, left and right

Colour operator*(const Colour& c, float f)
{
    return {c.r * f, c.g * f, c.b * f};
}

Colour operator+(const Colour& a, const Colour& b)
{
    return {a.r + b.r, a.g + b.g, a.b + b.b};
}

Colour mix(const Colour& a, const Colour& b, float t)
{
    return a * (1.0f - t) + b * t;
}

constexpr Colour grey(float v)
{
    return {v, v, v};
}

/// How much of a pixel lies inside of a disc, from the distance of its centre to the rim.
float coverage(float distance)
{
    return std::clamp(0.5f - distance, 0.0f, 1.0f);
}

struct Vector
{
    float x, y, z;
};

float dot(const Vector& a, const Vector& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

Vector unit(const Vector& a)
{
    const float scale = 1.0f / std::sqrt(dot(a, a));
    return {a.x * scale, a.y * scale, a.z * scale};
}

} // namespace

PlatePicture::PlatePicture(int width, int height)
    : width_(static_cast<float>(width)), height_(static_cast<float>(height)),
      radius_(std::min(0.265f * height_, 0.19f * width_))
{
}

Colour PlatePicture::colour(int x, int y) const
{
    const float px = static_cast<float>(x) + 0.5f, py = static_cast<float>(y) + 0.5f;
    const float u = (px / width_ - margin) / (1.0f - 2.0f * margin); // 0 to 1 between the margins
    const float v = py / height_;
    const Colour behind = backdrop(px / width_, v);
    if (u < 0.0f || u >= 1.0f)
        return behind;
    if (v >= 0.05f && v < 0.17f)
        return bars(u, (v - 0.05f) / 0.12f);
    if (v >= 0.80f && v < 0.86f)
        return grey(u);
    if (v >= 0.87f && v < 0.92f) // six stops either side of middle grey
        return grey(0.18f * std::exp2(std::floor(u * 13.0f) - 6.0f));
    if (v >= 0.93f && v < 0.97f)
        return lines(x, y);
    if (v < 0.19f || v >= 0.785f)
        return behind;
    const float middle = 0.485f * height_;
    if (u < 0.42f)
        return zonePlate(px - (margin + 0.21f * (1.0f - 2.0f * margin)) * width_, py - middle, behind);
    if (u >= 0.58f)
        return sphere(px - (margin + 0.79f * (1.0f - 2.0f * margin)) * width_, py - middle, behind);
    return patches((u - 0.42f) / 0.16f, (v - 0.22f) / 0.53f, behind);
}

float PlatePicture::alpha(int x, int y) const
{
    const float u = (static_cast<float>(x) + 0.5f) / width_ * 2.0f - 1.0f;
    const float v = (static_cast<float>(y) + 0.5f) / height_ * 2.0f - 1.0f;
    return std::clamp((1.38f - std::sqrt(u * u + v * v)) / 0.12f, 0.0f, 1.0f);
}

Colour PlatePicture::backdrop(float u, float v) const
{
    const float fade = 1.0f - 0.75f * ((u - 0.5f) * (u - 0.5f) + (v - 0.45f) * (v - 0.45f)) * 2.0f;
    return Colour{0.040f, 0.047f, 0.058f} * fade;
}

Colour PlatePicture::bars(float u, float v) const
{
    static constexpr Colour hues[] = {{1, 1, 1}, {1, 1, 0}, {0, 1, 1}, {0, 1, 0},
                                      {1, 0, 1}, {1, 0, 0}, {0, 0, 1}, {0, 0, 0}};
    const int bar = std::clamp(static_cast<int>(u * 8.0f), 0, 7);
    const float level = v < 0.7f ? 0.75f : 0.18f;
    return mix(grey(0.01f), hues[bar], level);
}

/// Everyday colours: skins, foliage, sky, flowers, and a row of greys.
Colour PlatePicture::patches(float u, float v, const Colour& behind) const
{
    static constexpr Colour rows[6][3] = {
        {{0.57f, 0.33f, 0.24f}, {0.33f, 0.17f, 0.11f}, {0.09f, 0.04f, 0.025f}},
        {{0.10f, 0.16f, 0.05f}, {0.30f, 0.44f, 0.06f}, {0.02f, 0.19f, 0.12f}},
        {{0.11f, 0.20f, 0.42f}, {0.04f, 0.07f, 0.30f}, {0.22f, 0.48f, 0.50f}},
        {{0.62f, 0.05f, 0.06f}, {0.74f, 0.22f, 0.03f}, {0.82f, 0.58f, 0.02f}},
        {{0.38f, 0.07f, 0.26f}, {0.12f, 0.04f, 0.20f}, {0.55f, 0.10f, 0.12f}},
        {{0.03f, 0.03f, 0.03f}, {0.18f, 0.18f, 0.18f}, {0.90f, 0.90f, 0.90f}}};
    if (u < 0.0f || u >= 1.0f || v < 0.0f || v >= 1.0f)
        return behind;
    const float column = u * 3.0f, row = v * 6.0f;
    const float dx = column - std::floor(column), dy = row - std::floor(row);
    if (dx < 0.06f || dx > 0.94f || dy < 0.06f || dy > 0.94f)
        return behind;
    return rows[static_cast<int>(row)][static_cast<int>(column)];
}

/// Rings that get finer towards the rim, where a line is one pixel wide.
Colour PlatePicture::zonePlate(float dx, float dy, const Colour& behind) const
{
    const float squared = dx * dx + dy * dy;
    const float inside = coverage(std::sqrt(squared) - radius_);
    if (inside <= 0.0f)
        return behind;
    return mix(behind, grey(0.5f + 0.5f * std::cos(pi * squared / (2.0f * radius_))), inside);
}

/// A glossy sphere under a warm lamp, whose reflection is far brighter than white, and a cool one.
Colour PlatePicture::sphere(float dx, float dy, const Colour& behind) const
{
    const float distance = std::sqrt(dx * dx + dy * dy);
    const float inside = coverage(distance - radius_);
    if (inside <= 0.0f)
        return behind;
    const float x = dx / radius_, y = dy / radius_;
    const Vector normal = unit({x, y, std::sqrt(std::max(0.0f, 1.0f - x * x - y * y))});
    const Vector lamp = unit({-0.55f, -0.65f, 0.75f});
    const Vector cool = unit({0.9f, 0.35f, -0.1f});
    const Colour skin{0.72f, 0.16f, 0.07f};
    const float facing = std::max(0.0f, dot(normal, lamp));
    const float mirror = std::max(0.0f, 2.0f * dot(normal, lamp) * normal.z - lamp.z);
    const float rim = std::pow(1.0f - normal.z, 3.0f);
    Colour colour = skin * (0.03f + 0.95f * facing);
    colour = colour + Colour{1.0f, 0.93f, 0.80f} *
                          (16.0f * std::pow(mirror, 220.0f) + 0.25f * std::pow(mirror, 12.0f));
    colour =
        colour + Colour{0.10f, 0.35f, 0.90f} * (0.8f * std::max(0.0f, dot(normal, cool)) * (0.25f + rim));
    return mix(behind, colour, inside);
}

/// Black and white line pairs: upright ones on the left and level ones on the right, each 1, 2, 3 and 4
/// pixels wide.
Colour PlatePicture::lines(int x, int y) const
{
    const int groups = 8;
    const int group = std::clamp(static_cast<int>(static_cast<float>(x) / width_ * groups), 0, groups - 1);
    const int wide = group % 4 + 1;
    return grey((group < 4 ? x : y) / wide % 2 == 0 ? 0.0f : 1.0f);
}

} // namespace host
