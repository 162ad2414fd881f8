#pragma once

#include <host/shape/Shapes.h>

namespace host {

/// The shapes that the text of a JSON file has; docs/shapes.schema.json describes it. The path is for messages.
Shapes shapesOfJson(const std::string& text, const std::string& path);

} // namespace host
