#pragma once

#include <host/graph/Graph.h>

#include <string>

namespace host {

/// The nodes of a graph, for people: windows, planes and their formats, and what each needs of its inputs.
std::string explain(const Graph& graph);

/// The same for graphviz.
std::string graphviz(const Graph& graph);

} // namespace host
