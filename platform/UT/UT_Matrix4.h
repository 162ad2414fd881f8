#pragma once

#include <UT/UT_Vector4.h>

/// Four by four floats, row by row. Points are rows: they stand to the left of the matrix.
struct UT_Matrix4
{
    float m[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
};

/// v times m.
[[gnu::always_inline]] inline UT_Vector4 rowVecMult(const UT_Vector4& v, const UT_Matrix4& m)
{
    return {v.x * m.m[0][0] + v.y * m.m[1][0] + v.z * m.m[2][0] + v.w * m.m[3][0],
            v.x * m.m[0][1] + v.y * m.m[1][1] + v.z * m.m[2][1] + v.w * m.m[3][1],
            v.x * m.m[0][2] + v.y * m.m[1][2] + v.z * m.m[2][2] + v.w * m.m[3][2],
            v.x * m.m[0][3] + v.y * m.m[1][3] + v.z * m.m[2][3] + v.w * m.m[3][3]};
}
