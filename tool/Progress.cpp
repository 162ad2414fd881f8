#include "Progress.h"

#include <host/text/Names.h>
#include <host/text/Text.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>

namespace tool {

namespace {

using Json = nlohmann::ordered_json;

size_t terminalWidth()
{
    constexpr size_t usual = 80;
    winsize size{};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : usual;
}

bool beginsCharacter(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
}

/// The end of a text, in no more characters than fit.
std::string shortened(const std::string& text, size_t most)
{
    auto characters = static_cast<size_t>(std::count_if(text.begin(), text.end(), beginsCharacter));
    if (characters <= most)
        return text;
    constexpr size_t dots = 3;
    if (most <= dots)
        return {};
    size_t begin = 0;
    for (; characters > most - dots; --characters)
        do
            ++begin;
        while (!beginsCharacter(text[begin]));
    return "..." + text.substr(begin);
}

} // namespace

Progress::Progress(const std::string& mode)
{
    if (mode == "bar" || (mode == "auto" && isatty(STDERR_FILENO)))
        mode_ = Mode::Bar;
    else if (mode == "json")
        mode_ = Mode::Json;
    else if (mode != "none" && mode != "auto")
        host::refuseName("--progress: unknown mode", mode, {"auto", "none", "bar", "json"});
}

Progress::~Progress()
{
    clear();
}

std::function<void(int64_t, int64_t)> Progress::begin(const std::string& file, size_t index, size_t count,
                                                      std::optional<int64_t> frame)
{
    file_ = file;
    frame_ = frame;
    index_ = index;
    count_ = count;
    shown_ = -1;
    if (!started_) {
        started_ = true;
        start_ = Clock::now();
        print({{"event", "start"}, {"frames", count}});
    }
    if (mode_ == Mode::None)
        return {};
    return [this](int64_t rows, int64_t total) { show(rows, total); };
}

void Progress::done(const Json& stats)
{
    clear();
    ++done_;
    Json line = event("done");
    if (!stats.is_null())
        line["stats"] = stats;
    print(line);
}

void Progress::done()
{
    done(nullptr);
}

void Progress::failed(const std::string& error)
{
    clear();
    ++failed_;
    Json line = event("failed");
    line["error"] = error;
    print(line);
}

void Progress::end()
{
    clear();
    print({{"event", "end"}, {"done", done_}, {"failed", failed_}});
}

void Progress::clear()
{
    if (visible_)
        std::fputs("\r\033[K", stderr);
    visible_ = false;
}

Json Progress::event(const char* name) const
{
    Json line = {{"event", name}, {"output", file_}};
    if (frame_)
        line["frame"] = *frame_;
    return line;
}

void Progress::print(const Json& line) const
{
    if (mode_ != Mode::Json)
        return;
    std::printf("%s\n", line.dump(-1, ' ', false, Json::error_handler_t::replace).c_str());
    std::fflush(stdout);
}

void Progress::show(int64_t rows, int64_t total)
{
    const double part = static_cast<double>(rows) / static_cast<double>(total);
    const int percent = static_cast<int>(rows * 100 / total);
    const auto now = Clock::now();
    const bool isLate = mode_ == Mode::Bar && now - drawn_ > std::chrono::seconds(1);
    if (percent == shown_ && !isLate)
        return;
    shown_ = percent;
    drawn_ = now;
    if (mode_ == Mode::Bar) {
        drawBar(part, percent);
        return;
    }
    Json line = event("progress");
    line["rows"] = rows;
    line["total"] = total;
    print(line);
}

std::string Progress::timeLeft(double part) const
{
    constexpr double soonest = 2.0; // seconds; before that nobody knows
    const double passed = std::chrono::duration<double>(drawn_ - start_).count();
    const double ofAll = (static_cast<double>(index_) + part) / static_cast<double>(count_);
    if (passed < soonest || ofAll <= 0.0)
        return {};
    constexpr double longest = 359999.0; // 99:59:59
    const auto seconds = static_cast<int>(std::min(longest, passed * (1.0 - ofAll) / ofAll + 0.5));
    char text[32];
    if (seconds >= 3600)
        std::snprintf(text, sizeof(text), " %d:%02d:%02d left", seconds / 3600, seconds / 60 % 60,
                      seconds % 60);
    else
        std::snprintf(text, sizeof(text), " %d:%02d left", seconds / 60, seconds % 60);
    return text;
}

/// A line that wraps could not be taken away again.
void Progress::drawBar(double part, int percent)
{
    constexpr size_t longestName = 32, longestBar = 30, shortestBar = 5;
    const std::string place =
        count_ > 1 ? std::to_string(index_ + 1) + "/" + std::to_string(count_) + " " : "";
    std::string end = std::to_string(percent) + "%" + timeLeft(part);
    end.insert(0, percent < 10 ? 2 : percent < 100 ? 1 : 0, ' ');
    const size_t width = terminalWidth() - 1; // the cursor stands behind the line
    const auto roomBeside = [&](size_t taken) { return width > taken ? width - taken : 0; };
    std::string line = place;
    constexpr size_t brackets = 4; // and blanks
    const size_t room = roomBeside(place.size() + end.size() + brackets);
    const std::string name =
        shortened(host::printable(file_), std::min(longestName, room > shortestBar ? room - shortestBar : 0));
    const auto characters = static_cast<size_t>(std::count_if(name.begin(), name.end(), beginsCharacter));
    const size_t bar = std::min(longestBar, room - std::min(room, characters));
    line += name;
    if (bar >= shortestBar) {
        const auto filled = static_cast<size_t>(part * static_cast<double>(bar));
        line +=
            (name.empty() ? "[" : " [") + std::string(filled, '#') + std::string(bar - filled, '.') + "] ";
    }
    if (bar < shortestBar && !name.empty())
        line += ' ';
    line += end;
    if (line.size() - name.size() + characters > width) // not even that
        line = end.substr(0, width);
    std::fprintf(stderr, "\r\033[K%s", line.c_str());
    std::fflush(stderr);
    visible_ = true;
}

} // namespace tool
