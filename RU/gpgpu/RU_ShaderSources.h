#pragma once

#include <PXL/PXL_LumFunction.h>
#include <RU/RU_API.h>
#include <UT/UT_String.h>

/// The types of soft drop-off, 0 to 4: X(name, formula).
#define RU_FOR_EACH_SOFT_DROPOFF(X)                                                                          \
    X("linear", "x")                                                                                         \
    X("easein", "1.0523 (e^(-3 (1 - x)) - 1) + 1")                                                           \
    X("easeout", "1.0523 (1 - e^(-3 x))")                                                                    \
    X("easein_easeout", "0.5 - 0.5 cos(pi x)")                                                               \
    X("gaussian", "1.0523 (1 - e^(-3 x^2))")

// All pieces of GLSL, each with: the function that gets it, its parameters (the output is `text`), its file, what
// it is (T is the type of n components), and what the function puts for which marker of the file: pairs such as
// {"%s", name}. docs/shaders.md says how pieces are put together.
// clang-format off
#define RU_FOR_EACH_SHADER_SOURCE(X)                                                                         \
    X(RUgetTextureSampleGPU, (const char* name, int n, UT_String& text), "gpgpu_texture_sample",             \
      "T NAMEn(VEC2 at), FLOAT NAMEn_first(VEC2 at): the pixel at a place of the array NAME",                \
      {"%s", name}, {"%t", ru_shaderType(n)}, {"%e", n < 2 ? "" : ".x"}, {"%n", ru_decimal(n).buffer()})     \
    X(RUgetTextureBilinear, (const char* name, int n, UT_String& text), "gpgpu_texture_bilinear",            \
      "T NAMEn(VEC2 at): between the four pixels around a place of the array NAME",                          \
      {"%s", name}, {"%t", ru_shaderType(n)}, {"%n", ru_decimal(n).buffer()})                                \
    X(RUgetToHSVConvertGPU, (UT_String& text), "gpgpu_toHSV",                                                \
      "VEC3 toHSV(VEC3 rgb, out FLOAT minv, maxv, s1, hue, sat, rs, gs, bs): hue, saturation and value")     \
    X(RUgetFromHSVConvertGPU, (UT_String& text), "gpgpu_fromHSV",                                            \
      "VEC3 fromHSV(VEC3 hsv, out INT i, out FLOAT hue, sat, val, f, p, q, t): red, green and blue")         \
    X(RUgetDiffuseLambert, (UT_String& text), "gpgpu_diffuse_lambert",                                       \
      "FLOAT diffuse(VEC3 normal, light, view, FLOAT roughness): smooth matt surfaces")                      \
    X(RUgetDiffuseOrenNayar, (UT_String& text), "gpgpu_diffuse_oren_nayar",                                  \
      "FLOAT diffuse(VEC3 normal, light, view, FLOAT roughness): rough matt surfaces")                       \
    X(RUgetSpecularPhong, (UT_String& text), "gpgpu_specular_phong",                                         \
      "FLOAT specular(VEC3 normal, light, view, FLOAT shininess): highlights by the reflected light")        \
    X(RUgetSpecularBlinn, (UT_String& text), "gpgpu_specular_blinn",                                         \
      "FLOAT specular(VEC3 normal, light, view, FLOAT shininess): highlights by the vector halfway")         \
    X(RUgetDropoffFunc, (UT_String& text), "gpgpu_dropoff",                                                  \
      "FLOAT dropoff(FLOAT distance, reach, rate): how light weakens with the distance")                     \
    X(RUgetSoftDropoff, (int type, UT_String& text), ru_softDropoffFile(type),                               \
      "FLOAT softDropoff(FLOAT x): a soft edge, from 0 to 1; empty for an unknown type")                     \
    X(RUgetLuminanceFunc, (UT_String& text), "gpgpu_luminance",                                              \
      "FLOAT luminance(value) for FLOAT, VEC2, VEC3 and VEC4, by lumFunction()")                             \
    X(RUgetLuminanceFunc, (PXL_LumFunction function, UT_String& text), ru_luminanceFile(function),           \
      "FLOAT lumFunction(VEC4 value): one of the luminances; empty for an unknown one")                      \
    X(RUgetVolumetricLight, (UT_String& text), "gpgpu_lighting_volumetric",                                  \
      "FLOAT volumetricLight(...), FLOAT lightCone(...): the beam of a lamp in thin smoke")                  \
    X(RUgetFlatLightFrontend, (UT_String& text), "gpgpu_lighting_flat",                                      \
      "void surface(INT x, y, FLOAT height, out VEC3 position, normal): the picture as a plane")             \
    X(RUgetBumpLightFrontend, (UT_String& text, const char* name), "gpgpu_lighting_bump",                    \
      "void surface(...): the picture as a relief, of heights in the array NAME",                            \
      {"%s", name})                                                                                          \
    X(RUget3DLightFrontend, (UT_String& text, const char* points, const char* normals),                      \
      "gpgpu_lighting_3d",                                                                                   \
      "void surface(...): positions and normals from two arrays",                                            \
      {"%points", points}, {"%normals", normals})                                                            \
    X(RUgetLightingBackend, (UT_String& text, const char* name), "gpgpu_lighting_backend",                   \
      "Light, Material, void illuminate(...), VEC4 litPixel(...): what light does to the picture NAME",      \
      {"%s", name})                                                                                          \
    X(RUgetLightingMain, (UT_String& text), "gpgpu_lighting_main",                                           \
      "VEC4 lighting(INT x, y, INT lights, Material material, VEC3 ambient, eye, FLOAT height): a "          \
      "pixel under all lights")                                                                              \
    X(RUgetTransform, (int n, const char* name, UT_String& text), "gpgpu_transform",                         \
      "T transform_NAMEn(VEC2 at, MAT3 toSource): the image moved, turned, scaled or in perspective",        \
      {"%1", ru_shaderType(n)}, {"%2", name}, {"%3", ru_numbered(name, n).buffer()})                         \
    X(RUgetTransformBlur, (int n, const char* name, UT_String& text), "gpgpu_transform_blur",                \
      "T transformBlur_NAMEn(VEC2 at, MAT3 open, close, INT samples): averaged along the motion",            \
      {"%1", ru_shaderType(n)}, {"%2", name},                                                                \
      {"%3", ru_numbered(name, n).buffer()}, {"%t", ru_shaderType(n)})                                       \
    X(RUgetTransformDeformBlur, (int n, const char* name, const char* open, const char* close, UT_String& text), \
      "gpgpu_transform_deform_blur",                                                                         \
      "T deformBlur_NAMEn(VEC2 at, FLOAT scale, INT samples): averaged between the displacements "           \
      "OPENn() and CLOSEn()",                                                                                \
      {"%1", ru_shaderType(n)}, {"%2", ru_numbered(name, n).buffer()},                                       \
      {"%3", ru_numbered(open, n).buffer()}, {"%4", ru_numbered(close, n).buffer()}, {"%t", ru_shaderType(n)}) \
    X(RUgetTextureClamp, (UT_String& text), "gpgpu_texture_clamp",                                           \
      "INT textureClamp(FLOAT at, INT size), IVEC2 textureClamp(VEC2 at, IVEC2 size): the nearest "          \
      "pixel that there is")                                                                                 \
    X(RUgetFogMain, (UT_String& text), "gpgpu_fog_main",                                                     \
      "VEC4 fog(INT x, y, VEC3 eye, colour, FLOAT density, frequency, amplitude, strength): a pixel "        \
      "in fog")                                                                                              \
    X(RUgetFogDistanceZ, (const char* name, UT_String& text), "gpgpu_fog_distance_z",                        \
      "FLOAT fogDistance(INT x, y, VEC3 eye): from depths in NAME",                                          \
      {"%1", name})                                                                                          \
    X(RUgetFogDistanceP, (const char* name, UT_String& text), "gpgpu_fog_distance_p",                        \
      "FLOAT fogDistance(INT x, y, VEC3 eye): from positions in NAME",                                       \
      {"%1", name})                                                                                          \
    X(RUgetFogDistanceNone, (UT_String& text), "gpgpu_fog_distance_none",                                    \
      "FLOAT fogDistance(INT x, y, VEC3 eye): the same everywhere")                                          \
    X(RUgetFogColorConst, (UT_String& text), "gpgpu_fog_color_const",                                        \
      "VEC3 fogColour(INT x, y, VEC3 colour): one colour")                                                   \
    X(RUgetFogColorImage, (const char* name, UT_String& text), "gpgpu_fog_color_image",                      \
      "VEC3 fogColour(INT x, y, VEC3 colour): the picture NAME, tinted",                                     \
      {"%1", name})                                                                                          \
    X(RUgetFogDensityConst, (UT_String& text), "gpgpu_fog_density_const",                                    \
      "FLOAT fogDensity(INT x, y, FLOAT density): one density")                                              \
    X(RUgetFogDensityImage, (const char* name, UT_String& text), "gpgpu_fog_density_image",                  \
      "FLOAT fogDensity(INT x, y, FLOAT density): the array NAME, scaled",                                   \
      {"%1", name})                                                                                          \
    X(RUgetFogConst, (UT_String& text), "gpgpu_fog_const",                                                   \
      "FLOAT fogVariation(VEC3 place, FLOAT frequency, amplitude): even fog")                                \
    X(RUgetFogNoise, (UT_String& text), "gpgpu_fog_noise",                                                   \
      "FLOAT fogVariation(VEC3 place, FLOAT frequency, amplitude): banks of fog")                            \
    X(RUgetFogTypeFog, (const char* name, UT_String& text), "gpgpu_fog_type_fog",                            \
      "VEC4 fogType(INT x, y, VEC3 place, colour, FLOAT amount, frequency, strength): fog that hides "       \
      "the picture NAME",                                                                                    \
      {"%1", name})                                                                                          \
    X(RUgetFogTypeAdd, (const char* name, UT_String& text), "gpgpu_fog_type_additive",                       \
      "VEC4 fogType(INT x, y, VEC3 place, colour, FLOAT amount, frequency, strength): fog that glows "       \
      "in front of the picture NAME",                                                                        \
      {"%1", name})                                                                                          \
    X(RUgetFogTypeHeat, (const char* name, UT_String& text), "gpgpu_fog_type_heat",                          \
      "VEC4 fogType(INT x, y, VEC3 place, colour, FLOAT amount, frequency, strength): fog that makes "       \
      "the picture NAME shimmer",                                                                            \
      {"%1", name})                                                                                          \
    X(RUgetFogTypeHaze, (const char* name, UT_String& text), "gpgpu_fog_type_haze",                          \
      "VEC4 fogType(INT x, y, VEC3 place, colour, FLOAT amount, frequency, strength): fog that "             \
      "spreads the light of the picture NAME",                                                               \
      {"%1", name})                                                                                          \
    X(RUgetZCompositeSimple, (int n, UT_String& text), "gpgpu_zcomposite",                                   \
      "T zComposite(T a, FLOAT alphaA, depthA, T b, FLOAT alphaB, depthB, out FLOAT alpha, depth): "         \
      "the nearer over the farther",                                                                         \
      {"%1", ru_shaderType(n)})                                                                              \
    X(RUgetZCompositeSuperSample, (int n, UT_String& text), "gpgpu_zcomposite_ss",                           \
      "T zCompositeSuperSample(...): the same, with depths at the corners of the pixel",                     \
      {"%1", ru_shaderType(n)})                                                                              \
    X(RUgetZCompositeGeo, (int n, UT_String& text), "gpgpu_zcomposite_geo",                                  \
      "T zCompositeGeo(...): for values that cannot be mixed: those of the nearer",                          \
      {"%1", ru_shaderType(n)})                                                                              \
    X(RUgetZCompositeSuperSampleGeo, (int n, UT_String& text), "gpgpu_zcomposite_geo_ss",                    \
      "T zCompositeGeoSuperSample(...): those of which is nearer in most of the pixel",                      \
      {"%1", ru_shaderType(n)})                                                                              \
    X(RUgetEnvironmentMain, (int n, UT_String& text), "gpgpu_env_main",                                      \
      "T environment(INT x, y, VEC3 view, FLOAT height, MAT3 turn): the mirror image of the array "          \
      "environment",                                                                                         \
      {"%1", ru_shaderType(n)})                                                                              \
    X(RUgetEnvironmentBump, (UT_String& text), "gpgpu_env_bump",                                             \
      "VEC3 environmentNormal(INT x, y, FLOAT height): from heights in the array bump")                      \
    X(RUgetEnvironmentNormal, (UT_String& text), "gpgpu_env_normal",                                         \
      "VEC3 environmentNormal(INT x, y, FLOAT height): from the array normals")                              \
    X(RUgetEnvironmentCubeDeep, (UT_String& text), "gpgpu_env_cube_deep",                                    \
      "VEC2 environmentPlace(VEC3 direction, IVEC2 size, out IVEC2 low, high, out BOOL around): six "        \
      "faces, one below another")                                                                            \
    X(RUgetEnvironmentCubeStrip, (UT_String& text), "gpgpu_env_cube_strip",                                  \
      "VEC2 environmentPlace(VEC3 direction, IVEC2 size, out IVEC2 low, high, out BOOL around): six "        \
      "faces side by side")                                                                                  \
    X(RUgetEnvironmentCubeCrossHorz, (UT_String& text), "gpgpu_env_cube_cross_horz",                         \
      "VEC2 environmentPlace(VEC3 direction, IVEC2 size, out IVEC2 low, high, out BOOL around): a "          \
      "cross of four by three faces")                                                                        \
    X(RUgetEnvironmentCubeCrossVert, (UT_String& text), "gpgpu_env_cube_cross_vert",                         \
      "VEC2 environmentPlace(VEC3 direction, IVEC2 size, out IVEC2 low, high, out BOOL around): a "          \
      "cross of three by four faces")                                                                        \
    X(RUgetEnvironmentLatLong, (UT_String& text), "gpgpu_env_latlong",                                       \
      "VEC2 environmentPlace(VEC3 direction, IVEC2 size, out IVEC2 low, high, out BOOL around): by "         \
      "latitude and longitude")                                                                              \
    X(RUgetKeyMain, (int n, const char* name, UT_String& text), "gpgpu_key_main",                            \
      "T keyMain(INT x, y, VEC4 range, VEC3 colour, out FLOAT matte): the picture NAME where its key is",    \
      {"%1", ru_shaderType(n)}, {"%p", name})                                                                \
    X(RUgetKeyMainSuperSample, (int n, UT_String& text), "gpgpu_key_main_ss",                                \
      "T keyMain(...): the array source where the key of the array key is, with soft edges",                 \
      {"%1", ru_shaderType(n)})                                                                              \
    X(RUgetKeyMainSuperSampleSelf, (int n, UT_String& text), "gpgpu_key_main_ss_self",                       \
      "T keyMain(...): the array source where its own key is, with soft edges",                              \
      {"%1", ru_shaderType(n)})                                                                              \
    X(RUgetKeyLuma, (int n, UT_String& text), "gpgpu_key_luma",                                              \
      "FLOAT key(T value, VEC4 range, VEC3 colour): 1 in a range of luminance",                              \
      {"%1", ru_shaderType(n)})                                                                              \
    X(RUgetKeyChroma, (int n, UT_String& text), "gpgpu_key_chroma",                                          \
      "FLOAT key(T value, VEC4 range, VEC3 colour): 1 near a colour",                                        \
      {"%1", ru_shaderType(n)})                                                                              \
    X(RUgetPerlinNoise, (UT_String& text), "gpgpu_perlin_noise",                                             \
      "FLOAT noise(VEC3 place, UINT key): slopes in random directions, joined smoothly")                     \
    X(RUgetSparseNoise, (UT_String& text), "gpgpu_sparse_noise",                                             \
      "FLOAT noise(VEC3 place, UINT key): soft spots of random strength at random places")                   \
    X(RUgetAlligatorNoise, (UT_String& text), "gpgpu_alligator_noise",                                       \
      "FLOAT noise(VEC3 place, UINT key): the two strongest of random spots, less one another")              \
    X(RUgetNoiseCop, (UT_String& text), "gpgpu_noise_cop",                                                   \
      "FLOAT noisePixel(VEC3 place, frequency, INT octaves, FLOAT roughness, UINT seed): octaves of "        \
      "noise")                                                                                               \
    X(RUgetDeform, (const char* name, int n, UT_String& text), "gpgpu_deform",                               \
      "T deform_NAMEn(INT x, y, FLOAT scale): the image displaced by the array deform",                      \
      {"%1", ru_shaderType(n)}, {"%2", name}, {"%3", ru_shaderDigit(n)})                                     \
    X(RUgetDeformMask, (const char* name, int n, UT_String& text), "gpgpu_deform_mask",                      \
      "T deformMask_NAMEn(INT x, y, FLOAT scale): the same, less where the array mask is less",              \
      {"%1", ru_shaderType(n)}, {"%2", name}, {"%3", ru_shaderDigit(n)})                                     \
    X(RUgetConvolve, (int n, UT_String& text), "gpgpu_convolve",                                             \
      "T convolve(INT x, y): the array source convolved with the array kernel",                              \
      {"%1", ru_shaderType(n)})                                                                              \
    X(RUgetExpand, (int n, UT_String& text), "gpgpu_expand",                                                 \
      "T expand(INT x, y, IVEC2 radius): the largest of each component in a window of the array source",     \
      {"%1", ru_shaderType(n)})                                                                              \
    X(RUgetExpandLuma, (int n, UT_String& text), "gpgpu_expand_lum",                                         \
      "T expandLuma(INT x, y, IVEC2 radius): the pixel of the largest luminance in a window",                \
      {"%1", ru_shaderType(n)})                                                                              \
    X(RUgetExpandPerPixel, (int n, UT_String& text), "gpgpu_expand_pp",                                      \
      "T expandPerPixel(INT x, y, FLOAT scale, INT limit): expand() by the array radius",                    \
      {"%1", ru_shaderType(n)})                                                                              \
    X(RUgetExpandLumaPerPixel, (int n, UT_String& text), "gpgpu_expand_lum_pp",                              \
      "T expandLumaPerPixel(INT x, y, FLOAT scale, INT limit): expandLuma() by the array radius",            \
      {"%1", ru_shaderType(n)})                                                                              \
    X(RUgetBlurPerPixel, (int n, UT_String& text), "gpgpu_blur_pp",                                          \
      "T blurPerPixel(INT x, y, FLOAT scale, INT limit): a Gauss filter as wide as the array radius "        \
      "says",                                                                                                \
      {"%1", ru_shaderType(n)})
// clang-format on

// Pieces of GLSL for programs that the host or a pixel function puts together. They stand in files of the
// installation, ogl2/gpgpu/ under a directory of UT_PathSearch, and use the macros FLOAT, VEC3, INT and so on
// of the program's prelude.
//
// Each function writes its text into `text`, or empties it where the file is missing or cannot be read; the
// latter is reported on the standard error stream, and later calls try again. Once read, a file is kept for the
// rest of the process. What is put for a marker is not searched for others; a number of components that is not
// from 1 to 4 leaves the markers of its type.
// Threads: any; one lock for all.
#define RU_SHADER_DECLARE(FUNCTION, PARAMETERS, ...) RU_API void FUNCTION PARAMETERS;
RU_FOR_EACH_SHADER_SOURCE(RU_SHADER_DECLARE)
#undef RU_SHADER_DECLARE
