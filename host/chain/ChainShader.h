#pragma once

#include <host/chain/Chain.h>

#include <string>

namespace host {

/// GLSL that does what the functions of a chain do on the GPU, for pictures of 1 to 4 channels.
///
/// A function vec4 NAME(vec4 value) for shaders of GLSL 4.00.
std::string shaderFunction(const Chain& chain, const std::string& name, int channels);
/// The compute shader that RU_GPUPixelEngine runs for a storage format, with all channels as outputs. Not while
/// another thread makes computations.
std::string shaderProgram(const Chain& chain, unsigned char format, int channels);

} // namespace host
