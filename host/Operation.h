#pragma once

#include <host/Chain.h>

#include <RU/framework/RU_Algorithm.h>

#include <memory>

namespace host {

/// What is done to the planes of an image: an algorithm, what it needs and what it writes.
struct Operation
{
    /// A chain of pixel functions; an empty one copies.
    static Operation grade(const Chain& chain);

    struct EdgeSettings
    {
        bool prewitt = false;
        float gain = 1.0f;
        float corner = 1.0f;
    };
    static Operation edge(const EdgeSettings& settings, const Components& components);

    bool isCopy() const { return algorithm == nullptr; }
    bool isFilter() const { return border > 0; }

    Chain::Built chain; ///< what the algorithm evaluates; outlives it
    std::unique_ptr<RU_Algorithm> algorithm;
    Components written{};            ///< the components that it writes; others are copied
    bool readsAllComponents = false; ///< also those that it does not write
    int border = 0;                  ///< pixels of input around the output
};

} // namespace host
