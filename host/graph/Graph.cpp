#include <host/graph/Graph.h>

#include <host/graph/Run.h>
#include <host/graph/SourceNode.h>
#include <host/text/Error.h>
#include <host/text/Names.h>

#include <PXL/PXL_Caps.h>

#include <algorithm>
#include <thread>

namespace host {

size_t Graph::add(const std::string& name, std::unique_ptr<Node> node, const std::vector<size_t>& inputs)
{
    std::vector<const Picture*> pictures;
    pictures.reserve(inputs.size());
    for (const size_t input : inputs)
        pictures.push_back(&entries_[input].picture);
    Picture picture = node->plan(pictures);
    std::vector<Picture::Place> places = picture.places();
    entries_.push_back({name, std::move(node), inputs, std::move(picture), std::move(places)});
    sources_.push_back(nullptr);
    return entries_.size() - 1;
}

size_t Graph::add(std::unique_ptr<Source> source)
{
    Source* const kept = source.get();
    const std::string name = kept->picture().path;
    const size_t node = add(name, std::make_unique<SourceNode>(std::move(source)));
    sources_.back() = kept;
    return node;
}

void Graph::write(size_t node, std::unique_ptr<Sink> sink)
{
    outputs_.push_back({node, std::move(sink)});
}

RunReport Graph::run(const RunSettings& settings)
{
    if (settings.threads < 1 || settings.threads > maxThreads)
        refuse("threads: " + std::to_string(settings.threads) + " is not from 1 to " +
               std::to_string(maxThreads));
    if (settings.tile < 1 || settings.tile > 4096)
        refuse("tile: " + std::to_string(settings.tile) + " is not from 1 to 4096");
    const std::string where = outputs_.empty() ? "" : "'" + outputs_.front().sink->picture().path + "': ";
    try {
        return Run(*this, settings).all();
    } catch (const Error&) {
        throw;
    } catch (const std::bad_alloc&) {
        throw Error(Error::Kind::Read, where + "there is not enough memory");
    } catch (const std::exception& error) {
        throw Error(Error::Kind::Read, where + firstLine(error.what()));
    }
}

bool Graph::isLast(size_t node) const
{
    return std::none_of(entries_.begin(), entries_.end(), [&](const Entry& entry) {
        return std::find(entry.inputs.begin(), entry.inputs.end(), node) != entry.inputs.end();
    });
}

std::vector<std::string> Graph::notes() const
{
    std::vector<std::string> all;
    for (const Entry& entry : entries_)
        for (const std::string& note : entry.node->notes())
            if (std::find(all.begin(), all.end(), note) == all.end())
                all.push_back(note);
    return all;
}

int defaultThreads()
{
    return std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 1, maxThreads);
}

const char* instructionSet()
{
    return PXLinstructionSetName(PXLinstructionSet());
}

} // namespace host
