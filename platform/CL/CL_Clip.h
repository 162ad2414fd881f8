#pragma once

#include <CL/CL_Track.h>

#include <memory>
#include <utility>
#include <vector>

/// Tracks in order. It owns them; some may be missing.
class CL_Clip
{
public:
    /// Null adds a missing track.
    void append(std::unique_ptr<CL_Track> track) { tracks_.push_back(std::move(track)); }

    int trackCount() const { return static_cast<int>(tracks_.size()); }
    /// Null where the track is missing.
    const CL_Track* track(int index) const { return tracks_[static_cast<size_t>(index)].get(); }

private:
    std::vector<std::unique_ptr<CL_Track>> tracks_;
};
