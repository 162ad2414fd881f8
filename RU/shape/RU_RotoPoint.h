#pragma once

/// A control point of a RU_RotoSpline, of nine floats. Handles are places, not offsets; only Bezier curves use them.
struct RU_RotoPoint
{
    RU_RotoPoint(float pointIndex, float px, float py, float pointAlpha, float inX, float inY, float outX,
                 float outY, float pointFeather)
        : x(px), y(py), alpha(pointAlpha), inHandleX(inX), outHandleX(outX), inHandleY(inY), outHandleY(outY),
          index(pointIndex), feather(pointFeather)
    {
    }

    float x, y;
    float alpha;                 ///< carried along into what is built
    float inHandleX, outHandleX; ///< in: towards the point before; out: towards the next one
    float inHandleY, outHandleY;
    float index;   ///< points go by it, from the lowest
    float feather; ///< how far the soft edge reaches here, beyond what is common to all; below 0 inwards
};
