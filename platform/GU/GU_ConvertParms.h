#pragma once

/// How curves become polygons.
struct GU_ConvertParms
{
    /// The level of detail: no polygon lies further than 0.1 / lod from its curve, as long as 1024 edges for a piece
    /// of the curve do. Anything but a finite number above 0 counts as 1.
    float lod = 1.0f;
};
