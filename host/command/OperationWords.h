#pragma once

#include <host/command/Arguments.h>
#include <host/operation/Operation.h>

#include <deque>
#include <optional>

namespace host {

/// The parameters of an operation as options of a command, and the words that are given for them.
class OperationWords
{
public:
    /// `piped`: the first image is known already and not asked for.
    explicit OperationWords(const Operation& operation, bool piped = false);
    OperationWords(const OperationWords&) = delete;
    OperationWords& operator=(const OperationWords&) = delete;

    const std::vector<Option>& options() const { return options_; }

    /// What was read; throws a usage error for words that are no values.
    Call call(const std::string& pipedImage = {}) const;

private:
    struct Given
    {
        const Parameter* parameter;
        bool on = false;
        std::optional<std::string> one;
        std::vector<std::string> several;
    };

    Target targetOf(Given& given);

    const Operation& operation_;
    const Parameter* piped_ = nullptr;
    std::deque<Given> given_;
    std::vector<Option> options_;
};

} // namespace host
