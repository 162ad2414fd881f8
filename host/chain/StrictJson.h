#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace host {

using Json = nlohmann::ordered_json;

/// "entry 3: ", as people count.
inline std::string entryText(size_t index)
{
    return "entry " + std::to_string(index + 1) + ": ";
}

/// Parses JSON that is a list of entries, or an object with such lists. Refuses keys that an object has twice,
/// of which the parser alone would keep one, and lists in lists so deep that walking them would exhaust the
/// stack. Throws host::Error, which names the entry, or what the parser throws.
Json parseStrictJson(const std::string& text);

} // namespace host
