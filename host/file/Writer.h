#pragma once

#include <host/file/Bands.h>
#include <host/file/Image.h>
#include <host/text/Error.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace host {

/// Whether the file format of a path can place a data window apart from the display window. True also where
/// there is no such format.
bool holdsWindow(const std::string& path, const Window& data);

/// Whether a file format keeps colours straight, true, or multiplied by alpha, false; nothing where it says
/// which of the two they are.
std::optional<bool> straightIn(const std::string& path);

/// Writes an image file from top to bottom. The rows go to a temporary file beside the target, which takes
/// the target's name only when it is complete; an object destroyed before that leaves nothing behind.
class Writer
{
public:
    /// Opens a file for an image with these windows, channels and header. The extension picks the file
    /// format.
    Writer(const std::string& path, const Image& image);
    ~Writer();
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    /// Rows `yBegin` up to but not including `yEnd` of a band, the next ones, in whole blocks of the file but
    /// little at a time: `checkStopped` is called before each and may throw.
    void write(const Band& band, int yBegin, int yEnd, const std::function<void()>& checkStopped);

    /// Ends the file and gives it its name.
    void commit();

    /// What the file format cannot say, one line each.
    const std::vector<std::string>& notes() const { return notes_; }

private:
    void open(const Image& image);
    void close();
    void check(bool done);
    void abandon();
    void tryOnePixel(const Image& image);
    void noteLosses(const Image& image);
    [[noreturn]] void fail(const std::string& reason, Error::Kind kind = Error::Kind::Write) const;

    struct File;
    std::unique_ptr<File> file_;
    int top_ = 0, rowsPerCall_ = 1;
    std::string path_;
    std::string target_; ///< with links resolved
    std::string temporary_;
    std::vector<std::string> notes_;
};

} // namespace host
