#include <RU/gpgpu/ru_ShaderFile.h>

#include <RU/gpgpu/RU_ShaderSources.h>
#include <UT/UT_Lock.h>
#include <UT/UT_PathSearch.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <map>
#include <mutex>
#include <string>

namespace {

void appendFile(const UT_String& path, UT_String& text)
{
    std::FILE* file = std::fopen(path.buffer(), "rt");
    if (file == nullptr) {
        std::fprintf(stderr, "Error loading %s\n", path.buffer());
        return;
    }
    char piece[256];
    while (std::fgets(piece, sizeof piece, file) != nullptr)
        text.append(piece);
    std::fclose(file);
}

/// What the file holds; nothing where it cannot be had. A text that was read changes no more.
const UT_String& contentsOf(std::string_view name)
{
    static UT_Lock lock;
    static std::map<std::string, UT_String, std::less<>> files;
    const std::lock_guard guard(lock);
    UT_String& contents = files.try_emplace(std::string(name)).first->second;
    if (!contents.isEmpty())
        return contents;
    const UT_String relative = UT_String("ogl2/gpgpu/").append(name);
    const UT_String path = UT_PathSearch::getInstance(UT_PATH_RESOURCES)->findFile(relative.view());
    if (!path.isEmpty())
        appendFile(path, contents);
    static const UT_String nothing; // not the text that another thread may be about to read
    return contents.isEmpty() ? nothing : contents;
}

/// Entry `index` of a list, or `beyond`.
const char* listed(std::initializer_list<const char*> list, int64_t index, const char* beyond)
{
    return index >= 0 && index < static_cast<int64_t>(list.size()) ? list.begin()[index] : beyond;
}

} // namespace

void ru_writeShaderFile(UT_String& text, std::string_view name,
                        std::initializer_list<ru_Substitution> substitutions)
{
    text.clear();
    if (name.empty())
        return;
    std::string_view rest = contentsOf(name).view();
    while (!rest.empty()) {
        const ru_Substitution* made =
            std::find_if(substitutions.begin(), substitutions.end(), [&](const ru_Substitution& one) {
                return one.replacement != nullptr && !one.marker.empty() && rest.starts_with(one.marker);
            });
        const bool isMarker = made != substitutions.end();
        const size_t length = isMarker ? made->marker.size() : 1;
        text.append(isMarker ? made->replacement : rest.substr(0, length));
        rest.remove_prefix(length);
    }
}

const char* ru_shaderType(int components)
{
    return listed({"FLOAT", "VEC2", "VEC3", "VEC4"}, int64_t{components} - 1, nullptr);
}

const char* ru_shaderDigit(int components)
{
    return listed({"1", "2", "3", "4"}, int64_t{components} - 1, nullptr);
}

UT_String ru_decimal(int number)
{
    return UT_String(std::to_string(number));
}

UT_String ru_numbered(const char* name, int number)
{
    return UT_String(name).append(std::to_string(number));
}

std::string_view ru_softDropoffFile(int type)
{
#define RU_FILE(NAME, FORMULA) "gpgpu_dropoff_" NAME,
    return listed({RU_FOR_EACH_SOFT_DROPOFF(RU_FILE)}, type, "");
#undef RU_FILE
}

std::string_view ru_luminanceFile(PXL_LumFunction function)
{
#define RU_FILE(ENUMERATOR, NAME, FORMULA) "gpgpu_luminance_" NAME,
    return listed({PXL_FOR_EACH_LUM_FUNCTION(RU_FILE)}, function, "");
#undef RU_FILE
}
