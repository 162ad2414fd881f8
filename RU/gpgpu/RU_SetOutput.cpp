#include <RU/gpgpu/RU_SetOutput.h>

#include <RU/gpgpu/ru_OutputTiles.h>

void RUsetOutput(RE_OGLComputeGPU& compute, const TIL_TileList& tiles, const char* variable, UT_String& code)
{
    for (int c = 0; c < 4; ++c) {
        if (!ru_setOutputTile(compute, tiles, c))
            continue;
        code.append("OUT_").append(ru_componentNames[c]).append("(").append(variable);
        if (c > 0 || tiles.plane->componentCount != 1)
            code.append(".").append(ru_componentLetters[c]);
        code.append(");\n");
    }
}
