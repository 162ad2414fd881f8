#pragma once

#include <host/graph/Node.h>
#include <host/shape/ShapeFill.h>

#include <memory>
#include <optional>

namespace host {

/// Shapes as a picture, of a size or with the windows of another picture.
class RotoNode : public Node
{
public:
    enum class Channels { RGBA, RGB, Matte };

    struct Settings
    {
        std::optional<std::pair<int, int>>
            size; ///< without an input: that of the shapes, or 1920 x 1080, without
        std::optional<unsigned char> format; ///< that of the input, or half, without
        Channels channels = Channels::RGBA;
        double feather = 0.0; ///< what soft edges reach further than the shapes say, in pixels
        std::optional<RU_FeatherDropoff> dropoff; ///< that of each shape without
        double frame = 1.0;
        int moments = 1;      ///< of which the picture is the mean
        double shutter = 0.5; ///< the part of a frame that they are spread over, with the frame in its middle
    };

    RotoNode(Shapes shapes, const Settings& settings);

    Picture plan(const std::vector<const Picture*>& inputs) override;
    Recipe recipe(size_t) const override { return {}; }
    Block pixels(size_t plane, const Window& rect, Feed& feed) const override;

private:
    /// The shapes at a moment. One that does not move is the same in all.
    using Moment = std::vector<std::shared_ptr<ShapeFill>>;
    struct Bucket;

    Image imageOf(const Image* like) const;
    Canvas canvasOf(const Image& image) const;
    void prepare(const Canvas& canvas);
    void draw(Bucket& bucket, const Moment& moment, Feed& feed) const;
    void drawMean(Bucket& bucket, Feed& feed) const;
    bool movesIn(const Bucket& bucket) const;

    Shapes shapes_;
    Settings settings_;
    Window window_;
    int side_ = 0; ///< of a bucket
    Components present_{};
    unsigned char format_ = 0;
    std::vector<Moment> moments_;
};

} // namespace host
