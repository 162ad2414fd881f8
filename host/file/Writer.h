#pragma once

#include <host/file/Band.h>
#include <host/file/Picture.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace host {

/// Whether the file format of a path can place a data window apart from the display window. True also where
/// there is no such format.
bool holdsWindow(const std::string& path, const Window& data, const Window& display);

/// The same for every display window.
bool holdsWindow(const std::string& path, const Window& data);

/// Whether files of a path's format hold straight colours only, or associated ones only; nothing where they
/// can hold both or where there is no such format.
std::optional<bool> straightIn(const std::string& path);

/// Writes an image file, part by part and each from top to bottom. The rows go to a temporary file beside the
/// target, which takes the target's name only when it is complete; an object destroyed before that leaves
/// nothing behind.
class Writer
{
public:
    virtual ~Writer() = default;

    /// Rows `yBegin` up to but not including `yEnd` of a band of the current part, the next ones, in whole
    /// blocks of the file but little at a time: `checkStopped` is called before each and may throw.
    virtual void write(const Band& band, int yBegin, int yEnd, const std::function<void()>& checkStopped) = 0;

    /// Ends the current part and goes on to the next.
    virtual void nextPart() = 0;

    /// Ends the file and makes sure that it is whole.
    virtual void finish() = 0;

    /// Gives the file its name; finishes it where that is still to be done.
    virtual void commit() = 0;

    /// What the file format cannot say, one line each.
    const std::vector<std::string>& notes() const { return notes_; }

protected:
    std::vector<std::string> notes_;
};

/// Opens a file for parts with these windows, channels and headers. The extension picks the file format.
/// Pixels are written as they come; the file says what `straight` says, where it can.
std::unique_ptr<Writer> createWriter(const std::string& path, const Picture& picture);

} // namespace host
