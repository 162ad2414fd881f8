#pragma once

/// Three floats.
struct UT_Vector3
{
    float x = 0.0f, y = 0.0f, z = 0.0f;
};
