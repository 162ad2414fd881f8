#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace host {

/// The frames of a list such as "1001-1100x2,1200", each once; throws a usage error for anything else.
std::vector<int64_t> parseFrames(const std::string& text);

/// True when a file's name has a place for the frame number: "####" or "%04d".
bool hasFramePlace(const std::string& path);

/// The frames that exist on disk for a path with a place for the frame number, in order.
std::vector<int64_t> existingFrames(const std::string& pattern);

/// The path with the number in its place, padded with zeros.
std::string framePath(const std::string& path, int64_t frame);

} // namespace host
