#pragma once

#include <all_pixel_functions.h>
#include <reference/Functions.h>

#include <cmath>
#include <initializer_list>
#include <utility>

namespace reference {

/// Exchanges red and green, the simplest thing that needs all components.
class Swap : public RU_PixelFunction
{
public:
    bool needAllComponents() const override { return true; }
    RU_VectorForm getVectorFunction() const override
    {
        return [](RU_PixelFunction*, float** components, const bool* scope) {
            if (components[0] != nullptr && components[1] != nullptr && scope[0] && scope[1])
                std::swap(*components[0], *components[1]);
        };
    }
};

/// Links functions and owns them through the head.
class Chain
{
public:
    Chain(std::initializer_list<RU_PixelFunction*> functions) : head_(*functions.begin())
    {
        RU_PixelFunction* last = nullptr;
        for (RU_PixelFunction* function : functions) {
            if (last != nullptr)
                last->setNext(function);
            last = function;
        }
    }
    Chain(const Chain&) = delete;
    Chain& operator=(const Chain&) = delete;
    ~Chain() { delete head_; }

    RU_PixelFunction* head() const { return head_; }
    RU_PixelFunction* operator->() const { return head_; }

private:
    RU_PixelFunction* head_;
};

/// A chain, and its exact result for a pixel.
struct KnownChain
{
    std::string name;
    std::shared_ptr<Chain> chain;
    std::function<Pixel(Pixel)> exact;

    bool dependent() const { return (*chain)->isComponentDependent(); }
    bool perPixel() const { return (*chain)->areAllComponentsNeeded(); }
    double component(double v, int c) const { return exact({v, v, v, v})[static_cast<size_t>(c)]; }
};

/// What stands for a component that is absent. Those that are NaN are without the sign here.
inline const double absent = std::copysign(NAN, -1.0);
inline bool isAbsent(double v)
{
    return std::isnan(v) && std::signbit(v);
}

/// One for each way that the engine has to treat chains.
inline std::vector<KnownChain> knownChains()
{
    static constexpr float mult[] = {1.5f, -0.5f, 0.75f, 1.0f}, add[] = {-0.25f, 0.75f, 0.125f, 0.0f};
    static constexpr float bends[] = {2.0f, 0.5f, 1.25f, 0.8f};
    static constexpr bool redAndBlue[] = {true, false, true, false};
    const auto each = [](auto one) {
        return [one](Pixel p) {
            for (size_t c = 0; c < 4; ++c)
                p[c] = one(p[c], c);
            return p;
        };
    };
    const auto chain = [](std::initializer_list<RU_PixelFunction*> functions) {
        return std::make_shared<Chain>(functions);
    };
    auto* const partial = new RU_AddFunc(0.25f);
    partial->setScope(redAndBlue);
    return {
        {"alike", chain({new RU_ScaleFunc(1.5f, 0.375f), new RU_AddFunc(-0.0625f)}),
         each([](double v, size_t) { return (v - 0.375) * 1.5 + 0.375 - 0.0625; })},
        {"different", chain({new RU_MAddFunc(mult, add)}),
         each([](double v, size_t c) { return v * mult[c] + add[c]; })},
        {"scoped", chain({partial}), each([](double v, size_t c) { return redAndBlue[c] ? v + 0.25 : v; })},
        {"pixels", chain({new RU_MultFunc(0.875f), new Swap, new RU_AddFunc(0.125f)}),
         [](Pixel p) {
             if (!isAbsent(p[0]) && !isAbsent(p[1]))
                 std::swap(p[0], p[1]);
             for (double& v : p)
                 v = v * 0.875 + 0.125;
             return p;
         }},
        {"bent pixels", chain({new RU_GammaFunc(bends[0], bends[1], bends[2], bends[3]), new Swap}),
         [](Pixel p) {
             for (size_t c = 0; c < 4; ++c)
                 p[c] = isAbsent(p[c]) ? p[c]
                                       : std::copysign(std::pow(std::abs(p[c]), 1 / double{bends[c]}), p[c]);
             if (!isAbsent(p[0]) && !isAbsent(p[1]))
                 std::swap(p[0], p[1]);
             return p;
         }}};
}

} // namespace reference
