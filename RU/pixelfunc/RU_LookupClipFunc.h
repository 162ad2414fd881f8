#pragma once

#include <RU/pixelfunc/RU_PixelFunction.h>

class CL_Clip;
class CL_Track;

/// The value that a track of a channel clip has at time v: component c in track c modulo their number, 0
/// where that track is missing.
///
/// The shader departs from it on purpose: it looks up blue for the green result, and green for the blue one.
///
/// Null: 0 everywhere.
/// Ownership: the clip stays the caller's and must outlive the function.
/// Cost: sampled tracks run row by row; keyed ones search their keys for every value. With more than one
/// track no tables are used.
class RU_API RU_LookupClipFunc : public RU_PixelFunction
{
public:
    explicit RU_LookupClipFunc(const CL_Clip* clip) : clip_(clip) {}

    /// More than one track.
    bool needAllComponents() const override;
    RU_ScalarForm getPixelFunction() const override;
    RU_RowForm getRowFunction() const override;
    void getPixelShader(UT_String& body) override;

private:
    static float lookUp(RU_PixelFunction* function, float value, int component);
    static void lookUpRow(RU_PixelFunction* function, const float* in, float* out, int64_t count,
                          int component);
    int trackCount() const;
    const CL_Track* track(int component) const; ///< null: missing

    const CL_Clip* clip_;
};
