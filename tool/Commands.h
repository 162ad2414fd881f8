#pragma once

#include <host/command/Arguments.h>
#include <host/operation/Operation.h>

#include <string>

namespace tool {

/// What the command exits with; a signal's number is added to 128.
enum ExitCode {
    exitDone = 0,
    exitSomeFailed = 1, ///< some frames of a sequence failed; diff: the images differ
    exitUsage = 2,      ///< bad arguments, or no such input
    exitCannotRead = 3,
    exitCannotWrite = 4,
    exitNoDevice = 6
};

using host::Command;
using host::required;

/// Everything that people can run.
host::Program program();

/// The command of an operation.
Command operationCommand(const host::Operation& operation);
Command runCommand();
Command operationsCommand();
Command functionsCommand();
Command infoCommand();
Command diffCommand();
Command curveCommand();
Command shaderCommand();
Command gpuCommand();
Command completionCommand();
Command manCommand();

} // namespace tool
