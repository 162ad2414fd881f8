#pragma once

#include "Arguments.h"

#include <string>

namespace tool {

/// What the command exits with; a signal's number is added to 128.
enum ExitCode {
    exitDone = 0,
    exitSomeFailed = 1, ///< some frames of a sequence failed; diff: the images differ
    exitUsage = 2,      ///< bad arguments, or no such input
    exitCannotRead = 3,
    exitCannotWrite = 4
};

/// The whole number that the text of an option is; throws a usage error for anything else.
unsigned int readWhole(const std::string& option, const std::string& text, unsigned int least,
                       unsigned int most);
int readThreads(const std::string& text);

Command gradeCommand();
Command edgeCommand();
Command compositeCommand();
Command blendCommand();
Command chromaCommand();
Command functionsCommand();
Command infoCommand();
Command diffCommand();
Command curveCommand();
Command plateCommand();

} // namespace tool
