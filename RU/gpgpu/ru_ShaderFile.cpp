#include <RU/gpgpu/ru_ShaderFile.h>

#include <UT/UT_Lock.h>
#include <UT/UT_PathSearch.h>

#include <cstdio>
#include <mutex>

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

} // namespace

bool ru_ShaderFile::load()
{
    static UT_Lock lock;
    const std::lock_guard guard(lock);
    if (!text_.isEmpty())
        return true;
    const UT_String name = UT_String("ogl2/gpgpu/").append(name_);
    const UT_String path = UT_PathSearch::getInstance(UT_PATH_RESOURCES)->findFile(name.view());
    if (!path.isEmpty())
        appendFile(path, text_);
    return !text_.isEmpty();
}

void ru_ShaderFile::write(UT_String& text, std::initializer_list<ru_Substitution> substitutions)
{
    if (!load()) {
        text.clear();
        return;
    }
    text.harden(text_.view());
    for (const ru_Substitution& made : substitutions)
        text.substitute(made.marker, made.replacement);
}
