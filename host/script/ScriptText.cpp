#include <host/script/ScriptText.h>

#include <host/command/OperationWords.h>
#include <host/script/ScriptWords.h>
#include <host/text/Error.h>
#include <host/text/Text.h>

#include <algorithm>

namespace host {

namespace {

bool isName(const std::string& text)
{
    const auto isLetter = [](char c) {
        return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == '-';
    };
    return !text.empty() && std::isdigit(static_cast<unsigned char>(text.front())) == 0 &&
           std::all_of(text.begin(), text.end(), isLetter);
}

std::vector<std::string> textsOf(const std::vector<ScriptWord>& words)
{
    std::vector<std::string> texts;
    texts.reserve(words.size());
    for (const ScriptWord& word : words)
        texts.push_back(word.text);
    return texts;
}

/// What a line with write takes.
struct WriteWords
{
    std::string image, window = "display", alpha = "auto";
    std::optional<std::string> depth;
    OutputSettings settings;

    Command command(bool piped)
    {
        Command write{"write", "", nullptr};
        if (!piped)
            write.add({{"IMAGE", &image, "", required}});
        write.add({{"FILE", &settings.path, "", required},
                   {"--depth", &depth, ""},
                   {"--window", &window, ""},
                   {"--alpha", &alpha, ""}});
        return write;
    }

    OutputSettings read()
    {
        setOutput(settings, depth, window, alpha);
        return settings;
    }
};

/// Reads the lines of a script one after the other.
class ScriptReader
{
public:
    explicit ScriptReader(const std::string& source) : source_(source) {}

    void line(const ScriptLine& words)
    {
        const size_t first = words.size() > 2 && words[1].text == "=" && words[1].isBare ? 2 : 0;
        const std::string name = first > 0 ? words[0].text : "";
        if (first > 0 && !isName(name))
            refuseAt(words[0], "'" + name + "' is no name; expected letters, digits, - and _");
        if (first == 0 && words.size() == 2 && words[1].text == "=")
            refuseAt(words[1], "an operation is missing behind =");
        std::string piped;
        std::vector<ScriptWord> stage;
        std::vector<std::vector<ScriptWord>> stages;
        for (size_t i = first; i <= words.size(); ++i) {
            const bool ends = i == words.size();
            if (!ends && !(words[i].text == "|" && words[i].isBare)) {
                stage.push_back(words[i]);
                continue;
            }
            if (stage.empty())
                refuseAt(words[std::min(i, words.size() - 1)], "an operation is missing beside |");
            stages.push_back(std::move(stage));
            stage.clear();
        }
        const bool writes = stages.back().front().text == "write";
        const size_t named = stages.size() - (writes ? 2 : 1); // the last picture of its own
        if (writes && stages.size() == 1 && !name.empty())
            refuseAt(words[0], "write makes no picture that could be called '" + name + "'");
        for (size_t i = 0; i < stages.size(); ++i)
            piped = operation(stages[i], i == named ? name : "", piped);
    }

    Script finish(const std::string& output)
    {
        if (script_.outputs.empty() && script_.statements.empty())
            refuse(source_ + ": there is no operation");
        if (!output.empty()) {
            if (!script_.outputs.empty())
                refuse(source_ + ": there are write lines; leave out -o");
            Script::Output& last = script_.outputs.emplace_back();
            last.image = script_.statements.back().name;
            last.settings.path = output;
        }
        if (script_.outputs.empty())
            refuse(source_ + ": nothing is written; end with a line such as `write " +
                   (isName(script_.statements.back().name) ? script_.statements.back().name : "NAME") +
                   " out.exr`, or name the file with -o");
        return std::move(script_);
    }

private:
    std::string placeOf(const ScriptWord& word) const
    {
        return source_ + ":" + std::to_string(word.line) + ":" + std::to_string(word.column) + ": ";
    }

    template <class Work>
    decltype(auto) atPlace(const ScriptWord& word, Work work) const
    {
        try {
            return work();
        } catch (const Error& error) {
            throw Error(error.kind(), placeOf(word) + error.what());
        }
    }

    [[noreturn]] void refuseAt(const ScriptWord& word, const std::string& text) const
    {
        refuse(placeOf(word) + text);
    }

    /// Reads words for a command; what is wrong is said where it stands.
    void read(const Command& command, const std::vector<ScriptWord>& words) const
    {
        std::optional<size_t> at;
        try {
            readWords(command, textsOf({words.begin() + 1, words.end()}), at);
        } catch (const Error& error) {
            refuseAt(words[at ? *at + 1 : 0], std::string(at ? "" : words[0].text + ": ") + error.what());
        }
    }

    /// Adds an operation, or a write line; returns the name of its picture.
    std::string operation(const std::vector<ScriptWord>& words, const std::string& name,
                          const std::string& piped)
    {
        const std::string where = placeOf(words[0]);
        if (words[0].text == "write") {
            WriteWords write;
            read(write.command(!piped.empty()), words);
            std::string image = piped.empty() ? write.image : piped;
            script_.outputs.push_back({image, atPlace(words[0], [&] { return write.read(); }), where});
            return image;
        }
        const Operation& found =
            atPlace(words[0], [&]() -> const Operation& { return operationOfName(words[0].text); });
        if (!piped.empty() && std::none_of(found.parameters.begin(), found.parameters.end(),
                                           [](const Parameter& parameter) { return parameter.isImage; }))
            refuseAt(words[0], found.name + " takes no picture");
        OperationWords given(found, !piped.empty());
        read({found.name.c_str(), "", nullptr, given.options()}, words);
        Call call = atPlace(words[0], [&] { return given.call(piped); });
        std::string own = name.empty() ? script_.nextName() : name;
        script_.statements.push_back({own, std::move(call), where});
        return own;
    }

    std::string source_;
    Script script_;
};

} // namespace

Script readScript(const std::string& text, const std::string& source, const ScriptValues& values,
                  const std::string& output)
{
    ScriptReader reader(source);
    for (const ScriptLine& line : scriptLines(text, source, values))
        reader.line(line);
    return reader.finish(output);
}

Script readScriptFile(const std::string& path, const ScriptValues& values, const std::string& output)
{
    const std::string text = readTextFile(path, "script");
    const size_t begin = text.find_first_not_of(" \t\r\n");
    if (begin != std::string::npos && text[begin] == '{')
        return readScriptJson(text, path, values, output);
    return readScript(text, path, values, output);
}

} // namespace host
