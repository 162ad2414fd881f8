#include <RU/gpgpu/RU_ShaderSources.h>

#include <RU/gpgpu/ru_ShaderFile.h>

#define RU_SHADER_DEFINE(FUNCTION, PARAMETERS, FILE, WHAT, ...)                                              \
    void FUNCTION PARAMETERS                                                                                 \
    {                                                                                                        \
        ru_writeShaderFile(text, FILE, {__VA_ARGS__});                                                       \
    }
RU_FOR_EACH_SHADER_SOURCE(RU_SHADER_DEFINE)
