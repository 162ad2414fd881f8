#include <host/picture/NoiseNode.h>

#include <host/file/Format.h>
#include <host/operation/Planes.h>

namespace host {

Picture NoiseNode::plan(const std::vector<const Picture*>& inputs)
{
    const Image* const like = inputs.empty() ? nullptr : &inputs.front()->first();
    format_ = settings_.format.value_or(like != nullptr ? like->planes.front().format
                                                        : static_cast<unsigned char>(PXL_FORMAT_half));
    Image image = newImage(settings_.width, settings_.height, 3, format_, "kreiluge noise");
    if (like != nullptr) {
        image.data = like->data;
        image.display = like->display;
    }
    noise_.initialize(0.0f);
    return {"noise", {std::move(image)}};
}

Block NoiseNode::pixels(size_t, const Window& rect, Feed& feed) const
{
    Block block = feed.blank(rect, format_, {true, true, true, false});
    const TIL_Plane codes = codesOf(format_, {});
    const LentTiles tiles(block, codes);
    TIL_TileList list = tiles.list;
    feed.run([&](void* token, int thread) {
        return noise_.generate(&list, static_cast<float>(settings_.time), token, thread, nullptr);
    });
    return block;
}

} // namespace host
