#include <host/shape/Shapes.h>

#include <host/shape/ShapesJson.h>
#include <host/shape/ShapesSvg.h>
#include <host/text/Error.h>
#include <host/text/Text.h>

#include <algorithm>

namespace host {

namespace {

double mixed(double a, double b, double t)
{
    return a + (b - a) * t;
}

Place mixed(const Place& a, const Place& b, double t)
{
    return {mixed(a[0], b[0], t), mixed(a[1], b[1], t)};
}

} // namespace

ShapePoints Shape::at(double frame) const
{
    const auto next =
        std::find_if(keys.begin(), keys.end(), [&](const Key& key) { return key.frame > frame; });
    if (next == keys.begin())
        return next->points;
    const Key& before = *(next - 1);
    if (next == keys.end())
        return before.points;
    const double t = (frame - before.frame) / (next->frame - before.frame);
    ShapePoints points = before.points;
    for (size_t i = 0; i < points.size(); ++i) {
        ShapePoint& point = points[i];
        const ShapePoint& other = next->points[i];
        point.at = mixed(point.at, other.at, t);
        point.in = mixed(point.in, other.in, t);
        point.out = mixed(point.out, other.out, t);
        point.feather = mixed(point.feather, other.feather, t);
        point.alpha = mixed(point.alpha, other.alpha, t);
    }
    return points;
}

std::vector<std::string> dropoffNames()
{
    return {
#define RU_NAME(NAME, TEXT, FORMULA) TEXT,
        RU_FOR_EACH_FEATHER_DROPOFF(RU_NAME)
#undef RU_NAME
    };
}

Shapes readShapes(const std::string& path)
{
    const std::string extension = extensionOf(path);
    if (extension == ".json")
        return shapesOfJson(readTextFile(path, "file of shapes"), path);
    if (extension == ".svg")
        return shapesOfSvg(readTextFile(path, "drawing"), path);
    refuse("'" + path + "' is no file of shapes; expected one that ends in .json or .svg");
}

std::string nameOfShape(const std::string& name, size_t index)
{
    return name.empty() ? std::to_string(index + 1) : "'" + name + "'";
}

} // namespace host
