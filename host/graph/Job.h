#pragma once

#include <host/graph/Cook.h>
#include <host/graph/PlanePixels.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace host {

/// What is done to one plane of an image, tile by tile; any number of threads may call it, each with its own
/// workspace.
class PlaneWork
{
public:
    virtual ~PlaneWork() = default;

    /// Fills the plane's part of a rectangle from the bands of all inputs. `out` may be the first of them
    /// where the plan says so.
    virtual void run(const std::vector<Band>& in, Band& out, const Window& rect,
                     Workspace& workspace) const = 0;
};

/// Some components of a plane of the first input as they are; 0 beyond its window.
class PlaneCopy : public PlaneWork
{
public:
    PlaneCopy(const Image& in, const Image& out, size_t plane,
              const Components& copied = {true, true, true, true});

    void run(const std::vector<Band>& in, Band& out, const Window& rect, Workspace& workspace) const override;

private:
    PlanePixels in_, out_;
    Components copied_;
};

/// How a job makes its output.
struct Plan
{
    Image output;
    std::vector<std::unique_ptr<PlaneWork>> works; ///< run one after the other on each tile
    bool inPlace = false;            ///< the first input's bands go out, with what the works change in them
    RU_Border border;                ///< that the works read around the output
    std::vector<std::string> planes; ///< by name, those worked on
    std::vector<std::string> notes;
};

/// Turns image files into another one. They pass through memory in bands of tile rows; while threads work on
/// one band, the next one is read and the one before is written. `plan` is asked once all inputs are open.
CookReport runJob(const std::vector<std::string>& inputs, const std::string& output,
                  const CookSettings& settings, const std::function<Plan(const std::vector<Image>&)>& plan);

/// For each plane of an image, whether the settings want it worked on.
std::vector<bool> choosePlanes(const Image& image, const CookSettings& settings);

/// Throws unless the black and white points suit a plane.
void checkPoints(const Plane& plane, const std::string& path, const CookSettings& settings);

/// How the library is to read the codes of a plane.
TIL_Plane codesOf(unsigned char format, const CookSettings& settings);

} // namespace host
