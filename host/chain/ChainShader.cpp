#include <host/chain/ChainShader.h>

#include <RE/RE_ProgramText.h>
#include <RU/pixelfunc/RU_GPUPixelEngine.h>
#include <TIL/TIL_TileList.h>

#include <algorithm>
#include <cctype>
#include <vector>

namespace host {

namespace {

std::string heading(const Chain& chain, const UT_String& program)
{
    std::string chainText = chain.text(); // paths may hold anything
    std::replace_if(
        chainText.begin(), chainText.end(), [](unsigned char c) { return std::iscntrl(c) != 0; }, ' ');
    std::string text = "// " + chainText + "\n// Functions are numbered in this order.\n";
    if (program.view().find("num_comps") != std::string_view::npos)
        text += "// num_comps: channels of the picture\n";
    for (const std::string& other : chain.differencesOnGPU())
        text += "// Differs from the CPU's picture: " + other + "\n";
    return text;
}

/// The head of a chain, also of one without functions. Where all functions leave out the same components, only
/// the chain says so.
RU_PixelFunction& headOf(const Chain::Built& built)
{
    static RU_PixelFunction unchanged;
    for (RU_PixelFunction* function = built.head.get(); function != nullptr; function = function->next())
        if (!function->isPartialScope())
            function->setScope(built.components.data());
    return built.head != nullptr ? *built.head : unchanged;
}

} // namespace

std::string shaderFunction(const Chain& chain, const std::string& name, int channels)
{
    const Chain::Built built = chain.build();
    UT_String program, functions, statements;
    const std::unique_ptr<RE_OGLComputeGPU> text = REmakeProgramText(program, name.c_str());
    headOf(built).buildShader(text.get(), channels, functions, statements);
    text->setConstant("num_comps", RE_GPU_INT32, 1, &channels, 1, false);
    text->setProgram("", functions.append(statements.view()).buffer(), true);
    return heading(chain, program) + program.buffer();
}

std::string shaderProgram(const Chain& chain, unsigned char format, int channels)
{
    const Chain::Built built = chain.build();
    UT_String program;
    const TIL_Plane plane(format, static_cast<unsigned char>(channels));
    TIL_TileList tiles(plane, 0, 0, 0, 0);
    std::vector<TIL_Tile> data;
    data.reserve(4);
    for (int c = 0; c < channels; ++c)
        tiles.tiles[c] = &data.emplace_back(format, 1, 1);
    RE_OGLComputeGPU::setMaker([&program] { return REmakeProgramText(program); });
    RU_GPUPixelEngine engine(&headOf(built));
    engine.pixelAdjust(&tiles, &tiles, 0.0f, nullptr, -1, nullptr);
    RE_OGLComputeGPU::setMaker({});
    return heading(chain, program) + program.buffer();
}

} // namespace host
