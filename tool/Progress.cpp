#include "Progress.h"

#include <host/text/Names.h>

#include <nlohmann/json.hpp>

#include <cstdio>
#include <unistd.h>

namespace tool {

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

std::function<void(int64_t, int64_t)> Progress::begin(const std::string& file, size_t index, size_t count)
{
    file_ = file;
    index_ = index;
    count_ = count;
    shown_ = -1;
    if (mode_ == Mode::None)
        return {};
    return [this](int64_t rows, int64_t total) { show(rows, total); };
}

void Progress::clear()
{
    if (visible_)
        std::fputs("\r\033[K", stderr);
    visible_ = false;
}

void Progress::show(int64_t rows, int64_t total)
{
    const int64_t percent = rows * 100 / total;
    if (percent == shown_)
        return;
    shown_ = percent;
    if (mode_ == Mode::Json) {
        const nlohmann::ordered_json line = {
            {"event", "progress"}, {"output", file_}, {"rows", rows}, {"total", total}};
        std::printf("%s\n", line.dump().c_str());
        std::fflush(stdout);
        return;
    }
    constexpr int width = 30;
    const auto filled = static_cast<size_t>(percent * width / 100);
    const std::string bar = std::string(filled, '#') + std::string(width - filled, '.');
    const std::string place =
        count_ > 1 ? std::to_string(index_ + 1) + "/" + std::to_string(count_) + " " : "";
    const std::string name = file_.size() > 32 ? "..." + file_.substr(file_.size() - 29) : file_;
    std::fprintf(stderr, "\r\033[K%s%s [%s] %3d%%", place.c_str(), name.c_str(), bar.c_str(),
                 static_cast<int>(percent));
    std::fflush(stderr);
    visible_ = true;
}

} // namespace tool
