#include <host/chain/StrictJson.h>

#include <host/text/Error.h>

#include <set>
#include <vector>

namespace host {

namespace {

/// Looks at a text without keeping it. (The parser's own callback costs the square of a list's length.)
class Checker : public nlohmann::json_sax<Json>
{
public:
    bool null() override { return value(); }
    bool boolean(bool) override { return value(); }
    bool number_integer(number_integer_t) override { return value(); }
    bool number_unsigned(number_unsigned_t) override { return value(); }
    bool number_float(number_float_t, const string_t&) override { return value(); }
    bool string(string_t&) override { return value(); }
    bool binary(binary_t&) override { return value(); }
    bool start_object(std::size_t) override { return begin(false); }
    bool end_object() override { return end(); }
    bool start_array(std::size_t) override { return begin(true); }
    bool end_array() override { return end(); }
    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override
    {
        return false; // the parser says it better
    }

    bool key(string_t& name) override
    {
        if (!around_.back().keys.insert(name).second)
            fail("'" + name + "' is given twice");
        return true;
    }

private:
    struct Around
    {
        bool isList = false;
        std::set<std::string> keys{};
    };

    static constexpr size_t deepest = 32;

    /// What is around an entry: a list, perhaps in an object.
    size_t depthOfEntries() const { return around_.empty() || around_[0].isList ? 1 : 2; }

    bool value()
    {
        if (around_.size() == depthOfEntries() && around_.back().isList)
            ++entries_;
        else if (around_.size() < depthOfEntries())
            entries_ = 0;
        return true;
    }

    bool begin(bool isList)
    {
        value();
        around_.push_back({isList});
        if (around_.size() > deepest)
            fail("lists and objects in each other, deeper than " + std::to_string(deepest));
        return true;
    }

    bool end()
    {
        around_.pop_back();
        return true;
    }

    [[noreturn]] void fail(const std::string& what) const
    {
        refuse((entries_ > 0 ? entryText(entries_ - 1) : "") + what);
    }

    std::vector<Around> around_; ///< the lists and objects that are open
    size_t entries_ = 0;         ///< that began in the list around
};

} // namespace

Json parseStrictJson(const std::string& text)
{
    Checker checker;
    Json::sax_parse(text, &checker);
    return Json::parse(text);
}

} // namespace host
