#include <RE/re_Program.h>

#include <RE/RE_ShaderType.h>
#include <RE/re_Join.h>
#include <RE/re_ShaderText.h>
#include <SYS/SYS_Half.h>
#include <UT/UT_String.h>

#include <algorithm>
#include <initializer_list>
#include <utility>

namespace {

constexpr const char* types = R"(#define FLOAT float
#define VEC2 vec2
#define VEC3 vec3
#define VEC4 vec4
#define INT int
#define IVEC2 ivec2
#define IVEC3 ivec3
#define IVEC4 ivec4
#define UINT uint
#define BOOL bool
#define MAT3 mat3
#define MATRIX2 mat2
#define MATRIX3 mat3
#define MATRIX4 mat4
#define TRANSFORM_POINT(M, P) ((M) * (P))
#define mix RE_mix
)";

constexpr const char* helpers = R"(
vec2 RE_splat2(float v) { return vec2(v); }
vec2 RE_splat2(vec2 v) { return v; }
vec3 RE_splat3(float v) { return vec3(v); }
vec3 RE_splat3(vec3 v) { return v; }
vec4 RE_splat4(float v) { return vec4(v); }
vec4 RE_splat4(vec4 v) { return v; }

// A mask of exactly 0 or 1 selects: what is masked out may be infinite.
float RE_mix(float a, float b, float m)
{
    precise float r = a * (1.0 - m) + b * m;
    return m == 0.0 ? a : m == 1.0 ? b : r;
}
vec2 RE_mix(vec2 a, vec2 b, vec2 m) { return vec2(RE_mix(a.x, b.x, m.x), RE_mix(a.y, b.y, m.y)); }
vec3 RE_mix(vec3 a, vec3 b, vec3 m) { return vec3(RE_mix(a.xy, b.xy, m.xy), RE_mix(a.z, b.z, m.z)); }
vec4 RE_mix(vec4 a, vec4 b, vec4 m) { return vec4(RE_mix(a.xy, b.xy, m.xy), RE_mix(a.zw, b.zw, m.zw)); }
vec2 RE_mix(vec2 a, vec2 b, float m) { return RE_mix(a, b, vec2(m)); }
vec3 RE_mix(vec3 a, vec3 b, float m) { return RE_mix(a, b, vec3(m)); }
vec4 RE_mix(vec4 a, vec4 b, float m) { return RE_mix(a, b, vec4(m)); }
float RE_mix(float a, float b, bool m) { return m ? b : a; }
vec2 RE_mix(vec2 a, vec2 b, bvec2 m) { return RE_mix(a, b, vec2(m)); }
vec3 RE_mix(vec3 a, vec3 b, bvec3 m) { return RE_mix(a, b, vec3(m)); }
vec4 RE_mix(vec4 a, vec4 b, bvec4 m) { return RE_mix(a, b, vec4(m)); }
)";

constexpr const char* codes = R"(
uniform uint RE_width;
uniform uint RE_count;
uint RE_index = 0u;
int RE_x = 0;
int RE_y = 0;

// Codes to values, by the bits of 1 / 255 and 1 / 65535.
float RE_read2(uint code) { precise float v = float(code) * uintBitsToFloat(0x3B808081u); return v; }
float RE_read3(uint code) { precise float v = float(code) * uintBitsToFloat(0x37800080u); return v; }
float RE_read4(uint code) { precise double v = double(code) * (1.0LF / 4294967295.0LF); return float(v); }
float RE_read8(uint code)
{
    uint sign = (code & 0x8000u) << 16, exponent = (code >> 10) & 31u, mantissa = code & 0x3FFu;
    if (exponent == 31u)
        return uintBitsToFloat(sign | 0x7F800000u | (mantissa << 13) | (mantissa != 0u ? 0x400000u : 0u));
    if (exponent != 0u)
        return uintBitsToFloat(sign | ((exponent + 112u) << 23) | (mantissa << 13));
    precise float small = float(mantissa) * uintBitsToFloat(0x33800000u);
    return uintBitsToFloat(sign | floatBitsToUint(small));
}
float RE_read10(uint code) { return uintBitsToFloat(code); }

// Values to codes. NaN is not above 0.
uint RE_write2(float v)
{
    precise float code = floor(v * 255.0 + 0.5);
    return code > 0.0 ? uint(min(code, 255.0)) : 0u;
}
uint RE_write3(float v)
{
    precise float code = floor(v * 65535.0 + 0.5);
    return code > 0.0 ? uint(min(code, 65535.0)) : 0u;
}
uint RE_write4(float v)
{
    precise double code = floor(double(v) * 4294967295.0LF + 0.5LF);
    return code > 0.0LF ? uint(min(code, 4294967295.0LF)) : 0u;
}
uint RE_write8(float v)
{
    uint bits = floatBitsToUint(v), sign = (bits >> 16) & 0x8000u, magnitude = bits & 0x7FFFFFFFu;
    if (magnitude > 0x7F800000u)
        return sign | 0x7E00u | ((magnitude >> 13) & 0x3FFu);
    if (magnitude >= 0x477FF000u)
        return sign | 0x7C00u;
    if (magnitude >= 0x38800000u)
        return sign | ((magnitude - 0x38000000u + 0xFFFu + ((magnitude >> 13) & 1u)) >> 13);
    precise float aligned = uintBitsToFloat(magnitude) + 0.5;
    return sign | (floatBitsToUint(aligned) - 0x3F000000u);
}
uint RE_write10(float v) { return floatBitsToUint(v); }
)";

constexpr const char* mainBegin = R"(layout(local_size_x = GROUP_SIZE) in;
void main()
{
    uint row = gl_NumWorkGroups.x * gl_WorkGroupSize.x;
    uint first = (gl_GlobalInvocationID.y * row + gl_GlobalInvocationID.x) * PIXELSu;
    uint end = min(first + PIXELSu, RE_count);
    for (RE_index = first; RE_index < end; ++RE_index) {
        RE_x = int(RE_index % RE_width);
        RE_y = int(RE_index / RE_width);
)";

bool isSigned(RE_GPUType type)
{
    return type == RE_GPU_INT8 || type == RE_GPU_INT16 || type == RE_GPU_INT32;
}

bool isFloat(RE_GPUType type)
{
    return type == RE_GPU_FLOAT16 || type == RE_GPU_FLOAT32;
}

/// The pieces of an array's part in a program, with its markers replaced: NAME; TYPE of a pixel and its COMPONENTS;
/// BITS, LAST and SHIFT of elements in words; BUFFER.
class ArrayText
{
public:
    ArrayText(const re_Array& array, bool normalize, size_t buffer)
        : array_(array), isValue_(isFloat(array.type) || (normalize && !isSigned(array.type))),
          buffer_(buffer)
    {
    }

    std::string input() const
    {
        std::string values;
        for (int k = 0; k < array_.vectorSize; ++k)
            values += re_join(k == 0 ? "" : ", ", element(std::to_string(k)));
        return replaced(R"(
layout(std430, binding = BUFFER) readonly buffer RE_in_NAME { uint RE_data_NAME[]; };
uniform uvec2 RE_size_NAME;
#define SIZE_NAME ivec2(RE_size_NAME)
TYPE ABS_NAME(int x, int y)
{
    ivec2 last = SIZE_NAME - 1;
    uint e = (uint(clamp(y, 0, last.y)) * RE_size_NAME.x + uint(clamp(x, 0, last.x))) * COMPONENTSu;
    return TYPE()" + values +
                        R"();
}
#define IN_NAME ABS_NAME(RE_x, RE_y)
)");
    }

    std::string output() const
    {
        return replaced(R"(
layout(std430, binding = BUFFER) writeonly buffer RE_out_NAME { uint RE_codes_NAME[]; };
precise TYPE RE_value_NAME = TYPE(0);
uint RE_word_NAME = 0u;
void OUT_NAME(TYPE value) { RE_value_NAME = value; }
void RE_put_NAME(uint e, uint code)
{
    uint lane = e & LASTu;
    RE_word_NAME = lane == 0u ? code : RE_word_NAME | (code << (lane * BITSu));
    if (lane == LASTu || e + 1u == RE_count * COMPONENTSu)
        RE_codes_NAME[e >> SHIFTu] = RE_word_NAME;
}
)");
    }

    std::string clear() const { return replaced("        RE_value_NAME = TYPE(0);\n"); }

    std::string store() const
    {
        static constexpr const char* components[] = {".x", ".y", ".z", ".w"};
        std::string text;
        for (int k = 0; k < array_.vectorSize; ++k) {
            const std::string value = re_join("RE_value_NAME", array_.vectorSize > 1 ? components[k] : "");
            const std::string code =
                isValue_ ? re_join("RE_writeCODE(", value, ")") : re_join("uint(", value, ") & MASKu");
            text += re_join("        RE_put_NAME(RE_index * COMPONENTSu + ", std::to_string(k), "u, ", code,
                            ");\n");
        }
        return replaced(text);
    }

private:
    std::string element(const std::string& k) const
    {
        const std::string at = re_join("(e + ", k, "u)");
        const std::string word = re_join("RE_data_NAME[", at, " >> SHIFTu]");
        const std::string shift = re_join("(", at, " & LASTu) * BITSu");
        if (isSigned(array_.type))
            return re_join("bitfieldExtract(int(", word, "), int(", shift, "), BITS)");
        const std::string code = re_join("(", word, " >> (", shift, ")) & MASKu");
        return re_join(isValue_ ? "RE_readCODE(" : "int(", code, ")");
    }

    std::string replaced(std::string_view text) const
    {
        const uint32_t bits = re_Layout(array_.type).bits;
        const char* type = REshaderType(isValue_ ? RE_GPU_FLOAT32 : RE_GPU_INT32, array_.vectorSize);
        UT_String result(text);
        for (const auto& [marker, value] : std::initializer_list<std::pair<const char*, std::string>>{
                 {"TYPE", type},
                 {"COMPONENTS", std::to_string(array_.vectorSize)},
                 {"BITS", std::to_string(bits)},
                 {"LAST", std::to_string(32 / bits - 1)},
                 {"SHIFT", bits == 8    ? "2"
                           : bits == 16 ? "1"
                                        : "0"},
                 {"MASK", std::to_string(bits == 32 ? 0xFFFFFFFFu : (1u << bits) - 1)},
                 {"CODE", std::to_string(array_.type)},
                 {"BUFFER", std::to_string(buffer_)},
                 {"NAME", array_.name}}) // last: it may contain markers
            result.substitute(marker, value);
        return std::string(result.view());
    }

    const re_Array& array_;
    bool isValue_; ///< read and written as floats
    size_t buffer_;
};

} // namespace

re_Constant re_makeConstant(const char* name, RE_GPUType type, int vectorSize, const void* data, int count,
                            bool normalize)
{
    re_Constant made{name, type, vectorSize, count, {}, {}};
    const int side = type >= RE_GPU_MATRIX2 ? type - RE_GPU_MATRIX2 + 2 : 1;
    const auto elements = static_cast<size_t>(int64_t(vectorSize) * count * side * side);
    const auto floats = [&]<class T>(const T* values) { made.floats.assign(values, values + elements); };
    const auto integers = [&]<class T>(const T* values, double white) {
        for (size_t i = 0; i < elements; ++i)
            if (normalize)
                made.floats.push_back(static_cast<float>(static_cast<double>(values[i]) / white));
            else
                made.integers.push_back(static_cast<int32_t>(values[i]));
    };
    switch (type) {
    case RE_GPU_UINT8:
        integers(static_cast<const uint8_t*>(data), 255.0);
        break;
    case RE_GPU_UINT16:
        integers(static_cast<const uint16_t*>(data), 65535.0);
        break;
    case RE_GPU_UINT32:
        integers(static_cast<const uint32_t*>(data), 4294967295.0);
        break;
    case RE_GPU_INT8:
        integers(static_cast<const int8_t*>(data), 127.0);
        break;
    case RE_GPU_INT16:
        integers(static_cast<const int16_t*>(data), 32767.0);
        break;
    case RE_GPU_INT32:
        integers(static_cast<const int32_t*>(data), 2147483647.0);
        break;
    case RE_GPU_FLOAT16:
        floats(static_cast<const fpreal16*>(data));
        break;
    default:
        floats(static_cast<const float*>(data));
    }
    return made;
}

std::string re_Constant::declaration() const
{
    const RE_GPUType as = !floats.empty() && type < RE_GPU_FLOAT16 ? RE_GPU_FLOAT32 : type;
    const std::string many = count > 1 ? re_join("[", std::to_string(count), "]") : "";
    return re_join(REshaderType(as, vectorSize), " ", name, many);
}

re_Layout::re_Layout(RE_GPUType type)
{
    if (type == RE_GPU_UINT8 || type == RE_GPU_INT8)
        bits = 8;
    else if (type == RE_GPU_UINT16 || type == RE_GPU_INT16 || type == RE_GPU_FLOAT16)
        bits = 16;
    else
        bits = 32;
}

uint32_t re_Declared::pixelsPerInvocation() const
{
    uint32_t pixels = 1;
    for (const re_Array& output : outputs)
        pixels = std::max(pixels, re_Layout(output.type).perWord());
    return pixels;
}

const char* re_shaderTypes()
{
    return types;
}

const char* re_shaderHelpers()
{
    return helpers;
}

std::string re_program(const re_Declared& declared, std::string_view text, bool normalize)
{
    const re_ShaderText cut(text);
    std::string program = re_join("#version 430\n", types, helpers, codes);
    std::string clear, store;
    for (const re_Constant& constant : declared.constants)
        program += re_join("uniform ", constant.declaration(), ";\n");
    size_t buffer = 0;
    for (const re_Array& input : declared.inputs)
        program += ArrayText(input, normalize, buffer++).input();
    for (const re_Array& output : declared.outputs) {
        const ArrayText array(output, normalize, buffer++);
        program += array.output();
        clear += array.clear();
        store += array.store();
    }
    program += re_join(cut.outside, "\nvoid RE_pixel()\n{\n", cut.statements, "}\n\n#line 1 2\n");
    UT_String main(mainBegin);
    main.substitute("GROUP_SIZE", std::to_string(re_groupSize));
    main.substitute("PIXELS", std::to_string(declared.pixelsPerInvocation()));
    return program + re_join(main.view(), clear, "        RE_pixel();\n", store, "    }\n}\n");
}
