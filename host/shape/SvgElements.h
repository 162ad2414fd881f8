#pragma once

#include <host/shape/SvgPath.h>

#include <pugixml.hpp>

#include <optional>

namespace host {

/// The sub-paths of a path, polygon, polyline, line, rect, circle or ellipse; nothing for other elements and for
/// rectangles with round corners. `where` is before messages.
std::optional<std::vector<SubPath>> subPathsOf(const pugi::xml_node& element, const std::string& where);

} // namespace host
