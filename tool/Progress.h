#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace tool {

/// Shows how far a job is: as a bar on the terminal, as lines of JSON on standard output, or not at all.
class Progress
{
public:
    /// "auto", "none", "bar" or "json"; throws a usage error for others. Auto is a bar on a terminal.
    explicit Progress(const std::string& mode);
    ~Progress();

    bool isJson() const { return mode_ == Mode::Json; }

    /// Begins the file number `index` of `count`; the result is to be called with the rows done.
    std::function<void(int64_t rows, int64_t total)> begin(const std::string& file, size_t index,
                                                           size_t count);

    /// Takes the bar away before other text.
    void clear();

private:
    enum class Mode { None, Bar, Json };

    void show(int64_t rows, int64_t total);

    Mode mode_ = Mode::None;
    std::string file_;
    size_t index_ = 0, count_ = 0;
    int64_t shown_ = -1; ///< percent
    bool visible_ = false;
};

} // namespace tool
