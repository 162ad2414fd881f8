#pragma once

#include <host/file/Image.h>

#include <string>
#include <vector>

namespace host {

/// What files of a format give back of what is written to them, as it is. Nothing else is written.
struct FileFormat
{
    enum class Windows {
        None,     ///< the data window alone, from 0,0 on
        Positive, ///< both, where that of display begins at 0,0 and no pixel lies above or left of it
        All
    };
    enum class Alpha { Associated, Straight, Both };
    enum class Check {
        Watched, ///< every write is seen to succeed
        LastRow, ///< the format's own library sees that, but for the end
        AllRows  ///< nobody does: all rows are read back
    };

    std::string name;                  ///< as the file layer has it
    std::vector<unsigned char> depths; ///< storage formats
    std::vector<int> channels;         ///< how many; empty: any number
    Windows windows;
    Alpha alpha;
    Check check;
    bool approximates = false; ///< pixels come back similar, not the same
    int longestSide = 0;       ///< in pixels; 0: as long as memory lasts

    bool holdsParts() const { return name == "openexr"; }
    bool holdsNames() const { return name == "openexr"; }
    bool holdsMixedDepths() const { return name == "openexr"; }

    /// Whether it can place a data window apart from the display window.
    bool holdsWindow(const Window& data, const Window& display) const;
};

/// The format that a path's extension stands for, null for none that is written.
const FileFormat* fileFormatOf(const std::string& path);

/// The format of a name, null for none that is written.
const FileFormat* fileFormatNamed(const std::string& name);

/// The formats that are written.
const std::vector<FileFormat>& fileFormats();

} // namespace host
