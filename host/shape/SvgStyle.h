#pragma once

#include <host/shape/Shapes.h>

#include <map>
#include <optional>
#include <string>

namespace host {

using Colour3 = std::array<float, 3>;

/// a x + c y + e, b x + d y + f
struct SvgMatrix
{
    double a = 1.0, b = 0.0, c = 0.0, d = 1.0, e = 0.0, f = 0.0;

    Place operator()(const Place& p) const { return {a * p[0] + c * p[1] + e, b * p[0] + d * p[1] + f}; }
    /// First `inner`, then this.
    SvgMatrix operator*(const SvgMatrix& inner) const;
    /// How much lengths grow, in the mean of the directions.
    double scale() const;
    /// Whether lengths grow alike in all directions.
    bool isEven() const;
};

/// How an element of an SVG file is painted: what it says and what it takes over from those around it.
struct SvgStyle
{
    using Properties = std::map<std::string, std::string>;

    /// Takes over what an element's properties say; `where` is before messages.
    void apply(const Properties& properties, const std::string& where);

    std::optional<Colour3> fill = Colour3{0.0f, 0.0f, 0.0f}, stroke; ///< none: not painted
    double fillOpacity = 1.0, strokeOpacity = 1.0;
    double opacity = 1.0; ///< of all around it and its own
    double strokeWidth = 1.0;
    bool visible = true;
    bool evenOdd = false;
    SvgMatrix matrix;
};

} // namespace host
