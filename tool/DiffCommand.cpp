#include "Commands.h"
#include "Signals.h"

#include <host/file/Diff.h>

#include <cstdio>
#include <memory>

namespace tool {

namespace {

struct DiffOptions
{
    std::string a, b;
};

void print(const host::DiffReport& report)
{
    for (const std::string& line : report.headers)
        std::printf("%s\n", line.c_str());
    int64_t values = 0, differing = 0;
    for (const host::ChannelDiff& channel : report.channels) {
        values += channel.values;
        differing += channel.differing;
        if (channel.differing == 0)
            continue;
        std::printf("channel %s: %lld of %lld values differ", channel.channel.c_str(),
                    static_cast<long long>(channel.differing), static_cast<long long>(channel.values));
        if (channel.largest > 0.0)
            std::printf("; largest difference %.9g at %d,%d: %.10g and %.10g", channel.largest, channel.x,
                        channel.y, channel.a, channel.b);
        if (channel.notNumbers > 0)
            std::printf("; %lld with NaN or an infinity", static_cast<long long>(channel.notNumbers));
        std::printf("\n");
    }
    if (report.same())
        std::printf("the same: all %lld values, windows, channels and formats\n",
                    static_cast<long long>(values));
    else if (!report.channels.empty())
        std::printf("%lld of %lld values differ\n", static_cast<long long>(differing),
                    static_cast<long long>(values));
}

} // namespace

Command diffCommand()
{
    Command command{
        "diff", "Compare two images bit by bit",
        "Exits with 0 when windows, channels, formats and all values are the same, with 1 when not.\n"
        "Metadata does not count. Differences are of the full range: 1 is black against white."};
    auto o = std::make_shared<DiffOptions>();
    command.add({{"A", &o->a, "image file", required}, {"B", &o->b, "image file", required}});
    command.run = [o] {
        const host::DiffReport report = host::diff(o->a, o->b, &cancelSwitch());
        print(report);
        return report.same() ? exitDone : exitSomeFailed;
    };
    return command;
}

} // namespace tool
