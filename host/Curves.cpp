#include <host/Curves.h>

#include <host/Text.h>
#include <host/Values.h>

namespace host {

std::vector<CurveKeys> curvesOfText(const std::string& text)
{
    KeyWords all;
    for (const std::string& part : splitText(text, ',')) {
        bool first = true;
        for (const std::string& word : wordsOf(part)) {
            all.add(word, first);
            first = false;
        }
    }
    return readValue({"keys", Argument::Type::Curves}, all.text()).curves();
}

std::vector<RU_ColorCurve> makeCurves(const std::vector<CurveKeys>& curves, bool extend)
{
    std::vector<RU_ColorCurve> made;
    for (const CurveKeys& keys : curves) {
        RU_ColorCurve& curve = made.emplace_back();
        for (const CurveKey& key : keys)
            curve.addPoint(key.x, key.y, key.weight);
        curve.create(extend);
    }
    return made;
}

} // namespace host
