#include <host/chain/LookUpFile.h>

#include <host/text/Error.h>
#include <host/text/Names.h>
#include <host/text/Text.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <set>

namespace host {

namespace {

using Fields = std::vector<std::string>;

/// A file line by line, with messages that say which.
class LineReader
{
public:
    explicit LineReader(const std::string& path)
        : path_(path), lines_(splitText(readTextFile(path, "look-up file"), '\n'))
    {
        if (lines_.front().starts_with("\xEF\xBB\xBF")) // byte order mark
            lines_.front().erase(0, 3);
    }

    /// The next line that says something; false at the end.
    bool next(std::string& line)
    {
        while (number_ < lines_.size()) {
            line = splitText(lines_[number_++], '#').front();
            if (!isBlank(line))
                return true;
        }
        return false;
    }

    std::vector<float> numbers(const Fields& fields, size_t count) const
    {
        if (fields.size() != count)
            fail("expected " + std::to_string(count) + (count == 1 ? " number" : " numbers") +
                 " instead of " + std::to_string(fields.size()));
        std::vector<float> numbers;
        for (const std::string& field : fields)
            if (!readNumber(field, numbers.emplace_back()))
                fail("'" + field + "' is no number");
        return numbers;
    }

    [[noreturn]] void fail(const std::string& reason) const
    {
        refuse("'" + path_ + "', line " + std::to_string(number_) + ": " + reason);
    }

    [[noreturn]] void failWhole(const std::string& reason) const { refuse("'" + path_ + "': " + reason); }

private:
    std::string path_;
    std::vector<std::string> lines_;
    size_t number_ = 0; ///< of the line that was read last, from 1
};

/// A table of channel after channel.
std::vector<float> inChannels(const std::vector<std::vector<float>>& rows, size_t firstColumn)
{
    std::vector<float> samples;
    for (size_t column = firstColumn; column < rows.front().size(); ++column)
        for (const std::vector<float>& row : rows)
            samples.push_back(row[column]);
    return samples;
}

/// A track for each column, with its values at `x` of row and column.
template <class X>
std::unique_ptr<CL_Clip> clipOf(const std::vector<std::vector<float>>& rows, size_t firstColumn, X x)
{
    auto clip = std::make_unique<CL_Clip>();
    for (size_t column = firstColumn; column < rows.front().size(); ++column) {
        std::vector<CL_Key> keys;
        for (size_t i = 0; i < rows.size(); ++i)
            keys.push_back({x(i, column), rows[i][column]});
        clip->append(std::make_unique<CL_Track>(keys));
    }
    return clip;
}

class CubeReader
{
public:
    explicit CubeReader(const std::string& path) : lines_(path) {}

    LookUp read()
    {
        for (std::string line; lines_.next(line);) {
            const Fields fields = wordsOf(line);
            const std::string& first = fields.front();
            if (std::isalpha(static_cast<unsigned char>(first.front())) != 0 && !isNotFinite(first))
                keyword(fields);
            else
                row(fields);
        }
        if (size_ == 0)
            lines_.failWhole("no LUT_1D_SIZE");
        if (rows_.size() != size_)
            lines_.failWhole("LUT_1D_SIZE promises " + std::to_string(size_) + " rows, there are " +
                             std::to_string(rows_.size()));
        for (size_t c = 0; c < 3; ++c)
            if (first_[c] >= last_[c])
                lines_.failWhole("the domain ends where it begins or before");
        return lookUp();
    }

private:
    void keyword(const Fields& fields)
    {
        const std::string& word = fields.front();
        const Fields rest(fields.begin() + 1, fields.end());
        if (word == "TITLE")
            return;
        if (!seen_.insert(word).second)
            lines_.fail("'" + word + "' is given twice");
        if (seen_.contains("LUT_1D_INPUT_RANGE") &&
            (seen_.contains("DOMAIN_MIN") || seen_.contains("DOMAIN_MAX")))
            lines_.fail("LUT_1D_INPUT_RANGE beside DOMAIN_MIN or DOMAIN_MAX; expected one of the two forms");
        if (word == "LUT_3D_SIZE")
            lines_.fail("a 3-D cube; expected a 1-D one, with LUT_1D_SIZE");
        if (word == "LUT_1D_SIZE")
            size(rest);
        else if (word == "DOMAIN_MIN")
            first_ = lines_.numbers(rest, 3);
        else if (word == "DOMAIN_MAX")
            last_ = lines_.numbers(rest, 3);
        else if (word == "LUT_1D_INPUT_RANGE") {
            const std::vector<float> range = lines_.numbers(rest, 2);
            first_.assign(3, range[0]);
            last_.assign(3, range[1]);
        } else {
            lines_.fail("unknown keyword '" + word +
                        "'; known: TITLE, LUT_1D_SIZE, DOMAIN_MIN, DOMAIN_MAX, LUT_1D_INPUT_RANGE");
        }
    }

    void size(const Fields& fields)
    {
        const float number = lines_.numbers(fields, 1).front();
        if (number < 2.0f || number > 65536.0f || number != std::floor(number))
            lines_.fail("'" + fields.front() + "' is no whole number from 2 to 65536");
        size_ = static_cast<size_t>(number);
    }

    void row(const Fields& fields)
    {
        if (size_ == 0)
            lines_.fail("numbers before LUT_1D_SIZE");
        if (rows_.size() == size_)
            lines_.fail("one row more than LUT_1D_SIZE promises, which is " + std::to_string(size_));
        rows_.push_back(lines_.numbers(fields, 3));
    }

    LookUp lookUp() const
    {
        LookUp lookUp;
        lookUp.channels = 3;
        const auto same = [](const std::vector<float>& v) { return v[0] == v[1] && v[1] == v[2]; };
        if (same(first_) && same(last_)) {
            lookUp.table = std::make_unique<PXL_Lookup>(first_[0], last_[0], 3, inChannels(rows_, 0));
            return lookUp;
        }
        lookUp.clip = clipOf(rows_, 0, [this](size_t i, size_t c) {
            const auto place = static_cast<float>(i) / static_cast<float>(size_ - 1);
            return first_[c] + (last_[c] - first_[c]) * place;
        });
        return lookUp;
    }

    LineReader lines_;
    std::set<std::string> seen_; ///< the keywords so far
    size_t size_ = 0;
    std::vector<float> first_{0, 0, 0}, last_{1, 1, 1};
    std::vector<std::vector<float>> rows_;
};

class CsvReader
{
public:
    explicit CsvReader(const std::string& path) : lines_(path) {}

    LookUp read()
    {
        bool mayBeHeader = true;
        for (std::string line; lines_.next(line); mayBeHeader = false) {
            const Fields fields = split(line);
            if (!mayBeHeader || !isHeader(fields))
                row(fields);
        }
        if (rows_.size() < 2)
            lines_.failWhole("expected two rows of numbers at least");
        return lookUp();
    }

private:
    /// One separator for a line, so that a decimal comma is an error and no other number.
    static Fields split(const std::string& line)
    {
        for (const char separator : {';', ','})
            if (line.find(separator) != std::string::npos) {
                Fields fields = splitText(line, separator);
                for (std::string& field : fields)
                    field = joined(wordsOf(field), " ");
                return fields;
            }
        return wordsOf(line);
    }

    static bool isHeader(const Fields& fields)
    {
        float number = 0.0f;
        return std::none_of(fields.begin(), fields.end(),
                            [&](const std::string& field) { return readNumber(field, number); });
    }

    void row(const Fields& fields)
    {
        const size_t columns = rows_.empty() ? fields.size() : rows_.front().size();
        if (columns != 1 && columns != 2 && columns != 4)
            lines_.fail(std::to_string(columns) +
                        " columns; expected values, or x and y, or x, red, green and blue");
        rows_.push_back(lines_.numbers(fields, columns));
        if (columns > 1 && rows_.size() > 1 && !(rows_.back()[0] > rows_[rows_.size() - 2][0]))
            lines_.fail("x is " + numberText(rows_.back()[0]) + ", not above that of the row before");
    }

    /// As close as the digits that people write.
    bool isEven() const
    {
        const double first = rows_.front()[0];
        const double step = (rows_.back()[0] - first) / static_cast<double>(rows_.size() - 1);
        for (size_t i = 0; i < rows_.size(); ++i)
            if (std::abs(rows_[i][0] - (first + step * static_cast<double>(i))) > 1e-3 * step)
                return false;
        return true;
    }

    LookUp lookUp() const
    {
        LookUp lookUp;
        const bool hasX = rows_.front().size() > 1;
        lookUp.channels = static_cast<int>(rows_.front().size()) - (hasX ? 1 : 0);
        if (!hasX || isEven()) {
            const float first = hasX ? rows_.front()[0] : 0.0f, last = hasX ? rows_.back()[0] : 1.0f;
            lookUp.table =
                std::make_unique<PXL_Lookup>(first, last, lookUp.channels, inChannels(rows_, hasX ? 1 : 0));
            return lookUp;
        }
        lookUp.clip = clipOf(rows_, 1, [this](size_t i, size_t) { return rows_[i][0]; });
        return lookUp;
    }

    LineReader lines_;
    std::vector<std::vector<float>> rows_;
};

} // namespace

LookUp readLookUpFile(const std::string& path)
{
    const std::string extension = extensionOf(path);
    if (extension == ".cube")
        return CubeReader(path).read();
    if (extension == ".csv")
        return CsvReader(path).read();
    refuse("'" + path + "' is no look-up file by its name; expected .cube or .csv");
}

} // namespace host
