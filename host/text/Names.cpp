#include <host/text/Names.h>

#include <host/text/Error.h>

#include <algorithm>
#include <cctype>
#include <numeric>

namespace host {

namespace {

/// The number of letters to insert, delete or change to get from one name to the other, whatever their case.
size_t editDistance(const std::string& from, const std::string& to)
{
    const auto lower = [](char c) { return std::tolower(static_cast<unsigned char>(c)); };
    std::vector<size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), size_t{0});
    for (const char f : from) {
        size_t diagonal = row[0]++;
        for (size_t i = 0; i < to.size(); ++i) {
            const size_t changed = diagonal + (lower(f) == lower(to[i]) ? 0 : 1);
            diagonal = row[i + 1];
            row[i + 1] = std::min({changed, row[i] + 1, row[i + 1] + 1});
        }
    }
    return row.back();
}

} // namespace

std::string suggestion(const std::string& name, const std::vector<std::string>& known)
{
    const std::string* nearest = nullptr;
    size_t least = std::max<size_t>(2, name.size() / 2); // farther than this is no slip of the fingers
    for (const std::string& candidate : known) {
        const bool begins = name.size() >= 3 && candidate.starts_with(name);
        const size_t distance = begins ? 0 : editDistance(name, candidate);
        if (distance < least || (distance == least && nearest == nullptr && distance < name.size())) {
            least = distance;
            nearest = &candidate;
        }
    }
    if (nearest != nullptr)
        return "; did you mean '" + *nearest + "'?";
    return known.empty() ? "" : "; known: " + joined(known);
}

void refuseName(const std::string& what, const std::string& name, const std::vector<std::string>& known)
{
    refuse(what + " '" + name + "'" + suggestion(name, known));
}

std::string joined(const std::vector<std::string>& names, const char* separator)
{
    std::string text;
    for (size_t i = 0; i < names.size(); ++i)
        text += (i == 0 ? "" : separator) + names[i];
    return text;
}

std::string firstLine(const std::string& text)
{
    return text.substr(0, text.find('\n'));
}

} // namespace host
