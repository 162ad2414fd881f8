#include "Commands.h"

#include <host/graph/Cook.h>
#include <host/text/Error.h>

#include <charconv>

namespace tool {

unsigned int readWhole(const std::string& option, const std::string& text, unsigned int least,
                       unsigned int most)
{
    unsigned int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number < least || number > most)
        host::refuse(option + ": '" + text + "' is no whole number from " + std::to_string(least) + " to " +
                     std::to_string(most));
    return number;
}

int readThreads(const std::string& text)
{
    return static_cast<int>(readWhole("--threads", text, 1, host::maxThreads));
}

} // namespace tool
