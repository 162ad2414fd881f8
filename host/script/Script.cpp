#include <host/script/Script.h>

#include <host/file/Format.h>
#include <host/file/Frames.h>
#include <host/file/InputFile.h>
#include <host/graph/FileImages.h>
#include <host/operation/StoreNode.h>
#include <host/text/Error.h>
#include <host/text/Names.h>

#include <algorithm>
#include <filesystem>

namespace host {

namespace {

void addOnce(std::vector<std::string>& names, const std::string& name)
{
    if (std::find(names.begin(), names.end(), name) == names.end())
        names.push_back(name);
}

std::string pathOf(const std::string& path, std::optional<int64_t> frame)
{
    return frame && hasFramePlace(path) ? framePath(path, *frame) : path;
}

/// Whether a file format can hold an image's data window. Some say of a picture that goes beyond its display
/// window what few readers look at; it is cut there.
bool holdsData(const std::string& path, const Image& image)
{
    return holdsWindow(path, image.data) || (holdsWindow(path, image.data, image.display) &&
                                             intersection(image.data, image.display) == image.data);
}

/// Does some work, and says where in the script it stands when that fails.
template <class Work>
auto at(const std::string& where, Work work)
{
    try {
        return work();
    } catch (const Error& error) {
        if (where.empty())
            throw;
        throw Error(error.kind(), where + error.what());
    }
}

} // namespace

Script Script::single(Call call, const OutputSettings& settings)
{
    Script script;
    Output& output = script.outputs.emplace_back();
    output.settings = settings;
    output.settings.asIs = settings.asIs || call.storesAlphaAsIs();
    const bool converts = !call.images().empty() || call.operation().usualDepth;
    if (converts && call.has("depth")) { // rounds once, behind what the file does to alpha
        output.settings.depth = call.planeSettings().depth;
        call = call.widened();
    }
    script.statements.push_back({"", std::move(call), ""});
    return script;
}

void setOutput(OutputSettings& settings, const std::optional<std::string>& depth, const std::string& window,
               const std::string& alpha)
{
    if (depth)
        settings.depth = formatOfName(*depth);
    if (window != "display" && window != "data")
        refuseName("--window: unknown choice", window, {"display", "data"});
    if (alpha != "auto" && alpha != "as-is")
        refuseName("--alpha: unknown choice", alpha, {"auto", "as-is"});
    settings.dataWindow = window == "data";
    settings.asIs = alpha == "as-is";
}

std::vector<std::string> Script::inputFiles() const
{
    std::vector<std::string> files, names;
    const auto add = [&](const std::string& image) {
        if (std::find(names.begin(), names.end(), image) == names.end())
            addOnce(files, image);
    };
    for (const Statement& statement : statements) {
        for (const std::string& image : statement.call.images())
            add(image);
        names.push_back(statement.name);
    }
    for (const Output& output : outputs)
        add(output.image);
    return files;
}

std::vector<std::string> Script::outputFiles() const
{
    std::vector<std::string> files;
    for (const Output& output : outputs)
        addOnce(files, output.settings.path);
    return files;
}

ScriptGraph::ScriptGraph(const Script& script, std::optional<int64_t> frame, bool planOnly)
    : frame_(frame), planOnly_(planOnly)
{
    checkOutputs(script);
    for (const Script::Statement& statement : script.statements)
        at(statement.where, [&] {
            last_ = add(statement);
            named_.emplace_back(statement.name, last_);
        });
    for (const Script::Output& output : script.outputs)
        at(output.where, [&] { addOutput(output); });
}

size_t ScriptGraph::add(const Script::Statement& statement)
{
    const Call& call = statement.call;
    std::vector<size_t> inputs;
    std::unique_ptr<Node> node = call.at(frame_).node();
    for (const std::string& image : call.images())
        inputs.push_back(nodeOf(image));
    return graph_.add(statement.hasName() ? statement.name : call.operation().name, std::move(node), inputs);
}

/// Throws when a file is written that is read, or written twice.
void ScriptGraph::checkOutputs(const Script& script) const
{
    std::error_code ignored;
    std::vector<std::string> written;
    const std::vector<std::string> inputs = script.inputFiles();
    for (const Script::Output& output : script.outputs) {
        const std::string path = pathOf(output.settings.path, frame_);
        for (const std::string& input : inputs)
            if (std::filesystem::equivalent(InputFile(pathOf(input, frame_)).file, path, ignored))
                refuse(output.where + "the output is the input, '" + path + "'; give it another name");
        const auto same = [&](const std::string& other) {
            return std::filesystem::equivalent(other, path, ignored) ||
                   std::filesystem::weakly_canonical(other, ignored) ==
                       std::filesystem::weakly_canonical(path, ignored);
        };
        if (std::any_of(written.begin(), written.end(), same))
            refuse(output.where + "'" + path + "' is written twice; give one of them another name");
        written.push_back(path);
    }
}

/// The last statement of a name, else a file, which is opened once.
size_t ScriptGraph::nodeOf(const std::string& image)
{
    const auto find = [this](const std::string& name) {
        return std::find_if(named_.rbegin(), named_.rend(),
                            [&](const auto& entry) { return entry.first == name; });
    };
    if (const auto statement = find(image); statement != named_.rend())
        return statement->second;
    const std::string path = pathOf(image, frame_);
    if (const auto file = find(path); file != named_.rend())
        return file->second;
    auto source = openFile(path);
    for (const std::string& note : source->notes())
        notes_.push_back(note);
    named_.emplace_back(path, graph_.add(std::move(source)));
    return named_.back().second;
}

/// Opens a file; a name that is none may be a slip in that of a statement.
std::unique_ptr<FileSource> ScriptGraph::openFile(const std::string& path) const
{
    try {
        return std::make_unique<FileSource>(path);
    } catch (const Error& error) {
        std::vector<std::string> names;
        for (const auto& [name, node] : named_)
            if (graph_.sources()[node] == nullptr && !name.empty() && name.front() != '|')
                names.push_back(name);
        const bool isFile = path.find_first_of("./") != std::string::npos;
        if (error.kind() != Error::Kind::NoInput || names.empty() || isFile)
            throw;
        throw Error(error.kind(),
                    error.what() + std::string(", nor a line of that name") + suggestion(path, names));
    }
}

/// A sink for a picture, behind a node that brings it into the form that the file format has.
void ScriptGraph::addOutput(const Script::Output& output)
{
    const OutputSettings& settings = output.settings;
    const std::string path = pathOf(settings.path, frame_);
    size_t node = nodeOf(output.image);
    StoreNode::Settings form;
    form.depth = settings.depth;
    if (!settings.asIs)
        form.straight = straightIn(path);
    form.displayWindow = !settings.dataWindow && !holdsData(path, graph_.picture(node).first());
    const size_t stored = graph_.add(path, std::make_unique<StoreNode>(form), {node});
    if (planOnly_)
        return;
    auto sink = std::make_unique<FileSink>(path, graph_.picture(stored));
    for (const std::string& note : sink->writer().notes())
        notes_.push_back(note);
    graph_.write(stored, std::move(sink));
}

FrameReport ScriptGraph::run(const RunSettings& settings)
{
    FrameReport report{graph_.run(settings), {}, {}, graph_.notes()};
    report.notes.insert(report.notes.end(), notes_.begin(), notes_.end());
    for (const Graph::Output& output : graph_.outputs())
        report.outputs.push_back(output.sink->picture());
    if (!graph_.entries().empty())
        report.planes = graph_.entries()[last_].node->planes();
    return report;
}

} // namespace host
