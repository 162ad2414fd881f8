#include <host/shape/Freehand.h>

#include <host/text/Error.h>
#include <host/text/Names.h>
#include <host/text/Text.h>

#include <algorithm>
#include <cmath>

namespace host {

namespace {

UT_Vector2Array samplesOf(const std::string& path)
{
    constexpr float most = 1e6f;
    UT_Vector2Array samples;
    const std::vector<std::string> lines = splitText(readTextFile(path, "stroke"), '\n');
    for (size_t i = 0; i < lines.size(); ++i) {
        std::string line = splitText(lines[i], '#').front();
        if (i == 0 && line.starts_with("\xEF\xBB\xBF")) // spreadsheets mark UTF-8
            line.erase(0, 3);
        if (isBlank(line))
            continue;
        std::replace(line.begin(), line.end(), ',', ' ');
        const std::vector<std::string> words = wordsOf(line);
        UT_Vector2 sample;
        if (words.size() != 2 || !readNumber(words[0], sample.x) || !readNumber(words[1], sample.y) ||
            std::max(std::abs(sample.x), std::abs(sample.y)) > most)
            refuse("'" + path + "', line " + std::to_string(i + 1) + ": '" + joined(wordsOf(lines[i]), " ") +
                   "' is no sample; expected x, y in pixels, up to " + numberText(most));
        samples.append(sample);
    }
    return samples;
}

/// The same with samples along the lines from one to the next, which the curve is to pass too: between places far apart
/// nothing else would hold it.
UT_Vector2Array dense(const UT_Vector2Array& stroke, const FreehandSettings& settings)
{
    constexpr double most = 32.0; // parts of a line
    UT_Vector2Array samples;
    for (int64_t i = 0; i < stroke.entries(); ++i) {
        const bool isLast = i + 1 == stroke.entries();
        const UT_Vector2 from = stroke(i), line = stroke(isLast ? 0 : i + 1) - from;
        const double parts =
            isLast && settings.open ? 1.0 : std::ceil(line.length() / std::max(settings.tolerance, 1.0));
        const int count = static_cast<int>(std::clamp(parts, 1.0, most));
        for (int k = 0; k < count; ++k)
            samples.append(from + line * (static_cast<float>(k) / static_cast<float>(count)));
    }
    return samples;
}

} // namespace

Shapes readFreehand(const std::string& path, const FreehandSettings& settings)
{
    const UT_Vector2Array samples = samplesOf(path);
    UT_Vector2Array points, ins, outs;
    RU_RotoSpline::buildFreehand(dense(samples, settings), points, ins, outs,
                                 static_cast<float>(settings.tolerance), !settings.open, false);
    const int64_t least = settings.open ? 2 : 3;
    if (points.entries() < 2 || samples.entries() < least)
        refuse("'" + path + "': " + std::to_string(samples.entries()) + " samples; expected " +
               (settings.open ? "two" : "three (two with --open)") +
               " at least, further apart than the tolerance");
    Shape shape;
    shape.fill = settings.open ? RU_ROTO_OPEN : RU_ROTO_FILLED;
    shape.width = settings.width;
    shape.keys.emplace_back();
    for (int64_t i = 0; i < points.entries(); ++i) {
        const auto place = [i](const UT_Vector2Array& of) { return Place{of(i).x, of(i).y}; };
        shape.keys.front().points.push_back({place(points), place(ins), place(outs)});
    }
    return {{}, {std::move(shape)}, {}};
}

} // namespace host
