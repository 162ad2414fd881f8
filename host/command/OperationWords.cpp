#include <host/command/OperationWords.h>

namespace host {

OperationWords::OperationWords(const Operation& operation, bool piped) : operation_(operation)
{
    for (const Parameter& parameter : operation.parameters) {
        if (piped && piped_ == nullptr && parameter.isImage) {
            piped_ = &parameter;
            continue;
        }
        Given& given = given_.emplace_back();
        given.parameter = &parameter;
        const char* const preset = parameter.preset.empty() ? nullptr : parameter.preset.c_str();
        const bool isFile = parameter.isImage && !parameter.isOption();
        options_.push_back({parameter.name.c_str(), targetOf(given),
                            parameter.help + (isFile ? "; #### or %04d stands for the frame number" : ""),
                            Rules{parameter.required, parameter.words, preset, parameter.needs,
                                  parameter.excludes, parameter.argument.choices}});
    }
}

Target OperationWords::targetOf(Given& given)
{
    if (given.parameter->isSwitch())
        return &given.on;
    if (given.parameter->takesSeveral())
        return &given.several;
    return &given.one;
}

Call OperationWords::call(const std::string& pipedImage) const
{
    Call call(operation_);
    if (piped_ != nullptr)
        call.set(*piped_, {pipedImage});
    for (const Given& given : given_) {
        if (given.on)
            call.set(*given.parameter, {"on"});
        else if (given.one)
            call.set(*given.parameter, {*given.one});
        else if (!given.several.empty())
            call.set(*given.parameter, given.several);
    }
    call.check();
    return call;
}

} // namespace host
