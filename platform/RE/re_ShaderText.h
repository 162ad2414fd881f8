#pragma once

#include <cctype>
#include <string>
#include <string_view>

/// Of names and numbers.
inline bool re_isWordCharacter(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

/// A shader text that mixes declarations, functions and statements, cut into what stands outside of functions
/// and what runs once per pixel. Lines keep their numbers, as those of source string 1.
///
/// In function number N, named functionN, a parameter whose name ends in N also goes by the name without it.
/// What functions compute is computed as it is written, without contraction.
/// Variables without a value, functions, structures, constants and directives stand outside.
struct re_ShaderText
{
    explicit re_ShaderText(std::string_view text);

    std::string outside;
    std::string statements;
};
