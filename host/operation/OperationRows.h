#pragma once

#include <host/operation/Operation.h>

// The rows of operations(), by subject, and what their sources share.

namespace host {

std::vector<Operation> colourOperations();
std::vector<Operation> filterOperations();
std::vector<Operation> combineOperations();
std::vector<Operation> generateOperations();

inline Parameter image(const char* name, const char* help, bool required = true)
{
    Parameter parameter{name, help};
    parameter.isImage = true;
    parameter.required = required;
    parameter.argument.type = Argument::Type::Text;
    return parameter;
}

inline Parameter text(const char* name, const char* help, const char* preset = "")
{
    Parameter parameter{name, help};
    parameter.argument.type = Argument::Type::Text;
    parameter.preset = preset;
    return parameter;
}

inline Parameter onOff(const char* name, const char* help)
{
    Parameter parameter{name, help};
    parameter.argument.type = Argument::Type::Switch;
    return parameter;
}

inline Parameter number(const char* name, const char* help, const char* preset)
{
    Parameter parameter{name, help};
    parameter.preset = preset;
    return parameter;
}

inline Parameter depth()
{
    return text("--depth",
                "store the result as uint8, uint16, uint32, half or float (default: as the inputs)");
}

inline Parameter component(const char* name, const char* help)
{
    Parameter parameter = text(name, help);
    parameter.argument.choices = {"r", "g", "b", "a"};
    return parameter;
}

/// What all operations on images take.
inline std::vector<Parameter> withPlanes(std::vector<Parameter> parameters, bool points)
{
    Parameter alpha = text("--alpha",
                           "auto, or as-is: convert nothing between colours that are multiplied by alpha and "
                           "those that are not",
                           "auto");
    alpha.argument.choices = {"auto", "as-is"};
    parameters.push_back(text("--planes",
                              "planes to work on, with commas between them, or all; the others are "
                              "copied (default: those with colour)"));
    parameters.push_back(depth());
    parameters.push_back(alpha);
    if (points) {
        parameters.push_back(text("--black", "integer code of 0.0 (default: 0)"));
        parameters.push_back(text("--white", "integer code of 1.0 (default: the last code)"));
    }
    return parameters;
}

} // namespace host
