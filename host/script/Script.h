#pragma once

#include <host/graph/Graph.h>
#include <host/operation/Operation.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace host {

class FileSource;

/// How a picture is stored.
struct OutputSettings
{
    std::string path;
    std::optional<unsigned char> depth; ///< that of the picture without
    bool dataWindow =
        false;         ///< formats without a data window get its pixels, not those of the display window
    bool asIs = false; ///< alpha is not looked at
};

/// Sets what words say; throws a usage error for unknown ones.
void setOutput(OutputSettings& settings, const std::optional<std::string>& depth, const std::string& window,
               const std::string& alpha);

/// Operations on images, each by a name that those behind it may use, and what is written of them. Names of
/// files may have a place for the frame number.
struct Script
{
    struct Statement
    {
        std::string name; ///< empty: nobody uses it
        Call call;
        std::string where; ///< before messages: "look.kr:2:1: ", or nothing

        bool hasName() const { return !name.empty() && name.front() != '|'; }
    };
    struct Output
    {
        std::string image; ///< the name of a statement, or of a file
        OutputSettings settings;
        std::string where;
    };

    /// A name that nobody can write, for the next statement.
    std::string nextName() const { return std::string("|").append(std::to_string(statements.size() + 1)); }

    std::vector<Statement> statements;
    std::vector<Output> outputs;

    /// One operation and where its picture goes; alpha is treated there as the operation is told to.
    static Script single(Call call, const OutputSettings& output);

    /// The names of all files that it reads, each once, and of those that it writes.
    std::vector<std::string> inputFiles() const;
    std::vector<std::string> outputFiles() const;
};

struct FrameReport : RunReport
{
    std::vector<Picture> outputs;
    std::vector<std::string> planes; ///< that the last statement worked on
    std::vector<std::string> notes;
};

/// A script for one frame, with all files open.
class ScriptGraph
{
public:
    /// Throws Error: what is wrong with a statement is said with its place. With `planOnly` no output is opened,
    /// and the graph is to look at, not to run.
    ScriptGraph(const Script& script, std::optional<int64_t> frame, bool planOnly = false);

    /// Computes and stores everything.
    FrameReport run(const RunSettings& settings);

    const Graph& graph() const { return graph_; }

private:
    size_t nodeOf(const std::string& image);
    std::unique_ptr<FileSource> openFile(const std::string& path) const;
    size_t add(const Script::Statement& statement);
    void addOutput(const Script::Output& output);
    void checkOutputs(const Script& script) const;

    std::optional<int64_t> frame_;
    bool planOnly_;
    std::vector<std::pair<std::string, size_t>> named_; ///< statements and files, and their nodes
    std::vector<std::string> notes_;
    size_t last_ = 0; ///< the node of the last statement
    Graph graph_;
};

} // namespace host
