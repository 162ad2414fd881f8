#include "Commands.h"
#include "Listing.h"

#include <RE/RE_OpenGL.h>

#include <cstdio>
#include <memory>
#include <sstream>

namespace tool {

namespace {

std::vector<std::string> linesOf(const UT_String& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text.buffer());
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

int show(bool json)
{
    const RE_GPUReport& report = REfindGPU();
    if (json)
        printJson({{"found", report.found},
                   {"name", report.found ? host::Json(report.name.buffer()) : host::Json()},
                   {"software", report.software},
                   {"refused", linesOf(report.refused)}});
    else {
        std::printf("%s%s\n", report.found ? report.name.buffer() : "no OpenGL 4.3",
                    report.software ? ": in software, slower than the CPU by itself" : "");
        for (const std::string& line : linesOf(report.refused))
            std::printf("  refused %s\n", line.c_str());
    }
    return report.found ? exitDone : exitNoDevice;
}

} // namespace

Command gpuCommand()
{
    Command command{
        "gpu", "Tell what OpenGL there is to compute on, and why other was refused",
        "It exits with 6 where there is none. KREILUGE_GPU in the environment may be off, software "
        "(not the\n"
        "devices of the machine), or auto."};
    auto json = std::make_shared<bool>(false);
    command.add({{"--json", json.get(), "as JSON"}});
    command.run = [json] { return show(*json); };
    return command;
}

} // namespace tool
