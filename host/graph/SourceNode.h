#pragma once

#include <host/graph/Node.h>
#include <host/graph/Source.h>

#include <memory>

namespace host {

/// A source as a step of a graph.
class SourceNode : public Node
{
public:
    explicit SourceNode(std::unique_ptr<Source> source)
        : source_(std::move(source)), places_(source_->picture().places())
    {
    }

    Picture plan(const std::vector<const Picture*>&) override { return source_->picture(); }
    Recipe recipe(size_t) const override { return {}; }

    Block pixels(size_t plane, const Window& rect, Feed& feed) const override
    {
        const Picture::Place& place = places_[plane];
        const Plane& stored = source_->picture().plane(place);
        Block block = feed.blank(rect, stored.format, stored.present());
        source_->load(place, rect, block.arrays());
        return block;
    }

private:
    std::unique_ptr<Source> source_;
    std::vector<Picture::Place> places_;
};

} // namespace host
