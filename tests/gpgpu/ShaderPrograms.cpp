#include <gpgpu/ShaderPrograms.h>

#include <RU/gpgpu/RU_ShaderSources.h>
#include <RU/gpgpu/ru_ShaderFile.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <sstream>
#include <tuple>
#include <type_traits>
#include <vector>

namespace {

using Names = std::vector<std::string>;

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
    const Names names = split(parts.size() > 1 ? parts[1] : "", ',');
    for (const Source& source : sources())
        if (const auto at = std::find(source.files.begin(), source.files.end(), fileOf(piece));
            at != source.files.end())
            return source.getter(
                source.files.size() > 1 ? static_cast<int>(at - source.files.begin()) : components, names);
    return "no such piece: " + piece;
}

} // namespace

std::set<std::string> shaders::listedFiles()
{
    std::set<std::string> files;
    for (const Source& source : sources())
        files.insert(source.files.begin(), source.files.end());
    return files;
}

std::set<std::string> shaders::filesOf(const std::string& pieces)
{
    std::set<std::string> files;
    for (const std::string& piece : split(pieces, ' '))
        if (piece != "@")
            files.insert(fileOf(piece));
    return files;
}

std::string shaders::textOf(const std::string& pieces, const std::string& own, int components)
{
    std::string text;
    for (const std::string& piece : split(pieces, ' '))
        text += piece == "@" ? own : ::textOf(piece, components);
    return text;
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
