#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace host {

/// The shortest text that reads back as the same number.
std::string numberText(float number);

/// Reads a finite number that fills all of `text`; false for anything else.
bool readNumber(std::string_view text, float& number);

/// What stands between separators, one part more than there are separators.
std::vector<std::string> splitText(const std::string& text, char separator);

bool isBlank(std::string_view text);

} // namespace host
