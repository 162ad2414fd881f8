#include <host/shape/ShapesSvg.h>

#include <host/shape/Outlines.h>
#include <host/shape/SvgElements.h>
#include <host/shape/SvgNumbers.h>
#include <host/shape/SvgStyle.h>
#include <host/text/Error.h>
#include <host/text/Names.h>
#include <host/text/Text.h>

#include <algorithm>
#include <cmath>

namespace host {

namespace {

bool isAmong(const std::string& name, const std::vector<std::string>& names)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

const std::vector<std::string> groups = {"g", "a"};

/// What paints nothing by itself.
const std::vector<std::string> silent = {"defs",           "title",          "desc",    "metadata",
                                         "clipPath",       "mask",           "filter",  "marker",
                                         "linearGradient", "radialGradient", "pattern", "symbol"};

/// Properties that would change what is painted, and the values with which they do not.
const std::map<std::string, std::string> unknown = {{"clip-path", "none"},       {"mask", "none"},
                                                    {"filter", "none"},          {"stroke-dasharray", "none"},
                                                    {"stroke-linecap", "butt"},  {"marker-start", "none"},
                                                    {"marker-mid", "none"},      {"marker-end", "none"},
                                                    {"marker", "none"},          {"stroke-linejoin", "miter"},
                                                    {"mix-blend-mode", "normal"}};

SvgStyle::Properties propertiesOf(const pugi::xml_node& element)
{
    SvgStyle::Properties properties;
    for (const pugi::xml_attribute& attribute : element.attributes())
        properties[attribute.name()] = attribute.value();
    for (const std::string& declaration : splitText(element.attribute("style").value(), ';')) {
        const size_t colon = declaration.find(':');
        const std::vector<std::string> name = wordsOf(declaration.substr(0, colon));
        if (colon != declaration.npos && name.size() == 1)
            properties[name.front()] = declaration.substr(colon + 1);
    }
    return properties;
}

/// The point, if it lies where a picture may have it.
ShapePoint within(const ShapePoint& point, const std::string& where)
{
    constexpr double most = 1e6;
    for (const Place& place : {point.at, point.in, point.out})
        if (!(std::abs(place[0]) <= most && std::abs(place[1]) <= most))
            refuse(where + "lies too far out; expected places up to 1000000, after transforms");
    return point;
}

class SvgReader
{
public:
    explicit SvgReader(const std::string& path) : where_("'" + path + "': ") {}

    Shapes read(const std::string& text)
    {
        pugi::xml_document document;
        if (const pugi::xml_parse_result result = document.load_buffer(text.data(), text.size()); !result) {
            const auto end =
                text.begin() + std::clamp<ptrdiff_t>(result.offset, 0, static_cast<ptrdiff_t>(text.size()));
            refuse(where_ + "line " + std::to_string(1 + std::count(text.begin(), end, '\n')) +
                   ": no XML: " + result.description());
        }
        const pugi::xml_node root = document.document_element();
        if (std::string(root.name()) != "svg")
            refuse(where_ + "expected an <svg> element first");
        SvgStyle style;
        style.matrix = viewport(root);
        walk(root, style, 0);
        tellLeftOut();
        tellOverlaps();
        return std::move(shapes_);
    }

private:
    /// A width or height in pixels of 1/96 inch; none where it is a share of something around the drawing.
    std::optional<double> length(const pugi::xml_node& root, const char* name) const
    {
        const std::string text = root.attribute(name).value();
        if (text.empty() || text.ends_with('%') || text == "auto")
            return {};
        const std::map<std::string, double> units = {{"", 1.0},         {"px", 1.0},       {"in", 96.0},
                                                     {"cm", 96 / 2.54}, {"mm", 96 / 25.4}, {"pt", 96 / 72.0},
                                                     {"pc", 16.0}};
        const size_t unit = text.find_last_not_of("abcdefghijklmnopqrstuvwxyz") + 1;
        const auto known = units.find(text.substr(unit));
        const auto number = SvgNumbers(std::string_view(text).substr(0, unit)).all();
        if (known == units.end() || !number || number->size() != 1 || number->front() <= 0.0)
            refuse(where_ + name + " '" + text +
                   "' is no size; expected a number above 0, perhaps with px, in, cm, mm, pt or pc");
        return number->front() * known->second;
    }

    /// Takes over the size of the drawing; returns what brings its units there.
    SvgMatrix viewport(const pugi::xml_node& root)
    {
        const std::optional<double> width = length(root, "width"), height = length(root, "height");
        const std::string text = root.attribute("viewBox").value();
        if (text.empty()) {
            if (width && height)
                shapes_.size = {*width, *height};
            return {};
        }
        const auto box = SvgNumbers(text).all();
        if (!box || box->size() != 4 || (*box)[2] <= 0.0 || (*box)[3] <= 0.0)
            refuse(where_ + "viewBox '" + text +
                   "' is no window; expected four numbers, x, y, width and height");
        const Place from{(*box)[2], (*box)[3]};
        const Place to{width    ? *width
                       : height ? from[0] * *height / from[1]
                                : from[0],
                       height  ? *height
                       : width ? from[1] * *width / from[0]
                               : from[1]};
        shapes_.size = to;
        Place scale{to[0] / from[0], to[1] / from[1]};
        const std::string fit = root.attribute("preserveAspectRatio").value();
        if (!isAmong(fit, {"", "none", "xMidYMid", "xMidYMid meet"}))
            refuse(where_ + "preserveAspectRatio '" + fit + "' is not known; expected none or xMidYMid meet");
        if (fit != "none")
            scale[0] = scale[1] = std::min(scale[0], scale[1]);
        return {scale[0],
                0.0,
                0.0,
                scale[1],
                0.5 * (to[0] - scale[0] * from[0]) - scale[0] * (*box)[0],
                0.5 * (to[1] - scale[1] * from[1]) - scale[1] * (*box)[1]};
    }

    void walk(const pugi::xml_node& group, const SvgStyle& around, int depth)
    {
        constexpr int deepest = 100;
        if (depth > deepest)
            refuse(where_ + "groups in groups, deeper than " + std::to_string(deepest));
        const SvgStyle style = styled(group, around);
        for (const pugi::xml_node& child : group.children()) {
            const std::string name = child.name();
            if (child.type() != pugi::node_element || isAmong(name, silent) || name.find(':') != name.npos)
                continue;
            if (isAmong(name, groups))
                walk(child, style, depth + 1);
            else if (style.visible)
                paint(child, style);
        }
    }

    SvgStyle styled(const pugi::xml_node& element, SvgStyle style)
    {
        const SvgStyle::Properties properties = propertiesOf(element);
        const auto id = properties.find("id");
        const std::string where = where_ + "<" + element.name() + ">" +
                                  (id != properties.end() ? " '" + id->second + "'" : "") + ": ";
        style.apply(properties, where);
        for (const auto& [name, harmless] : unknown)
            if (const auto given = properties.find(name);
                given != properties.end() && given->second != harmless && style.visible)
                leaveOut(name);
        return style;
    }

    void paint(const pugi::xml_node& element, const SvgStyle& around)
    {
        const std::string name = element.name(), id = element.attribute("id").value();
        const std::string where =
            where_ + name + " " + nameOfShape(id, static_cast<size_t>(counts_[name]++)) + ": ";
        std::optional<std::vector<SubPath>> paths = subPathsOf(element, where);
        if (!paths) {
            leaveOut("<" + name + ">");
            return;
        }
        const SvgStyle style = styled(element, around);
        if (!style.visible)
            return;
        for (SubPath& path : *paths)
            for (ShapePoint& point : path.points)
                point =
                    within({style.matrix(point.at), style.matrix(point.in), style.matrix(point.out)}, where);
        std::erase_if(*paths, [](const SubPath& path) { return path.points.size() < 2; });
        if (style.fill)
            fill(id, *paths, style);
        if (style.stroke && style.strokeWidth > 0.0)
            stroke(id, *paths, style);
    }

    void add(const std::string& id, ShapePoints points, const Colour3& colour, double opacity,
             RU_RotoFill fill, double width)
    {
        Shape& shape = shapes_.shapes.emplace_back();
        shape.name = id;
        shape.kind = isPolygon(points) ? RU_ROTO_POLYGON : RU_ROTO_BEZIER;
        shape.fill = fill;
        shape.width = width;
        shape.colour = {colour[0], colour[1], colour[2], static_cast<float>(opacity)};
        shape.keys = {{0.0, std::move(points)}};
    }

    void fill(const std::string& id, std::vector<SubPath> paths, const SvgStyle& style)
    {
        if (style.evenOdd)
            windByNesting(paths);
        for (ShapePoints& points : joinedOutlines(paths))
            add(id, std::move(points), *style.fill, style.opacity * style.fillOpacity, RU_ROTO_FILLED, 1.0);
    }

    /// A closed line goes on along its first edge, so that it has a corner where it comes together.
    void stroke(const std::string& id, const std::vector<SubPath>& paths, const SvgStyle& style)
    {
        if (!style.matrix.isEven())
            leaveOut("the uneven width of scaled strokes");
        for (const SubPath& path : paths) {
            ShapePoints points = path.points;
            if (path.closed)
                points.insert(points.end(), path.points.begin(), path.points.begin() + 2);
            add(id, std::move(points), *style.stroke, style.opacity * style.strokeOpacity, RU_ROTO_OPEN,
                style.strokeWidth * style.matrix.scale());
        }
    }

    void leaveOut(const std::string& what) { ++leftOut_[what]; }

    void tellLeftOut()
    {
        std::vector<std::string> list;
        for (const auto& [what, times] : leftOut_)
            list.push_back(what + (times > 1 ? " (" + std::to_string(times) + " times)" : ""));
        if (!list.empty())
            shapes_.notes.push_back(where_ + "left out, as it is not known: " + joined(list));
    }

    /// Drawings paint shape over shape.
    void tellOverlaps()
    {
        std::vector<Box> boxes;
        boxes.reserve(shapes_.shapes.size());
        for (const Shape& shape : shapes_.shapes) {
            const Box box = boxOf(shape.keys.front().points);
            for (size_t i = 0; i < boxes.size(); ++i)
                if (boxes[i].meets(box) &&
                    (shapes_.shapes[i].colour != shape.colour || shape.colour[3] < 1.0f)) {
                    shapes_.notes.push_back(where_ +
                                            "where shapes overlap, the largest value counts, not the last");
                    return;
                }
            boxes.push_back(box);
        }
    }

    std::string where_;
    Shapes shapes_;
    std::map<std::string, int> counts_, leftOut_; ///< of elements so far, and of what is not known
};

} // namespace

Shapes shapesOfSvg(const std::string& text, const std::string& path)
{
    return SvgReader(path).read(text);
}

} // namespace host
