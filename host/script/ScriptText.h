#pragma once

#include <host/script/Script.h>

#include <map>
#include <string>

namespace host {

/// Values for the names that a script has after a $.
using ScriptValues = std::map<std::string, std::string>;

/// Reads a script: a line for each operation, as on the command line, with a name and = in front where later
/// lines use it instead of a file. A line `write NAME FILE [--depth ...]` stores a picture; where there is none
/// the last line is stored to `output`. | hands the picture of an operation on as the first image of the next
/// one. Quotes hold words together, \ at its end goes on with the next line, what follows # at the start of a
/// word is left out, and $NAME or ${NAME} stand for values.
///
/// `source` names the text in messages, which begin with its line and column.
Script readScript(const std::string& text, const std::string& source, const ScriptValues& values,
                  const std::string& output);

/// The same as JSON: {"statements": [{"name": "lines", "operation": "edge", "input": "clean", "gain": 0.5}],
/// "outputs": [{"image": "lines", "file": "lines.####.exr", "depth": "half"}]}, with the parameters' keys.
Script readScriptJson(const std::string& text, const std::string& source, const ScriptValues& values,
                      const std::string& output);

/// A script of either form from a file.
Script readScriptFile(const std::string& path, const ScriptValues& values, const std::string& output);

/// A script as JSON, and what such JSON has to be.
std::string scriptJson(const Script& script);
std::string scriptSchema();

} // namespace host
