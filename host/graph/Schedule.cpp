#include <host/graph/Schedule.h>

#include <algorithm>

namespace host {

namespace {

int64_t floorOf(int64_t a, int64_t b)
{
    return a / b - (a % b < 0 ? 1 : 0);
}

int64_t ceilingOf(int64_t a, int64_t b)
{
    return -floorOf(-a, b);
}

/// From a distance in the largest output to the place in another one, and back to the least distance there.
int placeOf(int distance, int begin, int size, int largestSize)
{
    return static_cast<int>(begin + floorOf(int64_t{distance} * size, largestSize));
}

int distanceBefore(int place, int begin, int size, int largestSize)
{
    return static_cast<int>(floorOf((int64_t{place} - begin) * largestSize, size));
}

int distanceBehind(int place, int begin, int size, int largestSize)
{
    return static_cast<int>(ceilingOf((int64_t{place} - begin) * largestSize, size));
}

bool likesStrips(const Graph& graph)
{
    return std::any_of(graph.entries().begin(), graph.entries().end(),
                       [](const Graph::Entry& entry) { return entry.node->likesStrips(); });
}

/// Pixels of an input that are read for one of the output.
double readFor(const Graph& graph, const Graph::Entry& entry, size_t input, const Window& rect)
{
    const Graph::Entry& from = graph.entries()[entry.inputs[input]];
    const Window read =
        from.places.empty() ? Window() : intersection(entry.node->needs(input, rect), from.window(0));
    return static_cast<double>(read.pixels()) / static_cast<double>(rect.pixels());
}

/// Whether some node, such as a turn, reads far more for strips than for tiles, in the middle of its picture.
bool readsMore(const Graph& graph, int width, int high, int tile)
{
    for (const Graph::Entry& entry : graph.entries())
        for (size_t input = 0; input < entry.inputs.size() && !entry.places.empty(); ++input) {
            const Window& whole = entry.window(0);
            const int x = whole.x + whole.width / 2, y = whole.y + whole.height / 2;
            const Window strip{x - width / 2, y - high / 2, width, high},
                square{x - tile / 2, y - tile / 2, tile, tile};
            if (readFor(graph, entry, input, strip) > 2.0 * readFor(graph, entry, input, square))
                return true;
        }
    return false;
}

} // namespace

Schedule::Schedule(const Graph& graph, size_t part) : graph_(graph)
{
    for (const Graph::Entry& entry : graph.entries())
        known_.emplace_back(entry.places.size());
    for (size_t o = 0; o < graph.outputs().size(); ++o) {
        const size_t node = graph.outputs()[o].node;
        const std::vector<Picture::Place>& places = graph.entries()[node].places;
        for (size_t plane = 0; plane < places.size(); ++plane) {
            if (places[plane].part != part)
                continue;
            Step& step = steps_[stepOf({node, plane})];
            step.goals.push_back({o, places[plane]});
            ++step.consumers;
        }
    }
}

/// The step of a plane, behind those that it needs. Scripts may be longer than a stack is deep.
size_t Schedule::stepOf(const Place& goal)
{
    std::vector<Place> waiting{goal};
    while (!waiting.empty()) {
        const Place place = waiting.back();
        if (known(place) != 0 || addStep(place, waiting))
            waiting.pop_back();
    }
    return known(goal) - 1;
}

/// Adds the step of a plane; puts what it needs and has no step yet on a stack instead, the first uppermost.
bool Schedule::addStep(const Place& place, std::vector<Place>& missing)
{
    const Graph::Entry& entry = graph_.entries()[place.node];
    const Recipe recipe = entry.node->recipe(place.plane);
    const auto input = [&](const Use& use) { return Place{entry.inputs[use.input], use.plane}; };
    const size_t before = missing.size();
    for (size_t u = recipe.uses.size(); u-- > 0;)
        if (known(input(recipe.uses[u])) == 0)
            missing.push_back(input(recipe.uses[u]));
    if (missing.size() > before)
        return false;
    if (recipe.asIs) {
        known(place) = known(input(recipe.uses.front()));
        return true;
    }
    Step step{place.node, place.plane, recipe.uses, {}, {}, 0};
    for (const Use& use : recipe.uses)
        step.inputs.push_back(known(input(use)) - 1);
    for (const size_t used : step.inputs)
        ++steps_[used].consumers;
    steps_.push_back(std::move(step));
    known(place) = steps_.size();
    return true;
}

void Schedule::windows(const std::vector<Window>& outputs, std::vector<Window>& result) const
{
    result.assign(steps_.size(), Window());
    for (size_t s = steps_.size(); s-- > 0;) { // those that use a step stand behind it
        const Step& step = steps_[s];
        const Graph::Entry& entry = graph_.entries()[step.node];
        for (const Goal& goal : step.goals)
            result[s] = enclosing(result[s], outputs[goal.output]);
        result[s] = intersection(result[s], entry.window(step.plane));
        for (size_t u = 0; u < step.uses.size() && !result[s].isEmpty(); ++u) {
            const Step& input = steps_[step.inputs[u]];
            const Window wanted = entry.node->needs(step.uses[u].input, result[s]);
            const Window& whole = graph_.entries()[input.node].window(input.plane);
            result[step.inputs[u]] = enclosing(result[step.inputs[u]], intersection(wanted, whole));
        }
    }
}

Grid::Grid(const Graph& graph, size_t part, int tile, int threads)
{
    int64_t rowBytes = 1;
    for (const Graph::Output& output : graph.outputs()) {
        const Picture& picture = graph.picture(output.node);
        Output& added = outputs_.emplace_back();
        if (part >= picture.parts.size())
            continue;
        const Image& image = picture.parts[part];
        added = {image.data, image.display};
        // Distances count in display windows, which must not be much smaller than what is cut.
        if (image.display.isEmpty() || image.data.width / 4 > image.display.width ||
            image.data.height / 4 > image.display.height)
            added.display = image.data;
        rowBytes += image.rowBytes();
        if (added.display.pixels() > largest_.display.pixels())
            largest_ = added;
    }
    const auto& [wide, high] = std::pair(largest_.display.width, largest_.display.height);
    bool first = true;
    for (const auto& [data, display] : outputs_) {
        if (data.isEmpty())
            continue;
        const Place begin{distanceBefore(data.x, display.x, display.width, wide),
                          distanceBefore(data.y, display.y, display.height, high)};
        const Place end{distanceBehind(data.x + data.width, display.x, display.width, wide),
                        distanceBehind(data.y + data.height, display.y, display.height, high)};
        begins_ = first ? begin : Place{std::min(begins_.x, begin.x), std::min(begins_.y, begin.y)};
        ends_ = first ? end : Place{std::max(ends_.x, end.x), std::max(ends_.y, end.y)};
        first = false;
    }
    cutTiles(graph, rowBytes, tile, threads);
}

void Grid::cutTiles(const Graph& graph, int64_t rowBytes, int tile, int threads)
{
    // Narrow images take several rows of tiles, so that all threads find work in a band.
    constexpr int64_t bandBytes = 4 << 20;
    bandRows_ = static_cast<int>(tile * std::clamp<int64_t>(bandBytes / (rowBytes * tile), 1, 64));
    tileWidth_ = tileRows_ = tile;
    if (likesStrips(graph)) {
        // Not smaller than a tile, and not larger than any GPU takes.
        constexpr int64_t mostValues = 4 << 20;
        const int width = std::max(1, ends_.x - begins_.x);
        const int64_t least = ceilingOf(int64_t{tile} * tile, width);
        const int64_t shared = ceilingOf(std::min(bandRows_, rows()), threads);
        const auto high = static_cast<int>(
            std::clamp<int64_t>(std::max(least, shared), 1, std::max<int64_t>(1, mostValues / width)));
        if (!readsMore(graph, width, high, tile)) {
            tileWidth_ = width;
            tileRows_ = high;
        }
    }
    columns_ = static_cast<int>(ceilingOf(ends_.x - begins_.x, tileWidth_));
    bands_ = ceilingOf(rows(), bandRows_);
}

int Grid::bandEnd(int64_t band) const
{
    return begins_.y + static_cast<int>(std::min<int64_t>((band + 1) * bandRows_, rows()));
}

int Grid::pieces(int64_t band) const
{
    return columns_ * static_cast<int>(ceilingOf(bandEnd(band) - bandBegin(band), tileRows_));
}

void Grid::tile(int64_t band, int piece, std::vector<Window>& result) const
{
    const Place begin{begins_.x + piece % columns_ * tileWidth_,
                      bandBegin(band) + piece / columns_ * tileRows_};
    cut(begin, {std::min(begin.x + tileWidth_, ends_.x), std::min(begin.y + tileRows_, bandEnd(band))},
        result);
}

void Grid::band(int64_t band, std::vector<Window>& result) const
{
    cut({begins_.x, bandBegin(band)}, {ends_.x, bandEnd(band)}, result);
}

void Grid::cut(const Place& begin, const Place& end, std::vector<Window>& result) const
{
    result.clear();
    for (const auto& [data, display] : outputs_) {
        Window& window = result.emplace_back();
        if (data.isEmpty())
            continue;
        const auto& [x, y, width, height] = display;
        const int left = placeOf(begin.x, x, width, largest_.display.width);
        const int top = placeOf(begin.y, y, height, largest_.display.height);
        window = intersection(data, {left, top, placeOf(end.x, x, width, largest_.display.width) - left,
                                     placeOf(end.y, y, height, largest_.display.height) - top});
    }
}

} // namespace host
