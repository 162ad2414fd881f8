#include <host/operation/Device.h>

#include <host/operation/OperationRows.h>
#include <host/text/Error.h>
#include <host/text/Names.h>

#include <RE/RE_OpenGL.h>

#include <algorithm>

namespace host {

namespace {

std::string inOneLine(std::string lines)
{
    for (size_t at = lines.find('\n'); at != std::string::npos; at = lines.find('\n', at))
        lines.replace(at, 1, "; ");
    return lines;
}

/// Why the picture would be computed later, or be another one.
std::string reasonForCPU(const Call& call, const Chain& chain)
{
    if (call.planeSettings().hasPoints())
        return "--black and --white count there alone";
    if (const std::vector<std::string> others = chain.differencesOnGPU(); !others.empty())
        return "the GPU's picture differs: " + joined(others, "; ");
    const RE_GPUReport& found = REfindGPU();
    if (!found.found)
        return "there is no GPU: " + inOneLine(found.refused.buffer());
    return found.software ? std::string("there is no GPU but OpenGL in software, ") + found.name.buffer()
                          : "";
}

} // namespace

Parameter deviceParameter()
{
    Parameter device = text("--device",
                            "where to compute; auto: on the GPU where that is faster and gives the same "
                            "picture but for last bits",
                            "WHERE", "cpu");
    device.argument.choices = {"cpu", "gpu", "auto"};
    return device;
}

bool takesGPU(const Call& call, const Chain& chain, std::vector<std::string>& notes)
{
    enum { cpu, gpu, automatic };
    const size_t device = choiceOf(call, "device");
    const std::string& name = call.operation().name;
    if (device == cpu || chain.isEmpty())
        return false;
    if (device == automatic) {
        const std::string reason = reasonForCPU(call, chain);
        if (!reason.empty())
            notes.push_back(name + ": computed on the CPU, as " + reason);
        return reason.empty();
    }
    const RE_GPUReport& found = REfindGPU();
    if (!found.found)
        throw Error(Error::Kind::Device, "--device gpu: there is none: " + inOneLine(found.refused.buffer()));
    if (call.planeSettings().hasPoints())
        refuse(
            "--device gpu: --black and --white count on the CPU alone; leave them out, or say --device cpu");
    if (found.software)
        notes.push_back(name + ": computed by OpenGL in software, " + found.name.buffer());
    if (const std::vector<std::string> others = chain.differencesOnGPU(); !others.empty())
        notes.push_back(name + ": differs from the CPU's picture: " + joined(others, "; "));
    return true;
}

} // namespace host
