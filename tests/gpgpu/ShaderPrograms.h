#pragma once

#include <set>
#include <string>

/// Pieces of GLSL, and programs that together use every one of them.
namespace shaders {

/// The files that the list of shader sources names.
std::set<std::string> listedFiles();
/// Those that programs are made of.
std::set<std::string> usedFiles();

/// Pieces of a program, in order, between spaces: the end of a file's name and, behind a colon, the names that its
/// getter takes, between commas. @ is the program's own text.
std::set<std::string> filesOf(const std::string& pieces);
std::string textOf(const std::string& pieces, const std::string& own, int components);

/// Writes the programs as compute shaders into a directory and prints how many there are. The exit code is 1 where one
/// cannot be written.
int writePrograms(const std::string& directory);

/// Prints the table of docs/shaders.md.
void printTable();

} // namespace shaders
