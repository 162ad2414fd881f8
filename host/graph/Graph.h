#pragma once

#include <host/graph/Node.h>
#include <host/graph/Source.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace host {

/// The most threads a run takes.
constexpr int maxThreads = 64;
int defaultThreads();

/// The name of the instruction set that the library computes with.
const char* instructionSet();

struct RunSettings
{
    int threads = defaultThreads();
    int tile = 200; ///< side of a tile in pixels
    const CancelSwitch* cancel = nullptr;
    std::function<void(int64_t rows, int64_t total)> progress; ///< called on the calling thread
};

struct RunReport
{
    double readSeconds = 0.0;
    double workSeconds = 0.0; ///< of all threads together
    double writeSeconds = 0.0;
    double seconds = 0.0; ///< from start to end; the stages overlap
};

/// Operations that are worked out together, tile by tile and on demand: a node asks for what it needs of those
/// before it. Each source is read once, each sink written once; what several nodes use is computed once for a
/// tile. Bytes depend neither on threads nor on tiles.
class Graph
{
public:
    struct Entry
    {
        std::string name;
        std::unique_ptr<Node> node;
        std::vector<size_t> inputs;
        Picture picture;
        std::vector<Picture::Place> places; ///< of its planes

        const Plane& plane(size_t p) const { return picture.plane(places[p]); }
        const Window& window(size_t p) const { return picture.window(places[p]); }
    };

    /// Adds a node behind others and plans it; returns its number. Throws where the inputs do not fit.
    size_t add(const std::string& name, std::unique_ptr<Node> node, const std::vector<size_t>& inputs = {});

    /// Adds a source.
    size_t add(std::unique_ptr<Source> source);

    /// Sends a node's picture, which is the one that the sink is made for, to a sink.
    void write(size_t node, std::unique_ptr<Sink> sink);

    const Picture& picture(size_t node) const { return entries_[node].picture; }
    const std::vector<Entry>& entries() const { return entries_; }

    /// Whether nothing comes behind a node.
    bool isLast(size_t node) const;

    struct Output
    {
        size_t node;
        std::unique_ptr<Sink> sink;
    };
    const std::vector<Output>& outputs() const { return outputs_; }
    const std::vector<Source*>& sources() const { return sources_; }

    /// Computes all outputs, and gives them their names when all are complete. Throws Error.
    RunReport run(const RunSettings& settings);

    /// What the nodes have to say, one line each.
    std::vector<std::string> notes() const;

private:
    std::vector<Entry> entries_;
    std::vector<Output> outputs_;
    std::vector<Source*> sources_; ///< by node; null for those that are none
};

} // namespace host
