#pragma once

#include <host/shape/Shapes.h>

namespace host {

/// The paths that the text of an SVG file has, as shapes in its width and height. The path is for messages.
Shapes shapesOfSvg(const std::string& text, const std::string& path);

} // namespace host
