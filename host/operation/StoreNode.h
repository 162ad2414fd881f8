#pragma once

#include <host/operation/Planes.h>

#include <optional>

namespace host {

/// Brings a picture into the form that a file holds it in: other formats, colours multiplied by alpha or not,
/// another data window. What an image lacks in its new window is 0. Where nothing changes every bit stays.
class StoreNode : public Node
{
public:
    struct Settings
    {
        std::optional<unsigned char> depth;
        std::optional<bool> straight;
        bool displayWindow = false; ///< the data window becomes the display window
    };

    explicit StoreNode(const Settings& settings) : settings_(settings) {}

    Picture plan(const std::vector<const Picture*>& inputs) override;
    Recipe recipe(size_t plane) const override { return works_[plane].recipe; }
    Block pixels(size_t plane, const Window& rect, Feed& feed) const override;

private:
    struct PlaneWork
    {
        Recipe recipe;
        Components present{};
        unsigned char format = 0;
        size_t alpha = 0;
        unsigned char alphaFormat = 0; ///< that it is stored in
        void (*adapt)(float*, const float*, int64_t) = nullptr;
    };

    void setWindow(Image& image);

    Settings settings_;
    std::vector<PlaneWork> works_;
};

} // namespace host
