#pragma once

#include <host/file/Band.h>
#include <host/file/Picture.h>
#include <host/text/Error.h>

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
    /// Opens a file for parts with these windows, channels and headers. The extension picks the file format.
    /// Pixels are written as they come; the file says what `straight` says, where it can.
    Writer(const std::string& path, const Picture& picture);
    Writer(const std::string& path, const Image& image);
    ~Writer();
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    /// Rows `yBegin` up to but not including `yEnd` of a band of the current part, the next ones, in whole
    /// blocks of the file but little at a time: `checkStopped` is called before each and may throw.
    void write(const Band& band, int yBegin, int yEnd, const std::function<void()>& checkStopped);

    /// Ends the current part and goes on to the next.
    void nextPart();

    /// Ends the file and makes sure that it is whole.
    void finish();

    /// Gives the file its name; finishes it where that is still to be done.
    void commit();

    /// What the file format cannot say, one line each.
    const std::vector<std::string>& notes() const { return notes_; }

private:
    struct File;

    void checkTarget() const;
    void open(const Picture& picture);
    void beginPart();
    void checkRows() const;
    void check(bool done);
    void abandon();
    void noteLosses(const Image& image);
    [[noreturn]] void fail(const std::string& reason, Error::Kind kind = Error::Kind::Write) const;

    std::unique_ptr<File> file_;
    std::string path_;
    std::string target_; ///< with links resolved
    std::string temporary_;
    bool isFinished_ = false;
    std::vector<std::string> notes_;
};

} // namespace host
