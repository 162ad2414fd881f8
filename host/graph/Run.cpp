#include <host/graph/Run.h>

#include <host/graph/Pipeline.h>
#include <host/graph/TileFeed.h>

#include <algorithm>
#include <chrono>
#include <limits>

namespace host {

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// The rows of each part of a source that the bands need. All of them are known beforehand, so that rows are
/// kept that a later band needs again, and read once.
class Reading
{
public:
    Reading(const Graph& graph, const Schedule& schedule, const Grid& grid)
    {
        std::vector<Window> outputs, windows;
        for (int64_t band = 0; band < grid.bands(); ++band) {
            grid.band(band, outputs);
            schedule.windows(outputs, windows);
            for (size_t s = 0; s < windows.size(); ++s) {
                const Schedule::Step& step = schedule.steps()[s];
                Source* const source = graph.sources()[step.node];
                if (source == nullptr || windows[s].isEmpty())
                    continue;
                const size_t part = graph.entries()[step.node].places[step.plane].part;
                widen(rowsOf(source, part, grid.bands()).bands[static_cast<size_t>(band)], windows[s]);
            }
        }
        for (Rows& rows : all_) {
            for (size_t band = 1; band < rows.bands.size(); ++band)
                rows.bands[band].end = std::max(rows.bands[band].end, rows.bands[band - 1].end);
            for (size_t band = rows.bands.size(); band-- > 1;)
                rows.bands[band - 1].begin = std::min(rows.bands[band - 1].begin, rows.bands[band].begin);
        }
    }

    void rewind()
    {
        for (const Rows& rows : all_)
            rows.source->rewind();
    }

    /// Rows of the bands from `oldest` on are still needed.
    void fetch(int64_t oldest, int64_t band, const std::function<void()>& checkStopped)
    {
        for (const Rows& rows : all_)
            rows.source->fetch(rows.part, rows.bands[static_cast<size_t>(oldest)].begin,
                               rows.bands[static_cast<size_t>(band)].end, checkStopped);
    }

private:
    struct Span
    {
        int begin = std::numeric_limits<int>::max(), end = std::numeric_limits<int>::min();
    };
    struct Rows
    {
        Source* source;
        size_t part;
        std::vector<Span> bands;
    };

    static void widen(Span& span, const Window& window)
    {
        span.begin = std::min(span.begin, window.y);
        span.end = std::max(span.end, window.y + window.height);
    }

    Rows& rowsOf(Source* source, size_t part, int64_t bands)
    {
        for (Rows& rows : all_)
            if (rows.source == source && rows.part == part)
                return rows;
        return all_.emplace_back(Rows{source, part, std::vector<Span>(static_cast<size_t>(bands))});
    }

    std::vector<Rows> all_;
};

/// One part of the outputs on its way.
class Pass
{
public:
    Pass(const Graph& graph, size_t part, int tile, int threads, StopToken& stop)
        : graph_(graph), part_(part), stop_(stop), schedule_(graph, part), grid_(graph, part, tile, threads),
          reading_(graph, schedule_, grid_), workspaces_(static_cast<size_t>(threads))
    {
        for (Workspace& workspace : workspaces_)
            workspace.blocks.resize(schedule_.steps().size());
    }

    const Grid& grid() const { return grid_; }
    void rewind() { reading_.rewind(); }

    int fill(int64_t band, int slot)
    {
        const auto slots = static_cast<int64_t>(Sink::slots);
        reading_.fetch(std::max<int64_t>(0, band - slots + 1), band, [this] { stop_.check(); });
        grid_.band(band, windows_);
        for (size_t o = 0; o < windows_.size(); ++o)
            if (isActive(o))
                graph_.outputs()[o].sink->prepare(static_cast<size_t>(slot), part_, windows_[o].y,
                                                  windows_[o].y + windows_[o].height);
        return grid_.pieces(band);
    }

    void work(int64_t band, int slot, int piece, int thread)
    {
        Workspace& workspace = workspaces_[static_cast<size_t>(thread)];
        grid_.tile(band, piece, workspace.outputs);
        schedule_.windows(workspace.outputs, workspace.windows);
        workspace.remaining.clear();
        for (const Schedule::Step& step : schedule_.steps())
            workspace.remaining.push_back(step.consumers);
        for (size_t s = 0; s < schedule_.steps().size(); ++s) {
            compute(s, workspace);
            store(s, static_cast<size_t>(slot), workspace);
        }
    }

    void drain(int slot)
    {
        for (size_t o = 0; o < graph_.outputs().size(); ++o)
            if (isActive(o))
                graph_.outputs()[o].sink->write(static_cast<size_t>(slot), [this] { stop_.check(); });
    }

private:
    bool isActive(size_t output) const
    {
        return part_ < graph_.picture(graph_.outputs()[output].node).parts.size();
    }

    void compute(size_t s, Workspace& workspace)
    {
        const Schedule::Step& step = schedule_.steps()[s];
        const Graph::Entry& entry = graph_.entries()[step.node];
        if (!workspace.windows[s].isEmpty()) {
            TileFeed feed(schedule_, s, workspace, stop_);
            Block block = entry.node->pixels(step.plane, workspace.windows[s], feed);
            stop_.check();
            workspace.blocks[s] = feed.converted(std::move(block), entry.plane(step.plane).format);
        }
        for (const size_t input : step.inputs)
            release(input, workspace);
    }

    void store(size_t s, size_t slot, Workspace& workspace)
    {
        for (const Schedule::Goal& goal : schedule_.steps()[s].goals) {
            const Window rect = workspace.outputs[goal.output];
            if (!rect.isEmpty())
                graph_.outputs()[goal.output].sink->store(slot, goal.place, rect, workspace.blocks[s]);
            release(s, workspace);
        }
    }

    static void release(size_t s, Workspace& workspace)
    {
        if (--workspace.remaining[s] > 0)
            return;
        workspace.buffers.give(std::move(workspace.blocks[s]));
        workspace.blocks[s] = Block{};
    }

    const Graph& graph_;
    size_t part_;
    StopToken& stop_;
    Schedule schedule_;
    Grid grid_;
    Reading reading_;
    std::vector<Workspace> workspaces_;
    std::vector<Window> windows_; ///< for fill()
};

} // namespace

Run::Run(const Graph& graph, const RunSettings& settings)
    : graph_(graph), settings_(settings), stop_(settings.cancel)
{
    for (const Graph::Output& output : graph.outputs())
        parts_ = std::max(parts_, graph.picture(output.node).parts.size());
    for (size_t p = 0; p < parts_; ++p)
        rows_ += Grid(graph, p, settings.tile, settings.threads).rows();
}

RunReport Run::all()
{
    const Clock::time_point start = Clock::now();
    for (size_t p = 0; p < parts_; ++p)
        part(p);
    stop_.check();
    const Clock::time_point written = Clock::now();
    for (const Graph::Output& output : graph_.outputs())
        output.sink->finish();
    for (const Graph::Output& output : graph_.outputs())
        output.sink->commit();
    report_.writeSeconds += secondsSince(written);
    report_.workSeconds = static_cast<double>(workNanoseconds_) * 1e-9;
    report_.seconds = secondsSince(start);
    return report_;
}

void Run::part(size_t number)
{
    Pass pass(graph_, number, settings_.tile, settings_.threads, stop_);
    pass.rewind();
    Pipeline pipeline;
    pipeline.bands = pass.grid().bands();
    pipeline.slots = static_cast<int>(Sink::slots);
    pipeline.threads = settings_.threads;
    pipeline.fill = [&](int64_t band, int slot) {
        const Clock::time_point start = Clock::now();
        const int pieces = pass.fill(band, slot);
        report_.readSeconds += secondsSince(start);
        return pieces;
    };
    pipeline.work = [&](int64_t band, int slot, int piece, int thread) {
        const Clock::time_point start = Clock::now();
        pass.work(band, slot, piece, thread);
        workNanoseconds_ +=
            std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - start).count();
    };
    pipeline.drain = [&](int64_t band, int slot) {
        const Clock::time_point start = Clock::now();
        pass.drain(slot);
        report_.writeSeconds += secondsSince(start);
        if (settings_.progress)
            settings_.progress(rowsDone_ + pass.grid().rowsDone(band), rows_);
    };
    pipeline.run();
    rowsDone_ += pass.grid().rows();
}

} // namespace host
