#pragma once

#include <RU/shape/RU_FeatherDropoff.h>
#include <RU/shape/RU_RotoSpline.h>

#include <array>
#include <optional>
#include <string>
#include <vector>

// Shapes as files have them: outlines by their control points, and how they are drawn.

namespace host {

using Place = std::array<double, 2>; ///< x to the right, y down

struct ShapePoint
{
    Place at{}, in{}, out{}; ///< handles are places, and count for Bezier curves alone
    double feather = 0.0;    ///< how far the soft edge reaches here, beyond that of the shape
    double alpha = 1.0;
};

using ShapePoints = std::vector<ShapePoint>;

/// A shape: its points at some frames, and how it is drawn.
struct Shape
{
    struct Key
    {
        double frame = 0.0;
        ShapePoints points;
    };

    std::string name;
    RU_RotoType kind = RU_ROTO_BEZIER;
    RU_RotoFill fill = RU_ROTO_FILLED;
    double width = 1.0;                                  ///< of the stroke
    std::array<float, 4> colour{1.0f, 1.0f, 1.0f, 1.0f}; ///< not multiplied by alpha
    double feather = 0.0; ///< how far the soft edge reaches outwards, or below 0 inwards
    RU_FeatherDropoff dropoff = RU_DROPOFF_LINEAR;
    std::array<int, 2> samples{8, 8}; ///< of a pixel, across and down
    double detail = 1.0;              ///< curves become edges within 0.1 pixels over this
    std::vector<Key> keys;            ///< by ascending frame, all of as many points; one at the least

    bool moves() const { return keys.size() > 1; }

    /// Between keys in proportion, before the first and after the last as these.
    ShapePoints at(double frame) const;
};

struct Shapes
{
    std::optional<Place> size; ///< of the picture that they were drawn for; else their unit is the pixel
    std::vector<Shape> shapes;
    std::vector<std::string> notes; ///< what of the file is not drawn, one line each
};

/// The names of RU_FeatherDropoff, in order.
std::vector<std::string> dropoffNames();

/// The shapes of a .json or an .svg file. Throws a usage error that names the file and the place in it.
Shapes readShapes(const std::string& path);

/// "'arm'" or its number, as people count.
std::string nameOfShape(const std::string& name, size_t index);

} // namespace host
