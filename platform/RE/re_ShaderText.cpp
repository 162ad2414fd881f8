#include <RE/re_ShaderText.h>

#include <RE/re_Join.h>

#include <algorithm>
#include <array>
#include <map>
#include <vector>

namespace {

enum class Kind { space, word, sign, directive };

struct Token
{
    Kind kind;
    std::string text;
    int line;

    bool is(std::string_view what) const { return text == what; }
};
using Tokens = std::vector<Token>;

/// The length of the token that `text` begins with.
size_t tokenLength(std::string_view text, Kind& kind)
{
    const auto upTo = [&](std::string_view end, size_t from) {
        const size_t at = text.find(end, from);
        return at == text.npos ? text.size() : at;
    };
    kind = Kind::space;
    if (text.starts_with("//"))
        return upTo("\n", 0);
    if (text.starts_with("/*"))
        return std::min(upTo("*/", 2) + 2, text.size());
    size_t length = 1;
    if (std::isspace(static_cast<unsigned char>(text[0])) != 0)
        return length;
    kind = Kind::directive;
    if (text[0] == '#') {
        for (length = upTo("\n", 0); length < text.size() && text[length - 1] == '\\';)
            length = upTo("\n", length + 1);
        return length;
    }
    kind = re_isWordCharacter(text[0]) ? Kind::word : Kind::sign;
    const bool isNumber = std::isdigit(static_cast<unsigned char>(text[0])) != 0;
    if (kind == Kind::word)
        while (length < text.size() &&
               (re_isWordCharacter(text[length]) || (isNumber && text[length] == '.')))
            ++length;
    return length;
}

Tokens split(std::string_view text)
{
    Tokens tokens;
    int line = 1;
    while (!text.empty()) {
        Kind kind{};
        const std::string_view token = text.substr(0, tokenLength(text, kind));
        tokens.push_back({kind, std::string(token), line});
        line += static_cast<int>(std::count(token.begin(), token.end(), '\n'));
        text.remove_prefix(token.size());
    }
    return tokens;
}

/// The index of the next token from `at` on that is no space; that behind the last one if there is none.
size_t next(const Tokens& tokens, size_t at)
{
    while (at < tokens.size() && tokens[at].kind == Kind::space)
        ++at;
    return at;
}

bool isAt(const Tokens& tokens, size_t at, std::string_view text)
{
    return at < tokens.size() && tokens[at].is(text);
}

/// How deep in parentheses and brackets tokens lie.
struct Depth
{
    void pass(const Token& token)
    {
        for (const std::string_view open : {"(", "[", "{"})
            depth += token.is(open) ? 1 : 0;
        for (const std::string_view close : {")", "]", "}"})
            depth -= token.is(close) ? 1 : 0;
    }
    int depth = 0;
};

/// Takes a directive, or what ends in a semicolon or in the brace that closes a function or a block.
Tokens takeItem(const Tokens& tokens, size_t& at)
{
    Tokens item;
    Depth depth;
    const size_t first = next(tokens, at);
    const bool isStructure = isAt(tokens, first, "struct");
    while (at < tokens.size()) {
        const Token& token = tokens[at++];
        item.push_back(token);
        depth.pass(token);
        if (token.kind == Kind::directive && at == first + 1)
            break;
        if (depth.depth <= 0 && (token.is(";") || (token.is("}") && !isStructure)))
            break;
    }
    return item;
}

enum class Item { statement, function, variable, other };

Item classify(const Tokens& item)
{
    static constexpr std::array<std::string_view, 11> control = {
        "return", "else", "if", "for", "while", "do", "switch", "discard", "break", "continue", "case"};
    const size_t first = next(item, 0);
    if (first == item.size())
        return Item::statement;
    if (item[first].kind == Kind::directive || item[first].is("struct") || item[first].is("const"))
        return Item::other;
    const size_t second = next(item, first + 1);
    if (item[first].kind != Kind::word || second == item.size() || item[second].kind != Kind::word ||
        std::find(control.begin(), control.end(), item[first].text) != control.end())
        return Item::statement;
    if (isAt(item, next(item, second + 1), "("))
        return item.back().is("}") ? Item::function : Item::other;
    const bool hasValue = std::any_of(item.begin(), item.end(), [](const Token& t) { return t.is("="); });
    return hasValue || !item.back().is(";") ? Item::statement : Item::variable;
}

/// The shorter names of the parameters of functionN, and where its body begins.
std::map<std::string, std::string> aliasesOf(const Tokens& function, size_t& body)
{
    const size_t name = next(function, next(function, 0) + 1);
    body = static_cast<size_t>(
        std::find_if(function.begin(), function.end(), [](const Token& t) { return t.is("{"); }) -
        function.begin());
    std::map<std::string, std::string> aliases;
    constexpr std::string_view prefix = "function";
    const std::string& full = function[name].text;
    if (!full.starts_with(prefix))
        return aliases;
    const std::string number = full.substr(prefix.size());
    if (number.empty() || number.find_first_not_of("0123456789") != number.npos)
        return aliases;
    for (size_t at = name + 1; at < body; ++at) {
        const size_t behind = next(function, at + 1);
        const std::string& word = function[at].text;
        if (function[at].kind == Kind::word && word.size() > number.size() && word.ends_with(number) &&
            (isAt(function, behind, ",") || isAt(function, behind, ")") || isAt(function, behind, "[")))
            aliases[word.substr(0, word.size() - number.size())] = word;
    }
    return aliases;
}

void useParameters(Tokens& function)
{
    size_t body = 0;
    const auto aliases = aliasesOf(function, body);
    bool afterDot = false;
    for (size_t at = body; at < function.size(); ++at) {
        Token& token = function[at];
        if (token.kind == Kind::space)
            continue;
        if (const auto alias = aliases.find(token.text); alias != aliases.end() && !afterDot)
            token.text = alias->second;
        afterDot = token.is(".");
    }
}

/// The index of the last token before `at` that is no space.
size_t previous(const Tokens& tokens, size_t at)
{
    while (at > 0 && tokens[--at].kind == Kind::space) {
    }
    return at;
}

/// Marks the parameters that a function writes, and gives it a `value` of its own, which compilers heed.
void makeParametersPrecise(Tokens& function, size_t body)
{
    std::string own;
    size_t begin = next(function, 0);
    bool isWritten = false;
    for (size_t at = begin; at < body; ++at) {
        const Token& token = function[at];
        isWritten = isWritten || token.is("out") || token.is("inout");
        if (token.is("(") || token.is(",")) {
            begin = next(function, at + 1);
            isWritten = false;
        }
        const size_t behind = next(function, at + 1);
        if (token.kind != Kind::word || !(isAt(function, behind, ",") || isAt(function, behind, ")")))
            continue;
        if (isWritten)
            function[begin].text.insert(0, "precise ");
        else if (token.is("value")) {
            own = re_join(" precise ", function[previous(function, at)].text, " value = value_;");
            function[at].text = "value_";
        }
    }
    if (body < function.size())
        function[body].text += own;
}

/// A result that is computed goes through a variable.
void makeResultPrecise(Tokens& function, size_t at, const std::string& type)
{
    size_t end = at;
    bool isComputed = false;
    for (; end < function.size() && !function[end].is(";"); ++end)
        for (const std::string_view sign : {"+", "-", "*", "/"})
            isComputed = isComputed || function[end].is(sign);
    if (!isComputed || end == function.size())
        return;
    function[at].text = re_join("{ precise ", type, " RE_result =");
    function[end].text = "; return RE_result; }";
}

/// Results have to be those of the processor: what a function computes may not be contracted.
void makePrecise(Tokens& function)
{
    static constexpr std::array<std::string_view, 4> types = {"FLOAT", "VEC2", "VEC3", "VEC4"};
    const auto isType = [&](const Token& t) {
        return std::find(types.begin(), types.end(), t.text) != types.end();
    };
    const auto body = static_cast<size_t>(
        std::find_if(function.begin(), function.end(), [](const Token& t) { return t.is("{"); }) -
        function.begin());
    const std::string type = function[next(function, 0)].text;
    makeParametersPrecise(function, body);
    for (size_t at = body + 1; at < function.size(); ++at) {
        const Token& before = function[previous(function, at)];
        const size_t behind = next(function, at + 1);
        const bool isStatement = before.is("{") || before.text.ends_with(";") || before.text.ends_with("}");
        if (isStatement && isType(function[at]) && behind < function.size() &&
            function[behind].kind == Kind::word)
            function[at].text.insert(0, "precise ");
        if (function[at].is("return"))
            makeResultPrecise(function, at, type);
    }
}

bool isSwizzle(const Token& token)
{
    return token.kind == Kind::word && token.text.size() >= 2 && token.text.size() <= 4 &&
           token.text.find_first_not_of("rgbaxyzwstpq") == token.text.npos;
}

/// A scalar that is assigned to several components goes to each of them.
void splatScalars(Tokens& tokens)
{
    for (size_t at = 1; at < tokens.size(); ++at) {
        if (!isSwizzle(tokens[at]) || !tokens[at - 1].is("."))
            continue;
        const size_t assign = next(tokens, at + 1);
        if (!isAt(tokens, assign, "=") || isAt(tokens, assign + 1, "="))
            continue;
        size_t end = assign + 1;
        for (Depth depth; end < tokens.size(); ++end) {
            if (depth.depth == 0 && (tokens[end].is(";") || tokens[end].is(",") || tokens[end].is(")")))
                break;
            depth.pass(tokens[end]);
        }
        if (end == tokens.size())
            return;
        tokens[assign].text = re_join("= RE_splat", std::to_string(tokens[at].text.size()), "(");
        tokens[end].text = re_join(")", tokens[end].text);
    }
}

void write(std::string& text, const Tokens& item, std::string_view before = {})
{
    const size_t first = next(item, 0);
    if (first == item.size())
        return;
    text.append("\n#line ").append(std::to_string(item[first].line)).append(" 1\n").append(before);
    for (size_t at = first; at < item.size(); ++at)
        text.append(item[at].text);
}

} // namespace

re_ShaderText::re_ShaderText(std::string_view text)
{
    const Tokens tokens = split(text);
    for (size_t at = 0; at < tokens.size();) {
        Tokens item = takeItem(tokens, at);
        const Item kind = classify(item);
        if (kind == Item::function) {
            useParameters(item);
            makePrecise(item);
        }
        splatScalars(item);
        if (kind == Item::variable)
            write(outside, item, "precise ");
        else
            write(kind == Item::statement ? statements : outside, item);
    }
    outside.append("\n");
    statements.append("\n");
}
