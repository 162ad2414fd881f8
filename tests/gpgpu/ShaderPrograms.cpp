#include <gpgpu/ShaderPrograms.h>

#include <RU/gpgpu/RU_ShaderSources.h>
#include <RU/gpgpu/ru_ShaderFile.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <functional>
#include <sstream>
#include <tuple>
#include <type_traits>
#include <vector>

namespace {

using Names = std::vector<std::string>;

constexpr const char* types[] = {"FLOAT", "VEC2", "VEC3", "VEC4"};

/// The pieces of a program, in order: those that may stand for each other are separated by strokes, and arguments
/// behind a colon by commas; a number among them is that of the components. @ is the program's own text.
struct Program
{
    const char* name;
    const char* pieces;
    const char* arrays; ///< with their components
    const char* own;
    const char* calls; ///< what main does
};

const Program programs[] = {
    {"transform",
     "texture_clamp texture_sample:source/texture_bilinear:source transform:source transform_blur:source @ "
     "transform_deform_blur:source,opening,closing deform:source deform_mask:source",
     "source:n deform:2 mask:1",
     "VEC2 opening%n(VEC2 at) { return VEC2(1.0); }\nVEC2 closing%n(VEC2 at) { return at; }\n",
     "use(transform_source%n(at, MAT3(1.0)));\n"
     "use(transformBlur_source%n(at, MAT3(1.0), MAT3(2.0), 8));\n"
     "use(deformBlur_source%n(at, 1.0, 8));\n"
     "use(deform_source%n(x, y, 2.0));\n"
     "use(deformMask_source%n(x, y, 2.0));\n"},
    {"sample", "texture_clamp texture_sample:source", "source:n", "", "use(source%n_first(at));\n"},
    {"hsv", "toHSV fromHSV", "", "",
     "FLOAT minv, maxv, s1, hue, sat, rs, gs, bs, val, f, p, q, t;\nINT i;\n"
     "use(fromHSV(toHSV(VEC3(at, 1.0), minv, maxv, s1, hue, sat, rs, gs, bs), i, hue, sat, val, f, p, q, "
     "t));\n"},
    {"lighting",
     "lighting_flat/lighting_bump:heights/lighting_3d:points,normals diffuse_lambert/diffuse_oren_nayar "
     "specular_phong/specular_blinn dropoff lighting_backend:source @ lighting_main",
     "source:4 heights:1 points:3 normals:3",
     "Light lightAt(INT index) { return Light(VEC3(FLOAT(index)), VEC3(1.0), 100.0, 2.0); }\n",
     "use(lighting(x, y, 3, Material(1.0, 0.3, 0.5, 20.0), VEC3(0.1), VEC3(0.0, 0.0, 99.0), 5.0));\n"},
    {"beam",
     "dropoff dropoff_linear/dropoff_easein/dropoff_easeout/dropoff_easein_easeout/dropoff_gaussian "
     "lighting_volumetric",
     "", "",
     "use(volumetricLight(VEC3(0.0), VEC3(0.0, 0.0, -1.0), 9.0, VEC3(at, 5.0), VEC3(1.0, 0.0, 0.0), 0.2, "
     "0.4, 5.0, "
     "2.0, 0.1, 16));\n"},
    {"windows",
     "luminance_standard/luminance_ntsc/luminance_max/luminance_min/luminance_average/luminance_red/"
     "luminance_green/luminance_blue/luminance_comp4 luminance expand expand_pp expand_lum expand_lum_pp "
     "blur_pp "
     "convolve key_luma/key_chroma key_main:source/key_main_ss/key_main_ss_self",
     "source:n key:n radius:1 kernel:1", "",
     "use(expandPerPixel(x, y, 1.0, 4));\nuse(expandLumaPerPixel(x, y, 1.0, 4));\nuse(blurPerPixel(x, y, "
     "1.0, 4));\n"
     "use(convolve(x, y));\nFLOAT matte;\n"
     "use(keyMain(x, y, VEC4(0.2, 0.4, 0.6, 0.8), VEC3(0.1, 0.6, 0.2), matte));\nuse(matte);\n"},
    {"noise", "perlin_noise/sparse_noise/alligator_noise noise_cop", "", "",
     "use(noisePixel(VEC3(at, 1.0), VEC3(0.1), 4, 0.5, 7u));\n"},
    {"fog",
     "texture_clamp texture_bilinear:source,4 fog_distance_z:depths/fog_distance_p:points/fog_distance_none "
     "fog_color_const/fog_color_image:colours fog_density_const/fog_density_image:densities "
     "perlin_noise/sparse_noise/alligator_noise fog_const/fog_noise "
     "fog_type_fog:source/fog_type_additive:source/fog_type_heat:source/fog_type_haze:source fog_main",
     "source:4 depths:1 points:3 colours:3 densities:1", "",
     "use(fog(x, y, VEC3(0.0), VEC3(0.5), 0.1, 0.1, 1.0, 8.0));\n"},
    {"depth", "zcomposite zcomposite_ss zcomposite_geo zcomposite_geo_ss", "front:n back:n", "",
     "FLOAT alpha, depth;\nVEC4 depths = VEC4(at, 3.0, 4.0);\n"
     "use(zComposite(ABS_front(x, y), 0.5, at.x, ABS_back(x, y), 0.5, at.y, alpha, depth));\n"
     "use(zCompositeSuperSample(ABS_front(x, y), 0.5, depths, ABS_back(x, y), 0.5, depths.wzyx, alpha, "
     "depth));\n"
     "use(zCompositeGeoSuperSample(ABS_front(x, y), 0.5, depths, ABS_back(x, y), 0.5, depths.wzyx));\n"},
    {"environment",
     "env_bump/env_normal env_main "
     "env_cube_deep/env_cube_strip/env_cube_cross_horz/env_cube_cross_vert/env_latlong",
     "environment:n bump:1 normals:3", "", "use(environment(x, y, VEC3(0.0, 0.0, -1.0), 2.0, MAT3(1.0)));\n"},
};

/// What a getter of the list is called for. An argument is told by its type.
using Getter = std::function<std::string(int number, const Names& names)>;

template <class... Parameters>
Getter callOf(void (*getter)(Parameters...))
{
    return [getter](int number, const Names& names) {
        UT_String text;
        auto name = names.begin();
        const auto argument = [&]<class T>(std::type_identity<T>) -> T {
            if constexpr (std::is_same_v<T, UT_String&>)
                return text;
            else if constexpr (std::is_same_v<T, const char*>)
                return name == names.end() ? nullptr : (name++)->c_str();
            else
                return static_cast<T>(number);
        };
        std::tuple<Parameters...> arguments{argument(std::type_identity<Parameters>())...};
        std::apply(getter, arguments);
        return std::string(text.view());
    };
}

/// A row of the list, with all files that it may choose from.
struct Source
{
    const char* function;
    const char* parameters;
    std::string what;
    Getter getter;
    Names files;
};

const std::vector<Source>& sources()
{
    static const std::vector<Source> list = [] {
        std::vector<Source> made;
#define ADD_SOURCE(FUNCTION, PARAMETERS, FILE, WHAT, ...)                                                    \
    made.push_back({#FUNCTION, #PARAMETERS, WHAT, callOf(static_cast<void(*) PARAMETERS>(FUNCTION)), {}});   \
    for (int type = 0; type < 32; ++type) {                                                                  \
        [[maybe_unused]] const auto function = static_cast<PXL_LumFunction>(type);                           \
        Names& files = made.back().files;                                                                    \
        if (const std::string file(FILE); !file.empty() && (files.empty() || files.back() != file))          \
            files.push_back(file);                                                                           \
    }
        RU_FOR_EACH_SHADER_SOURCE(ADD_SOURCE)
#undef ADD_SOURCE
        return made;
    }();
    return list;
}

Names split(const std::string& text, char separator)
{
    Names words;
    std::istringstream stream(text);
    for (std::string word; std::getline(stream, word, separator);)
        if (!word.empty())
            words.push_back(word);
    return words;
}

std::string fileOf(const std::string& piece)
{
    return "gpgpu_" + split(piece, ':').front();
}

std::string textOf(const std::string& piece, int components)
{
    const Names parts = split(piece, ':');
    Names names = split(parts.size() > 1 ? parts[1] : "", ',');
    if (!names.empty() && names.back().find_first_not_of("1234") == std::string::npos) {
        components = std::stoi(names.back());
        names.pop_back();
    }
    for (const Source& source : sources())
        if (const auto at = std::find(source.files.begin(), source.files.end(), fileOf(piece));
            at != source.files.end())
            return source.getter(
                source.files.size() > 1 ? static_cast<int>(at - source.files.begin()) : components, names);
    return "no such piece: " + piece;
}

std::string prelude(const Program& program, int components)
{
    std::string text = "#version 430\n";
    for (const char* line : {"FLOAT float", "VEC2 vec2", "VEC3 vec3", "VEC4 vec4", "INT int", "IVEC2 ivec2",
                             "IVEC3 ivec3", "UINT uint", "BOOL bool", "MAT3 mat3"})
        text += std::string("#define ") + line + "\n";
    for (const std::string& array : split(program.arrays, ' ')) {
        const Names parts = split(array, ':');
        const int count = parts[1] == "n" ? components : std::stoi(parts[1]);
        text += "uniform sampler2D data_" + parts[0] + ";\nuniform IVEC2 SIZE_" + parts[0] + ";\n" +
                types[count - 1] + " ABS_" + parts[0] + "(INT x, INT y)\n{\n    return texelFetch(data_" +
                parts[0] + ", IVEC2(x, y), 0)." + std::string("xyzw").substr(0, static_cast<size_t>(count)) +
                ";\n}\n";
    }
    text += "VEC4 used = VEC4(0.0);\n";
    for (const char* type : types)
        text += std::string("void use(") + type + " value) { used += VEC4(value" +
                std::string(type == types[1]   ? ", 0.0, 0.0"
                            : type == types[2] ? ", 0.0"
                                               : "") +
                "); }\n";
    return text;
}

/// Program `variant` of a kind.
std::string textOf(const Program& program, size_t variant, int components)
{
    std::string text = prelude(program, components);
    UT_String own(program.own), calls(program.calls);
    const UT_String digit = ru_decimal(components);
    own.substitute("%n", digit.view());
    calls.substitute("%n", digit.view());
    for (const std::string& slot : split(program.pieces, ' ')) {
        const Names choices = split(slot, '/');
        text += slot == "@" ? own.buffer() : textOf(choices[variant % choices.size()], components);
    }
    return text +
           "layout(local_size_x = 8, local_size_y = 8) in;\n"
           "layout(rgba32f) writeonly uniform image2D result;\n"
           "void main()\n{\n"
           "    INT x = INT(gl_GlobalInvocationID.x), y = INT(gl_GlobalInvocationID.y);\n"
           "    VEC2 at = VEC2(x, y) + VEC2(0.5);\n" +
           calls.buffer() + "    imageStore(result, IVEC2(x, y), used);\n}\n";
}

size_t variantsOf(const Program& program)
{
    size_t most = 1;
    for (const std::string& slot : split(program.pieces, ' '))
        most = std::max(most, split(slot, '/').size());
    return most;
}

} // namespace

std::set<std::string> shaders::listedFiles()
{
    std::set<std::string> files;
    for (const Source& source : sources())
        files.insert(source.files.begin(), source.files.end());
    return files;
}

std::set<std::string> shaders::usedFiles()
{
    std::set<std::string> files;
    for (const Program& program : programs)
        for (const std::string& slot : split(program.pieces, ' '))
            for (const std::string& piece : split(slot, '/'))
                if (piece != "@")
                    files.insert(fileOf(piece));
    return files;
}

int shaders::writePrograms(const std::string& directory)
{
    size_t count = 0;
    for (const Program& program : programs)
        for (size_t variant = 0; variant < variantsOf(program); ++variant)
            for (int n = 1; n <= 4; ++n, ++count) {
                std::ofstream file(directory + "/" + program.name + std::to_string(variant) + "_" +
                                   std::to_string(n) + ".comp");
                file << textOf(program, variant, n);
                if (!file.flush())
                    return 1;
            }
    std::printf("%zu of %zu pieces in %zu programs\n", usedFiles().size(), listedFiles().size(), count);
    return usedFiles() == listedFiles() ? 0 : 1;
}

void shaders::printTable()
{
    std::printf("| function | files | what is in them |\n|---|---|---|\n");
    for (const Source& source : sources()) {
        std::string files;
        for (const std::string& file : source.files)
            files += (files.empty() ? "`" : ", `") + file + "`";
        const size_t end = std::min(source.what.find(": "), source.what.find(" for "));
        std::printf("| `%s%s` | %s | `%s`%s |\n", source.function, source.parameters, files.c_str(),
                    source.what.substr(0, end).c_str(), source.what.substr(end).c_str());
    }
}
