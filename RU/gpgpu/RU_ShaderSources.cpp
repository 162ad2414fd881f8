#include <RU/gpgpu/RU_ShaderSources.h>

#include <RU/gpgpu/ru_ShaderFile.h>

/// A getter, its parameters (the output is `text`), its file, and what it puts for which marker, in order:
/// pairs such as {"%s", name}.
#define RU_SHADER_SOURCE(FUNCTION, PARAMETERS, FILE, ...)                                                    \
    void FUNCTION PARAMETERS                                                                                 \
    {                                                                                                        \
        static ru_ShaderFile file(FILE);                                                                     \
        file.write(text, {__VA_ARGS__});                                                                     \
    }

RU_SHADER_SOURCE(RUgetToHSVConvertGPU, (UT_String & text), "gpgpu_toHSV")
RU_SHADER_SOURCE(RUgetFromHSVConvertGPU, (UT_String & text), "gpgpu_fromHSV")
