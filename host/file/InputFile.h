#pragma once

#include <string>

namespace host {

/// What an input path means.
struct InputFile
{
    std::string file;
    int index = -1; ///< of the image in the file; -1 where the path chooses none

    explicit InputFile(const std::string& path);
};

/// Throws unless there is a regular file that may be read: to open anything else could wait for ever. `path`
/// is what the error calls it.
void checkReadable(const std::string& file, const std::string& path);

/// Whether a JPEG file lacks its end, which its readers fill with grey.
bool isCutJpeg(const std::string& file);

/// Whether a PSD file holds inks, which the file layer converts without a word.
bool isCmykPsd(const std::string& file);

} // namespace host
