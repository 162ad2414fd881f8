#include <RU/gpgpu/ru_ShaderFile.h>

#include <UT/UT_Lock.h>
#include <UT/UT_PathSearch.h>

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

} // namespace

void ru_writeShaderFile(UT_String& text, std::string_view name,
                        std::initializer_list<ru_Substitution> substitutions)
{
    text.harden(contentsOf(name).view());
    for (const ru_Substitution& made : substitutions)
        text.substitute(made.marker, made.replacement);
}
