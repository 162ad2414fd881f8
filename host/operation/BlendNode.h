#pragma once

#include <host/operation/Pairing.h>

#include <RU/composite/RU_Blend.h>

#include <array>
#include <memory>
#include <optional>

namespace host {

/// The component of a matte that stands for all: the wanted one, or its alpha, or its first; of its first
/// plane with colour or alpha. None: each component goes by its own.
struct Matte
{
    Matte(const Picture& picture, std::optional<int> wanted, bool one);

    size_t plane = 0;
    Mapping mapping{};
};

/// Mixes the first picture, whose header, window and channels the output has, with a second one, or fades it;
/// computed in the wider of both formats. Outside of its window an image is 0. Components that the second lacks
/// are faded.
class BlendNode : public Node
{
public:
    /// With weights both images are multiplied by theirs and added, without a matte; else `mix` is the share
    /// of the second one, times the matte.
    struct Settings
    {
        float mix = 1.0f;
        std::optional<std::array<float, 2>> weights = {};
        bool swap = false;
        bool hasSecond = false, hasMatte = false; ///< what stands behind the first input
        std::optional<int> matteComponent = {};   ///< the one of 0 to 3 to use for all components
    };

    BlendNode(const Settings& settings, const PlaneSettings& planes);

    Picture plan(const std::vector<const Picture*>& inputs) override;
    Recipe recipe(size_t plane) const override { return works_[plane].recipe; }
    Block pixels(size_t plane, const Window& rect, Feed& feed) const override;

private:
    struct PlaneWork
    {
        Recipe recipe;
        bool isCopy = true;
        Components present{};
        TIL_Plane codes; ///< of the format to compute in
        Mapping mapping{};
        /// What makes the second picture's colours straight, or not, as the first one's are; null for nothing.
        void (*adapt)(float*, const float*, int64_t) = nullptr;
        size_t alpha = 0; ///< the plane that has theirs
    };

    PlaneWork workOf(const Pairing& pair, size_t plane, unsigned char stored);
    Block second(const PlaneWork& work, const Window& rect, Feed& feed) const;
    size_t matteInput() const { return settings_.hasSecond ? 2 : 1; }

    Settings settings_;
    PlaneSettings planeSettings_;
    std::unique_ptr<RU_Blend> blend_;
    TIL_Plane matteCodes_;
    std::optional<Matte> matte_;
    std::vector<PlaneWork> works_;
};

/// Takes a backing colour out of the first picture, where the second one, a matte, is below 1.
class ChromaNode : public Node
{
public:
    ChromaNode(const std::array<float, 3>& backing, std::optional<int> matteComponent,
               const PlaneSettings& planes)
        : backing_(backing), matteComponent_(matteComponent), settings_(planes)
    {
    }

    Picture plan(const std::vector<const Picture*>& inputs) override;
    Recipe recipe(size_t plane) const override { return works_[plane].recipe; }
    Block pixels(size_t plane, const Window& rect, Feed& feed) const override;

private:
    struct PlaneWork
    {
        Recipe recipe;
        bool isCopy = true;
        Components present{};
        TIL_Plane codes;
    };

    std::array<float, 3> backing_;
    std::optional<int> matteComponent_;
    PlaneSettings settings_;
    std::optional<Matte> matte_;
    std::vector<PlaneWork> works_;
};

} // namespace host
