#include <host/file/Components.h>

#include <host/text/Error.h>

#include <algorithm>

namespace host {

Components componentsOfLetters(const std::string& text)
{
    Components components{};
    for (const char letter : text) {
        const char* found = std::find(componentLetters, componentLetters + 4, letter);
        if (found == componentLetters + 4)
            refuse("unknown component '" + std::string(1, letter) + "' in scope '" + text +
                   "'; the components are r, g, b and a");
        bool& component = components[static_cast<size_t>(found - componentLetters)];
        if (component)
            refuse("component '" + std::string(1, letter) + "' is twice in scope '" + text + "'");
        component = true;
    }
    if (text.empty())
        refuse("a scope is empty; write r, g, b, a or several of them, as in @rgb");
    return components;
}

std::string lettersOf(const Components& components)
{
    std::string text;
    for (size_t c = 0; c < 4; ++c)
        if (components[c])
            text += componentLetters[c];
    return text;
}

bool isPartial(const Components& components)
{
    return components != Components{true, true, true, true};
}

} // namespace host
