#include <host/file/FileFormats.h>

#include <PXL/PXL_Format.h>

#include <algorithm>

namespace host {

const std::vector<FileFormat>& fileFormats()
{
    constexpr unsigned char u8 = PXL_FORMAT_uint8, u16 = PXL_FORMAT_uint16, u32 = PXL_FORMAT_uint32,
                            half = PXL_FORMAT_half, f32 = PXL_FORMAT_float32;
    constexpr auto none = FileFormat::Windows::None, positive = FileFormat::Windows::Positive,
                   all = FileFormat::Windows::All;
    constexpr auto associated = FileFormat::Alpha::Associated, straight = FileFormat::Alpha::Straight,
                   both = FileFormat::Alpha::Both;
    constexpr auto watched = FileFormat::Check::Watched, lastRow = FileFormat::Check::LastRow,
                   allRows = FileFormat::Check::AllRows;
    // clang-format off
    static const std::vector<FileFormat> formats = {
        {"openexr",  {u32, half, f32},    {},           all,      associated, watched},
        {"tiff",     {u8, u16, u32, f32}, {},           positive, both,       lastRow}, // links its directories by reading them
        {"png",      {u8, u16},           {1, 2, 3, 4}, none,     straight,   watched},
        {"jpeg",     {u8},                {1, 3},       none,     straight,   watched, true, 65500},
        {"dpx",      {u8, u16, f32},      {1, 3, 4},    positive, associated, watched},
        {"bmp",      {u8},                {1, 3, 4},    none,     straight,   watched},
        {"targa",    {u8},                {1, 2, 3, 4}, none,     straight,   watched, false, 65535},
        {"sgi",      {u8, u16},           {1, 2, 3, 4}, none,     associated, allRows, false, 65535},
        {"rla",      {f32},               {1, 3, 4},    all,      associated, allRows, false, 32767}, // integers are packed wrongly
        {"pnm",      {u8},                {1, 3},       none,     straight,   watched},
        {"hdr",      {f32},               {3},          none,     straight,   watched, true},
        {"jpeg2000", {u8, u16},           {1, 3, 4},    none,     straight,   allRows}, // the smallest images come out empty
        {"webp",     {u8},                {3},          none,     straight,   watched, true, 16383},
        {"heif",     {u8},                {3, 4},       none,     straight,   lastRow, true, 16384},
        {"ico",      {u8},                {4},          none,     straight,   allRows, false, 256},
        {"fits",     {u8, f32},           {1, 3, 4},    none,     both,       allRows},
        {"zfile",    {f32},               {1},          none,     straight,   allRows, false, 32767},
    };
    // clang-format on
    return formats;
}

bool FileFormat::holdsWindow(const Window& data, const Window& display) const
{
    if (windows == Windows::Positive) {
        const bool sameSize = data.width == display.width && data.height == display.height;
        return display.x == 0 && display.y == 0 && data.x >= 0 && data.y >= 0 &&
               (data == display || !sameSize); // a size of its own is what TIFF knows a display window by
    }
    return windows == Windows::All;
}

const FileFormat* fileFormatNamed(const std::string& name)
{
    const std::vector<FileFormat>& formats = fileFormats();
    const auto found = std::find_if(formats.begin(), formats.end(),
                                    [&](const FileFormat& format) { return format.name == name; });
    return found != formats.end() ? &*found : nullptr;
}

} // namespace host
