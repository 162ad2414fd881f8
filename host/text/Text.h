#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace host {

/// The shortest text that reads back as the same number.
std::string numberText(float number);

/// The double that is written like a float: 0.1 for 0.1f.
double doubleOf(float number);

/// Reads a finite number that fills all of `text`; false for anything else. What is too small for a float is
/// 0.
bool readNumber(std::string_view text, float& number);

/// Whether a text is nan or inf, or another way to write them.
bool isNotFinite(std::string_view text);

/// A text for the terminal: control characters and what is no UTF-8 are written as \n or \x1b.
std::string printable(const std::string& text);

/// What stands between separators, one part more than there are separators.
std::vector<std::string> splitText(const std::string& text, char separator);

/// What stands between blanks.
std::vector<std::string> wordsOf(const std::string& text);

bool isBlank(std::string_view text);

/// ".exr" and the like, in small letters.
std::string extensionOf(const std::string& path);

/// A file as a whole; throws a usage error that calls it `what`.
std::string readTextFile(const std::string& path, const std::string& what);

} // namespace host
