#include <host/Chain.h>

#include <host/Error.h>
#include <host/Names.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>

namespace host {

namespace {

using Json = nlohmann::ordered_json;

constexpr char letters[] = "rgba";

std::string lettersOf(const Components& components)
{
    std::string text;
    for (size_t c = 0; c < 4; ++c)
        if (components[c])
            text += letters[c];
    return text;
}

bool isPartial(const Components& components)
{
    return components != Components{true, true, true, true};
}

std::vector<std::string> splitText(const std::string& text, char separator)
{
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);)
        parts.push_back(part);
    if (text.ends_with(separator))
        parts.emplace_back();
    return parts;
}

bool isBlank(const std::string& text)
{
    return text.find_first_not_of(" \t\r\n") == std::string::npos;
}

/// A finite number that fills all of `text`.
bool readNumber(std::string_view text, float& number)
{
    if (text.starts_with('+'))
        text.remove_prefix(1);
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() && std::isfinite(number);
}

std::string valueText(const Argument& argument, const Value& value)
{
    if (!value.isGiven())
        return "none";
    if (argument.type == Argument::Type::Switch)
        return value != 0.0f ? "on" : "off";
    std::string text = numberText(value);
    for (int c = 1; c < 4 && !value.isUniform(); ++c)
        text.append(":").append(numberText(value.four()[c]));
    return text;
}

Json valueJson(const Argument& argument, const Value& value)
{
    if (!value.isGiven())
        return nullptr;
    if (argument.type == Argument::Type::Switch)
        return value != 0.0f;
    if (value.isUniform())
        return static_cast<float>(value);
    return std::vector<float>(value.four(), value.four() + 4);
}

/// The text form of a JSON value, so that both forms share one reader; empty for one that no argument takes.
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
    if (!value.is_array() || value.size() < 3)
        return value.dump();
    std::string text;
    for (const Json& item : value)
        text.append(text.empty() ? "" : ":")
            .append(item.is_number() ? numberText(item.get<float>()) : item.dump());
    return text;
}

/// Refuses keys that an object has twice, of which the parser alone would keep one.
Json parse(const std::string& text)
{
    std::vector<std::set<std::string>> keys; // of the objects around
    return Json::parse(text, [&](int, Json::parse_event_t event, const Json& parsed) {
        if (event == Json::parse_event_t::object_start)
            keys.emplace_back();
        else if (event == Json::parse_event_t::object_end)
            keys.pop_back();
        else if (event == Json::parse_event_t::key && !keys.back().insert(parsed.get<std::string>()).second)
            refuse("'" + parsed.get<std::string>() + "' is given twice");
        return true;
    });
}

} // namespace

Components componentsOfLetters(const std::string& text)
{
    Components components{};
    for (const char letter : text) {
        const char* found = std::find(letters, letters + 4, letter);
        if (found == letters + 4)
            refuse("unknown component '" + std::string(1, letter) + "' in scope '" + text +
                   "'; the components are r, g, b and a");
        bool& component = components[static_cast<size_t>(found - letters)];
        if (component)
            refuse("component '" + std::string(1, letter) + "' is twice in scope '" + text + "'");
        component = true;
    }
    if (text.empty())
        refuse("a scope is empty; write r, g, b, a or several of them, as in @rgb");
    return components;
}

/// Puts one function of a chain together from the texts of its arguments.
class Chain::StepReader
{
public:
    explicit StepReader(const std::string& name)
    {
        step_.function = &functionOfName(name);
        step_.values.resize(arguments().size());
        given_.resize(arguments().size());
    }

    void positional(const std::string& text)
    {
        const auto next = std::find(given_.begin(), given_.end(), false);
        if (next == given_.end())
            refuse(name() + ": '" + text + "' is one argument too many; usage: " + step_.function->usage());
        set(static_cast<size_t>(next - given_.begin()), text);
    }

    void named(const std::string& argument, const std::string& text)
    {
        const Argument* found = step_.function->find(argument);
        if (found == nullptr) {
            std::vector<std::string> known;
            for (const Argument& candidate : arguments())
                known.push_back(candidate.name);
            refuseName(name() + ": unknown argument", argument, known);
        }
        const auto index = static_cast<size_t>(found - arguments().data());
        if (given_[index])
            refuse(name() + ": '" + argument + "' is given twice");
        set(index, text);
    }

    void scope(const std::string& text)
    {
        if (scoped_)
            refuse(name() + ": '@" + text + "' is one scope too many; write one such as @rgb");
        step_.scope = componentsOfLetters(text);
        scoped_ = true;
    }

    Step finish()
    {
        for (size_t i = 0; i < given_.size(); ++i) {
            const Argument& argument = arguments()[i];
            if (!given_[i] && argument.required)
                refuse(name() + ": '" + argument.name + "' is missing; usage: " + step_.function->usage());
            if (!given_[i] && argument.type != Argument::Type::OptionalNumber)
                step_.values[i] = Value(argument.preset);
        }
        return std::move(step_);
    }

private:
    const std::string& name() const { return step_.function->name; }
    const std::vector<Argument>& arguments() const { return step_.function->arguments; }

    void set(size_t index, const std::string& text)
    {
        given_[index] = true;
        if (!read(arguments()[index], text, step_.values[index]))
            refuse(name() + ": '" + text + "' is no value for '" + arguments()[index].name + "'; expected " +
                   expected(arguments()[index].type));
    }

    static const char* expected(Argument::Type type)
    {
        switch (type) {
        case Argument::Type::PerComponent:
            return "a number, or one per component as in 1:0.9:0.8";
        case Argument::Type::OptionalNumber:
            return "a number or none";
        case Argument::Type::Switch:
            return "on or off";
        default:
            return "a number";
        }
    }

    static bool read(const Argument& argument, const std::string& text, Value& value)
    {
        float number = 0.0f;
        switch (argument.type) {
        case Argument::Type::Switch:
            value = Value(text == "on" ? 1.0f : 0.0f);
            return text == "on" || text == "off";
        case Argument::Type::OptionalNumber:
            if (text == "none") {
                value = Value();
                return true;
            }
            break;
        case Argument::Type::PerComponent:
            if (text.find(':') != std::string::npos)
                return readComponents(argument, text, value);
            break;
        default:
            break;
        }
        const bool good = readNumber(text, number);
        value = Value(number);
        return good;
    }

    static bool readComponents(const Argument& argument, const std::string& text, Value& value)
    {
        const std::vector<std::string> parts = splitText(text, ':');
        std::array<float, 4> numbers{0, 0, 0, argument.preset};
        bool good = parts.size() == 3 || parts.size() == 4;
        for (size_t c = 0; c < parts.size() && good; ++c)
            good = readNumber(parts[c], numbers[c]);
        value = Value(numbers);
        return good;
    }

    Step step_;
    std::vector<bool> given_;
    bool scoped_ = false;
};

Chain Chain::fromText(const std::string& text)
{
    Chain chain;
    if (isBlank(text))
        return chain;
    for (const std::string& part : splitText(text, ',')) {
        if (isBlank(part))
            refuse("a function is missing beside a comma in '" + text + "'");
        std::string spaced;
        for (const char c : part)
            spaced.append(c == '@' ? " @" : std::string(1, c));
        std::istringstream words(spaced);
        std::string word;
        words >> word;
        StepReader step(word);
        while (words >> word) {
            const size_t equals = word.find('=');
            if (word.starts_with('@'))
                step.scope(word.substr(1));
            else if (equals != std::string::npos)
                step.named(word.substr(0, equals), word.substr(equals + 1));
            else
                step.positional(word);
        }
        chain.steps_.push_back(step.finish());
    }
    return chain;
}

Chain Chain::fromJson(const std::string& json, const std::string& source)
{
    try {
        const Json root = parse(json);
        const Json& list = root.is_object() && root.contains("chain") ? root["chain"] : root;
        if (!list.is_array())
            refuse("expected a list of functions, or an object with one under \"chain\"");
        Chain chain;
        for (const Json& item : list) {
            if (!item.is_object() || !item.contains("function") || !item["function"].is_string())
                refuse("expected an object with a name under \"function\" instead of " + item.dump());
            StepReader step(item["function"].get<std::string>());
            for (const auto& [key, value] : item.items()) {
                if (key == "scope")
                    step.scope(textOfJson(value));
                else if (key != "function")
                    step.named(key, textOfJson(value));
            }
            chain.steps_.push_back(step.finish());
        }
        return chain;
    } catch (const Json::exception& error) {
        refuse("'" + source + "': " + error.what());
    } catch (const Error& error) {
        refuse("'" + source + "': " + error.what());
    }
}

Chain Chain::fromJsonFile(const std::string& path)
{
    std::string text;
    try {
        std::ifstream file;
        file.exceptions(std::ios::failbit | std::ios::badbit);
        file.open(path);
        text.assign(std::istreambuf_iterator<char>(file), {});
    } catch (const std::ios::failure&) { // a directory too
        refuse("cannot read the chain file '" + path + "'");
    }
    return fromJson(text, path);
}

std::string Chain::text() const
{
    std::string text;
    for (const Step& step : steps_) {
        text.append(text.empty() ? "" : ", ").append(step.function->name);
        for (size_t i = 0; i < step.values.size(); ++i)
            text.append(" ").append(valueText(step.function->arguments[i], step.values[i]));
        if (isPartial(step.scope))
            text.append(" @").append(lettersOf(step.scope));
    }
    return text;
}

std::string Chain::json() const
{
    Json list = Json::array();
    for (const Step& step : steps_) {
        Json item = {{"function", step.function->name}};
        for (size_t i = 0; i < step.values.size(); ++i)
            item[step.function->arguments[i].name] = valueJson(step.function->arguments[i], step.values[i]);
        if (isPartial(step.scope))
            item["scope"] = lettersOf(step.scope);
        list.push_back(item);
    }
    return list.dump(2);
}

Chain::Built Chain::build() const
{
    std::vector<std::unique_ptr<RU_PixelFunction>> made;
    bool oneScope = true;
    bool oneByOne = true; // no function looks at other components
    Built built{nullptr, {}};
    for (const Step& step : steps_) {
        made.push_back(step.function->make(step.values));
        oneScope = oneScope && step.scope == steps_.front().scope;
        oneByOne = oneByOne && !made.back()->needAllComponents();
        for (size_t c = 0; c < 4; ++c)
            built.components[c] = built.components[c] || step.scope[c];
    }
    // Components that differ cost a table each, and 16-bit ones top out below white. Where all functions
    // share a scope it is enough to leave the other components out.
    for (size_t i = 0; i < made.size() && !(oneScope && oneByOne); ++i)
        made[i]->setScope(steps_[i].scope.data());
    for (size_t i = made.size(); i-- > 1;)
        made[i - 1]->setNext(made[i].release());
    if (!made.empty())
        built.head = std::move(made.front());
    return built;
}

} // namespace host
