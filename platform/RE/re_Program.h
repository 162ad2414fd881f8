#pragma once

#include <RE/RE_Types.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// How elements of a type lie in 32-bit words; nothing for matrices.
struct re_Layout
{
    explicit re_Layout(RE_GPUType type);

    uint32_t bits = 0; ///< of an element
    uint32_t perWord() const { return 32 / bits; }
};

/// A named array as programs know it. Its size is no part of a program.
struct re_Array
{
    std::string name;
    RE_GPUType type;
    int vectorSize;
    uint32_t width;
    uint32_t height;

    int64_t bytes() const { return int64_t(width) * height * vectorSize * re_Layout(type).bits / 8; }
};

/// The same for constants.
struct re_Constant
{
    std::string name;
    RE_GPUType type;
    int vectorSize;
    int count;
    std::vector<float> floats; ///< the values, or the integers
    std::vector<int32_t> integers;

    /// "FLOAT gamma1[4]"
    std::string declaration() const;
};

/// A constant's values in the type in which a program takes them.
re_Constant re_makeConstant(const char* name, RE_GPUType type, int vectorSize, const void* data, int count,
                            bool normalize);

/// Everything that a program is made for. Arrays have the buffers 0, 1 and so on, first the inputs.
struct re_Declared
{
    std::vector<re_Constant> constants;
    std::vector<re_Array> inputs;
    std::vector<re_Array> outputs;

    /// An invocation computes as many pixels as fill whole words of every output.
    uint32_t pixelsPerInvocation() const;
};

inline constexpr uint32_t re_groupSize = 64;

/// The macros that shader texts have for GLSL's words, and the functions that they call unseen.
const char* re_shaderTypes();
const char* re_shaderHelpers();

/// The whole compute shader. Its uniforms are the constants, RE_width and RE_count, the pixels of a row and of
/// all rows, and RE_size_name for each input.
std::string re_program(const re_Declared& declared, std::string_view text, bool normalize);
