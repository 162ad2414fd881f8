#pragma once

#include <host/graph/Job.h>
#include <host/graph/Operation.h>

namespace host {

/// An operation on one plane of an image; the components that it does not write are copied.
class PlaneCook : public PlaneWork
{
public:
    PlaneCook(const Image& in, const Image& out, size_t plane, const Operation& operation,
              const CookSettings& settings);

    void run(const std::vector<Band>& in, Band& out, const Window& rect, Workspace& workspace) const override;

    /// True when the operation writes any component of the plane.
    bool writes() const { return written_ != Components{}; }

private:
    void adjust(const Band& in, Band& out, const Window& rect, Workspace& workspace) const;
    void filter(const Band& in, Band& out, const Window& rect, Workspace& workspace) const;

    const Operation& operation_;
    unsigned char workFormat_;
    PlanePixels in_, out_;
    Components written_{}; ///< components that the operation writes here
    PlaneCopy others_;
    TIL_Plane plane_;
};

} // namespace host
