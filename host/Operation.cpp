#include <host/Operation.h>

#include <host/Error.h>

#include <RU/filter/RU_EdgeDetect.h>
#include <RU/pixelfunc/RU_PixelEngine.h>

#include <cmath>

namespace host {

Operation Operation::grade(const Chain& chain)
{
    Operation operation;
    if (chain.isEmpty())
        return operation;
    Chain::Built built = chain.build();
    operation.written = built.components;
    operation.readsAllComponents = built.head->areAllComponentsNeeded();
    operation.algorithm = std::make_unique<RU_PixelEngine>(built.head.get());
    operation.functions = std::move(built.head);
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
    operation.border = 1;
    return operation;
}

} // namespace host
