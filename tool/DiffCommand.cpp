#include "Commands.h"
#include "Signals.h"

#include <host/file/Diff.h>
#include <host/text/Text.h>

#include <nlohmann/json.hpp>

#include <cstdio>
#include <memory>
#include <optional>
#include <utility>

namespace tool {

namespace {

using Json = nlohmann::ordered_json;

struct DiffOptions
{
    std::string a, b, picture;
    std::optional<float> tolerance;
    bool json = false;
};

/// How many values there are in all channels, and how many of them differ.
std::pair<int64_t, int64_t> countsOf(const host::DiffReport& report)
{
    std::pair<int64_t, int64_t> counts;
    for (const host::ChannelDiff& channel : report.channels) {
        counts.first += channel.values;
        counts.second += channel.differing;
    }
    return counts;
}

void printText(const host::DiffReport& report, const std::optional<float>& tolerance)
{
    for (const std::string& line : report.headers)
        std::printf("%s\n", host::printable(line).c_str());
    const auto [values, differing] = countsOf(report);
    for (const host::ChannelDiff& channel : report.channels) {
        if (channel.differing == 0 && channel.largest <= 0.0)
            continue;
        std::printf("channel %s: %lld of %lld values differ", host::printable(channel.channel).c_str(),
                    static_cast<long long>(channel.differing), static_cast<long long>(channel.values));
        if (channel.largest > 0.0)
            std::printf("; largest difference %.9g at %d,%d: %.10g and %.10g", channel.largest, channel.x,
                        channel.y, channel.a, channel.b);
        if (channel.notNumbers > 0)
            std::printf("; %lld with NaN or an infinity", static_cast<long long>(channel.notNumbers));
        std::printf("\n");
    }
    const std::string within = tolerance ? " within " + host::numberText(*tolerance) : "";
    if (report.same())
        std::printf("the same%s: all %lld values, windows, channels and formats\n", within.c_str(),
                    static_cast<long long>(values));
    else if (!report.channels.empty())
        std::printf("%lld of %lld values differ\n", static_cast<long long>(differing),
                    static_cast<long long>(values));
}

void printJson(const host::DiffReport& report, const DiffOptions& o)
{
    Json channels = Json::array();
    for (const host::ChannelDiff& channel : report.channels) {
        Json& json = channels.emplace_back(Json{{"channel", channel.channel},
                                                {"values", channel.values},
                                                {"differing", channel.differing},
                                                {"notNumbers", channel.notNumbers},
                                                {"largest", channel.largest}});
        if (channel.largest > 0.0)
            json.update({{"x", channel.x}, {"y", channel.y}, {"a", channel.a}, {"b", channel.b}});
    }
    const auto [values, differing] = countsOf(report);
    const Json root = {{"a", o.a},
                       {"b", o.b},
                       {"same", report.same()},
                       {"tolerance", o.tolerance ? Json(host::doubleOf(*o.tolerance)) : Json()},
                       {"headers", report.headers},
                       {"values", values},
                       {"differing", differing},
                       {"channels", channels}};
    std::printf("%s\n", root.dump(2, ' ', false, Json::error_handler_t::replace).c_str());
}

int compare(const DiffOptions& o)
{
    host::DiffSettings settings;
    if (o.tolerance)
        settings.tolerance = host::doubleOf(*o.tolerance);
    settings.picture = o.picture;
    settings.cancel = &cancelSwitch();
    const host::DiffReport report = host::diff(o.a, o.b, settings);
    if (o.json)
        printJson(report, o);
    else
        printText(report, o.tolerance);
    for (const std::string& note : report.notes)
        std::fprintf(stderr, "kreiluge: note: %s\n", host::printable(note).c_str());
    return report.same() ? exitDone : exitSomeFailed;
}

} // namespace

Command diffCommand()
{
    Command command{
        "diff", "Compare two images bit by bit",
        "Exits with 0 when windows, channels, formats and all values are the same, with 1 when not.\n"
        "Metadata does not count. Differences are of the full range: 1 is black against white."};
    auto o = std::make_shared<DiffOptions>();
    command.add({{"A", &o->a, "image file", required},
                 {"B", &o->b, "image file", required},
                 {"--tolerance",
                  &o->tolerance,
                  "differences up to this, of the full range, count as none",
                  {.words = "N"}},
                 {"--json", &o->json, "as JSON"},
                 {"-o,--output",
                  &o->picture,
                  "image file to write with the differences of each channel, without their signs",
                  {.words = "FILE"}}});
    command.run = [o] { return compare(*o); };
    return command;
}

} // namespace tool
