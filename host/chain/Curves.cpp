#include <host/chain/Curves.h>

#include <host/chain/Values.h>

namespace host {

std::vector<CurveKeys> curvesOfText(const std::string& text)
{
    return readValue({"keys", Argument::Type::Curves}, text).curves();
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
