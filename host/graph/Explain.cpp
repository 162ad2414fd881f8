#include <host/graph/Explain.h>

#include <host/file/Format.h>
#include <host/text/Names.h>
#include <host/text/Text.h>

namespace host {

namespace {

std::vector<std::string> planeTexts(const Graph::Entry& entry)
{
    std::vector<std::string> texts;
    for (size_t p = 0; p < entry.places.size(); ++p) {
        const Image& image = entry.picture.parts[entry.places[p].part];
        const Plane& plane = entry.plane(p);
        texts.push_back(plane.name + " (" + joined(plane.channelNames(image.channels), " ") + ") " +
                        formatName(plane.format) + (entry.picture.isStraight(p) ? ", straight" : ""));
    }
    return texts;
}

/// What a node reads around a window: "2 left, 1 above", or nothing more than the window itself.
std::string needText(const Node& node, size_t input)
{
    constexpr Window window{1000, 1000, 100, 100};
    const Window need = node.needs(input, window);
    const std::pair<int, const char*> sides[] = {{window.x - need.x, "left"},
                                                 {need.x + need.width - window.x - window.width, "right"},
                                                 {window.y - need.y, "above"},
                                                 {need.y + need.height - window.y - window.height, "below"}};
    std::vector<std::string> texts;
    for (const auto& [pixels, side] : sides)
        if (pixels > 0)
            texts.push_back(std::to_string(pixels) + " " + side);
    return texts.empty() ? "" : " and around it " + joined(texts);
}

std::string windowText(const Graph::Entry& entry)
{
    std::string text;
    for (const Image& image : entry.picture.parts)
        text += (text.empty() ? "" : "; ") + describe(image.data) +
                (image.data == image.display ? "" : " of " + describe(image.display));
    return text;
}

/// In quotes, as graphviz has them.
std::string label(const std::string& text)
{
    std::string quoted = "\"";
    for (const char c : printable(text)) {
        if (c == '"' || c == '\\')
            quoted += '\\';
        quoted += c;
    }
    return quoted + "\"";
}

} // namespace

std::string explain(const Graph& graph)
{
    std::string text;
    for (size_t n = 0; n < graph.entries().size(); ++n) {
        const Graph::Entry& entry = graph.entries()[n];
        text += printable(entry.name) + "\n  window  " + windowText(entry) + "\n";
        for (const std::string& plane : planeTexts(entry))
            text += "  plane   " + printable(plane) + "\n";
        for (size_t i = 0; i < entry.inputs.size(); ++i)
            text += "  reads   " + printable(graph.entries()[entry.inputs[i]].name) +
                    needText(*entry.node, i) + "\n";
        for (const std::string& note : entry.node->notes())
            text += "  note    " + printable(note) + "\n";
    }
    return text;
}

std::string graphviz(const Graph& graph)
{
    std::string text = "digraph kreiluge {\n  node [shape=box, fontname=\"sans-serif\"];\n";
    for (size_t n = 0; n < graph.entries().size(); ++n) {
        const Graph::Entry& entry = graph.entries()[n];
        const bool isFile = entry.inputs.empty() || graph.isLast(n);
        text += "  n" + std::to_string(n) + " [label=" + label(entry.name) + (isFile ? ", shape=note" : "") +
                ", tooltip=" + label(windowText(entry)) + "];\n";
        for (size_t i = 0; i < entry.inputs.size(); ++i)
            text += "  n" + std::to_string(entry.inputs[i]) + " -> n" + std::to_string(n) + ";\n";
    }
    return text + "}\n";
}

} // namespace host
