#pragma once

#include <host/shape/Shapes.h>

namespace host {

struct FreehandSettings
{
    double tolerance = 1.0; ///< how far from the samples the curve may pass, in pixels
    bool open = false;      ///< a stroke, instead of a filled shape
    double width = 1.0;     ///< of the stroke
};

/// A shape along a stroke, of which a text file has the samples: "x, y" a line, and what is behind # is a comment.
Shapes readFreehand(const std::string& path, const FreehandSettings& settings);

} // namespace host
