#pragma once

/// Four floats.
struct UT_Vector4
{
    float x = 0.0f, y = 0.0f, z = 0.0f, w = 0.0f;
};
