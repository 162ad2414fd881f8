#include <GU/GU_PrimPoly.h>
#include <GU/gu_Build.h>

GU_PrimPoly* GU_PrimPoly::build(GEO_Detail* detail, int64_t vertices, int open, int appendPoints)
{
    if (vertices < 1)
        return nullptr;
    return gu_addToDetail(detail, std::make_unique<GU_PrimPoly>(vertices, open != 0), appendPoints != 0);
}
