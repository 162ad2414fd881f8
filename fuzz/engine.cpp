// The pixel engine and the forms of pixel functions, with random chains of all of them.
#include "Bytes.h"

#include <host/chain/Functions.h>
#include <host/text/Error.h>

#include <RU/pixelfunc/RU_PixelEngine.h>
#include <RU/pixelfunc/RU_PixelFunction.h>

namespace {

host::Value valueOf(const host::Argument& argument, Bytes& bytes)
{
    using Type = host::Argument::Type;
    if (argument.mayBeNone() && bytes.flag())
        return {};
    std::vector<host::CurveKeys> curves(argument.type == Type::Curves && bytes.flag() ? 3 : 1);
    switch (argument.type) {
    case Type::Switch:
    case Type::Choice:
        return host::Value(static_cast<float>(bytes.below(std::max<size_t>(2, argument.choices.size()))));
    case Type::Matrix:
        return host::Value(bytes.numbers<16>());
    case Type::OptionalCurve:
    case Type::Curves:
        for (host::CurveKeys& keys : curves)
            for (int key = 2 + bytes.below(4); key > 0; --key)
                keys.push_back({bytes.number(), bytes.number(), bytes.number()});
        return host::Value(curves);
    case Type::File:
        host::refuse("no files here");
    default:
        return host::Value(bytes.numbers<4>());
    }
}

void checkForms(const RU_PixelFunction& head, Bytes& bytes)
{
    constexpr int count = 37;
    const Row<float> before[4] = {{bytes, count}, {bytes, count}, {bytes, count}, {bytes, count}};
    for (int c = 0; c < 4 && !head.areAllComponentsNeeded(); ++c)
        checkSingles(before[c], count, [&](float* to, int, int n) {
            n == 1 ? void(*to = head.processValue(*to, c)) : head.processRow(to, to, n, c);
        });
    Row<float> rows[4] = {before[0], before[1], before[2], before[3]};
    Row<float> pixels[4] = {before[0], before[1], before[2], before[3]};
    float* row[4];
    float* pixel[4];
    for (int c = 0; c < 4; ++c) {
        const bool there = bytes.below(5) != 0;
        row[c] = there ? rows[c].data() : nullptr;
        pixel[c] = there ? pixels[c].data() : nullptr;
    }
    head.processRows(row, row, count);
    for (int i = 0; i < count; ++i) {
        head.processValues(pixel);
        for (float*& component : pixel)
            component += component != nullptr ? 1 : 0;
    }
    for (int c = 0; c < 4; ++c)
        check(rows[c].same(pixels[c]), "the vector row form is the vector form");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
try {
    Bytes bytes(data, size);
    std::vector<std::shared_ptr<const void>> parts; // outlive the chain
    std::unique_ptr<RU_PixelFunction> head;
    for (int n = 1 + bytes.below(4); n > 0; --n) {
        const host::Function& function =
            host::functions()[static_cast<size_t>(bytes.below(host::functions().size()))];
        host::Values values;
        for (const host::Argument& argument : function.arguments)
            values.push_back(valueOf(argument, bytes));
        host::Made made = function.make(values);
        const bool scope[4] = {bytes.below(4) != 0, bytes.flag(), bytes.flag(), bytes.flag()};
        made.function->setScope(scope);
        made.function->setNext(head.release());
        head = std::move(made.function);
        parts.push_back(std::move(made.parts));
    }
    head->buildPixelEngine();
    head->buildVectorEngine();
    if (bytes.below(4) != 0) {
        checkForms(*head, bytes);
    } else {
        RU_PixelEngine engine(head.get());
        checkRows(bytes, [&](reference::Scene& scene, int) {
            engine.pixelAdjust(&scene.out.list, scene.inList(), 0.0f, nullptr, -1, nullptr);
        });
    }
    return 0;
} catch (const host::Error&) { // arguments that make no sense
    return 0;
}
