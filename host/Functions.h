#pragma once

#include <array>
#include <memory>
#include <string>
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
        Switch          ///< "on" or "off"
    };
    std::string name;
    Type type = Type::Number;
    bool required = false;
    float preset = 0.0f; ///< without the argument; for alpha where only three components are given
};

/// What an argument was given as, or its preset.
class Value
{
public:
    Value() = default;
    explicit Value(float number) : numbers_{number, number, number, number}, given_(true) {}
    explicit Value(const std::array<float, 4>& numbers) : numbers_(numbers), given_(true) {}

    operator float() const { return numbers_[0]; }
    const float* four() const { return numbers_.data(); }
    bool isGiven() const { return given_; } ///< false: an optional number that is "none"
    bool isUniform() const
    {
        return numbers_ == std::array{numbers_[0], numbers_[0], numbers_[0], numbers_[0]};
    }
    bool operator==(const Value&) const = default;

private:
    std::array<float, 4> numbers_{};
    bool given_ = false;
};

/// A function that chains are made of: what people call it, and how it is made.
struct Function
{
    std::string name;
    std::string summary;
    std::vector<Argument> arguments;
    std::unique_ptr<RU_PixelFunction> (*make)(const std::vector<Value>& values);

    /// "gamma GAMMA", "log [BASE=10] [REPLACEMENT=none]"
    std::string usage() const;

    const Argument* find(const std::string& argument) const;
};

/// Every function there is. A new one is a new row here: the parser, the list, JSON and the messages follow.
const std::vector<Function>& functions();

/// The function of a name; throws a usage error for an unknown one.
const Function& functionOfName(const std::string& name);

/// The shortest text that reads back as the same number.
std::string numberText(float number);

} // namespace host
