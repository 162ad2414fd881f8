#include <host/file/Image.h>

#include <host/text/Error.h>

#include <algorithm>
#include <limits>

namespace host {

namespace {

struct ChannelRole
{
    enum class Kind { Colour, Luminance, Alpha, Depth, Other };
    Kind kind = Kind::Other;
    int component = -1; ///< -1: the next free one

    bool isColour() const { return kind == Kind::Colour || kind == Kind::Luminance; }
};

struct NameParts
{
    std::string layer, rest;
};

NameParts splitName(const std::string& name)
{
    const size_t dot = name.rfind('.');
    return dot == std::string::npos ? NameParts{"", name}
                                    : NameParts{name.substr(0, dot), name.substr(dot + 1)};
}

/// The role that a channel's name gives it, but for small y and z, which belong to vectors.
ChannelRole roleOfName(const std::string& name)
{
    using Kind = ChannelRole::Kind;
    static const struct
    {
        std::vector<std::string> names;
        ChannelRole role;
    } roles[] = {{{"R", "r", "red", "Red"}, {Kind::Colour, 0}},
                 {{"Y", "I", "L"}, {Kind::Luminance, 0}},
                 {{"G", "g", "green", "Green"}, {Kind::Colour, 1}},
                 {{"B", "b", "blue", "Blue"}, {Kind::Colour, 2}},
                 {{"A", "a", "alpha", "Alpha"}, {Kind::Alpha, 3}},
                 {{"Z", "depth", "Depth"}, {Kind::Depth, 0}},
                 {{"ZBack"}, {Kind::Depth, 1}}};
    for (const auto& entry : roles)
        if (std::find(entry.names.begin(), entry.names.end(), name) != entry.names.end())
            return entry.role;
    return {};
}

/// Layers of depth alone are usually called so.
bool isDepth(const std::string& layer)
{
    const std::string name = splitName(layer).rest;
    return name == "depth" || name == "Depth" || name == "z" || name == "Z";
}

/// The channels of a file by their names.
class Roles
{
public:
    explicit Roles(const std::vector<Channel>& channels) : channels_(channels) {}

    /// Y and Z beside an X are a vector too.
    ChannelRole role(const Channel& channel) const
    {
        const auto [layer, rest] = splitName(channel.name);
        const auto isX = [](const Channel& other) { return splitName(other.name).rest == "X"; };
        const bool ambiguous = rest == "Y" || rest == "Z";
        return ambiguous && has(layer, isX) ? ChannelRole() : roleOfName(rest);
    }

    std::string planeName(const Channel& channel) const
    {
        using Kind = ChannelRole::Kind;
        const auto [layer, rest] = splitName(channel.name);
        const auto isColour = [this](const Channel& other) { return role(other).isColour(); };
        switch (role(channel).kind) {
        case Kind::Colour:
        case Kind::Luminance:
        case Kind::Alpha:
            return !layer.empty() ? layer : has(layer, isColour) ? "color" : "alpha";
        case Kind::Depth:
            return layer.empty() ? "depth" : isDepth(layer) ? layer : layer + ".depth";
        default:
            return layer.empty() || has(layer, isColour) ? channel.name : layer;
        }
    }

private:
    /// True when a layer has a channel that passes a test.
    template <class Test>
    bool has(const std::string& layer, Test test) const
    {
        return std::any_of(channels_.begin(), channels_.end(), [&](const Channel& channel) {
            return splitName(channel.name).layer == layer && test(channel);
        });
    }

    const std::vector<Channel>& channels_;
};

/// The component that a plane has free for a channel; -1 for none.
int freeComponent(const Plane& plane, unsigned char format, int wanted)
{
    if (plane.format != format)
        return -1;
    for (int c = 0; c < 4; ++c)
        if (plane.channel[static_cast<size_t>(c)] < 0 && (wanted < 0 || wanted == c))
            return c;
    return -1;
}

/// What planes and the rest of the host make of a channel of an image that is a layer by itself.
std::string nameInLayer(const std::string& name, const std::string& layer)
{
    return layer.empty() || name.find('.') != std::string::npos ? name : layer + "." + name;
}

std::string unusedName(const std::vector<Plane>& planes, const std::string& name)
{
    const auto used = [&](const std::string& candidate) {
        return std::any_of(planes.begin(), planes.end(), [&](const Plane& p) { return p.name == candidate; });
    };
    std::string candidate = name;
    for (int i = 2; used(candidate); ++i)
        candidate = name + "-" + std::to_string(i);
    return candidate;
}

} // namespace

Window intersection(const Window& a, const Window& b)
{
    const int x = std::max(a.x, b.x), y = std::max(a.y, b.y);
    const int64_t width = std::min(int64_t{a.x} + a.width, int64_t{b.x} + b.width) - x;
    const int64_t height = std::min(int64_t{a.y} + a.height, int64_t{b.y} + b.height) - y;
    if (width <= 0 || height <= 0)
        return {x, y, 0, 0};
    return {x, y, static_cast<int>(width), static_cast<int>(height)};
}

Window enclosing(const Window& a, const Window& b)
{
    if (a.isEmpty() || b.isEmpty())
        return a.isEmpty() ? b : a;
    const int x = std::min(a.x, b.x), y = std::min(a.y, b.y);
    const int64_t width = std::max(int64_t{a.x} + a.width, int64_t{b.x} + b.width) - x;
    const int64_t height = std::max(int64_t{a.y} + a.height, int64_t{b.y} + b.height) - y;
    if (std::max(width, height) > std::numeric_limits<int>::max())
        refuse("two windows lie too far apart: " + describe(a) + " and " + describe(b));
    return {x, y, static_cast<int>(width), static_cast<int>(height)};
}

std::string describe(const Window& window)
{
    return std::to_string(window.width) + "x" + std::to_string(window.height) + " at " +
           std::to_string(window.x) + "," + std::to_string(window.y);
}

std::vector<std::string> Plane::channelNames(const std::vector<Channel>& channels) const
{
    std::vector<std::string> names;
    for (const int index : channel)
        if (index >= 0)
            names.push_back(channels[static_cast<size_t>(index)].name);
    return names;
}

std::vector<Plane> groupChannels(const std::vector<Channel>& channels)
{
    const Roles roles(channels);
    std::vector<Plane> planes;
    for (size_t i = 0; i < channels.size(); ++i) {
        const Channel& channel = channels[i];
        const ChannelRole role = roles.role(channel);
        const std::string name = roles.planeName(channel);
        const auto fits = [&](const Plane& plane) {
            return (plane.name == name || plane.name.starts_with(name + "-")) &&
                   freeComponent(plane, channel.format, role.component) >= 0;
        };
        auto plane = std::find_if(planes.begin(), planes.end(), fits);
        if (plane == planes.end()) {
            planes.push_back({unusedName(planes, name), channel.format});
            plane = planes.end() - 1;
        }
        const int component = freeComponent(*plane, channel.format, role.component);
        plane->channel[static_cast<size_t>(component)] = static_cast<int>(i);
        plane->colour = plane->colour || role.isColour();
        plane->luminance = plane->luminance || role.kind == ChannelRole::Kind::Luminance;
        plane->alpha = plane->alpha || role.kind == ChannelRole::Kind::Alpha;
    }
    return planes;
}

void Image::arrange()
{
    pixelBytes = 0;
    for (Channel& channel : channels) {
        channel.offset = pixelBytes;
        pixelBytes += PXLbytesPerElement(channel.format);
    }
    std::vector<Channel> named = channels;
    for (Channel& channel : named)
        channel.name = nameInLayer(channel.name, layer);
    planes = groupChannels(named);
}

bool Image::hasAlpha() const
{
    return std::any_of(planes.begin(), planes.end(), [](const Plane& plane) { return plane.alpha; });
}

std::vector<std::string> Image::planeNames() const
{
    std::vector<std::string> names;
    for (const Plane& plane : planes)
        names.push_back(plane.name);
    return names;
}

std::string Image::layerOf(const Plane& plane) const
{
    const auto present =
        std::find_if(plane.channel.begin(), plane.channel.end(), [](int c) { return c >= 0; });
    return splitName(nameInLayer(channels[static_cast<size_t>(*present)].name, layer)).layer;
}

const Plane* Image::alphaOf(const Plane& plane) const
{
    if (plane.alpha)
        return &plane;
    const Plane* first = nullptr;
    for (const Plane& other : planes) {
        if (other.alpha && layerOf(other) == layerOf(plane))
            return &other;
        if (other.alpha && first == nullptr)
            first = &other;
    }
    return plane.colour ? nullptr : first;
}

Image Image::withFormat(unsigned char format) const
{
    return withFormats(std::vector<unsigned char>(planes.size(), format));
}

Image Image::withFormats(const std::vector<unsigned char>& formats) const
{
    Image other = *this;
    for (size_t p = 0; p < planes.size(); ++p)
        for (const int channel : planes[p].channel)
            if (channel >= 0)
                other.channels[static_cast<size_t>(channel)].format = formats[p];
    other.arrange();
    other.planes = planes; // a plane stays one also where the conversion would let two grow together
    for (size_t p = 0; p < planes.size(); ++p)
        other.planes[p].format = formats[p];
    return other;
}

} // namespace host
