#pragma once

#include <host/chain/Chain.h>

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
    /// What it reads around its output.
    RU_Border border() const { return isCopy() ? RU_Border{} : algorithm->border(); }

    Chain::Built chain; ///< what the algorithm evaluates; outlives it
    std::unique_ptr<RU_Algorithm> algorithm;
    Components written{};            ///< the components that it writes; others are copied
    bool readsAllComponents = false; ///< also those that it does not write
    bool isFilter = false;           ///< of regions; else a pixel operation
};

} // namespace host
