// Times chains of pixel functions on the CPU, on one thread, and on what OpenGL there is, and prints a table.
// With --once everything runs once and no times are shown.
#include <bench/bench.h>

#include <RE/RE_OpenGL.h>
#include <RU/pixelfunc/RU_AddFunc.h>
#include <RU/pixelfunc/RU_GPUPixelEngine.h>
#include <RU/pixelfunc/RU_GPUTiming.h>
#include <RU/pixelfunc/RU_GammaFunc.h>
#include <RU/pixelfunc/RU_HSVConvertFunc.h>
#include <RU/pixelfunc/RU_PixelEngine.h>
#include <UT/UT_StopWatch.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>

namespace {

using namespace bench;

/// The seconds of a call: all, text, compile, upload, run, read back.
struct Times
{
    static constexpr size_t count = 6;

    static Times now()
    {
        const RE_GPUTimes gpu = REgpuTimes();
        return {{0.0, RU_GPUTiming::buildShader().total(), gpu.compile, gpu.upload, gpu.run, gpu.readBack}};
    }

    std::array<double, count> seconds{};
};

Times timesOf(RU_Algorithm& engine, Planes& planes)
{
    const Times before = Times::now();
    const UT_StopWatch watch;
    engine.pixelAdjust(&planes.out, &planes.in, 0.0f, nullptr, 0, nullptr);
    const double all = watch.getTime();
    Times after = Times::now();
    for (size_t i = 1; i < Times::count; ++i)
        after.seconds[i] -= before.seconds[i];
    after.seconds[0] = all;
    return after;
}

/// The medians of several calls.
Times median(RU_Algorithm& engine, Planes& planes, int calls)
{
    std::vector<Times> all(static_cast<size_t>(calls));
    for (Times& times : all)
        times = timesOf(engine, planes);
    Times middle;
    for (size_t i = 0; i < Times::count; ++i) {
        std::vector<double> step(all.size());
        std::transform(all.begin(), all.end(), step.begin(),
                       [i](const Times& times) { return times.seconds[i]; });
        std::nth_element(step.begin(), step.begin() + calls / 2, step.end());
        middle.seconds[i] = step[static_cast<size_t>(calls / 2)];
    }
    return middle;
}

std::unique_ptr<RU_PixelFunction> gammaThenAdd()
{
    auto head = std::make_unique<RU_GammaFunc>(gammaValue);
    head->setNext(new RU_AddFunc(addValue));
    return head;
}

std::unique_ptr<RU_PixelFunction> hsv()
{
    const float saturation[] = {satScale, 0.0f}, value[] = {valScale, 0.0f};
    return std::make_unique<RU_HSVConvertFunc>(RU_HSV_ADJUST, hueShift, saturation, value, false);
}

/// The first size comes with a program that is new, the others know it.
void printRows(const char* name, const char* formatName, PXL_Format format, RU_PixelFunction& chain,
               int calls)
{
    RU_PixelEngine cpu(&chain);
    RU_GPUPixelEngine gpu(&chain);
    for (const Size& size : {Size{"200", 200, 200}, hd, uhd}) {
        if (calls == 1 && size.width > hd.width)
            continue;
        Planes planes(format, 4, size);
        const Times first = timesOf(gpu, planes), here = timesOf(cpu, planes),
                    later = median(gpu, planes, calls);
        const double again = calls > 1 ? median(cpu, planes, calls).seconds[0] : here.seconds[0];
        if (calls == 1)
            continue;
        std::printf("| %s, %s, %s | %.2f | %.1f | %.1f |", name, formatName, size.name, again * 1e3,
                    first.seconds[0] * 1e3, first.seconds[2] * 1e3);
        for (const size_t step : {0u, 1u, 3u, 4u, 5u})
            std::printf(" %.2f |", later.seconds[step] * 1e3);
        std::printf("\n");
    }
}

} // namespace

int main(int argc, char** argv)
{
    const int calls = argc > 1 && std::strcmp(argv[1], "--once") == 0 ? 1 : 21;
    if (!REfindGPU().found) {
        std::printf("no OpenGL: %s\n", REfindGPU().refused.buffer());
        return 0;
    }
    if (calls > 1)
        std::printf(
            "%s\n\nMilliseconds for four components.\n\n"
            "| chain, format, size | CPU | first | compile | later | text | upload | run | read back |\n"
            "|---|---:|---:|---:|---:|---:|---:|---:|---:|\n",
            REfindGPU().name.buffer());
    for (const auto& [name, make] : {std::pair("gamma, add", &gammaThenAdd), {"hsv", &hsv}}) {
        const std::unique_ptr<RU_PixelFunction> chain = make();
        printRows(name, "uint8", PXL_FORMAT_uint8, *chain, calls);
        printRows(name, "half", PXL_FORMAT_half, *chain, calls);
        printRows(name, "float", PXL_FORMAT_float32, *chain, calls);
    }
    return 0;
}
