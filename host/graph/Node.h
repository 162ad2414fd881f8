#pragma once

#include <host/file/Picture.h>
#include <host/graph/Feed.h>

#include <cstddef>
#include <string>
#include <vector>

namespace host {

/// A plane of one of a node's inputs.
struct Use
{
    size_t input, plane;
};

/// What a plane is made of.
struct Recipe
{
    std::vector<Use> uses;
    bool asIs = false; ///< nothing but a copy of the one plane that it uses, in the same window and format
};

/// A step of a graph. Headers flow down, needs flow up, pixels flow down. Planes go by their places among those
/// of all parts of a picture.
class Node
{
public:
    virtual ~Node() = default;

    /// What comes out, from what goes in; throws for inputs that do not fit. Asked once, before anything else.
    virtual Picture plan(const std::vector<const Picture*>& inputs) = 0;

    virtual Recipe recipe(size_t plane) const = 0;

    /// The window of an input that is read for a window of the output; it may go beyond the input's.
    virtual Window needs(size_t /*input*/, const Window& window) const { return window; }

    /// A plane's pixels in a rectangle, in any format; any number of threads may ask.
    virtual Block pixels(size_t plane, const Window& rect, Feed& feed) const = 0;

    /// Whether few large rectangles are less work than many small ones.
    virtual bool likesStrips() const { return false; }

    /// What got lost or was converted on the way, one line each.
    const std::vector<std::string>& notes() const { return notes_; }

    /// The names of the planes that it works on; empty for all.
    const std::vector<std::string>& planes() const { return planes_; }

protected:
    std::vector<std::string> notes_;
    std::vector<std::string> planes_;
};

} // namespace host
