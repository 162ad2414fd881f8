#include <host/chain/Chain.h>

#include <host/chain/Values.h>
#include <host/text/Error.h>
#include <host/text/Names.h>
#include <host/text/Text.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <span>

namespace host {

namespace {

/// A word of a chain. What stands in quotes is no sign of anything.
struct Word
{
    std::string text;
    size_t equals = std::string::npos; ///< between an argument's name and its value
    bool isScope = false;
    bool isKey = false; ///< begins like a number, is nan or inf, or parts curves
};

/// The words of a chain, by the commas between them.
std::vector<std::vector<Word>> chainWords(const std::string& text)
{
    std::vector<std::vector<Word>> parts(1);
    char quote = 0;
    bool inWord = false;
    for (const char c : text) {
        const bool space = std::isspace(static_cast<unsigned char>(c)) != 0;
        if (quote == 0 && (space || c == ',')) {
            inWord = false;
            if (c == ',')
                parts.emplace_back();
            continue;
        }
        if (!inWord || (quote == 0 && c == '@')) {
            Word& begun = parts.back().emplace_back();
            begun.isScope = c == '@';
            begun.isKey = std::string_view("0123456789+-.|").find(c) != std::string_view::npos;
            inWord = true;
        }
        Word& word = parts.back().back();
        if (quote != 0 ? c == quote : c == '"' || c == '\'') {
            quote = quote == 0 ? c : '\0';
            continue;
        }
        if (c == '=' && quote == 0 && word.equals == std::string::npos)
            word.equals = word.text.size();
        word.text += c;
    }
    if (quote != 0)
        refuse("a quote is not closed in '" + text + "'");
    for (std::vector<Word>& words : parts)
        for (Word& word : words)
            word.isKey = word.isKey || isNotFinite(word.text);
    return parts;
}

/// In quotes where the parser would see more than a word.
std::string quoted(const std::string& text)
{
    if (!text.empty() && text.find_first_of(" \t\r\n\v\f,@='\"") == std::string::npos)
        return text;
    std::string inQuotes = joined(splitText(text, '"'), "\"'\"'\"");
    return inQuotes.insert(0, 1, '"').append(1, '"');
}

/// What does not fit into a message ends with dots.
std::string shortened(const Json& value)
{
    constexpr size_t most = 60;
    const std::string text = value.dump(-1, ' ', true); // ASCII, to be cut anywhere
    return text.size() <= most ? text : text.substr(0, most) + "...";
}

/// Calls `read`, and says where the error was that it throws.
template <class Read>
auto at(const std::string& place, const Read& read)
{
    try {
        return read();
    } catch (const Error& error) {
        throw Error(error.kind(), place + error.what());
    }
}

} // namespace

/// Puts one function of a chain together from the texts of its arguments.
class Chain::StepReader
{
public:
    /// The function that the words between some commas make: the first names it, later ones go on with its
    /// keys.
    static Step ofWords(std::span<const std::vector<Word>> parts);
    static Step ofJson(const Json& item);

private:
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

    void named(const std::string& argument, const std::string& text) { set(indexOf(argument), text); }

    void json(const std::string& key, const Json& value)
    {
        if (key == "scope") {
            if (!value.is_string())
                refuse(name() + ": 'scope': expected letters as in \"rgb\" instead of " + shortened(value));
            scope(value.get<std::string>());
            return;
        }
        const Argument& argument = arguments()[indexOf(key)];
        if (argument.type == Argument::Type::File &&
            (!value.is_string() || value.get_ref<const std::string&>().empty()))
            refuse(name() + ": '" + key + "': expected a path instead of " + shortened(value));
        named(key, textOfJson(value));
    }

    /// A word of keys; `first` of those behind a comma.
    void key(const std::string& word, bool first)
    {
        if (keys_.empty())
            claim(indexOf(keysName()));
        else
            keys_ += first ? ',' : ' ';
        keys_ += word;
    }

    bool takesKeys() const { return step_.function->takesKeys(); }

    [[noreturn]] void refuseNumber(const std::string& word) const
    {
        const auto isCurve = [](const Argument& a) { return a.type == Argument::Type::OptionalCurve; };
        const bool hasCurves = std::any_of(arguments().begin(), arguments().end(), isCurve);
        refuse(name() + ": '" + word + "' after a comma is no function, and '" + name() +
               (hasCurves ? "' has keys with ';' between them, or in quotes" : "' has no list of numbers"));
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
        if (!keys_.empty())
            read(indexOf(keysName()), keys_);
        for (size_t i = 0; i < given_.size(); ++i) {
            const Argument& argument = arguments()[i];
            if (!given_[i] && argument.required)
                refuse(name() + ": '" + argument.name + "' is missing; usage: " + step_.function->usage());
            if (!given_[i])
                step_.values[i] = presetOf(argument);
        }
        return std::move(step_);
    }

    const std::string& name() const { return step_.function->name; }
    const std::vector<Argument>& arguments() const { return step_.function->arguments; }
    const std::string& keysName() const { return arguments().front().name; }

    size_t indexOf(const std::string& argument) const
    {
        if (const Argument* found = step_.function->find(argument))
            return static_cast<size_t>(found - arguments().data());
        std::vector<std::string> known;
        for (const Argument& candidate : arguments())
            known.push_back(candidate.name);
        refuseName(name() + ": unknown argument", argument, known);
    }

    void claim(size_t index)
    {
        if (given_[index])
            refuse(name() + ": '" + arguments()[index].name + "' is given twice");
        given_[index] = true;
    }

    void set(size_t index, const std::string& text)
    {
        claim(index);
        read(index, text);
    }

    void read(size_t index, const std::string& text)
    {
        step_.values[index] = at(name() + ": ", [&] { return readValue(arguments()[index], text); });
    }

    Step step_;
    std::vector<bool> given_;
    std::string keys_; ///< as it was written
    bool scoped_ = false;
};

Chain::Step Chain::StepReader::ofWords(std::span<const std::vector<Word>> parts)
{
    StepReader step(parts.front().front().text);
    for (const std::vector<Word>& words : parts) {
        const bool goesOn = &words != &parts.front();
        if (goesOn && !step.takesKeys())
            step.refuseNumber(words.front().text);
        for (size_t i = goesOn ? 0 : 1; i < words.size(); ++i) {
            const Word& word = words[i];
            if (word.isScope)
                step.scope(word.text.substr(1));
            else if (word.equals != std::string::npos)
                step.named(word.text.substr(0, word.equals), word.text.substr(word.equals + 1));
            else if (word.isKey && step.takesKeys())
                step.key(word.text, i == 0);
            else
                step.positional(word.text);
        }
    }
    return step.finish();
}

Chain::Step Chain::StepReader::ofJson(const Json& item)
{
    if (!item.is_object() || !item.contains("function") || !item["function"].is_string())
        refuse("expected an object with a name under \"function\" instead of " + shortened(item));
    StepReader step(item["function"].get<std::string>());
    for (const auto& [key, value] : item.items())
        if (key != "function")
            step.json(key, value);
    return step.finish();
}

Chain Chain::fromText(const std::string& text)
{
    Chain chain;
    if (isBlank(text))
        return chain;
    const std::vector<std::vector<Word>> parts = chainWords(text);
    for (size_t end = 0, begin; (begin = end) < parts.size();) {
        do
            if (parts[end].empty())
                refuse("a function is missing beside a comma in '" + text + "'");
        while (++end < parts.size() && !parts[end].empty() && parts[end].front().isKey);
        const bool several = begin > 0 || end < parts.size();
        chain.steps_.push_back(at(several ? entryText(chain.steps_.size()) : "", [&] {
            return StepReader::ofWords(std::span(parts).subspan(begin, end - begin));
        }));
    }
    return chain;
}

Chain Chain::fromJson(const std::string& json, const std::string& source)
{
    return at("'" + source + "': ", [&] {
        try {
            const Json root = parseStrictJson(json);
            const Json& list = root.is_object() && root.contains("chain") ? root["chain"] : root;
            if (!list.is_array())
                refuse("expected a list of functions, or an object with one under \"chain\"");
            Chain chain;
            chain.source_ = source;
            for (const Json& item : list)
                chain.steps_.push_back(
                    at(entryText(chain.steps_.size()), [&] { return StepReader::ofJson(item); }));
            return chain;
        } catch (const Json::exception& error) {
            refuse(error.what());
        }
    });
}

Chain Chain::fromJsonFile(const std::string& path)
{
    Chain chain = fromJson(readTextFile(path, "chain file"), path);
    for (Step& step : chain.steps_)
        for (size_t i = 0; i < step.values.size(); ++i)
            if (step.function->arguments[i].type == Argument::Type::File) // beside the chain file
                step.values[i] =
                    Value((std::filesystem::path(path).parent_path() / step.values[i].file()).string());
    return chain;
}

std::string Chain::text() const
{
    std::string text;
    for (const Step& step : steps_) {
        text.append(text.empty() ? "" : ", ").append(step.function->name);
        for (size_t i = 0; i < step.values.size(); ++i)
            text.append(" ").append(quoted(valueText(step.function->arguments[i], step.values[i])));
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
    try {
        return list.dump(2);
    } catch (const Json::type_error&) {
        refuse("a path in a chain is no UTF-8, which JSON has to be");
    }
}

/// Makes the function of a step. What is wrong with a file that it needs is the fault of that which names it.
Made Chain::make(const Step& step) const
{
    const std::string source = source_.empty() ? "" : "'" + source_ + "': ";
    const bool isOneOfSeveral = steps_.size() > 1 || !source.empty();
    const auto index = static_cast<size_t>(&step - steps_.data());
    return at(source + (isOneOfSeveral ? entryText(index) : ""), [&] {
        Made made = step.function->make(step.values);
        if ((made.keepsAlpha || step.function->leavesAlpha) && !step.scope[0] && !step.scope[1] &&
            !step.scope[2])
            refuse(step.function->name + ": it leaves alpha alone, and its scope names nothing else");
        return made;
    });
}

Chain Chain::fromTextOrFile(const std::optional<std::string>& text, const std::optional<std::string>& file)
{
    if (text && file)
        refuse("--chain: there is a chain in the arguments already, '" + *text + "'");
    if (!text && !file)
        refuse("no chain; write one such as \"gamma 2.2, add 0.1\", or name a file with --chain");
    return text ? fromText(*text) : fromJsonFile(*file);
}

std::vector<std::string> Chain::differencesOnGPU() const
{
    std::vector<std::string> all;
    for (const Step& step : steps_)
        if (const char* what = step.function->onGPU; what != nullptr) {
            const std::string text = step.function->name + ": " + what;
            if (std::find(all.begin(), all.end(), text) == all.end())
                all.push_back(text);
        }
    return all;
}

std::optional<std::string> Chain::colourSpace() const
{
    std::optional<std::string> space;
    for (const Step& step : steps_) {
        const auto colours = std::count(step.scope.begin(), step.scope.begin() + 3, true);
        if (step.function->colourSpace && colours > 0)
            space = colours == 3 ? step.function->colourSpace : "";
    }
    return space;
}

Chain::Built Chain::build() const
{
    std::vector<std::unique_ptr<RU_PixelFunction>> made;
    std::vector<Components> scopes;
    bool oneScope = true;
    bool oneByOne = true; // no function looks at other components
    Built built;
    for (const Step& step : steps_) {
        Made one = make(step);
        made.push_back(std::move(one.function));
        built.parts.push_back(std::move(one.parts));
        Components& scope = scopes.emplace_back(step.scope);
        scope[3] = scope[3] && !one.keepsAlpha;
        oneScope = oneScope && scope == scopes.front();
        oneByOne = oneByOne && !made.back()->needAllComponents();
        for (size_t c = 0; c < 4; ++c)
            built.components[c] = built.components[c] || scope[c];
    }
    // Components that differ cost a table each, and 16-bit ones top out below white. Where all functions
    // share a scope it is enough to leave the other components out.
    for (size_t i = 0; i < made.size() && !(oneScope && oneByOne); ++i)
        made[i]->setScope(scopes[i].data());
    for (size_t i = made.size(); i-- > 1;)
        made[i - 1]->setNext(made[i].release());
    if (!made.empty())
        built.head = std::move(made.front());
    return built;
}

} // namespace host
