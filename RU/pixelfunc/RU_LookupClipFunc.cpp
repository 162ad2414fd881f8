#include <RU/pixelfunc/RU_LookupClipFunc.h>

#include <CL/CL_Clip.h>
#include <RU/pixelfunc/ru_FunctionForms.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

/// A search for the keys around a time. A row of the array is a track: its keys as (time, value).
constexpr const char* clipFunction = "FLOAT clipTrack%n(FLOAT time, INT track, INT keys)\n"
                                     "{\n"
                                     "    INT below = 0;\n"
                                     "    INT above = keys - 1;\n"
                                     "    VEC2 first = ABS_clip%n(0, track);\n"
                                     "    if (!(time >= first.x))\n"
                                     "        return first.y;\n"
                                     "    while (above - below > 1) {\n"
                                     "        INT middle = (below + above) / 2;\n"
                                     "        if (time < ABS_clip%n(middle, track).x)\n"
                                     "            above = middle;\n"
                                     "        else\n"
                                     "            below = middle;\n"
                                     "    }\n"
                                     "    VEC2 low = ABS_clip%n(below, track);\n"
                                     "    VEC2 high = ABS_clip%n(above, track);\n"
                                     "    if (!(time < high.x))\n"
                                     "        return high.y;\n"
                                     "    return mix(low.y, high.y, (time - low.x) / (high.x - low.x));\n"
                                     "}\n";

int64_t entriesOf(const CL_Track* track)
{
    return track != nullptr ? track->entries() : 0;
}

} // namespace

int RU_LookupClipFunc::trackCount() const
{
    return clip_ != nullptr ? clip_->trackCount() : 0;
}

const CL_Track* RU_LookupClipFunc::track(int component) const
{
    const int count = trackCount();
    return count > 0 ? clip_->track(component % count) : nullptr;
}

bool RU_LookupClipFunc::needAllComponents() const
{
    return trackCount() > 1;
}

RU_ScalarForm RU_LookupClipFunc::getPixelFunction() const
{
    return lookUp;
}

RU_RowForm RU_LookupClipFunc::getRowFunction() const
{
    return {lookUpRow};
}

float RU_LookupClipFunc::lookUp(RU_PixelFunction* function, float value, int component)
{
    const CL_Track* track = static_cast<RU_LookupClipFunc*>(function)->track(component);
    return track != nullptr ? ru_oneNaN(track->evaluate(value)) : 0.0f;
}

void RU_LookupClipFunc::lookUpRow(RU_PixelFunction* function, const float* in, float* out, int64_t count,
                                  int component)
{
    const CL_Track* track = static_cast<RU_LookupClipFunc*>(function)->track(component);
    if (track == nullptr)
        ru_runRow(ru_Lookup{}, in, out, count);
    else if (track->isSampled())
        ru_runRow(ru_Lookup{track->channel()}, in, out, count);
    else
        std::transform(in, in + count, out, [track](float v) { return ru_oneNaN(track->evaluate(v)); });
}

void RU_LookupClipFunc::getPixelShader(UT_String& body)
{
    const std::string index = std::to_string(getFunctionIndex());
    const int rows = std::min(trackCount(), 4);
    int64_t width = 0;
    for (int row = 0; row < rows; ++row)
        width = std::max(width, entriesOf(track(row)));

    std::vector<float> keys(static_cast<size_t>(2 * width * rows));
    for (int row = 0; row < rows; ++row)
        for (int64_t i = 0; i < entriesOf(track(row)); ++i) {
            const CL_Key key = track(row)->entry(i);
            const auto at = static_cast<size_t>(2 * (row * width + i));
            keys[at] = key.time;
            keys[at + 1] = key.value;
        }
    if (width > 0) {
        UT_String code(clipFunction);
        code.substitute("%n", index);
        addFunction(("clipTrack" + index).c_str(), code.buffer());
        addArray(("clip" + index).c_str(), RE_GPU_FLOAT32, 2, static_cast<int>(width), rows, keys.data());
    }

    static constexpr const char* lookedUp[] = {"value.r", "value.b", "value.g", "value.a"}; // a departure
    body = "value = VEC4(";
    for (int c = 0; c < 4; ++c) {
        body.append(c == 0 ? "" : ",\n             ");
        const int64_t keyCount = entriesOf(track(c));
        if (keyCount == 0)
            body.append("0.0f");
        else
            body.append("clipTrack" + index + "(" + lookedUp[c] + ", " + std::to_string(c % rows) + ", " +
                        std::to_string(keyCount) + ")");
    }
    body.append(");\n");
}
