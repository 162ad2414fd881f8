#pragma once

#include <UT/UT_Noise.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <string>
#include <valarray>

/// What the pieces of GLSL compute, from the formulas of their comments, in double.
namespace reference {

using V = std::valarray<double>;

/// The arrays of programs with pieces. `made` makes an element from its place, its component and a random number from
/// 0 to 127/128.
struct ShaderArray
{
    std::string name;
    int width, height, components; ///< 0: as many as a program wants, of 4
    double (*made)(int i, int j, int c, double random);
};

inline constexpr double none = std::numeric_limits<double>::quiet_NaN();

inline const ShaderArray shaderArrays[] = {
    {"place", 7, 5, 2, [](int i, int j, int c, double) { return c == 0 ? double(i) : double(j); }},
    {"source", 7, 5, 0,
     [](int i, int j, int c, double r) {
         return j == 0 && i < 2 ? i * 0.5 : c == 0 ? std::floor(r * 8) / 8 : r;
     }},
    {"key", 7, 5, 0, [](int, int, int, double r) { return r; }},
    {"corners", 7, 5, 4, [](int, int, int, double r) { return r; }},
    {"kernel", 3, 2, 1, [](int, int, int, double r) { return r - 0.25; }},
    {"radius", 7, 5, 1,
     [](int i, int j, int, double r) { return i == 3 && j == 2 ? none : std::floor(r * 17 - 8) / 4; }},
    {"deform", 7, 5, 2, [](int i, int j, int, double r) { return i == 6 && j == 4 ? none : r * 6 - 3; }},
    {"mask", 7, 5, 1, [](int, int, int, double r) { return r; }},
    {"bump", 7, 5, 1, [](int, int, int, double r) { return r; }},
    {"depths", 7, 5, 1, [](int, int, int, double r) { return r - 0.5; }},
    {"points", 7, 5, 3, [](int, int, int, double r) { return r; }},
    {"normals", 7, 5, 3, [](int i, int j, int, double r) { return i == 2 && j == 1 ? 0 : r - 0.5; }},
    {"environment", 24, 12, 0, [](int, int, int, double r) { return r; }},
    {"directions", 7, 5, 3, // along the axes, none, a NaN, and to both sides of +z
     [](int i, int j, int c, double r) {
         return j == 0             ? (i / 2 == c && i < 6 ? 2.0 - i % 2 * 4 : 0)
                : j == 1 && i == 0 ? (c == 1 ? none : 1)
                : j == 1 && i < 4  ? V{i * 1e-3 - 2e-3, 0.3, 1}[size_t(c)]
                                   : r * 2 - 1;
     }}};

/// A pixel; edge pixels go on outside.
inline V pixel(const std::string& name, int i, int j)
{
    const ShaderArray& array = *std::find_if(std::begin(shaderArrays), std::end(shaderArrays),
                                             [&](const ShaderArray& one) { return one.name == name; });
    i = std::clamp(i, 0, array.width - 1);
    j = std::clamp(j, 0, array.height - 1);
    V values(array.components == 0 ? 4 : static_cast<size_t>(array.components));
    for (int c = 0; c < int(values.size()); ++c) {
        const auto at = static_cast<uint32_t>(((i * 32 + j) * 4 + c) * 128 + name[0]);
        values[size_t(c)] = array.made(i, j, c, (UT_noise::mixed(at) >> 25) / 128.0);
    }
    return values;
}

inline double dot(const V& a, const V& b)
{
    return (a * b).sum();
}
inline double length(const V& a)
{
    return std::sqrt(dot(a, a));
}
inline V unit(const V& a)
{
    return a / length(a);
}
inline V toward(int i, int j)
{
    return unit(pixel("points", i, j) - 0.5);
}
inline double lambert(const V& a, const V& b)
{
    return std::max(dot(a, b), 0.0);
}

/// Where pixels are mixed with one another; `around`: the first column is beside the last.
struct Box
{
    int x, y, width, height;
    bool around = false;
};

inline V bilinear(const std::string& name, double x, double y, Box box = {0, 0, 7, 5})
{
    V sum = 0.0 * pixel(name, 0, 0);
    if (std::isnan(x + y))
        return sum + none;
    x = box.around ? x : std::clamp(x, box.x + 0.5, box.x + box.width - 0.5);
    y = std::clamp(y, box.y + 0.5, box.y + box.height - 0.5);
    for (int j = box.y; j < box.y + box.height; ++j)
        for (int i = box.x - 1; i <= box.x + box.width; ++i) {
            const double weight =
                std::max(0.0, 1 - std::abs(x - 0.5 - i)) * std::max(0.0, 1 - std::abs(y - 0.5 - j));
            sum += weight * pixel(name, box.around ? (i + box.width) % box.width : i, j);
        }
    return sum;
}

/// The array source away from the middle of a pixel.
inline V displaced(int x, int y, const V& offset)
{
    return bilinear("source", x + 0.5 + offset[0], y + 0.5 + offset[1]);
}

/// What homogeneous places show of it.
inline V projected(const V& p)
{
    const double x = p[0] / p[2], y = p[1] / p[2];
    return p[2] > 0 && x >= 0 && x < 7 && y >= 0 && y < 5 ? bilinear("source", x, y) : V(0.0, 4);
}

inline V toHSV(const V& c)
{
    const double r = c[0], g = c[1], b = c[2], most = std::max({r, g, b}), d = most - std::min({r, g, b});
    double sixths = r == most ? (g - b) / d : g == most ? 2 + (b - r) / d : 4 + (r - g) / d;
    sixths += sixths < 0 ? 6 : 0;
    return {d > 0 ? sixths / 6 : 0, most > 0 ? d / most : 0, most};
}

inline V fromHSV(double h, double s, double v)
{
    const auto one = [&](double shift) {
        const double k = shift + 6 * (h - std::floor(h)), at = k < 6 ? k : k - 6;
        return v - v * s * std::max(0.0, std::min({at, 4 - at, 1.0}));
    };
    return {one(5), one(3), one(1)};
}

inline double orenNayar(const V& n, const V& l, const V& v, double s)
{
    const double i = std::acos(std::min(dot(n, l), 1.0)), r = std::acos(std::min(dot(n, v), 1.0));
    const V besideL = l - dot(n, l) * n, besideV = v - dot(n, v) * n;
    const double lengths = length(besideL) * length(besideV),
                 p = lengths > 1e-9 ? dot(besideL, besideV) / lengths : 0;
    const double a = 1 - 0.5 * s * s / (s * s + 0.33), b = 0.45 * s * s / (s * s + 0.09);
    return lambert(n, l) > 0 ? std::cos(i) * (a + b * std::max(0.0, p) * std::sin(std::max(i, r)) *
                                                      std::tan(std::min(i, r)))
                             : 0;
}

inline double phong(const V& n, const V& l, const V& v, double shininess)
{
    return dot(n, l) > 0 ? std::pow(lambert(2 * dot(n, l) * n - l, v), shininess) : 0;
}

/// How an array of single values rises along x and y at a pixel.
inline V slope(const std::string& name, int x, int y)
{
    const auto along = [&](int i, int j, int at, int size) {
        return (pixel(name, x + i, y + j)[0] - pixel(name, x - i, y - j)[0]) /
               (at > 0 && at < size - 1 ? 2 : 1);
    };
    return {along(1, 0, x, 7), along(0, 1, y, 5)};
}

/// A pixel of which so much is kept, with so much of a fog's colour.
inline V mixedIn(const V& c, const V& colour, double kept, double amount)
{
    const V f = c[3] * amount * colour;
    return {c[0] * kept + f[0], c[1] * kept + f[1], c[2] * kept + f[2], c[3]};
}

/// In how much of a pixel a is not behind b, by the differences of their depths at the corners.
inline double shareOf(const V& d)
{
    int count = 0;
    for (double v = 0.125; v < 1; v += 0.25)
        for (double u = 0.125; u < 1; u += 0.25)
            count += (d[0] * (1 - u) + d[1] * u) * (1 - v) + (d[2] * (1 - u) + d[3] * u) * v >= 0 ? 1 : 0;
    return count / 16.0;
}

/// A cube of the array environment, in a direction. A layout is a picture of rows of faces: X is +x, x is -x; the
/// last row of four by three is upside down.
inline V cube(const std::vector<std::string>& layout, const V& direction)
{
    static const struct
    {
        char face;
        V ahead, right, down; ///< seen from inside
    } faces[] = {{'X', {1, 0, 0}, {0, 0, 1}, {0, -1, 0}},  {'x', {-1, 0, 0}, {0, 0, -1}, {0, -1, 0}},
                 {'Y', {0, 1, 0}, {1, 0, 0}, {0, 0, -1}},  {'y', {0, -1, 0}, {1, 0, 0}, {0, 0, 1}},
                 {'Z', {0, 0, 1}, {-1, 0, 0}, {0, -1, 0}}, {'z', {0, 0, -1}, {1, 0, 0}, {0, -1, 0}}};
    const V d = direction + V{0, 0, -1e-12}; // 0 counts as -z
    const auto most = std::max_element(std::begin(faces), std::end(faces), [&](const auto& a, const auto& b) {
        return dot(a.ahead, d) < dot(b.ahead, d);
    });
    const int width = 24 / int(layout[0].size()), height = 12 / int(layout.size());
    for (size_t row = 0; row < layout.size(); ++row)
        if (const size_t column = layout[row].find(most->face); column != std::string::npos) {
            const double sense = layout.size() == 4 && row == 3 ? -1 : 1, size = dot(most->ahead, d);
            const double x = sense * dot(most->right, d) / size, y = sense * dot(most->down, d) / size;
            const Box box{int(column) * width, int(row) * height, width, height};
            return bilinear("environment", box.x + (x + 1) / 2 * width, box.y + (y + 1) / 2 * height, box);
        }
    return V(none, 4);
}

/// Straight up and down there is no longitude; it counts as 0.
inline V latitudeLongitude(const V& d)
{
    const double x = 0.5 + (d[0] == 0 && d[2] == 0 ? 0 : std::atan2(d[0], -d[2]) / (2 * std::numbers::pi));
    const double y = length(d) == 0 ? 0.5 : std::acos(d[1] / length(d)) / std::numbers::pi;
    return bilinear("environment", x * 24, y * 12, {0, 0, 24, 12, true});
}

/// 1 from b to c, 0 before a and after d.
inline double trapezoid(double v, double a, double b, double c, double d)
{
    return v < a || v > d ? 0 : v < b ? (v - a) / (b - a) : v > c ? (d - v) / (d - c) : 1;
}

inline double alligator(const V& place, uint32_t key)
{
    std::vector<double> spots(2);
    for (int n = 0; n < 27; ++n) {
        V p = place;
        uint32_t hash = key;
        for (const int axis : {2, 1, 0}) {
            double& at = p[size_t(axis)];
            at += UT_noise::displacement(key, uint32_t(axis));
            const double cell = std::floor(at) + n / int(std::pow(3, axis)) % 3 - 1;
            hash = UT_noise::mixed(uint32_t(int(cell)) ^ hash);
            at = cell - at;
        }
        for (const uint32_t axis : {0u, 1u, 2u})
            p[axis] += ((hash >> 10 * axis & 1023) + 0.5) / 1024;
        const double r = std::min(length(p), 1.0);
        spots.push_back(UT_noise::mixed(hash) * 0x1p-32 * (1 - r * r * r * (r * (6 * r - 15) + 10)));
    }
    std::sort(spots.rbegin(), spots.rend());
    return spots[0] - spots[1];
}

} // namespace reference
