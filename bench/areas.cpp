#include <bench/areas.h>

#include <RU/filter/RU_FilterArea.h>

#include <algorithm>

namespace bench {

namespace {

/// The ends of the footprints of a block of samples, and where its results go.
struct Block
{
    std::vector<float> u0, v0, u1, v1, results;
    int x, y, width, height;
};

std::vector<Block> blocksOf(const Sampling& sampling)
{
    std::vector<Block> blocks;
    const int blockSide = sampling.blockSide;
    for (int top = 0; top < sampling.height; top += blockSide)
        for (int left = 0; left < sampling.width; left += blockSide) {
            Block block{{},
                        {},
                        {},
                        {},
                        {},
                        left,
                        top,
                        std::min(blockSide, sampling.width - left),
                        std::min(blockSide, sampling.height - top)};
            for (int y = top; y < top + block.height; ++y)
                for (int x = left; x < left + block.width; ++x) {
                    const auto [u, v, du, dv] = sampling.at(x, y);
                    block.u0.push_back(u - du / 2);
                    block.u1.push_back(u + du / 2);
                    block.v0.push_back(v - dv / 2);
                    block.v1.push_back(v + dv / 2);
                }
            block.results.resize(block.u0.size());
            blocks.push_back(std::move(block));
        }
    return blocks;
}

} // namespace

/// The region that a block reads is copied out of the input, as a host would, unless it is all of it.
Work sampleAreas(Planes& planes, const Sampling& sampling, UT_FilterType filter)
{
    return [&planes, width = sampling.width, filter, blocks = blocksOf(sampling),
            region = std::vector<float>(), area = std::make_shared<RU_FilterArea>()]() mutable {
        const int columns = planes.in.width();
        area->setFilter(filter, 1.0f, filter, 1.0f);
        for (Block& block : blocks) {
            area->setFourCornerCoords(block.u0.data(), block.v0.data(), block.u1.data(), block.v1.data(),
                                      block.height, block.width, columns, planes.in.height(), nullptr);
            int x0 = 0, x1 = 0, y0 = 0, y1 = 0;
            area->getInputRegion(x0, x1, y0, y1);
            const auto* input = static_cast<const float*>(planes.input);
            const bool isAll = x1 - x0 + 1 == columns && y1 - y0 + 1 == planes.in.height();
            region.clear();
            for (int y = y0; y <= y1 && !isAll; ++y)
                region.insert(region.end(), input + int64_t{y} * columns + x0,
                              input + int64_t{y} * columns + x1 + 1);
            area->sample1(block.results.data(), isAll ? input : region.data());
            for (int y = 0; y < block.height; ++y)
                std::copy_n(block.results.data() + int64_t{y} * block.width, block.width,
                            static_cast<float*>(planes.output) + int64_t{block.y + y} * width + block.x);
        }
    };
}

} // namespace bench
