#include "Commands.h"

namespace tool {

host::Program program()
{
    host::Program program{
        .name = "kreiluge",
        .summary = "Grades images, combines them and finds their edges, from the shell",
        .version = KREILUGE_VERSION,
        .commands = {},
        .exitCodes = {
            {std::to_string(exitDone), "done"},
            {std::to_string(exitSomeFailed), "some frames of a sequence failed, or diff found a difference"},
            {std::to_string(exitUsage), "bad arguments, or no such input"},
            {std::to_string(exitCannotRead), "an input cannot be read"},
            {std::to_string(exitCannotWrite), "an output cannot be written"},
            {std::to_string(exitNoDevice), "there is no GPU, or it failed"},
            {"129 and above", "stopped by a signal, whose number is the code less 128"}}};
    for (const host::Operation& operation : host::operations())
        program.commands.push_back(operationCommand(operation));
    for (const auto command : {runCommand, operationsCommand, functionsCommand, infoCommand, diffCommand,
                               curveCommand, shaderCommand, gpuCommand, completionCommand, manCommand})
        program.commands.push_back(command());
    return program;
}

} // namespace tool
