#pragma once

#include <host/script/ScriptText.h>

#include <string>
#include <vector>

namespace host {

/// A word of a script, and where it stands; lines and columns begin at 1.
struct ScriptWord
{
    std::string text;
    int line = 1, column = 1;
    bool isBare = true; ///< without quotes
};

using ScriptLine = std::vector<ScriptWord>;

/// The words of each line that has any.
std::vector<ScriptLine> scriptLines(const std::string& text, const std::string& source,
                                    const ScriptValues& values);

/// A text with the values put for $NAME and ${NAME}, and $ for $$; `where` begins what is said of unknown ones.
std::string withValues(const std::string& text, const std::string& where, const ScriptValues& values);

} // namespace host
