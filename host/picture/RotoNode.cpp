#include <host/picture/RotoNode.h>

#include <host/file/Format.h>
#include <host/operation/Planes.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <tuple>

namespace host {

/// A part of the window, and its pixels.
struct RotoNode::Bucket
{
    int x, y; ///< its place in the grid
    Block block;
};

RotoNode::RotoNode(Shapes shapes, const Settings& settings) : shapes_(std::move(shapes)), settings_(settings)
{
    notes_ = shapes_.notes;
}

Image RotoNode::imageOf(const Image* like) const
{
    int width = 1920, height = 1080;
    if (settings_.size) {
        std::tie(width, height) = *settings_.size;
    } else if (shapes_.size) {
        width = static_cast<int>(std::clamp(std::round((*shapes_.size)[0]), 1.0, 1e6));
        height = static_cast<int>(std::clamp(std::round((*shapes_.size)[1]), 1.0, 1e6));
    }
    const int channels = settings_.channels == Channels::RGBA  ? 4
                         : settings_.channels == Channels::RGB ? 3
                                                               : 1;
    Image image = newImage(width, height, channels, format_, "kreiluge roto");
    if (like != nullptr) {
        image.data = like->data;
        image.display = like->display;
    }
    return image;
}

Picture RotoNode::plan(const std::vector<const Picture*>& inputs)
{
    const Image* const like = inputs.empty() ? nullptr : &inputs.front()->first();
    format_ = settings_.format.value_or(like != nullptr ? like->planes.front().format
                                                        : static_cast<unsigned char>(PXL_FORMAT_half));
    Image image = imageOf(like);
    image.straight = false;
    present_ = image.planes.front().present();
    window_ = image.data;
    const Canvas canvas = canvasOf(image);
    side_ = canvas.side();
    prepare(canvas);
    return {"roto", {std::move(image)}};
}

Canvas RotoNode::canvasOf(const Image& image) const
{
    Canvas canvas;
    canvas.window = image.data;
    canvas.origin = {static_cast<double>(image.display.x), static_cast<double>(image.display.y)};
    canvas.matte = settings_.channels == Channels::Matte;
    if (shapes_.size)
        canvas.unit = {image.display.width / (*shapes_.size)[0], image.display.height / (*shapes_.size)[1]};
    return canvas;
}

/// Has all shapes ready for all moments.
void RotoNode::prepare(const Canvas& canvas)
{
    for (Shape& shape : shapes_.shapes) {
        shape.feather += settings_.feather / canvas.scale();
        shape.dropoff = settings_.dropoff.value_or(shape.dropoff);
    }
    const bool moves = std::any_of(shapes_.shapes.begin(), shapes_.shapes.end(),
                                   [](const Shape& shape) { return shape.moves(); });
    const int count = moves ? settings_.moments : 1;
    for (int i = 0; i < count; ++i) {
        const double time = settings_.frame + settings_.shutter * ((i + 0.5) / count - 0.5);
        Moment moment;
        for (const Shape& shape : shapes_.shapes)
            moment.push_back(i > 0 && !shape.moves()
                                 ? moments_.front()[moment.size()]
                                 : std::make_shared<ShapeFill>(shape, shape.at(time), canvas));
        moments_.push_back(std::move(moment));
    }
}

/// Draws the shapes of a moment over black, in the format of the bucket.
void RotoNode::draw(Bucket& bucket, const Moment& moment, Feed& feed) const
{
    const TIL_Plane codes = codesOf(bucket.block.format, {});
    LentTiles tiles(bucket.block, codes);
    tiles.list.clearToBlack(false);
    feed.run([&](void*, int thread) {
        for (const auto& shape : moment)
            if (shape->touches(bucket.x, bucket.y))
                shape->draw(tiles.list, bucket.x, bucket.y, thread);
        return 1;
    });
}

/// Whether a bucket differs between the moments.
bool RotoNode::movesIn(const Bucket& bucket) const
{
    return std::any_of(moments_.begin(), moments_.end(), [&](const Moment& moment) {
        for (size_t i = 0; i < moment.size(); ++i)
            if (shapes_.shapes[i].moves() && moment[i]->touches(bucket.x, bucket.y))
                return true;
        return false;
    });
}

/// The mean of all moments, in the order of time: sums of that many floats are exact in double, or nearly.
void RotoNode::drawMean(Bucket& bucket, Feed& feed) const
{
    Bucket moment{bucket.x, bucket.y, feed.blank(bucket.block.rect, PXL_FORMAT_float32, present_)};
    const auto count = static_cast<size_t>(bucket.block.count());
    std::array<std::vector<double>, 4> sums;
    for (size_t i = 0; i < moments_.size(); ++i) {
        draw(moment, moments_[i], feed);
        for (size_t c = 0; c < 4; ++c) {
            sums[c].resize(moment.block.has(c) ? count : 0);
            const float* const values = moment.block.values<float>(c);
            for (size_t k = 0; k < sums[c].size(); ++k)
                sums[c][k] += static_cast<double>(values[k]);
        }
    }
    for (size_t c = 0; c < 4; ++c)
        for (size_t k = 0; k < sums[c].size(); ++k)
            moment.block.values<float>(c)[k] =
                static_cast<float>(sums[c][k] / static_cast<double>(moments_.size()));
    feed.give(std::move(bucket.block));
    bucket.block = feed.converted(std::move(moment.block), format_);
}

Block RotoNode::pixels(size_t, const Window& rect, Feed& feed) const
{
    const int side = side_;
    Block block = feed.blank(rect, format_, present_);
    const int x = rect.x - window_.x, y = rect.y - window_.y; // buckets count from the window's corner
    for (int by = y / side; by * side < y + rect.height; ++by)
        for (int bx = x / side; bx * side < x + rect.width; ++bx) {
            const Window whole{bx * side, by * side, std::min(side, window_.width - bx * side),
                               std::min(side, window_.height - by * side)};
            Bucket bucket{bx, by, feed.blank(whole, format_, present_)};
            if (moments_.size() > 1 && movesIn(bucket))
                drawMean(bucket, feed);
            else
                draw(bucket, moments_.front(), feed);
            const Window part = intersection(whole, {x, y, rect.width, rect.height});
            const auto bytes =
                static_cast<size_t>(part.width) * static_cast<size_t>(PXLbytesPerElement(format_));
            for (size_t c = 0; c < 4; ++c)
                for (int row = part.y; block.has(c) && row < part.y + part.height; ++row)
                    std::memcpy(static_cast<char*>(block.data[c].data()) +
                                    block.offset(part.x + window_.x, row + window_.y),
                                bucket.block.pixel(c, part.x, row), bytes);
            feed.give(std::move(bucket.block));
        }
    return block;
}

} // namespace host
