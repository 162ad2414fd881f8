#pragma once

#include <host/graph/Schedule.h>

#include <atomic>

namespace host {

/// The work of Graph::run(), part after part of the outputs.
class Run
{
public:
    Run(const Graph& graph, const RunSettings& settings);

    RunReport all();

private:
    void part(size_t part);

    const Graph& graph_;
    const RunSettings& settings_;
    StopToken stop_;
    size_t parts_ = 0;
    int64_t rowsDone_ = 0, rows_ = 0;
    std::atomic<int64_t> workNanoseconds_{0};
    RunReport report_;
};

} // namespace host
