#include <RE/RE_OpenGL.h>
#include <gpgpu/ShaderPrograms.h>
#include <reference/ShaderPieces.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <functional>

using namespace reference;

namespace {

/// A program of pieces, run for 7 x 5 pixels: statements, and the value that they come to; what is expected of it at
/// pixel (x, y), NaN being no expectation. In the texts %t is the type of pixels and %n the number of their components.
struct Case
{
    const char* pieces;
    const char* code;
    std::function<V(int x, int y)> expected;
    const char* components = "4"; ///< each of them
    const char* own = "";
    double tolerance = 2e-5;
};
constexpr const char* any = "1234";

#define EXPECTED(...) []([[maybe_unused]] int x, [[maybe_unused]] int y) -> V { return V(__VA_ARGS__); }

Case luminance(const char* pieces, double (*of)(const V& c))
{
    return {pieces,
            "VEC4 c = ABS_source(x, y);"
            "VEC4(luminance(c.r), luminance(c.rg), luminance(c.rgb), luminance(c))",
            [=](int x, int y) -> V {
                const V c = pixel("source", x, y);
                return {of(V(c[0], 4)), of({c[0], c[0], c[0], c[1]}), of({c[0], c[1], c[2], 1}), of(c)};
            }};
}
#define LUMINANCE(NAME, FORMULA)                                                                             \
    luminance("luminance_" NAME " luminance", [](const V& c) -> double { return FORMULA; })

Case softDropoff(const char* piece, double (*of)(double t))
{
    return {piece, "VEC2(softDropoff(FLOAT(x) / 4.0 - 0.25), softDropoff(ABS_radius(3, 2)))",
            [=](int x, int) -> V {
                return {of(std::clamp(x / 4.0 - 0.25, 0.0, 1.0)), of(0)};
            }};
}
#define SOFT_DROPOFF(NAME, FORMULA) softDropoff("dropoff_" NAME, [](double t) -> double { return FORMULA; })

#define LENS                                                                                                 \
    "const MAT3 lens = MAT3(0.5, 0.1, 0.17, -0.1, 0.6, 0.0, -0.4, -0.5, -0.3);"                              \
    "const MAT3 wide = MAT3(1.5, 0.0, 0.0, 0.0, 1.5, 0.0, -2.0, -1.3, 1.0);"
V lens(int x, int y)
{
    const double u = x + 0.5, v = y + 0.5;
    return {0.5 * u - 0.1 * v - 0.4, 0.1 * u + 0.6 * v - 0.5, 0.17 * u - 0.3};
}
V wide(int x, int y)
{
    return {1.5 * x - 1.25, 1.5 * y - 0.55, 1};
}

double luma(const V& c)
{
    return 0.299 * c[0] + 0.587 * c[1] + 0.114 * c[2];
}

V chroma(const V& c)
{
    return {0.564 * (c[2] - luma(c)), 0.713 * (c[0] - luma(c))};
}

V lit(int x, int y)
{
    const V c = pixel("source", x, y), at{x + 0.5, y + 0.5, 0}, n{0, 0, 1};
    V matt{0.1, 0.2, 0.3}, shine(0.0, 3);
    for (const double height : {3, 6}) {
        const V path = V{2.5, 1.5, height} - at;
        const V arriving = V{1, 0.5, 0.25} / (1 + dot(path, path) / 16);
        matt += 0.7 * unit(path)[2] * arriving;
        shine += 0.4 * phong(n, unit(path), unit(V{5, 3, 4} - at), 9) * arriving;
    }
    return c * V{matt[0], matt[1], matt[2], 1} + c[3] * V{shine[0], shine[1], shine[2], 0};
}

V beam(int x, int y)
{
    double sum = 0;
    for (double s = 0.375; s < 6; s += 0.75) {
        const V path = V{x + s * 0.6, double(y), s * 0.8 - 4} - V{3.5, 2, -2};
        const double angle = std::acos(path[2] / length(path));
        sum += 0.75 * 0.2 * std::exp(-0.2 * s) * std::clamp((1.2 - angle) / 0.7, 0.0, 1.0) /
               (1 + dot(path, path) / 9);
    }
    const double angle = std::acos(1 / length(V{x - 3.0, y - 2.0, 1}));
    return {std::clamp((1.2 - angle) / 0.7, 0.0, 1.0), sum, 1};
}

const V fogColour{0.5, 0.25, 0.125};

V haze(int x, int y)
{
    V sum(0.0, 4);
    for (int k = 0; k < 32; ++k) {
        const double angle = 2.39996323 * k;
        sum += displaced(x, y, 1.5 * std::sqrt((k + 0.5) / 32) * V{std::cos(angle), std::sin(angle)}) / 32.0;
    }
    return mixedIn(sum, fogColour, 0.5, 0.5);
}

V heat(int x, int y)
{
    const auto noise = [&](double i, double j) {
        return double(UTnoise(UT_NOISE_PERLIN, 0.37 * (x + 0.5) + i, 0.37 * (y + 0.5) + j, 0.37 * 1.5, 0));
    };
    const V slope{noise(0.5, 0) - noise(-0.5, 0), noise(0, 0.5) - noise(0, -0.5)};
    return displaced(x, y, 1.5 * slope) * V{0.5, 0.25, 0.125, 1};
}

V glowingBanks(int x, int y)
{
    const double away = length(pixel("points", x, y) - V{1, 2, 3});
    const double noise = UTnoise(UT_NOISE_PERLIN, 0.37 * (x + 0.5), 0.37 * (y + 0.5), 0.37 * away, 0);
    const double amount = 1 - std::exp(-0.7 * std::max(0.0, 1 + 4 * noise) * away);
    return mixedIn(pixel("source", x, y), fogColour, 1, amount);
}

/// Visits the pixels around one in reading order; edge pixels go on outside.
template <class Visit>
void eachNear(int x, int y, int rx, int ry, Visit visit)
{
    for (int j = -std::abs(ry); j <= std::abs(ry); ++j)
        for (int i = -std::abs(rx); i <= std::abs(rx); ++i)
            visit(i, j, pixel("source", x + i, y + j));
}

/// The largest or the smallest of each component in a window.
V window(int x, int y, int rx, int ry)
{
    const double sense = rx < 0 || ry < 0 ? -1 : 1;
    V found = pixel("source", x, y);
    eachNear(x, y, rx, ry, [&](int, int, const V& value) {
        for (size_t c = 0; c < 4; ++c)
            found[c] = sense * std::max(sense * found[c], sense * value[c]);
    });
    return found;
}

/// The pixel of the largest or the smallest red.
V windowByRed(int x, int y, int rx, int ry)
{
    const double sense = rx < 0 || ry < 0 ? -1 : 1;
    V found = pixel("source", x, y);
    eachNear(x, y, rx, ry,
             [&](int, int, const V& value) { found = sense * value[0] > sense * found[0] ? value : found; });
    return found;
}

int wantedRadius(int x, int y)
{
    const double wanted = std::floor(1.5 * pixel("radius", x, y)[0] + 0.5);
    return std::isnan(wanted) ? 0 : int(std::clamp(wanted, -2.0, 2.0));
}

V blurred(int x, int y)
{
    const double radius = std::min(2 * pixel("radius", x, y)[0], 3.0);
    V sum(0.0, 5); // with the weights behind
    eachNear(x, y, 3, 3, [&](int i, int j, const V& c) {
        const double squared = i * i + j * j, weight = std::exp(-2 * squared / (radius * radius));
        if (squared <= radius * radius && radius > 0)
            sum += weight * V{c[0], c[1], c[2], c[3], 1};
    });
    return radius > 0 ? V(sum / sum[4])[std::slice(0, 4, 1)] : pixel("source", x, y);
}

V convolved(int x, int y)
{
    V sum(0.0, 4);
    eachNear(x, y, 1, 1,
             [&](int i, int j, const V& c) { sum += j < 0 ? 0 * c : pixel("kernel", 1 - i, 1 - j)[0] * c; });
    return sum;
}

double inRange(const V& c)
{
    return trapezoid(c[0], 0.2, 0.4, 0.6, 0.8);
}

double superSampledKey(const char* name, int x, int y)
{
    double matte = 0;
    for (double v = y + 0.125; v < y + 1; v += 0.25)
        for (double u = x + 0.125; u < x + 1; u += 0.25)
            matte += inRange(bilinear(name, u, v)) / 16;
    return matte;
}

V octaves(int x, int y)
{
    double sum = 0;
    for (uint32_t k = 0; k < 3; ++k)
        sum += std::pow(0.6, k) * UTnoise(UT_NOISE_SPARSE, (x + 0.5) * std::ldexp(0.3, int(k)),
                                          (y + 0.5) * std::ldexp(0.4, int(k)), std::ldexp(0.5, int(k)),
                                          UT_noise::mixed(k ^ 7));
    return {sum / std::sqrt(1 + 0.36 + 0.36 * 0.36)};
}

V mirrored(const V& n, const std::vector<std::string>& layout)
{
    const V view{0.3, -0.2, -1}, ray = view - 2 * dot(n, view) * n;
    return cube(layout, {ray[2], ray[0], ray[1]});
}

/// Source and key, with their alphas behind.
V over(int x, int y, bool isNearA)
{
    const V a = pixel("source", x, y), b = pixel("key", x, y);
    const V both[] = {{a[0], a[1], a[2], a[3], x % 3 * 0.5}, {b[0], b[1], b[2], b[3], y % 2 * 0.75}};
    const V &nearer = both[isNearA ? 0 : 1], &farther = both[isNearA ? 1 : 0];
    return nearer + (1 - nearer[4]) * farther;
}

bool showsA(int x, int y, bool isNearA)
{
    return isNearA ? x % 3 > 0 || y % 2 == 0 : x % 3 > 0 && y % 2 == 0;
}

V composite(const V& both, double depth)
{
    return V(both[std::slice(0, 4, 1)]) + 10 * both[4] + 100 * depth;
}

/// The depths at the corners of a pixel.
double nearShare(int x, int y)
{
    return shareOf(pixel("corners", x, 4 - y) - pixel("corners", 6 - x, y));
}

V superSampled(int x, int y)
{
    const double share = nearShare(x, y);
    const V depths = showsA(x, y, share >= 0.5) ? pixel("corners", 6 - x, y) : pixel("corners", x, 4 - y);
    return composite(share * over(x, y, true) + (1 - share) * over(x, y, false), depths.sum() / 4);
}

#define HSV "FLOAT minv, maxv, s1, hue, sat, rs, gs, bs, val, f, p, q, t; INT i;"
#define NORMALS "toward(x, y), toward(6 - x, y), toward(x, 4 - y)"
#define SURFACE(HEIGHT)                                                                                      \
    "VEC3 position, normal; surface(x, y, " #HEIGHT                                                          \
    ", position, normal); VEC4(position + 10.0 * normal, normal.z)"
#define KEY                                                                                                  \
    "FLOAT matte; %t kept = keyMain(x, y, VEC4(0.2, 0.4, 0.6, 0.8), VEC3(0.0), matte); kept + 10.0 * matte"
#define FOG_TYPE(PLACE) "fogType(x, y, " PLACE ", VEC3(0.5, 0.25, 0.125), 0.5, 0.37, 3.0)"
#define MIRROR "environment(x, y, VEC3(0.3, -0.2, -1.0), 3.0, MAT3(0, 1, 0, 0, 0, 1, 1, 0, 0))"
#define SKY "environmentAt(ABS_directions(x, y))"
#define NOISE(TYPE)                                                                                          \
    "VEC2(noise(VEC3(at * 0.7, -3.3), 5u), noise(VEC3(1e30, ABS_radius(3, 2), -1e30), 5u) -"                 \
    " noise(VEC3(4194304.0, -4194304.0, -4194304.0), 5u))",                                                  \
        EXPECTED({double(TYPE), 0})
#define PAIR(DEPTH_A, DEPTH_B)                                                                               \
    "ABS_source(x, y), FLOAT(x % 3) * 0.5, " DEPTH_A ", ABS_key(x, y), FLOAT(y % 2) * 0.75, " DEPTH_B
#define CORNERS PAIR("ABS_corners(6 - x, y)", "ABS_corners(x, 4 - y)")

const Case cases[] = {
    {"texture_clamp",
     "VEC4(textureClamp(at * 9.0 - 20.0, IVEC2(7, 5)), textureClamp(ABS_radius(3, 2), 9), textureClamp(1e30, 9))",
     EXPECTED({std::clamp(9.0 * x - 16, 0.0, 6.0), std::clamp(9.0 * y - 16, 0.0, 4.0), 0, 8})},
    {"texture_clamp texture_sample:source", "source%n(at * 1.7 - 2.3) + source%n_first(at + 1.0)",
     EXPECTED(pixel("source", int(std::floor(1.7 * x - 1.45)), int(std::floor(1.7 * y - 1.45))) +
              pixel("source", x + 1, y + 1)[0]),
     any},
    {"texture_clamp texture_bilinear:source", "source%n(at * 1.3 - 1.1)",
     EXPECTED(bilinear("source", 1.3 * x - 0.45, 1.3 * y - 0.45)), any},
    {"toHSV", HSV "toHSV(ABS_source(x, y).rgb, minv, maxv, s1, hue, sat, rs, gs, bs)", EXPECTED(toHSV(pixel("source", x, y)))},
    {"fromHSV", HSV "fromHSV(VEC3(FLOAT(x) * 0.47 - 1.0, FLOAT(y) * 0.4 - 0.2, 0.8), i, hue, sat, val, f, p, q, t)",
     EXPECTED(fromHSV(x * 0.47 - 1, std::clamp(y * 0.4 - 0.2, 0.0, 1.0), 0.8))},
    {"diffuse_lambert", "diffuse(" NORMALS ", 0.6)", EXPECTED({lambert(toward(x, y), toward(6 - x, y))})},
    {"diffuse_oren_nayar", "VEC2(diffuse(" NORMALS ", 0.6), diffuse(" NORMALS ", 0.0))",
     EXPECTED({orenNayar(toward(x, y), toward(6 - x, y), toward(x, 4 - y), 0.6),
               lambert(toward(x, y), toward(6 - x, y))})},
    {"specular_phong", "specular(" NORMALS ", 5.0)",
     EXPECTED({phong(toward(x, y), toward(6 - x, y), toward(x, 4 - y), 5)})},
    {"specular_blinn", "specular(" NORMALS ", 5.0)",
     [](int x, int y) -> V {
         const V n = toward(x, y), l = toward(6 - x, y);
         return {dot(n, l) > 0 ? std::pow(lambert(n, unit(l + toward(x, 4 - y))), 5) : 0};
     }},
    {"dropoff",
     "VEC4(dropoff(FLOAT(x) * 1.5, FLOAT(y) - 1.0, 1.5), dropoff(3.0, 3.0, 0.7), dropoff(9.0, 0.1, 0.0), 0.0)",
     EXPECTED({y > 1 ? 1 / (1 + std::pow(x * 1.5 / (y - 1), 1.5)) : 1, 0.5, 1})},
    SOFT_DROPOFF("linear", t), SOFT_DROPOFF("easein", 1.0523 * (std::exp(-3 * (1 - t)) - 1) + 1),
    SOFT_DROPOFF("easeout", 1.0523 * (1 - std::exp(-3 * t))),
    SOFT_DROPOFF("easein_easeout", 0.5 - 0.5 * std::cos(std::numbers::pi * t)),
    SOFT_DROPOFF("gaussian", 1.0523 * (1 - std::exp(-3 * t * t))),
    LUMINANCE("standard", 0.3086 * c[0] + 0.6094 * c[1] + 0.082 * c[2]), LUMINANCE("ntsc", luma(c)),
    LUMINANCE("max", std::max({c[0], c[1], c[2]})), LUMINANCE("min", std::min({c[0], c[1], c[2]})),
    LUMINANCE("average", (c[0] + c[1] + c[2]) / 3), LUMINANCE("red", c[0]), LUMINANCE("green", c[1]),
    LUMINANCE("blue", c[2]), LUMINANCE("comp4", c[3]),
    {"lighting_flat", SURFACE(2.0), EXPECTED({x + 0.5, y + 0.5, 10, 1})},
    {"lighting_bump:bump", SURFACE(2.5),
     [](int x, int y) -> V {
         const V rise = 2.5 * slope("bump", x, y), n = unit({-rise[0], -rise[1], 1});
         return {x + 0.5 + 10 * n[0], y + 0.5 + 10 * n[1], 2.5 * pixel("bump", x, y)[0] + 10 * n[2], n[2]};
     }},
    {"lighting_3d:points,normals", SURFACE(2.0),
     [](int x, int y) -> V {
         const V n = pixel("normals", x, y) / std::max(length(pixel("normals", x, y)), 1e-9);
         const V p = pixel("points", x, y) + 10.0 * n;
         return {p[0], p[1], p[2], n[2]};
     }},
    {"lighting_flat diffuse_lambert specular_phong dropoff lighting_backend:source @ lighting_main",
     "lighting(x, y, 3, Material(0.7, 0.0, 0.4, 9.0), VEC3(0.1, 0.2, 0.3), VEC3(5.0, 3.0, 4.0), 1.0)", lit, "4",
     "Light lightAt(INT k) { return Light(VEC3(2.5, 1.5, FLOAT(k) * 3.0), VEC3(1.0, 0.5, 0.25), 4.0, 2.0); }"},
    {"dropoff dropoff_linear lighting_volumetric",
     "VEC3(lightCone(VEC3(x, y, 1.0), VEC3(3.0, 2.0, 0.0), VEC3(0.0, 0.0, 1.0), 0.5, 1.2), "
     "volumetricLight(VEC3(x, y, -4.0), VEC3(0.6, 0.0, 0.8), 6.0, VEC3(3.5, 2.0, -2.0), VEC3(0.0, 0.0, 1.0), 0.5, 1.2, "
     "3.0, 2.0, 0.2, 8), lightCone(VEC3(2.0), VEC3(2.0), VEC3(1.0, 0.0, 0.0), 0.0, 0.0))",
     beam, "4", "", 1e-3},
    {"texture_clamp texture_bilinear:source @ transform:source", "transform_source%n(at, lens) + 2.0 * transform_source%n(at, wide)",
     EXPECTED(projected(lens(x, y)) + 2.0 * projected(wide(x, y))), any, LENS},
    {"texture_clamp texture_bilinear:source @ transform_blur:source",
     "transformBlur_source%n(at, lens, wide, 2)",
     [](int x, int y) {
         const V open = lens(x, y), close = wide(x, y);
         return V((projected(0.75 * open + 0.25 * close) + projected(0.25 * open + 0.75 * close)) / 2.0);
     },
     any, LENS},
    {"texture_clamp texture_bilinear:source @ transform_deform_blur:source,opening,closing",
     "deformBlur_source%n(at, 0.5, 2)",
     EXPECTED((displaced(x, y, {0.375 * (y + 0.5) - 0.125, 0.375 + 0.125 * (x + 0.5)}) +
               displaced(x, y, {0.125 * (y + 0.5) - 0.375, 0.125 + 0.375 * (x + 0.5)})) /
              2.0),
     any, "VEC2 opening%n(VEC2 at) { return VEC2(at.y, 1.0); } VEC2 closing%n(VEC2 at) { return VEC2(-1.0, at.x); }"},
    {"texture_clamp texture_bilinear:source deform:source", "deform_source%n(x, y, 0.8)",
     EXPECTED(displaced(x, y, 0.8 * pixel("deform", x, y))), any},
    {"texture_clamp texture_bilinear:source deform_mask:source", "deformMask_source%n(x, y, 0.8)",
     EXPECTED(displaced(x, y, 0.8 * pixel("mask", x, y)[0] * pixel("deform", x, y))), any},
    {"fog_distance_z:depths fog_color_image:points fog_density_image:mask fog_const",
     "VEC4(fogDistance(x, y, VEC3(9.0)) + 10.0 * fogVariation(VEC3(at, 1.0), 2.0, 3.0), fogDensity(x, y, 0.3), "
     "fogColour(x, y, VEC3(0.5, 0.25, 0.2)).rb)",
     EXPECTED({std::abs(pixel("depths", x, y)[0]) + 10, 0.3 * pixel("mask", x, y)[0],
               0.5 * pixel("points", x, y)[0], 0.2 * pixel("points", x, y)[2]})},
    {"fog_distance_none fog_color_const fog_density_image:depths fog_const fog_type_fog:source fog_main",
     "fog(x, y, VEC3(9.0), VEC3(0.5, 0.25, 0.125), 3.0, 1.0, 1.0, 1.0)",
     [](int x, int y) {
         const double amount = 1 - std::exp(-3 * std::max(pixel("depths", x, y)[0], 0.0));
         return mixedIn(pixel("source", x, y), fogColour, 1 - amount, amount);
     }},
    {"fog_distance_p:points fog_color_const fog_density_const perlin_noise fog_noise fog_type_additive:source fog_main",
     "fog(x, y, VEC3(1.0, 2.0, 3.0), VEC3(0.5, 0.25, 0.125), 0.7, 0.37, 4.0, 1.0)", glowingBanks},
    {"texture_clamp texture_bilinear:source perlin_noise fog_type_heat:source", FOG_TYPE("VEC3(at, 1.5)"), heat},
    {"texture_clamp texture_bilinear:source fog_type_haze:source", FOG_TYPE("VEC3(0.0)"), haze},
    {"zcomposite",
     "FLOAT alpha, depth; %t both = zComposite(" PAIR("FLOAT(x)", "FLOAT(y)") ", alpha, depth);"
     "both + 10.0 * alpha + 100.0 * depth",
     EXPECTED(composite(over(x, y, x <= y), showsA(x, y, x <= y) ? x : y)), any},
    {"zcomposite_geo", "zCompositeGeo(" PAIR("FLOAT(x)", "FLOAT(y)") ")",
     EXPECTED(pixel(showsA(x, y, x <= y) ? "source" : "key", x, y)), any},
    {"zcomposite zcomposite_ss",
     "FLOAT alpha, depth; %t both = zCompositeSuperSample(" CORNERS ", alpha, depth); both + 10.0 * alpha + 100.0 * depth",
     superSampled, any},
    {"zcomposite zcomposite_ss zcomposite_geo zcomposite_geo_ss", "zCompositeGeoSuperSample(" CORNERS ")",
     EXPECTED(pixel(showsA(x, y, nearShare(x, y) >= 0.5) ? "source" : "key", x, y)), any},
    {"env_normal env_main env_latlong", SKY, EXPECTED(latitudeLongitude(pixel("directions", x, y))), any, "", 2e-3},
    {"env_normal env_main env_cube_deep", SKY, EXPECTED(cube({"X", "x", "Y", "y", "Z", "z"}, pixel("directions", x, y))), any},
    {"env_normal env_main env_cube_strip", SKY, EXPECTED(cube({"XxYyZz"}, pixel("directions", x, y))), any},
    {"env_normal env_main env_cube_cross_horz", SKY, EXPECTED(cube({" Y  ", "xzXZ", " y  "}, pixel("directions", x, y))), any},
    {"env_normal env_main env_cube_cross_vert", SKY,
     EXPECTED(cube({" Y ", "xzX", " y ", " Z "}, pixel("directions", x, y))), any},
    {"env_normal env_main env_cube_strip", MIRROR, EXPECTED(mirrored(unit(pixel("normals", x, y) + V{0, 0, 1e-12}), {"XxYyZz"})), any},
    {"env_bump env_main env_cube_strip", MIRROR,
     [](int x, int y) {
         const V rise = 3.0 * slope("bump", x, y);
         return mirrored(unit({-rise[0], rise[1], 1}), {"XxYyZz"});
     },
     any},
    {"luminance_red luminance key_luma",
     "%t c = ABS_source(x, y);"
     "VEC3(key(c, VEC4(0.2, 0.4, 0.6, 0.8), VEC3(0.0)), key(c, VEC4(0.5), VEC3(0.0)),"
     " key(c * ABS_radius(3, 2), VEC4(0.0, 0.0, 1.0, 1.0), VEC3(0.0)))",
     EXPECTED({inRange(pixel("source", x, y)), pixel("source", x, y)[0] == 0.5 ? 1.0 : 0, 0}), any},
    {"key_chroma",
     "VEC4 c = ABS_source(x, y); VEC3 to = VEC3(0.6, 0.4, 0.3);"
     "VEC4(key(c, VEC4(0.1, 0.3, 0.0, 0.0), to), key(c, VEC4(0.2, 0.2, 0.0, 0.0), to), keyRGB(c.rg).y, keyRGB(c.b).x)",
     [](int x, int y) -> V {
         const V c = pixel("source", x, y);
         const double away = length(chroma(c) - chroma({0.6, 0.4, 0.3}));
         return {std::clamp((0.3 - away) / 0.2, 0.0, 1.0), away <= 0.2 ? 1.0 : 0.0, c[0], c[2]};
     }},
    {"luminance_red luminance key_luma key_main:source", KEY,
     EXPECTED(inRange(pixel("source", x, y)) * (10 + pixel("source", x, y))), any},
    {"luminance_red luminance key_luma key_main_ss", KEY,
     EXPECTED(superSampledKey("key", x, y) * (10 + pixel("source", x, y))), any},
    {"luminance_red luminance key_luma key_main_ss_self", KEY,
     EXPECTED(superSampledKey("source", x, y) * (10 + pixel("source", x, y))), any},
    {"perlin_noise", NOISE(UTnoise(UT_NOISE_PERLIN, 0.7 * x + 0.35, 0.7 * y + 0.35, -3.3, 5))},
    {"sparse_noise", NOISE(UTnoise(UT_NOISE_SPARSE, 0.7 * x + 0.35, 0.7 * y + 0.35, -3.3, 5))},
    {"alligator_noise", NOISE(alligator({0.7 * x + 0.35, 0.7 * y + 0.35, -3.3}, 5))},
    {"sparse_noise noise_cop", "noisePixel(VEC3(at, 1.0), VEC3(0.3, 0.4, 0.5), 3, 0.6, 7u)", octaves},
    {"convolve", "convolve(x, y)", convolved, any},
    {"expand", "expand(x, y, IVEC2(x % 4 - 1, y % 4 - 1))", EXPECTED(window(x, y, x % 4 - 1, y % 4 - 1)), any},
    {"expand expand_pp", "expandPerPixel(x, y, 1.5, 2)",
     EXPECTED(window(x, y, wantedRadius(x, y), wantedRadius(x, y))), any},
    {"luminance_red luminance expand_lum", "expandLuma(x, y, IVEC2(x % 4 - 1, y % 4 - 1))",
     EXPECTED(windowByRed(x, y, x % 4 - 1, y % 4 - 1)), any},
    {"luminance_red luminance expand_lum expand_lum_pp", "expandLumaPerPixel(x, y, 1.5, 2)",
     EXPECTED(windowByRed(x, y, wantedRadius(x, y), wantedRadius(x, y))), any},
    {"blur_pp", "blurPerPixel(x, y, 2.0, 3)", blurred, any},
};

constexpr const char* types[] = {"FLOAT", "VEC2", "VEC3", "VEC4"};

std::string replaced(std::string_view text, const std::string& marker, const std::string& by)
{
    UT_String made(text);
    made.substitute(marker, by);
    return made.buffer();
}

/// A case's functions, and its statements, which read pixel (x, y) as IN_place and leave a result.
struct Program
{
    Program(const Case& made, int n)
    {
        const auto with = [&](const char* text) {
            return replaced(replaced(text, "%n", std::to_string(n)), "%t", types[n - 1]);
        };
        functions =
            "VEC4 four(FLOAT v) { return VEC4(v, 0, 0, 0); }\nVEC4 four(VEC2 v) { return VEC4(v, 0, 0); }\n"
            "VEC4 four(VEC3 v) { return VEC4(v, 0); }\nVEC4 four(VEC4 v) { return v; }\n"
            "VEC3 toward(INT x, INT y) { return normalize(ABS_points(x, y) - 0.5); }\n" +
            shaders::textOf(made.pieces, with(made.own), n);
        const std::string code = with(made.code);
        const size_t value = code.rfind(';') + 1;
        statements = "\nINT x = INT(IN_place.x), y = INT(IN_place.y);\nVEC2 at = IN_place + 0.5;\n" +
                     code.substr(0, value) + "\nVEC4 result = four(" + code.substr(value) + ");\n";
    }

    std::string functions, statements;
};

int componentsOf(const ShaderArray& array, int n)
{
    return array.components == 0 ? n : array.components;
}

/// A shader on its own.
std::string shaderOf(const Program& program, int n)
{
    std::string text = "#version 430\n";
    for (const char* line : {"FLOAT float", "VEC2 vec2", "VEC3 vec3", "VEC4 vec4", "INT int", "IVEC2 ivec2",
                             "IVEC3 ivec3", "UINT uint", "BOOL bool", "MAT3 mat3"})
        text += std::string("#define ") + line + "\n";
    for (const ShaderArray& array : shaderArrays) {
        const int count = componentsOf(array, n);
        text += replaced("uniform sampler2D data_NAME;\nuniform IVEC2 SIZE_NAME;\n" +
                             std::string(types[count - 1]) +
                             " ABS_NAME(INT x, INT y) { return texelFetch(data_NAME, IVEC2(x, y), 0)." +
                             std::string("xyzw").substr(0, static_cast<size_t>(count)) + "; }\n",
                         "NAME", array.name);
    }
    return text + program.functions +
           "layout(local_size_x = 8, local_size_y = 8) in;\nlayout(rgba32f) writeonly uniform image2D "
           "results;\n"
           "void main()\n{\nVEC2 IN_place = VEC2(gl_GlobalInvocationID.xy);\n" +
           program.statements + "imageStore(results, IVEC2(x, y), result);\n}\n";
}

/// Runs a program; empty, and why, where it does not run. Reading outside of an array gives what is never expected.
std::vector<float> run(const Program& program, int n, UT_String& error)
{
    const auto compute = RE_OGLComputeGPU::create();
    std::string looks;
    for (const ShaderArray& array : shaderArrays) {
        if (array.name != "place" &&
            (program.functions + program.statements).find("_" + array.name) == std::string::npos)
            continue;
        const int count = componentsOf(array, n);
        std::vector<float> elements;
        for (int at = 0; at < array.width * array.height; ++at) {
            const V values = pixel(array.name, at % array.width, at / array.width);
            elements.insert(elements.end(), std::begin(values), std::begin(values) + count);
        }
        compute->setArray2D(array.name.c_str(), RE_GPU_FLOAT32, count, array.width, array.height,
                            elements.data());
        looks += types[count - 1] +
                 replaced(" look_NAME(INT x, INT y)\n{\n    outside += INT(x < 0 || y < 0 || "
                          "x >= SIZE_NAME.x || y >= SIZE_NAME.y);\n    return ABS_NAME(x, y);\n}\n"
                          "#define ABS_NAME look_NAME\n",
                          "NAME", array.name);
    }
    std::vector<float> results(size_t{7} * 5 * 4);
    compute->setOutputArray2D("result", RE_GPU_FLOAT32, 4, 7, 5, results.data());
    const std::string text = "INT outside;\n" + looks + program.functions + "\noutside = 0;" +
                             program.statements + "OUT_result(outside > 0 ? VEC4(-9e9) : result);\n";
    if (!compute->setProgram("pieces", text.c_str(), false) || !compute->compute(error, true))
        return {};
    compute->getResults();
    return results;
}

void expectValues(const Case& made, int n, const std::vector<float>& results)
{
    for (size_t at = 0; at < results.size(); ++at) {
        const int x = static_cast<int>(at / 4 % 7), y = static_cast<int>(at / 28);
        const V expected = made.expected(x, y);
        const size_t c = at % 4, count = made.components == any ? static_cast<size_t>(n) : 4;
        if (c >= std::min(count, expected.size()))
            continue;
        const double bound = made.tolerance * std::max(1.0, std::abs(expected[c]));
        if (std::isnan(expected[c]) ? results[at] == -9e9f
                                    : !(std::abs(results[at] - expected[c]) <= bound)) {
            ADD_FAILURE() << made.pieces << ", " << n << " components\n"
                          << made.code << "\nat (" << x << ", " << y << "), component " << c << ": "
                          << results[at] << ", expected " << expected[c];
            return;
        }
    }
}

} // namespace

TEST(ShaderValues, OfEveryPieceAreThoseOfItsFormula)
{
    if (!REfindGPU().found)
        GTEST_SKIP() << REfindGPU().refused.buffer();
    for (const Case& made : cases)
        for (const char* digit = made.components; *digit != '\0'; ++digit) {
            const int n = *digit - '0';
            UT_String error;
            const std::vector<float> results = run(Program(made, n), n, error);
            EXPECT_FALSE(results.empty()) << made.pieces << ": " << error.buffer();
            expectValues(made, n, results);
        }
}

std::set<std::string> shaders::usedFiles()
{
    std::set<std::string> files;
    for (const Case& made : cases)
        files.merge(filesOf(made.pieces));
    return files;
}

int shaders::writePrograms(const std::string& directory)
{
    size_t count = 0;
    for (const Case& made : cases)
        for (const char* digit = made.components; *digit != '\0'; ++digit) {
            std::ofstream file(directory + "/" + std::to_string(count++) + ".comp");
            file << shaderOf(Program(made, *digit - '0'), *digit - '0');
            if (!file.flush())
                return 1;
        }
    std::printf("%zu of %zu pieces in %zu programs\n", usedFiles().size(), listedFiles().size(), count);
    return 0;
}
