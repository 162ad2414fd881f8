#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

class RU_PixelFunction;

namespace host {

/// One argument of a function.
struct Argument
{
    enum class Type {
        Number,
        PerComponent,   ///< one number, or one each for red, green, blue and alpha
        OptionalNumber, ///< a number or "none"
        Switch,         ///< "on" or "off"
        Choice,         ///< one of a few words
        Colour,         ///< numbers for red, green and blue
        Matrix,         ///< 3 or 4 rows of as many numbers, or 4 of 3, applied to a row from its left
        OptionalCurve,  ///< the keys of a curve, or "none"
        Curves,         ///< the keys of one curve, or of one each for red, green, blue and perhaps alpha
        File,           ///< a path
        Pair,           ///< two numbers
        Text            ///< anything
    };
    std::string name;
    Type type = Type::Number;
    bool required = false;
    float preset = 0.0f; ///< without the argument; for alpha where only three components are given
    std::vector<std::string> choices{};
    std::optional<float> least{}, most{}; ///< of a number
    std::vector<std::string> meanings{};  ///< of the choices, where their names say too little

    bool mayBeNone() const { return type == Type::OptionalNumber || type == Type::OptionalCurve; }
};

struct CurveKey
{
    float x = 0.0f, y = 0.0f;
    float weight = 0.0f; ///< 0 smooth, 1 straight to the neighbours
    bool operator==(const CurveKey&) const = default;
};

using CurveKeys = std::vector<CurveKey>;

/// What an argument was given as, or its preset.
class Value
{
public:
    using Matrix = std::array<float, 16>; ///< row by row

    Value() = default;
    explicit Value(float number) : Value(std::array{number, number, number, number}) {}
    explicit Value(const std::array<float, 4>& numbers) : content_(numbers), given_(true) {}
    explicit Value(const Matrix& matrix) : content_(matrix), given_(true) {}
    explicit Value(std::vector<CurveKeys> curves) : content_(std::move(curves)), given_(true) {}
    explicit Value(std::string file) : content_(std::move(file)), given_(true) {}

    operator float() const { return four()[0]; }
    bool isOn() const { return four()[0] != 0.0f; }
    size_t choice() const { return static_cast<size_t>(four()[0]); }
    const float* four() const { return numbers().data(); }
    const Matrix& matrix() const { return std::get<Matrix>(content_); }
    const std::vector<CurveKeys>& curves() const { return std::get<std::vector<CurveKeys>>(content_); }
    const std::string& file() const { return std::get<std::string>(content_); }

    bool isGiven() const { return given_; } ///< false: an argument that is "none"
    bool isUniform() const
    {
        return numbers() == std::array{numbers()[0], numbers()[0], numbers()[0], numbers()[0]};
    }

private:
    const std::array<float, 4>& numbers() const { return std::get<std::array<float, 4>>(content_); }

    std::variant<std::array<float, 4>, Matrix, std::vector<CurveKeys>, std::string> content_;
    bool given_ = false;
};

using Values = std::vector<Value>;

/// A pixel function, and what it borrows.
struct Made
{
    template <class F>
    Made(std::unique_ptr<F> made, std::shared_ptr<const void> borrowed = nullptr)
        : function(std::move(made)), parts(std::move(borrowed))
    {
    }

    std::unique_ptr<RU_PixelFunction> function;
    std::shared_ptr<const void> parts; ///< has to outlive the function
    bool keepsAlpha = false;           ///< knows red, green and blue only
};

/// A function that chains are made of: what people call it, and how it is made.
struct Function
{
    std::string name;
    std::string summary;
    std::vector<Argument> arguments;
    Made (*make)(const Values& values);
    /// What becomes of the colour space that an image is tagged with: nothing, the values still mean colours
    /// of that space; or the one of this name; or, where the name is empty, none that is known.
    std::optional<std::string> colourSpace;
    bool leavesAlpha = false;    ///< alone, whatever the arguments are
    const char* onGPU = nullptr; ///< what it does there that it does not do here

    /// "gamma GAMMA", "log [BASE=10] [REPLACEMENT=none]"
    std::string usage() const;

    const Argument* find(const std::string& argument) const;

    /// Its keys may be given as separate words, with commas between them.
    bool takesKeys() const;
};

/// Every function there is. A new one is a new row here: the parser, the list, JSON and the messages follow.
const std::vector<Function>& functions();

/// The function of a name; throws a usage error for an unknown one, with what to use instead.
const Function& functionOfName(const std::string& name);

} // namespace host
