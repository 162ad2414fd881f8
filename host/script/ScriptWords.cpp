#include <host/script/ScriptWords.h>

#include <host/text/Error.h>
#include <host/text/Names.h>

#include <cctype>

namespace host {

namespace {

bool isNameLetter(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

/// Cuts a text into words.
class Splitter
{
public:
    Splitter(const std::string& text, const std::string& source, const ScriptValues& values)
        : text_(text), source_(source), values_(values)
    {
    }

    std::vector<ScriptLine> lines()
    {
        while (at_ < text_.size())
            step();
        endLine();
        return std::move(lines_);
    }

private:
    std::string where(int line, int column) const
    {
        return source_ + ":" + std::to_string(line) + ":" + std::to_string(column) + ": ";
    }

    char next()
    {
        const char c = text_[at_++];
        column_ = c == '\n' ? 1 : column_ + ((c & 0xC0) == 0x80 ? 0 : 1); // columns count characters
        line_ += c == '\n';
        return c;
    }

    void step()
    {
        const char c = text_[at_];
        const bool goesOn = c == '\\' && text_.compare(at_ + 1, 1, "\n") == 0;
        if (goesOn) {
            next();
            next();
        } else if (c == '\n') {
            next();
            endLine();
        } else if (std::isspace(static_cast<unsigned char>(c)) != 0) {
            next();
        } else if (c == '#') {
            while (at_ < text_.size() && text_[at_] != '\n')
                next();
        } else {
            word();
        }
    }

    void endLine()
    {
        if (!words_.empty())
            lines_.push_back(std::move(words_));
        words_.clear();
    }

    void word()
    {
        ScriptWord word{"", line_, column_, true};
        while (at_ < text_.size() && std::isspace(static_cast<unsigned char>(text_[at_])) == 0) {
            const char c = text_[at_];
            if ((c == '|' || c == '=') && word.text.empty() && word.isBare) {
                word.text = next();
                break;
            }
            if (c == '|' || (c == '=' && words_.empty())) // name=grade ..., a|b
                break;
            if (c == '"' || c == '\'')
                quoted(word);
            else if (c == '\\' && at_ + 1 < text_.size() && text_[at_ + 1] == '\n')
                break;
            else if (c == '$')
                value(word);
            else
                word.text += next();
        }
        words_.push_back(std::move(word));
    }

    /// In single quotes everything stands for itself, in double ones values have their place.
    void quoted(ScriptWord& word)
    {
        const std::string begin = where(line_, column_);
        const char quote = next();
        word.isBare = false;
        while (at_ < text_.size() && text_[at_] != quote && text_[at_] != '\n') {
            if (quote == '"' && text_[at_] == '$')
                value(word);
            else
                word.text += next();
        }
        if (at_ == text_.size() || text_[at_] == '\n')
            refuse(begin + "the quote is not closed in this line");
        next();
    }

    void value(ScriptWord& word)
    {
        const std::string begin = where(line_, column_);
        const size_t start = at_;
        word.isBare = false;
        next();
        if (at_ < text_.size() && text_[at_] == '$') { // stands for one of them
            word.text += next();
            return;
        }
        const bool braced = at_ < text_.size() && text_[at_] == '{';
        if (braced)
            next();
        while (at_ < text_.size() && isNameLetter(text_[at_]))
            next();
        if (braced && at_ < text_.size() && text_[at_] == '}')
            next();
        word.text += withValues(text_.substr(start, at_ - start), begin, values_);
    }

    const std::string& text_;
    const std::string& source_;
    const ScriptValues& values_;
    size_t at_ = 0;
    int line_ = 1, column_ = 1;
    ScriptLine words_;
    std::vector<ScriptLine> lines_;
};

} // namespace

std::vector<ScriptLine> scriptLines(const std::string& text, const std::string& source,
                                    const ScriptValues& values)
{
    std::string plain; // without the marks of other systems
    for (size_t at = text.starts_with("\xEF\xBB\xBF") ? 3 : 0; at < text.size(); ++at)
        if (text[at] != '\r' || text.compare(at + 1, 1, "\n") != 0)
            plain += text[at];
    return Splitter(plain, source, values).lines();
}

std::string withValues(const std::string& text, const std::string& where, const ScriptValues& values)
{
    std::string result;
    for (size_t at = 0; at < text.size();) {
        if (text[at] != '$') {
            result += text[at++];
            continue;
        }
        if (text.compare(at + 1, 1, "$") == 0) {
            result += '$';
            at += 2;
            continue;
        }
        const bool braced = text.compare(at + 1, 1, "{") == 0;
        const size_t begin = at + (braced ? 2 : 1);
        size_t end = begin;
        while (end < text.size() && isNameLetter(text[end]))
            ++end;
        const std::string name = text.substr(begin, end - begin);
        if (name.empty() || (braced && text.compare(end, 1, "}") != 0))
            refuse(where + "expected a name behind $, as in $GAIN or ${GAIN}");
        const auto value = values.find(name);
        if (value == values.end())
            refuse(std::string(where)
                       .append("$")
                       .append(name)
                       .append(" has no value; give it one with --set ")
                       .append(name)
                       .append("=..."));
        result += value->second;
        at = end + (braced ? 1 : 0);
    }
    return result;
}

} // namespace host
