#pragma once

#include <host/file/Picture.h>

#include <memory>
#include <string>
#include <vector>

namespace host {

/// Reads an image file in the formats that it is stored in. Nothing is converted: alpha stays associated or
/// not as the file has it. Rows may be read again, but reading down is what is fast.
class Reader
{
public:
    /// Opens a file and reads its headers. Of a file with several images that are not parts of one picture, a
    /// path such as "file.tif[2]" chooses one.
    explicit Reader(const std::string& path);
    ~Reader();

    const Picture& picture() const { return picture_; }

    /// Rows `yBegin` up to but not including `yEnd`, of a part's data window, as interleaved pixels.
    void read(size_t part, int yBegin, int yEnd, void* pixels);

    /// Up to where to read in one call from row `y` on: whole blocks of the file, but little enough to stop
    /// soon.
    int callEnd(size_t part, int y) const;

    /// The same of the first part.
    const Image& image() const { return picture_.first(); }
    void read(int yBegin, int yEnd, void* pixels) { read(0, yBegin, yEnd, pixels); }
    int callEnd(int y) const { return callEnd(0, y); }

    /// What the pixels are not that their file could make one expect, one line each.
    const std::vector<std::string>& notes() const { return notes_; }

private:
    struct File;

    void addPart(int index);
    void namePlanes();
    void note(const Image& image);
    void goTo(size_t part, int y);
    void readFileTiles(size_t part, int y);
    [[noreturn]] void fail(const std::string& reason) const;

    Picture picture_;
    std::unique_ptr<File> file_;
    std::vector<std::string> notes_;
};

/// The file that an input path means: without the index in brackets.
std::string inputFile(const std::string& path);

} // namespace host
