#include <host/graph/Operation.h>

#include <host/text/Error.h>

#include <RU/filter/RU_EdgeDetect.h>
#include <RU/pixelfunc/RU_PixelEngine.h>

#include <cmath>

namespace host {

Operation Operation::grade(const Chain& chain)
{
    Operation operation;
    if (chain.isEmpty())
        return operation;
    operation.chain = chain.build();
    operation.written = operation.chain.components;
    operation.readsAllComponents = operation.chain.head->areAllComponentsNeeded();
    operation.algorithm = std::make_unique<RU_PixelEngine>(operation.chain.head.get());
    return operation;
}

Operation Operation::edge(const EdgeSettings& settings, const Components& components)
{
    if (!std::isfinite(settings.gain) || !std::isfinite(settings.corner))
        refuse("edge: gain and corner are finite numbers");
    auto edge = std::make_unique<RU_EdgeDetect>();
    edge->sobelWeights = settings.prewitt ? 0 : 1;
    edge->edgeGain = settings.gain;
    edge->cornerWeight = settings.corner;
    Operation operation;
    operation.algorithm = std::move(edge);
    operation.written = components;
    operation.isFilter = true;
    return operation;
}

} // namespace host
