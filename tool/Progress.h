#pragma once

#include <nlohmann/json_fwd.hpp>

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace tool {

/// Shows how far a command is with its files, which are the frames of a sequence or just one: as a bar on the
/// terminal, as lines of JSON on standard output, or not at all. Call begin() for each file and then done() or
/// failed(), and end() after the last one that was begun.
class Progress
{
public:
    /// "auto", "none", "bar" or "json"; throws a usage error for others. Auto is a bar on a terminal.
    explicit Progress(const std::string& mode);
    ~Progress();

    bool isJson() const { return mode_ == Mode::Json; }

    /// Begins the file number `index` of `count`; the result is to be called with the rows done.
    std::function<void(int64_t rows, int64_t total)>
    begin(const std::string& file, size_t index, size_t count, std::optional<int64_t> frame = std::nullopt);

    /// The file that was begun is written; `stats` are added to the line unless null.
    void done(const nlohmann::ordered_json& stats);
    void done();
    /// The file that was begun is not; nobody else tells of it on standard output.
    void failed(const std::string& error);
    void end();

    /// Takes the bar away before other text.
    void clear();

private:
    enum class Mode { None, Bar, Json };
    using Clock = std::chrono::steady_clock;

    void show(int64_t rows, int64_t total);
    void drawBar(double part, int percent);
    std::string timeLeft(double part) const;
    void print(const nlohmann::ordered_json& line) const;
    nlohmann::ordered_json event(const char* name) const;

    Mode mode_ = Mode::None;
    std::string file_;
    std::optional<int64_t> frame_;
    size_t index_ = 0, count_ = 0;
    size_t done_ = 0, failed_ = 0;
    bool started_ = false;
    int shown_ = -1; ///< percent
    Clock::time_point start_, drawn_;
    bool visible_ = false;
};

} // namespace tool
