#pragma once

#include <host/graph/Cook.h>

#include <string>

namespace host {

struct PlateSettings
{
    int width = 1920;
    int height = 1080;
    unsigned char format = PXL_FORMAT_half;
    bool alpha = false; ///< with an alpha channel that fades out towards the corners
    int threads = defaultThreads();
    const CancelSwitch* cancel = nullptr;
    std::function<void(int64_t rows, int64_t total)> progress;
};

/// Draws a test plate: colour bars, a zone plate up to the finest line, a lit sphere, patches, a ramp,
/// exposure steps of six stops either side of middle grey, and line pairs. Float and half hold linear light
/// with values up to 16; integers hold it with the sRGB curve, clamped.
void drawPlate(const std::string& path, const PlateSettings& settings);

/// The usual format of a file's extension: half for EXR, float for HDR, uint16 for TIFF and PNG, uint8 for
/// others.
unsigned char usualFormat(const std::string& path);

} // namespace host
