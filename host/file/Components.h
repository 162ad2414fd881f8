#pragma once

#include <array>
#include <string>

namespace host {

using Components = std::array<bool, 4>; ///< of red, green, blue, alpha

constexpr char componentLetters[] = "rgba";

/// "rgb" and the like; throws a usage error for anything else.
Components componentsOfLetters(const std::string& letters);

std::string lettersOf(const Components& components);

bool isPartial(const Components& components);

} // namespace host
