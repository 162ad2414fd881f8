#pragma once

#include <host/file/Format.h>
#include <host/operation/Operation.h>

#include <RU/shape/RU_FeatherDropoff.h>

// The rows of operations(), by subject, and what their sources share.

namespace host {

std::vector<Operation> colourOperations();
std::vector<Operation> filterOperations();
std::vector<Operation> combineOperations();
std::vector<Operation> generateOperations();
std::vector<Operation> resampleOperations();
std::vector<Operation> shapeOperations();

inline Parameter image(const char* name, const char* help, bool required = true)
{
    Parameter parameter{name, help};
    parameter.isImage = true;
    parameter.required = required;
    parameter.argument.type = Argument::Type::Text;
    parameter.words = parameter.isOption() ? "FILE" : nullptr;
    return parameter;
}

inline Parameter text(const char* name, const char* help, const char* words = nullptr,
                      const char* preset = "")
{
    Parameter parameter{name, help};
    parameter.argument.type = Argument::Type::Text;
    parameter.words = words;
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
    parameter.words = "N";
    parameter.preset = preset;
    return parameter;
}

inline Parameter depth(const char* help)
{
    Parameter parameter = text("--depth", help, "FORMAT");
    for (const unsigned char format :
         {PXL_FORMAT_uint8, PXL_FORMAT_uint16, PXL_FORMAT_uint32, PXL_FORMAT_half, PXL_FORMAT_float32})
        parameter.argument.choices.emplace_back(formatName(format));
    return parameter;
}

inline Parameter component(const char* name, const char* help)
{
    Parameter parameter = text(name, help, "C");
    parameter.argument.choices = {"r", "g", "b", "a"};
    return parameter;
}

inline Parameter dropOff(const char* help, const char* preset)
{
    Parameter parameter = text("--drop-off", help, "CURVE", preset);
#define RU_CHOICE(VALUE, NAME, FORMULA)                                                                      \
    parameter.argument.choices.emplace_back(NAME);                                                           \
    parameter.argument.meanings.emplace_back(FORMULA);
    RU_FOR_EACH_FEATHER_DROPOFF(RU_CHOICE)
#undef RU_CHOICE
    return parameter;
}

/// What all operations on images take.
inline std::vector<Parameter> withPlanes(std::vector<Parameter> parameters, bool points)
{
    Parameter alpha = text("--alpha",
                           "multiply colours by alpha and divide them again as the operation and the file "
                           "formats want it, or take them as they are",
                           "MODE", "auto");
    alpha.argument.choices = {"auto", "as-is"};
    std::vector<Parameter> shared = {
        text("--planes",
             "planes to work on, with commas between them, or all; the others are copied (default: those "
             "with colour)",
             "NAMES"),
        depth("storage format of the result (default: as the inputs)"), alpha};
    if (points) {
        shared.push_back(text("--black", "integer code of 0.0 (default: 0)", "CODE"));
        shared.push_back(text("--white", "integer code of 1.0 (default: the last code)", "CODE"));
    }
    for (Parameter& parameter : shared) {
        parameter.shared = true;
        parameters.push_back(std::move(parameter));
    }
    return parameters;
}

/// What operations take that work on all planes.
inline std::vector<Parameter> forAllPlanes(std::vector<Parameter> parameters)
{
    for (Parameter& shared : withPlanes({}, false))
        if (shared.name != "--planes")
            parameters.push_back(std::move(shared));
    return parameters;
}

} // namespace host
