#pragma once

#include <stdexcept>
#include <string>

namespace host {

/// Everything that the host throws. The text is one line that names the file or the option and what is wrong.
/// Visible, as it goes from one module to another.
class __attribute__((visibility("default"))) Error : public std::runtime_error
{
public:
    enum class Kind {
        Usage,   ///< asked for something that does not exist or makes no sense
        NoInput, ///< there is no such input file
        Read,    ///< an input file cannot be read
        Write,   ///< an output file cannot be written
        Output, ///< nor could the other files of a sequence be: there is no directory, the format does not fit ...
        Device,   ///< there is no GPU, or it failed
        Cancelled ///< told to stop
    };

    Error(Kind kind, const std::string& text) : std::runtime_error(text), kind_(kind) {}

    Kind kind() const { return kind_; }

private:
    Kind kind_;
};

[[noreturn]] inline void refuse(const std::string& text)
{
    throw Error(Error::Kind::Usage, text);
}

} // namespace host
