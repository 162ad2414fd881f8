#pragma once

#include <host/graph/Schedule.h>

#include <vector>

namespace host {

/// What one thread keeps from tile to tile.
struct Workspace
{
    Buffers buffers;
    std::vector<Window> outputs; ///< by output its part of the tile
    std::vector<Window> windows; ///< by step
    std::vector<Block> blocks;   ///< by step
    std::vector<int> remaining;  ///< by step: consumers still to come
};

/// The inputs of one step on a tile.
class TileFeed : public Feed
{
public:
    TileFeed(const Schedule& schedule, size_t step, Workspace& workspace, const StopToken& stop)
        : Feed(workspace.buffers, stop), schedule_(schedule), step_(step), workspace_(workspace)
    {
    }

    Block load(const Wish& wish) override;
    Block take(const Wish& wish) override;
    Block converted(Block&& block, unsigned char format) override;

private:
    size_t stepOf(const Wish& wish) const;

    const Schedule& schedule_;
    size_t step_;
    Workspace& workspace_;
};

} // namespace host
