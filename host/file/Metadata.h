#pragma once

#include <host/file/Image.h>

#include <nlohmann/json.hpp>

namespace host {

/// What metadata() has, for programs: numbers as numbers, or lists of them; NaN and infinities as null.
/// Texts may be no UTF-8.
nlohmann::ordered_json metadataJson(const Image& image);

} // namespace host
