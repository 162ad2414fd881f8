// Times the library beside a plain copy and beside others that do the same work, on one thread where a row does
// not say otherwise, and prints one table. Takes the options of Google Benchmark; names are operation/format/size/contender.
#include <bench/bench.h>

#include <PXL/PXL_Caps.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <tuple>
#include <utility>

namespace bench {

std::vector<Peer>& peers()
{
    static std::vector<Peer> list;
    return list;
}

bool addPeers(const std::vector<Peer>& list)
{
    peers().insert(peers().end(), list.begin(), list.end());
    return true;
}

namespace {

/// The largest difference between the results of a row and a peer, relative where they exceed 1.
double difference(const Row& row, const Peer& peer, const Work& theirs, Planes& planes)
{
    planes.refill();
    row.ours(planes)();
    const std::vector<double> expected = planes.tileResult();
    planes.refill();
    theirs();
    const std::vector<double> actual = planes.bareResult();
    double most = 0.0;
    for (size_t i = 0; i < actual.size(); ++i)
        if (!(peer.agreement == Agreement::allButAlpha && i % 4 == 3))
            most = std::max(most, std::abs(actual[i] - expected[i]) / std::max(1.0, std::abs(expected[i])));
    return most;
}

/// How far a picture is from what would be right: the root of the mean square over all pixels, and at most.
struct Error
{
    double rms = 0.0, most = 0.0;
};

Error errorOf(const Row& row, const Work& work, Planes& planes)
{
    std::memset(planes.output, 0, planes.bytes());
    work();
    const std::vector<double> exact = row.exact(planes.out), actual = planes.bareResult();
    Error error;
    for (size_t i = 0; i < actual.size(); ++i) {
        const double apart = std::abs(actual[i] - exact[i]);
        error.rms += apart * apart;
        error.most = std::max(error.most, apart);
    }
    error.rms = std::sqrt(error.rms / static_cast<double>(actual.size()));
    return error;
}

/// One code or half; for wider formats what an approximation of powers may cost.
double tolerance(PXL_Format format)
{
    const double step = format == PXL_FORMAT_half ? 0x1p-10 : 1.01 / PXLfullWhite(format);
    return PXLbytesPerElement(format) < 4 ? step : 1e-5;
}

/// The planes of some shape. Rows share them: the output is refilled before each use.
Planes& planesOf(const Row& row, const Size& size)
{
    static std::map<std::tuple<PXL_Format, int, std::string>, Planes> made;
    return made.try_emplace({row.format, row.components, size.name}, row.format, row.components, size)
        .first->second;
}

std::string processor()
{
    std::ifstream info("/proc/cpuinfo");
    for (std::string line; std::getline(info, line);)
        if (line.starts_with("model name"))
            return line.substr(line.find(": ") + 2);
    return "unknown processor";
}

/// What the table says of a row and size; ours and the copy come before the peers.
struct Line
{
    struct Entry
    {
        std::string contender; ///< with ~ if it comes to another end
        std::vector<double> times;
        Error error = {};

        double median()
        {
            std::sort(times.begin(), times.end());
            return times.empty() ? std::nan("") : times[times.size() / 2];
        }
        double least() const { return times.empty() ? std::nan("") : times[0]; } ///< after median()
    };
    std::string row;
    std::vector<Entry> entries;
};

/// Collects the times of all repetitions and prints their medians.
class Table : public benchmark::BenchmarkReporter
{
public:
    std::vector<Line> lines;
    bool failed = false;

    bool ReportContext(const Context&) override
    {
        const char* compiler = std::strstr(__VERSION__, "lang") != nullptr ? "" : "GCC ";
        std::printf("%s, %s, %s%s\n", processor().c_str(), PXLinstructionSetName(PXLinstructionSet()),
                    compiler, __VERSION__);
        return true;
    }

    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs) {
            const std::string& name = run.run_name.function_name;
            if (run.error_occurred) {
                std::fprintf(stderr, "%s: %s\n", name.c_str(), run.error_message.c_str());
                failed = true;
            } else if (run.run_type == Run::RT_Iteration)
                for (Line& line : lines)
                    for (Line::Entry& entry : line.entries)
                        if (name == line.row + '/' + entry.contender) {
                            entry.times.push_back(1e9 / run.counters.at("items_per_second"));
                            if (run.counters.contains("rms"))
                                entry.error = {run.counters.at("rms"), run.counters.at("most")};
                        }
        }
    }

    void Finalize() override
    {
        std::printf(
            "CPU time, or time where several threads work, in ns per component, medians; ratio: peer / "
            "ours, of the medians and of the minima; ~: the same kind of work, to another end\n\n");
        std::printf("%-29s %7s %7s %7s   %-30s %7s %7s %7s\n", "", "ours", "copy", "x copy", "peer", "",
                    "ratio", "minima");
        for (Line& line : lines) {
            const double ours = line.entries[0].median();
            const double copied = line.entries[1].median();
            if (std::isnan(ours))
                continue;
            std::printf("%-29s %7.3f %7.3f %7.2f", line.row.c_str(), ours, copied, ours / copied);
            for (size_t i = 2; i < line.entries.size(); ++i) {
                Line::Entry& peer = line.entries[i];
                const double theirs = peer.median();
                std::printf("%s%*s   %-30s %7.3f %7.2f %7.2f", i > 2 ? "\n" : "", i > 2 ? 53 : 0, "",
                            peer.contender.c_str(), theirs, theirs / ours,
                            peer.least() / line.entries[0].least());
            }
            std::printf("\n");
        }
        const char* heading = "\nErrors: the root of the mean square of all, and the largest\n";
        for (const Line& line : lines)
            for (const Line::Entry& entry : line.entries)
                if (entry.error.most > 0.0)
                    std::printf("%s%-29s %-30s %.5f %.3f\n", std::exchange(heading, ""), line.row.c_str(),
                                entry.contender.c_str(), entry.error.rms, entry.error.most);
    }
};

/// Registers ours, the copy and the peers of a row. A peer has to give what we give before it is timed,
/// unless it never does.
Line registerRow(const Row& row, const Size& size)
{
    std::vector<Peer> contenders = {{row.name, "ours", row.ours}, {row.name, "copy", row.plain}};
    std::copy_if(peers().begin(), peers().end(), std::back_inserter(contenders),
                 [&](const Peer& peer) { return std::strcmp(peer.row, row.name) == 0; });
    Line line = {std::string(row.name) + '/' + size.name, {}};
    for (const Peer& contender : contenders) {
        const bool otherResult = contender.agreement == Agreement::none;
        const bool compare = line.entries.size() >= 2 && !otherResult;
        const std::string name = std::string(otherResult ? "~ " : "") + contender.name;
        const bool hasError = row.exact != nullptr && line.entries.size() != 1; // which is the copy
        line.entries.push_back({name, {}});
        const auto run = [=, work = Work(), error = Error()](benchmark::State& state) mutable {
            Planes& planes = planesOf(row, size);
            if (work == nullptr) {
                work = contender.make(planes);
                if (hasError)
                    error = errorOf(row, work, planes);
                const double apart = compare ? difference(row, contender, work, planes) : 0.0;
                if (!(apart <= tolerance(row.format)))
                    state.SkipWithError(("differs from ours by up to " + std::to_string(apart)).c_str());
            }
            planes.refill();
            for (auto _ : state)
                work();
            state.SetItemsProcessed(state.iterations() * planes.values());
            if (hasError) {
                state.counters["rms"] = error.rms;
                state.counters["most"] = error.most;
            }
        };
        auto* added =
            benchmark::RegisterBenchmark((line.row + '/' + name).c_str(), run)->MeasureProcessCPUTime();
        if (row.onTheClock)
            added->UseRealTime();
    }
    return line;
}

} // namespace

} // namespace bench

int main(int argc, char** argv)
{
    // Repetitions in random order, so that a drift of the machine meets all contenders alike.
    char defaults[][48] = {"--benchmark_repetitions=11", "--benchmark_enable_random_interleaving=true",
                           "--benchmark_min_time=0.05"};
    std::vector<char*> arguments = {argv[0], defaults[0], defaults[1], defaults[2]};
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data()))
        return 2;
    bench::Table table;
    for (const bench::Row& row : bench::rows)
        for (const bench::Size& size : row.sizes)
            table.lines.push_back(bench::registerRow(row, size));
    const bool ran = benchmark::RunSpecifiedBenchmarks(&table) > 0;
    return ran && !table.failed ? 0 : 1;
}
