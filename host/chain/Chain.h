#pragma once

#include <host/chain/Functions.h>
#include <host/file/Components.h>

#include <RU/pixelfunc/RU_PixelFunction.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace host {

/// A list of functions with their arguments, as people write it: "gamma 2.2, add 0.1 @rg". A function's name
/// is followed by its arguments, by position or as name=value; a value per component is written 1:0.9:0.8 or
/// 1:0.9:0.8:1; a scope after @ names the components that the function applies to, all of them without. Keys
/// of curves may be words of their own, also behind commas: "curve 0 0, 0.5 0.6, 1 1, gamma 2". Quotes hold
/// paths together.
class Chain
{
public:
    static Chain fromText(const std::string& text);

    /// A list of objects, or an object with such a list under "chain":
    ///     [{"function": "gamma", "gamma": 2.2}, {"function": "add", "add": [0.1, 0, 0, 0], "scope": "rg"}]
    /// `source` names the text in messages.
    static Chain fromJson(const std::string& json, const std::string& source);
    /// Paths in the file are relative to where it lies.
    static Chain fromJsonFile(const std::string& path);

    /// The one of the two that is given; throws a usage error for both and for none.
    static Chain fromTextOrFile(const std::optional<std::string>& text,
                                const std::optional<std::string>& file);

    /// The chain in full, in the two forms that it is read in.
    std::string text() const;
    std::string json() const;

    bool isEmpty() const { return steps_.empty(); }

    /// What becomes of the colour space that an image is tagged with, as Function::colourSpace says it.
    std::optional<std::string> colourSpace() const;

    /// What the functions do on a GPU that they do not do on the CPU: "curve: it sags between keys".
    std::vector<std::string> differencesOnGPU() const;

    /// The linked functions of a chain that is not empty, and the components that they write.
    struct Built
    {
        std::vector<std::shared_ptr<const void>> parts; ///< that the functions borrow
        std::unique_ptr<RU_PixelFunction> head;
        Components components{};
    };
    Built build() const;

private:
    struct Step
    {
        const Function* function = nullptr;
        std::vector<Value> values; ///< one per argument
        Components scope{true, true, true, true};
    };
    class StepReader;

    Made make(const Step& step) const;

    std::vector<Step> steps_;
    std::string source_; ///< the file that it was read from, if any
};

} // namespace host
