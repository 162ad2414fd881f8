#pragma once

#include <host/chain/Chain.h>
#include <host/operation/Planes.h>

#include <RU/framework/RU_Algorithm.h>

#include <memory>

namespace host {

/// An algorithm of the library on the planes of a picture.
class AlgorithmNode : public Node
{
public:
    struct Work
    {
        std::shared_ptr<const void> parts = {};       ///< that the algorithm borrows
        std::unique_ptr<RU_Algorithm> algorithm = {}; ///< null: a copy
        std::unique_ptr<RU_Algorithm> onGPU = {};     ///< the same there; null: it is computed here
        Components written{};                         ///< the components that it writes; others are copied
        bool readsAll = false;                        ///< also those that it does not write
        bool isFilter = false;                        ///< of regions; else a pixel operation
        std::optional<std::string> colourSpace = {};  ///< of the result: nothing as it was, empty unknown
        std::vector<std::string> notes = {};
    };

    AlgorithmNode(Work work, const PlaneSettings& settings) : work_(std::move(work)), settings_(settings)
    {
        notes_ = work_.notes;
    }

    Picture plan(const std::vector<const Picture*>& inputs) override;
    Recipe recipe(size_t plane) const override;
    Window needs(size_t input, const Window& window) const override;
    bool likesStrips() const override { return work_.onGPU != nullptr; }
    Block pixels(size_t plane, const Window& rect, Feed& feed) const override;

private:
    struct PlaneWork
    {
        bool isCopy = true, isOnGPU = false;
        unsigned char format = 0; ///< to work in
        Components written{}, present{};
        TIL_Plane codes;
    };

    void planDevice(const Planes& in, size_t plane);
    void planWork(const Planes& in, size_t plane, unsigned char stored, bool chosen);
    Block adjust(const PlaneWork& work, size_t plane, const Window& rect, Feed& feed) const;
    Block adjustOnGPU(const PlaneWork& work, size_t plane, const Window& rect, Feed& feed) const;
    Block filter(const PlaneWork& work, size_t plane, const Window& rect, Feed& feed) const;
    Window around(const Window& window) const;

    Work work_;
    PlaneSettings settings_;
    std::vector<PlaneWork> planeWorks_;
    std::vector<bool> asIs_;
};

/// The work of a chain of pixel functions; an empty one copies.
AlgorithmNode::Work gradeWork(const Chain& chain, bool onGPU = false);

} // namespace host
