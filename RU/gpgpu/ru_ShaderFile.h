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

/// Writes a copy of a shader file under ogl2/gpgpu/ with the substitutions made, one after the other; empty
/// where the file cannot be had. It is read once; the next call tries again where there was nothing.
void ru_writeShaderFile(UT_String& text, std::string_view name,
                        std::initializer_list<ru_Substitution> substitutions);
