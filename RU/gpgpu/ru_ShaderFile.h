#pragma once

#include <UT/UT_String.h>

#include <initializer_list>
#include <string_view>

/// What is put for a marker in a shader text.
struct ru_Substitution
{
    std::string_view marker;
    std::string_view replacement;
};

/// A shader file under ogl2/gpgpu/, read once. For static objects, one per file.
class ru_ShaderFile
{
public:
    explicit ru_ShaderFile(const char* name) : name_(name) {}

    /// Writes a copy of the file with the substitutions made, one after the other; empty where it cannot be
    /// had.
    void write(UT_String& text, std::initializer_list<ru_Substitution> substitutions);

private:
    /// False: there is nothing, and the next call tries again.
    bool load();

    const char* name_;
    UT_String text_; ///< changes no more once it is not empty
};
