#include <host/shape/ShapesJson.h>

#include <host/chain/StrictJson.h>
#include <host/text/Error.h>
#include <host/text/Names.h>
#include <host/text/Text.h>

#include <algorithm>
#include <cmath>

namespace host {

namespace {

constexpr double mostPlace = 1e6; ///< the largest coordinate in pixels

const std::vector<std::string> kinds = {"polygon", "bezier", "nurbs"};
const std::vector<std::string> fills = {"open", "filled", "outlined"};

struct Range
{
    double least, most;

    std::string text() const { return " from " + textOf(least) + " to " + textOf(most); }

    static std::string textOf(double number)
    {
        return number == std::floor(number) ? std::to_string(std::llround(number))
                                            : numberText(static_cast<float>(number));
    }
};

constexpr Range places{-mostPlace, mostPlace}, reaches{-1000.0, 1000.0}, unit{0.0, 1.0};

/// The members of an object, each of which may be asked for; all others are refused.
class Members
{
public:
    Members(const Json& object, std::string where, const std::vector<std::string>& known)
        : object_(object), where_(std::move(where))
    {
        if (!object.is_object())
            refuse(where_ + "expected an object instead of " + shown(object));
        for (const auto& [key, value] : object.items())
            if (std::find(known.begin(), known.end(), key) == known.end())
                refuseName(where_ + "unknown member", key, known);
    }

    bool has(const char* key) const { return object_.contains(key); }
    const std::string& where() const { return where_; }

    [[noreturn]] void fail(const char* key, const std::string& expected) const
    {
        refuse(where_ +
               (has(key) ? "\"" + std::string(key) + "\" is " + shown(object_[key])
                         : "no \"" + std::string(key) + "\"") +
               "; expected " + expected);
    }

    double number(const char* key, double preset, const Range& range) const
    {
        if (!has(key))
            return preset;
        const Json& value = object_[key];
        if (!isWithin(value, range))
            fail(key, "a number" + range.text());
        return value.get<double>();
    }

    /// A list of so many numbers; `expected` says what they are.
    std::vector<double> numbers(const char* key, size_t least, size_t most, const Range& range,
                                const std::string& expected) const
    {
        const Json value = has(key) ? object_[key] : Json();
        if (!value.is_array() || value.size() < least || value.size() > most ||
            !std::all_of(value.begin(), value.end(), [&](const Json& item) { return isWithin(item, range); }))
            fail(key, expected + range.text());
        return value.get<std::vector<double>>();
    }

    Place place(const char* key, const Range& range, const char* expected) const
    {
        const std::vector<double> pair = numbers(key, 2, 2, range, expected);
        return {pair[0], pair[1]};
    }

    std::string text(const char* key) const
    {
        if (!has(key))
            return {};
        if (!object_[key].is_string())
            fail(key, "a text");
        return object_[key].get<std::string>();
    }

    /// The number of a word among those that there are.
    size_t choice(const char* key, size_t preset, const std::vector<std::string>& choices) const
    {
        if (!has(key))
            return preset;
        const Json& value = object_[key];
        const auto found = value.is_string()
                               ? std::find(choices.begin(), choices.end(), value.get<std::string>())
                               : choices.end();
        if (found == choices.end())
            fail(key, joined(choices));
        return static_cast<size_t>(found - choices.begin());
    }

    const Json& list(const char* key, const char* expected) const
    {
        if (!has(key) || !object_[key].is_array())
            fail(key, expected);
        return object_[key];
    }

    bool isNumber(const char* key) const { return has(key) && object_[key].is_number(); }

private:
    static bool isWithin(const Json& value, const Range& range)
    {
        return value.is_number() && value.get<double>() >= range.least && value.get<double>() <= range.most;
    }

    /// A value in a message, which stays a line.
    static std::string shown(const Json& value)
    {
        constexpr size_t most = 40;
        const std::string text = value.dump(-1, ' ', false, Json::error_handler_t::replace);
        return text.size() <= most ? text : text.substr(0, most) + " ...";
    }

    const Json& object_;
    std::string where_;
};

class JsonShapes
{
public:
    explicit JsonShapes(const std::string& path) : where_("'" + path + "': ") {}

    Shapes read(const std::string& text)
    {
        const Json json = parse(text);
        const Members root(json, where_, {"size", "shapes"});
        Shapes shapes;
        if (root.has("size"))
            shapes.size = root.place("size", {1.0, mostPlace}, "width and height, two numbers");
        for (const Json& item : root.list("shapes", "a list of shapes"))
            shapes.shapes.push_back(shape(item, shapes.shapes.size()));
        return shapes;
    }

private:
    Json parse(const std::string& text) const
    {
        try {
            return parseStrictJson(text);
        } catch (const Json::exception& error) {
            refuse(where_ + firstLine(error.what()));
        } catch (const Error& error) {
            refuse(where_ + error.what());
        }
    }

    Shape shape(const Json& item, size_t index) const
    {
        const std::string name = item.is_object() && item.contains("name") && item["name"].is_string()
                                     ? item["name"].get<std::string>()
                                     : "";
        const std::string where = where_ + "shape " + nameOfShape(name, index) + ": ";
        const Members members(item, where,
                              {"name", "kind", "fill", "width", "colour", "feather", "drop-off", "samples",
                               "detail", "points", "keys"});
        Shape shape;
        shape.name = members.text("name");
        shape.kind = static_cast<RU_RotoType>(members.choice("kind", RU_ROTO_BEZIER, kinds));
        shape.fill = static_cast<RU_RotoFill>(members.choice("fill", RU_ROTO_FILLED, fills));
        if (shape.fill == RU_ROTO_FILLED && members.has("width"))
            refuse(where +
                   "\"width\" is that of a stroke; expected it with \"fill\": \"open\" or \"outlined\"");
        shape.width = members.number("width", shape.width, {0.0, 10000.0});
        shape.colour = colour(members);
        shape.feather = members.number("feather", 0.0, reaches);
        shape.dropoff =
            static_cast<RU_FeatherDropoff>(members.choice("drop-off", RU_DROPOFF_LINEAR, dropoffNames()));
        shape.samples = samples(members);
        shape.detail = members.number("detail", 1.0, {0.01, 100.0});
        shape.keys = keys(members, shape);
        return shape;
    }

    static std::array<float, 4> colour(const Members& members)
    {
        if (!members.has("colour"))
            return {1.0f, 1.0f, 1.0f, 1.0f};
        if (members.isNumber("colour"))
            return {1.0f, 1.0f, 1.0f, static_cast<float>(members.number("colour", 1.0, unit))};
        const std::vector<double> numbers =
            members.numbers("colour", 3, 4, {0.0, 65504.0},
                            "an opacity from 0 to 1, or red, green, blue and perhaps alpha, numbers");
        if (numbers.size() == 4 && numbers[3] > 1.0)
            members.fail("colour", "an alpha from 0 to 1");
        return {static_cast<float>(numbers[0]), static_cast<float>(numbers[1]),
                static_cast<float>(numbers[2]), numbers.size() == 4 ? static_cast<float>(numbers[3]) : 1.0f};
    }

    static std::array<int, 2> samples(const Members& members)
    {
        if (!members.has("samples"))
            return {8, 8};
        const char* const expected = "sub-samples across and down, whole numbers";
        const Place pair = members.place("samples", {1.0, 64.0}, expected);
        if (pair[0] != std::floor(pair[0]) || pair[1] != std::floor(pair[1]) || pair[0] * pair[1] > 64.0)
            members.fail("samples", std::string(expected) + ", up to 64 together");
        return {static_cast<int>(pair[0]), static_cast<int>(pair[1])};
    }

    std::vector<Shape::Key> keys(const Members& members, const Shape& shape) const
    {
        if (members.has("points") == members.has("keys"))
            refuse(members.where() + "expected either \"points\" or \"keys\"");
        if (members.has("points"))
            return {{0.0, points(members, shape)}};
        std::vector<Shape::Key> keys;
        for (const Json& item : members.list("keys", "a list of keys")) {
            const Members key(item, members.where() + "key " + std::to_string(keys.size() + 1) + ": ",
                              {"frame", "points"});
            if (!key.has("frame"))
                key.fail("frame", "a number of a frame");
            const double frame = key.number("frame", 0.0, {-1e9, 1e9});
            if (!keys.empty() && frame <= keys.back().frame)
                key.fail("frame", "one after that of the key before");
            keys.push_back({frame, points(key, shape)});
            if (keys.back().points.size() != keys.front().points.size())
                refuse(key.where() + std::to_string(keys.back().points.size()) +
                       " points; expected as many as in key 1, " +
                       std::to_string(keys.front().points.size()));
        }
        if (keys.empty())
            members.fail("keys", "one key at least");
        return keys;
    }

    static ShapePoints points(const Members& members, const Shape& shape)
    {
        std::vector<std::string> known = {"at", "feather", "alpha"};
        if (shape.kind == RU_ROTO_BEZIER)
            known.insert(known.begin() + 1, {"in", "out"});
        ShapePoints points;
        for (const Json& item : members.list("points", "a list of points")) {
            const Members given(item, members.where() + "point " + std::to_string(points.size() + 1) + ": ",
                                known);
            ShapePoint& point = points.emplace_back();
            point.at = given.place("at", places, "x and y, two numbers");
            point.in = given.has("in") ? given.place("in", places, "x and y, two numbers") : point.at;
            point.out = given.has("out") ? given.place("out", places, "x and y, two numbers") : point.at;
            point.feather = given.number("feather", 0.0, reaches);
            point.alpha = given.number("alpha", 1.0, unit);
        }
        const size_t least = shape.fill == RU_ROTO_OPEN || shape.kind == RU_ROTO_BEZIER ? 2 : 3;
        if (points.size() < least)
            refuse(members.where() + std::to_string(points.size()) +
                   (points.size() == 1 ? " point" : " points") + "; expected " + std::to_string(least) +
                   " at least");
        return points;
    }

    std::string where_;
};

} // namespace

Shapes shapesOfJson(const std::string& text, const std::string& path)
{
    return JsonShapes(path).read(text);
}

} // namespace host
