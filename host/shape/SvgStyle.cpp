#include <host/shape/SvgStyle.h>

#include <host/shape/SvgNumbers.h>
#include <host/text/Error.h>
#include <host/text/Text.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <numbers>

namespace host {

namespace {

std::string trimmed(const std::string& text)
{
    const size_t begin = text.find_first_not_of(" \t\r\n");
    return begin == text.npos ? "" : text.substr(begin, text.find_last_not_of(" \t\r\n") - begin + 1);
}

/// A property with the place of its element, for messages.
struct Property
{
    const std::string& where;
    std::string name, text;

    [[noreturn]] void fail(const char* expected) const
    {
        refuse(where + name + " '" + text + "' is not known; expected " + expected);
    }
};

/// The digits of #rgb or #rrggbb.
std::optional<Colour3> hexColour(const std::string& digits)
{
    const size_t each = digits.size() / 3;
    if ((digits.size() != 3 && digits.size() != 6) ||
        !std::all_of(digits.begin(), digits.end(), [](unsigned char c) { return std::isxdigit(c) != 0; }))
        return {};
    Colour3 colour;
    for (size_t i = 0; i < 3; ++i) {
        const std::string code = digits.substr(i * each, each);
        colour[i] = static_cast<float>(std::stoi(each == 1 ? code + code : code, nullptr, 16)) / 255.0f;
    }
    return colour;
}

/// The three codes or percentages of rgb(...).
std::optional<Colour3> rgbColour(std::string inside)
{
    const auto percents = std::count(inside.begin(), inside.end(), '%');
    std::replace(inside.begin(), inside.end(), '%', ' ');
    const auto numbers = SvgNumbers(inside).all();
    if (!numbers || numbers->size() != 3 || (percents != 0 && percents != 3))
        return {};
    Colour3 colour;
    for (size_t i = 0; i < 3; ++i)
        colour[i] = static_cast<float>(std::clamp((*numbers)[i] / (percents != 0 ? 100.0 : 255.0), 0.0, 1.0));
    return colour;
}

std::optional<Colour3> paint(const Property& property)
{
    const std::string& text = property.text;
    if (text == "none" || text == "transparent")
        return {};
    std::optional<Colour3> colour;
    if (text == "black" || text == "white")
        colour = text == "black" ? Colour3{0.0f, 0.0f, 0.0f} : Colour3{1.0f, 1.0f, 1.0f};
    else if (text.starts_with('#'))
        colour = hexColour(text.substr(1));
    else if (text.starts_with("rgb(") && text.ends_with(')'))
        colour = rgbColour(text.substr(4, text.size() - 5));
    if (!colour)
        property.fail("none, black, white, #rgb, #rrggbb or rgb(r, g, b)");
    return colour;
}

double opacityOf(const Property& property)
{
    const bool percent = property.text.ends_with('%');
    const auto numbers = SvgNumbers(property.text.substr(0, property.text.size() - (percent ? 1 : 0))).all();
    if (!numbers || numbers->size() != 1)
        property.fail("a number from 0 to 1");
    return std::clamp(numbers->front() / (percent ? 100.0 : 1.0), 0.0, 1.0);
}

double widthOf(const Property& property)
{
    const bool pixels = property.text.ends_with("px");
    const auto numbers = SvgNumbers(property.text.substr(0, property.text.size() - (pixels ? 2 : 0))).all();
    if (!numbers || numbers->size() != 1 || numbers->front() < 0.0)
        property.fail("a number from 0, in units of the drawing");
    return numbers->front();
}

/// One of the functions of a transform.
SvgMatrix transformOf(const Property& property, const std::string& function, const std::vector<double>& n)
{
    if (function == "matrix" && n.size() == 6)
        return {n[0], n[1], n[2], n[3], n[4], n[5]};
    if (function == "translate" && (n.size() == 1 || n.size() == 2))
        return {1.0, 0.0, 0.0, 1.0, n[0], n.size() == 2 ? n[1] : 0.0};
    if (function == "scale" && (n.size() == 1 || n.size() == 2))
        return {n[0], 0.0, 0.0, n.back(), 0.0, 0.0};
    if (function != "rotate" || (n.size() != 1 && n.size() != 3))
        property.fail("matrix(a b c d e f), translate(x y), scale(x y) or rotate(degrees x y)");
    const double angle = n[0] * std::numbers::pi / 180.0, c = std::cos(angle), s = std::sin(angle);
    const SvgMatrix turn{c, s, -s, c, 0.0, 0.0};
    if (n.size() == 1)
        return turn;
    return SvgMatrix{1.0, 0.0, 0.0, 1.0, n[1], n[2]} * turn * SvgMatrix{1.0, 0.0, 0.0, 1.0, -n[1], -n[2]};
}

SvgMatrix matrixOf(const Property& property)
{
    constexpr const char* expected = "matrix(...), translate(...), scale(...) and rotate(...)";
    SvgMatrix matrix;
    if (!property.text.empty() && !property.text.ends_with(')'))
        property.fail(expected);
    for (const std::string& part : splitText(property.text, ')')) {
        std::string call = trimmed(part);
        if (call.starts_with(','))
            call = trimmed(call.substr(1));
        if (call.empty())
            continue;
        const size_t open = call.find('(');
        const auto numbers =
            SvgNumbers(open == call.npos ? "x" : std::string_view(call).substr(open + 1)).all();
        if (!numbers)
            property.fail(expected);
        matrix = matrix * transformOf(property, trimmed(call.substr(0, open)), *numbers);
    }
    return matrix;
}

} // namespace

SvgMatrix SvgMatrix::operator*(const SvgMatrix& inner) const
{
    return {a * inner.a + c * inner.b, b * inner.a + d * inner.b,     a * inner.c + c * inner.d,
            b * inner.c + d * inner.d, a * inner.e + c * inner.f + e, b * inner.e + d * inner.f + f};
}

double SvgMatrix::scale() const
{
    return std::sqrt(std::abs(a * d - b * c));
}

bool SvgMatrix::isEven() const
{
    const double across = a * a + b * b, down = c * c + d * d;
    return std::abs(across - down) <= 0.01 * across && std::abs(a * c + b * d) <= 0.01 * across;
}

void SvgStyle::apply(const Properties& properties, const std::string& where)
{
    for (const auto& [name, text] : properties) {
        const Property property{where, name, trimmed(text)};
        if (property.text == "inherit")
            continue;
        if (name == "fill")
            fill = paint(property);
        else if (name == "stroke")
            stroke = paint(property);
        else if (name == "fill-opacity")
            fillOpacity = opacityOf(property);
        else if (name == "stroke-opacity")
            strokeOpacity = opacityOf(property);
        else if (name == "opacity")
            opacity *= opacityOf(property);
        else if (name == "stroke-width")
            strokeWidth = widthOf(property);
        else if (name == "display")
            visible = visible && property.text != "none";
        else if (name == "visibility")
            visible = visible && property.text == "visible";
        else if (name == "fill-rule")
            evenOdd = property.text == "evenodd";
        else if (name == "transform")
            matrix = matrix * matrixOf(property);
    }
}

} // namespace host
