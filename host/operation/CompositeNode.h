#pragma once

#include <host/operation/Pairing.h>

#include <RU/composite/RU_Composite.h>

namespace host {

/// Puts its first input over, under, ... the second one, the background, whose header and channels the output
/// has. Its data window covers both.
///
/// Straight colours are multiplied by their alpha first, and those of the output divided by its alpha where
/// the background is straight. Computed in uint8 or uint16 where all of a plane is, else, and to multiply
/// or divide, in float. Planes without colour are selected by their geometry. Outside of its data window an
/// image is 0, and inside of it one without an alpha channel is full.
class CompositeNode : public Node
{
public:
    struct Settings
    {
        RU_CompositeType type = RU_COMP_OVER;
        bool premultiply = false;   ///< takes both images for straight
        bool unpremultiply = false; ///< divides in any case
    };

    CompositeNode(const Settings& settings, const PlaneSettings& planes) : type_(settings), settings_(planes)
    {
    }

    Picture plan(const std::vector<const Picture*>& inputs) override;
    Recipe recipe(size_t plane) const override { return works_[plane].recipe; }
    Block pixels(size_t plane, const Window& rect, Feed& feed) const override;

private:
    static constexpr size_t foreground = 0, background = 1; ///< inputs

    /// A plane of one of the two, and the alpha beside it.
    struct Side
    {
        enum class Alpha { Own, Other, Window, Full };

        size_t input = 0, plane = 0;
        Mapping mapping{};
        Window window;
        Alpha alpha = Alpha::Full;
        size_t other = 0; ///< the plane that has the alpha
        bool isStraight = false;
    };
    struct PlaneWork
    {
        Recipe recipe;
        bool isCopy = true;
        unsigned char format = 0; ///< to compute in
        Components present{};
        bool colour = false;
        bool divides = false;
        unsigned char alphaFormat = 0; ///< of the background's alpha in the output
        Side behind, front;
    };
    template <class T>
    struct Loaded;

    Side sideOf(const Planes& planes, size_t input, size_t plane, const Window& output) const;
    PlaneWork workOf(const Pairing& pair, size_t plane, const Picture& output);
    unsigned char workFormat(const Pairing& pair, const PlaneWork& work, unsigned char stored) const;
    template <class T>
    Loaded<T> load(const Side& side, const Components& wanted, const Window& rect, Feed& feed) const;
    template <class T>
    Block composite(const PlaneWork& work, const Window& rect, Feed& feed) const;

    Settings type_;
    PlaneSettings settings_;
    std::vector<PlaneWork> works_;
};

} // namespace host
