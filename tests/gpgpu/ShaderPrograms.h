#pragma once

#include <set>
#include <string>

/// Complete compute shaders that together use every piece of GLSL, with others that may stand in its place and for
/// each number of components.
namespace shaders {

/// The files that the list of shader sources names.
std::set<std::string> listedFiles();
/// Those that programs are made of.
std::set<std::string> usedFiles();

/// Writes the programs into a directory and prints how many there are. The exit code is 1 where one cannot be written.
int writePrograms(const std::string& directory);

/// Prints the table of docs/shaders.md.
void printTable();

} // namespace shaders
