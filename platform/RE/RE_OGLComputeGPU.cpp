#include <RE/RE_OGLComputeGPU.h>

#include <RE/RE_OpenGL.h>

#include <utility>

namespace {

RE_OGLComputeGPU::Maker& otherMaker()
{
    static RE_OGLComputeGPU::Maker maker;
    return maker;
}

} // namespace

std::unique_ptr<RE_OGLComputeGPU> RE_OGLComputeGPU::create()
{
    return otherMaker() ? otherMaker()() : REmakeOpenGLCompute();
}

void RE_OGLComputeGPU::setMaker(Maker maker)
{
    otherMaker() = std::move(maker);
}
