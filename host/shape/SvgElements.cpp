#include <host/shape/SvgElements.h>

#include <host/shape/SvgNumbers.h>
#include <host/text/Error.h>

namespace host {

namespace {

double attributeOf(const pugi::xml_node& element, const char* name, const std::string& where)
{
    const std::string text = element.attribute(name).value();
    const auto numbers = SvgNumbers(text.ends_with("px") ? text.substr(0, text.size() - 2) : text).all();
    if (!numbers || numbers->size() > 1)
        refuse(where + name + " '" + text + "' is not known; expected a number, in units of the drawing");
    return numbers->empty() ? 0.0 : numbers->front();
}

double sizeOf(const pugi::xml_node& element, const char* name, const std::string& where)
{
    const double size = attributeOf(element, name, where);
    if (size < 0.0)
        refuse(where + name + " is below 0; expected a size in units of the drawing");
    return size;
}

SubPath lineOf(const std::vector<Place>& places, bool closed)
{
    SubPath path{{}, closed};
    for (const Place& place : places)
        path.points.push_back({place, place, place});
    return path;
}

SubPath cornersOf(const pugi::xml_node& element, bool closed, const std::string& where)
{
    const std::string text = element.attribute("points").value();
    const auto numbers = SvgNumbers(text).all();
    if (!numbers || numbers->size() % 2 != 0)
        refuse(where + "points: expected pairs of numbers");
    std::vector<Place> places;
    for (size_t i = 0; i < numbers->size(); i += 2)
        places.push_back({(*numbers)[i], (*numbers)[i + 1]});
    return lineOf(places, closed);
}

/// Four curves, which pass an ellipse by 0.03 % of its radius at most.
SubPath ellipseOf(double x, double y, double radiusX, double radiusY)
{
    constexpr double handle = 0.5522847498307936;
    SubPath path{{}, true};
    for (const auto& [c, s] : {Place{1.0, 0.0}, {0.0, 1.0}, {-1.0, 0.0}, {0.0, -1.0}}) {
        const Place along{-s * handle * radiusX, c * handle * radiusY}, at{x + c * radiusX, y + s * radiusY};
        path.points.push_back(
            {at, {at[0] - along[0], at[1] - along[1]}, {at[0] + along[0], at[1] + along[1]}});
    }
    return path;
}

} // namespace

std::optional<std::vector<SubPath>> subPathsOf(const pugi::xml_node& element, const std::string& where)
{
    const std::string name = element.name();
    const auto number = [&](const char* attribute) { return attributeOf(element, attribute, where); };
    const auto size = [&](const char* attribute) { return sizeOf(element, attribute, where); };
    if (name == "path")
        return readPathData(element.attribute("d").value(), where);
    if (name == "polygon" || name == "polyline")
        return {{cornersOf(element, name == "polygon", where)}};
    if (name == "line")
        return {{lineOf({{number("x1"), number("y1")}, {number("x2"), number("y2")}}, false)}};
    if (name == "rect" && !element.attribute("rx") && !element.attribute("ry")) {
        const double left = number("x"), top = number("y"), right = left + size("width"),
                     bottom = top + size("height");
        return {{lineOf({{left, top}, {right, top}, {right, bottom}, {left, bottom}}, true)}};
    }
    if (name == "circle")
        return {{ellipseOf(number("cx"), number("cy"), size("r"), size("r"))}};
    if (name == "ellipse")
        return {{ellipseOf(number("cx"), number("cy"), size("rx"), size("ry"))}};
    return {};
}

} // namespace host
