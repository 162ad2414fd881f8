#include <host/operation/OperationRows.h>

#include <host/chain/Values.h>
#include <host/file/Format.h>
#include <host/text/Error.h>
#include <host/text/Names.h>
#include <host/text/Text.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>

namespace host {

const std::vector<Operation>& operations()
{
    static const std::vector<Operation> rows = [] {
        std::vector<Operation> all;
        for (auto* subject : {colourOperations, filterOperations, resampleOperations, combineOperations,
                              generateOperations, shapeOperations})
            for (Operation& operation : subject())
                all.push_back(std::move(operation));
        for (Operation& operation : all) // an argument's messages name it as the parameter does
            for (Parameter& parameter : operation.parameters)
                parameter.argument.name = parameter.name;
        return all;
    }();
    return rows;
}

const Operation& operationOfName(const std::string& name)
{
    std::vector<std::string> known;
    for (const Operation& operation : operations()) {
        if (operation.name == name)
            return operation;
        known.push_back(operation.name);
    }
    refuseName("unknown operation", name, known);
}

std::string Parameter::key() const
{
    if (id != nullptr)
        return id;
    std::string key = isOption() ? name.substr(2) : name;
    for (char& c : key)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return key;
}

const Parameter* Operation::find(const std::string& key) const
{
    const auto found = std::find_if(parameters.begin(), parameters.end(),
                                    [&](const Parameter& parameter) { return parameter.key() == key; });
    return found != parameters.end() ? &*found : nullptr;
}

Call::Call(const Operation& of) : operation_(&of)
{
    for (const Parameter& parameter : of.parameters)
        values_[parameter.key()] = parameter.isText() || parameter.preset.empty()
                                       ? Value()
                                       : readValue(parameter.argument, parameter.preset);
}

void Call::set(const Parameter& parameter, const std::vector<std::string>& words)
{
    std::string& text = texts_[parameter.key()];
    text = joined(words, ":");
    if (parameter.isText())
        return;
    values_[parameter.key()] = readValue(parameter.argument, text);
}

void Call::check() const
{
    const auto isGiven = [this](const std::string& name) {
        return std::any_of(operation_->parameters.begin(), operation_->parameters.end(),
                           [&](const Parameter& other) { return other.name == name && has(other.key()); });
    };
    for (const Parameter& parameter : operation_->parameters) {
        if (parameter.required && !has(parameter.key()))
            refuse(parameter.name + " is required");
        if (!has(parameter.key()))
            continue;
        for (const char* other : parameter.needs)
            if (!isGiven(other))
                refuse(parameter.name + " requires " + other);
        for (const char* other : parameter.excludes)
            if (isGiven(other))
                refuse(parameter.name + " excludes " + other);
    }
}

std::string Call::text(const std::string& key) const
{
    const auto given = texts_.find(key);
    return given != texts_.end() ? given->second : operation_->find(key)->preset;
}

std::vector<std::string> Call::images() const
{
    std::vector<std::string> names;
    for (const Parameter& parameter : operation_->parameters)
        if (parameter.isImage && has(parameter.key()))
            names.push_back(text(parameter.key()));
    return names;
}

PlaneSettings Call::planeSettings() const
{
    constexpr unsigned int lastCode = 0xFFFFFFFFu;
    PlaneSettings settings;
    if (has("depth"))
        settings.depth = formatOfName(text("depth"));
    if (has("planes"))
        settings.planes = splitText(text("planes"), ',');
    if (has("black"))
        settings.black = readWhole("--black", text("black"), 0, lastCode);
    if (has("white"))
        settings.white = readWhole("--white", text("white"), 0, lastCode);
    settings.asIs = takesAlphaAsIs();
    settings.widens = widens_;
    return settings;
}

Call Call::at(std::optional<int64_t> frame) const
{
    Call other = *this;
    other.frame_ = frame.value_or(1);
    return other;
}

Call Call::widened() const
{
    Call other = *this;
    other.widens_ = true;
    return other;
}

bool Call::takesAlphaAsIs() const
{
    const Parameter* const parameter = operation_->find("alpha");
    if (parameter == nullptr || !parameter->isText()) // but a switch of that name
        return false;
    const std::string alpha = text("alpha");
    if (alpha != "auto" && alpha != "as-is")
        refuseName("--alpha: unknown choice", alpha, parameter->argument.choices);
    return alpha == "as-is";
}

bool Call::storesAlphaAsIs() const
{
    const std::vector<Parameter>& parameters = operation_->parameters;
    return takesAlphaAsIs() ||
           std::any_of(parameters.begin(), parameters.end(), [this](const Parameter& parameter) {
               return parameter.settlesAlpha && isOn(parameter.key());
           });
}

std::optional<int> componentOf(const Call& call, const std::string& key)
{
    if (!call.has(key))
        return {};
    const std::string letter = call.text(key);
    const std::string_view letters = componentLetters;
    if (letter.size() != 1 || letters.find(letter) == letters.npos)
        refuse("--" + key + ": unknown component '" + letter + "'; the components are r, g, b and a");
    return static_cast<int>(letters.find(letter));
}

unsigned int readWhole(const std::string& option, const std::string& text, unsigned int least,
                       unsigned int most)
{
    unsigned int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number < least || number > most)
        refuse(option + ": '" + text + "' is no whole number from " + std::to_string(least) + " to " +
               std::to_string(most));
    return number;
}

std::pair<int, int> readSize(const std::string& option, const std::string& text, unsigned int most)
{
    const size_t cross = text.find('x');
    if (cross == text.npos || cross == 0 || cross + 1 == text.size())
        refuse(option + ": '" + text + "' is no size; expected something like 1920x1080");
    return {static_cast<int>(readWhole(option, text.substr(0, cross), 1, most)),
            static_cast<int>(readWhole(option, text.substr(cross + 1), 1, most))};
}

void readNumbers(const std::string& option, const std::string& text, std::span<double> out)
{
    const std::vector<std::string> words = splitText(text, ',');
    bool good = words.size() == out.size();
    for (size_t k = 0; good && k < out.size(); ++k) {
        const char *begin = words[k].data(), *behind = begin + words[k].size();
        const auto [end, error] = std::from_chars(begin, behind, out[k]);
        good = error == std::errc() && end == behind && std::abs(out[k]) <= 1e9;
    }
    if (!good)
        refuse(option + ": '" + text + "' is " +
               (out.size() == 1 ? "no number"
                                : "not " + std::to_string(out.size()) + " numbers with commas between them"));
}

size_t choiceOf(const Call& call, const std::string& key)
{
    const Parameter& parameter = *call.operation().find(key);
    const std::vector<std::string>& choices = parameter.argument.choices;
    const auto found = std::find(choices.begin(), choices.end(), call.text(key));
    if (found == choices.end())
        refuseName(parameter.name + ": unknown choice", call.text(key), choices);
    return static_cast<size_t>(found - choices.begin());
}

std::array<double, 2> readPair(const std::string& option, const std::string& text)
{
    std::array<double, 2> pair{};
    const bool one = text.find(',') == text.npos;
    readNumbers(option, one ? text + "," + text : text, pair);
    return pair;
}

} // namespace host
