#include <host/chain/Values.h>

#include <host/text/Error.h>
#include <host/text/Names.h>
#include <host/text/Text.h>

#include <algorithm>
#include <cmath>
#include <optional>

namespace host {

namespace {

using Type = Argument::Type;

constexpr size_t mostCurves = 4;
constexpr float farthest = 1e18f; ///< from 0 that a key may lie: curves compute with products of distances
constexpr const char* keysExample = "as in 0:0;0.5:0.6;1:1 or, in quotes, \"0 0, 0.5 0.6, 1 1\"";

/// The name of a type of arguments, and how people write one.
struct TypeText
{
    const char* name;
    const char* expectation;
};

TypeText textOf(Type type)
{
    switch (type) {
    case Type::Number:
        return {"number", "a number"};
    case Type::PerComponent:
        return {"perComponent", "a number, or one per component as in 1:0.9:0.8"};
    case Type::OptionalNumber:
        return {"optionalNumber", "a number or none"};
    case Type::Switch:
        return {"switch", "on or off"};
    case Type::Choice:
        return {"choice", ""};
    case Type::Colour:
        return {"colour", "red, green and blue as in 1:0.5:0"};
    case Type::Matrix:
        return {"matrix", "9 or 16 numbers in 3 or 4 rows, as in 1:0:0;0:1:0;0:0:1, or 12 in 4 rows"};
    case Type::OptionalCurve:
        return {"optionalCurve", "none, or keys as in 0:0;0.5:0.6;1:1"};
    case Type::Curves:
        return {"curves", "keys as in 0 0, 0.5 0.6, 1 1, with | between the curves of components"};
    case Type::File:
        return {"file", "a path"};
    case Type::Pair:
        return {"pair", "two numbers"};
    case Type::Text:
        return {"text", "a text"};
    }
    return {};
}

/// All of the numbers of a text such as 1:0.9:0.8; none when one of them is no number.
std::vector<float> readNumbers(const std::string& text)
{
    std::vector<float> numbers;
    for (const std::string& part : splitText(text, ':'))
        if (!readNumber(part, numbers.emplace_back()))
            return {};
    return numbers;
}

std::optional<Value> readNumeric(const std::string& text)
{
    float number = 0.0f;
    return readNumber(text, number) ? std::optional(Value(number)) : std::nullopt;
}

std::optional<Value> readComponents(const std::string& text, float alpha, size_t most)
{
    std::vector<float> numbers = readNumbers(text);
    if (numbers.size() < 3 || numbers.size() > most)
        return {};
    numbers.resize(4, alpha);
    return Value(std::array{numbers[0], numbers[1], numbers[2], numbers[3]});
}

std::optional<Value> readPair(const std::string& text)
{
    const std::vector<float> numbers = readNumbers(text);
    return numbers.size() == 2 ? std::optional(Value(std::array{numbers[0], numbers[1], 0.0f, 0.0f}))
                               : std::nullopt;
}

std::optional<Value> readMatrix(const std::string& text)
{
    const std::vector<std::string> rows = splitText(text, ';');
    const std::vector<float> numbers = readNumbers(joined(rows, ":"));
    if (numbers.size() != 9 && numbers.size() != 12 && numbers.size() != 16)
        return {};
    const size_t width = numbers.size() == 16 ? 4 : 3;
    for (const std::string& row : rows)
        if (rows.size() > 1 && readNumbers(row).size() != width)
            return {};
    Value::Matrix matrix{};
    matrix[15] = 1.0f;
    for (size_t i = 0; i < numbers.size(); ++i)
        matrix[i / width * 4 + i % width] = numbers[i];
    return Value(matrix);
}

CurveKey readKey(const std::string& text)
{
    const std::string words = joined(wordsOf(text), " ");
    const auto expect = [&words](bool holds, const char* expectation) {
        if (!holds)
            refuse("'" + words + "' is no key of a curve; expected " + expectation);
    };
    std::vector<float> numbers;
    bool valid = true;
    for (const std::string& part : splitText(text, ':')) {
        const std::vector<std::string> fields = wordsOf(part);
        valid = valid && !fields.empty();
        for (const std::string& field : fields)
            valid = valid && readNumber(field, numbers.emplace_back());
    }
    expect(valid && (numbers.size() == 2 || numbers.size() == 3),
           "x and y, as in 0.5:0.6, and perhaps a weight");
    const CurveKey key{numbers[0], numbers[1], numbers.size() == 3 ? numbers[2] : 0.0f};
    expect(std::abs(key.x) <= farthest && std::abs(key.y) <= farthest, "x and y from -1e18 to 1e18");
    expect(key.weight >= 0.0f && key.weight <= 1.0f, "a weight from 0 to 1");
    return key;
}

Value readCurves(std::string text, bool several)
{
    std::replace(text.begin(), text.end(), ',', ';');
    std::vector<CurveKeys> curves;
    for (const std::string& part : splitText(text, '|')) {
        CurveKeys& keys = curves.emplace_back();
        for (const std::string& key : splitText(part, ';'))
            keys.push_back(readKey(key));
        if (keys.size() < 2)
            refuse("the curve '" + joined(wordsOf(part), " ") + "' has one key; expected two or more, " +
                   keysExample);
    }
    if (!several && curves.size() > 1)
        refuse("'" + text + "' is " + std::to_string(curves.size()) + " curves; expected one, " +
               keysExample);
    if (curves.size() == 2 || curves.size() > mostCurves)
        refuse("'" + text + "' is " + std::to_string(curves.size()) +
               " curves; expected one, or one each for red, green, blue and perhaps alpha");
    return Value(std::move(curves));
}

std::optional<Value> tryRead(const Argument& argument, const std::string& text)
{
    if (argument.mayBeNone() && text == "none")
        return Value();
    switch (argument.type) {
    case Type::Switch:
        return text == "on" || text == "off" ? std::optional(Value(text == "on" ? 1.0f : 0.0f))
                                             : std::nullopt;
    case Type::Choice: {
        const auto found = std::find(argument.choices.begin(), argument.choices.end(), text);
        if (found == argument.choices.end())
            return {};
        return Value(static_cast<float>(found - argument.choices.begin()));
    }
    case Type::PerComponent:
        return text.find(':') == std::string::npos ? readNumeric(text)
                                                   : readComponents(text, argument.preset, 4);
    case Type::Colour:
        return readComponents(text, argument.preset, 3);
    case Type::Matrix:
        return readMatrix(text);
    case Type::OptionalCurve:
    case Type::Curves:
        return readCurves(text, argument.type == Type::Curves);
    case Type::Pair:
        return readPair(text);
    case Type::Text:
        return Value(text);
    case Type::File:
        return text.empty() ? std::nullopt : std::optional(Value(text));
    default: {
        const std::optional<Value> value = readNumeric(text);
        const bool inRange =
            value && *value >= argument.least.value_or(*value) && *value <= argument.most.value_or(*value);
        return inRange ? value : std::nullopt;
    }
    }
}

Json listOf(const float* numbers, size_t count)
{
    Json list = Json::array();
    for (size_t i = 0; i < count; ++i)
        list.push_back(doubleOf(numbers[i]));
    return list;
}

/// A matrix of 3 rows when the fourth row and column say nothing.
Json matrixJson(const Value::Matrix& matrix)
{
    std::vector<float> small;
    for (size_t i = 0; i < 12; ++i)
        if (i % 4 < 3)
            small.push_back(matrix[i]);
    const bool isSmall = matrix[3] == 0 && matrix[7] == 0 && matrix[11] == 0 && matrix[12] == 0 &&
                         matrix[13] == 0 && matrix[14] == 0 && matrix[15] == 1;
    return isSmall ? listOf(small.data(), small.size()) : listOf(matrix.data(), matrix.size());
}

int depthOf(const Json& value)
{
    int depth = 0;
    if (!value.is_array())
        return depth;
    for (const Json& item : value)
        depth = std::max(depth, depthOf(item));
    return depth + 1;
}

std::string joinedJson(const Json& value, int depth)
{
    if (!value.is_array() || depth == 0)
        return value.is_number() ? numberText(value.get<float>()) : value.dump();
    std::vector<std::string> items;
    for (const Json& item : value)
        items.push_back(joinedJson(item, depth - 1));
    constexpr const char* separators[] = {":", ";", "|"};
    return joined(items, separators[depth - 1]);
}

} // namespace

const char* typeName(const Argument& argument)
{
    const bool isChoice = argument.type == Type::Text && !argument.choices.empty();
    return textOf(isChoice ? Type::Choice : argument.type).name;
}

std::string expectation(const Argument& argument)
{
    if (!argument.choices.empty())
        return joined(argument.choices);
    std::string text = textOf(argument.type).expectation;
    if (argument.least)
        text.append(" of at least ").append(numberText(*argument.least));
    if (argument.most)
        text.append(argument.least ? " and" : " of").append(" at most ").append(numberText(*argument.most));
    return text;
}

Value readValue(const Argument& argument, const std::string& text)
{
    const std::optional<Value> value = tryRead(argument, text);
    if (!value)
        refuse("'" + text + "' is no value for '" + argument.name + "'; expected " + expectation(argument));
    return *value;
}

Json valueJson(const Argument& argument, const Value& value)
{
    if (!value.isGiven())
        return nullptr;
    switch (argument.type) {
    case Type::Switch:
        return value.isOn();
    case Type::Choice:
        return argument.choices[value.choice()];
    case Type::Colour:
        return listOf(value.four(), 3);
    case Type::Matrix:
        return matrixJson(value.matrix());
    case Type::Pair:
        return listOf(value.four(), 2);
    case Type::File:
    case Type::Text:
        return value.file();
    case Type::OptionalCurve:
    case Type::Curves: {
        Json curves = Json::array();
        for (const CurveKeys& keys : value.curves()) {
            Json& curve = curves.emplace_back(Json::array());
            for (const CurveKey& key : keys)
                curve.push_back(
                    listOf(std::array{key.x, key.y, key.weight}.data(), key.weight == 0.0f ? 2 : 3));
        }
        return curves.size() == 1 ? curves.front() : curves;
    }
    default:
        if (value.isUniform())
            return doubleOf(value);
        return listOf(value.four(), 4);
    }
}

std::string valueText(const Argument& argument, const Value& value)
{
    return textOfJson(valueJson(argument, value));
}

std::string textOfJson(const Json& value)
{
    if (value.is_null())
        return "none";
    if (value.is_boolean())
        return value.get<bool>() ? "on" : "off";
    if (value.is_number())
        return numberText(value.get<float>());
    if (value.is_string())
        return value.get<std::string>();
    const int depth = depthOf(value);
    if (depth < 1 || depth > 3 || (depth == 1 && value.size() < 3))
        return value.dump(); // which no argument takes
    return joinedJson(value, depth);
}

} // namespace host
