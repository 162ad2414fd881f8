#pragma once

#include <PXL/PXL_LumFunction.h>
#include <UT/UT_String.h>

#include <initializer_list>
#include <string_view>

/// What is put for a marker in a shader text; a null pointer leaves the marker.
struct ru_Substitution
{
    std::string_view marker;
    const char* replacement;
};

/// Writes a copy of a shader file under ogl2/gpgpu/ with the substitutions made; empty where the file cannot be
/// had, or `name` is empty. It is read once; the next call tries again where there was nothing. Where markers begin
/// alike, the one listed first counts. What was put in is not searched.
void ru_writeShaderFile(UT_String& text, std::string_view name,
                        std::initializer_list<ru_Substitution> substitutions);

/// The prelude's macro for `components` values, and their number as a digit; null unless they are 1 to 4.
const char* ru_shaderType(int components);
const char* ru_shaderDigit(int components);

UT_String ru_decimal(int number);
UT_String ru_numbered(const char* name, int number);

// The files of a list's entries; empty beyond it.
std::string_view ru_softDropoffFile(int type);
std::string_view ru_luminanceFile(PXL_LumFunction function);
