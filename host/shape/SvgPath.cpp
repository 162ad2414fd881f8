#include <host/shape/SvgPath.h>

#include <host/shape/SvgNumbers.h>
#include <host/text/Error.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <numbers>
#include <utility>

namespace host {

namespace {

/// A part of an ellipse.
struct Arc
{
    Place radius{};
    double turn = 0.0; ///< of the ellipse, in degrees
    bool large = false, sweeps = false;
};

struct CurvePiece
{
    Place out, in, end;
};

/// An arc as curves of a quarter of the ellipse at most: the formulas are those of the SVG standard, in coordinates in
/// which the ellipse is the unit circle.
std::vector<CurvePiece> piecesOf(const Arc& arc, const Place& from, const Place& to)
{
    const double rx = std::abs(arc.radius[0]), ry = std::abs(arc.radius[1]);
    if (rx == 0.0 || ry == 0.0 || from == to)
        return {{from, to, to}};
    const double turn = arc.turn * std::numbers::pi / 180.0, c = std::cos(turn), s = std::sin(turn);
    const double dx = 0.5 * (from[0] - to[0]), dy = 0.5 * (from[1] - to[1]);
    const double x = (c * dx + s * dy) / rx, y = (c * dy - s * dx) / ry, square = x * x + y * y;
    const double grown = std::max(1.0, std::sqrt(square)); // an ellipse that is too small to reach
    const double away = (arc.large != arc.sweeps ? 1.0 : -1.0) * std::sqrt(std::max(0.0, 1.0 / square - 1.0));
    const Place centre{away * y / grown, -away * x / grown};
    const auto onPlane = [&](double u, double v) {
        const double px = (u + centre[0]) * rx * grown, py = (v + centre[1]) * ry * grown;
        return Place{0.5 * (from[0] + to[0]) + c * px - s * py, 0.5 * (from[1] + to[1]) + s * px + c * py};
    };
    const double begin = std::atan2(y / grown - centre[1], x / grown - centre[0]);
    double angle = std::atan2(-y / grown - centre[1], -x / grown - centre[0]) - begin;
    if (arc.sweeps != (angle > 0.0))
        angle += arc.sweeps ? 2.0 * std::numbers::pi : -2.0 * std::numbers::pi;
    const int count = static_cast<int>(std::ceil(std::abs(angle) / (0.5 * std::numbers::pi) - 1e-9));
    const double step = angle / count, handle = 4.0 / 3.0 * std::tan(0.25 * step);
    std::vector<CurvePiece> pieces;
    for (int i = 0; i < count; ++i) {
        const double a = begin + i * step, b = a + step;
        pieces.push_back({onPlane(std::cos(a) - handle * std::sin(a), std::sin(a) + handle * std::cos(a)),
                          onPlane(std::cos(b) + handle * std::sin(b), std::sin(b) - handle * std::cos(b)),
                          i + 1 == count ? to : onPlane(std::cos(b), std::sin(b))});
    }
    return pieces;
}

/// Follows the commands of a path.
class PathReader
{
public:
    PathReader(const std::string& data, const std::string& where) : numbers_(data), where_(where) {}

    std::vector<SubPath> read()
    {
        while (!numbers_.atEnd()) {
            const size_t place = numbers_.place();
            const char letter = numbers_.take();
            const char upper = static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
            relative_ = letter != upper;
            if (upper != 'M' && paths_.empty())
                fail(place, "expected M first");
            if (std::string("MLHVCSQTAZ").find(upper) == std::string::npos)
                fail(place, "expected one of the commands M, L, H, V, C, S, Q, T, A and Z");
            if (upper == 'Z')
                close();
            else
                commands(upper);
        }
        return finished();
    }

private:
    [[noreturn]] void fail(size_t place, const std::string& text) const
    {
        refuse(where_ + "path data, character " + std::to_string(place + 1) + ": " + text);
    }

    double number()
    {
        const size_t place = numbers_.place();
        const std::optional<double> value = numbers_.number();
        if (!value)
            fail(place, "expected a number");
        return *value;
    }

    bool flag()
    {
        const size_t place = numbers_.place();
        const std::optional<bool> on = numbers_.flag();
        if (!on)
            fail(place, "expected 0 or 1");
        return *on;
    }

    Place placeOfNext()
    {
        const double x = number(), y = number();
        return relative_ ? Place{at_[0] + x, at_[1] + y} : Place{x, y};
    }

    bool goesOn() const
    {
        return !numbers_.atEnd() && std::isalpha(static_cast<unsigned char>(numbers_.next())) == 0;
    }

    /// A command as often as numbers for it follow; a move goes on with lines.
    void commands(char command)
    {
        char before = std::exchange(last_, command);
        do {
            if (command == 'M') {
                begin(placeOfNext());
                command = 'L';
                continue;
            }
            if (paths_.back().closed)
                begin(at_);
            draw(command, before);
            before = command;
        } while (goesOn());
    }

    void begin(const Place& place)
    {
        at_ = place;
        paths_.push_back({{{place, place, place}}, false});
    }

    void close()
    {
        paths_.back().closed = true;
        at_ = paths_.back().points.front().at;
        last_ = 'Z';
    }

    void draw(char command, char before)
    {
        const Place mirrored{2.0 * at_[0] - handle_[0], 2.0 * at_[1] - handle_[1]};
        if (command == 'L') {
            line(placeOfNext());
        } else if (command == 'H') {
            line({number() + (relative_ ? at_[0] : 0.0), at_[1]});
        } else if (command == 'V') {
            line({at_[0], number() + (relative_ ? at_[1] : 0.0)});
        } else if (command == 'C' || command == 'S') {
            const bool smooth = before == 'C' || before == 'S';
            const Place first = command == 'C' ? placeOfNext() : smooth ? mirrored : at_;
            const Place second = placeOfNext();
            curve(first, second, placeOfNext());
            handle_ = second;
        } else if (command == 'A') {
            Arc arc;
            arc.radius = {number(), number()};
            arc.turn = number();
            arc.large = flag();
            arc.sweeps = flag();
            for (const auto& [out, in, end] : piecesOf(arc, at_, placeOfNext()))
                curve(out, in, end);
        } else {
            const bool smooth = before == 'Q' || before == 'T';
            const Place middle = command == 'Q' ? placeOfNext() : smooth ? mirrored : at_;
            const Place end = placeOfNext();
            const auto third = [&middle](const Place& from) {
                return Place{from[0] + (middle[0] - from[0]) * 2.0 / 3.0,
                             from[1] + (middle[1] - from[1]) * 2.0 / 3.0};
            };
            curve(third(at_), third(end), end);
            handle_ = middle;
        }
    }

    void line(const Place& end) { curve(at_, end, end); }

    void curve(const Place& out, const Place& in, const Place& end)
    {
        ShapePoints& points = paths_.back().points;
        points.back().out = out;
        points.push_back({end, in, end});
        at_ = end;
    }

    /// A path that comes back to its first point has that once.
    std::vector<SubPath> finished()
    {
        for (SubPath& path : paths_) {
            ShapePoints& points = path.points;
            if (points.size() < 2 || !path.closed || points.back().at != points.front().at)
                continue;
            points.front().in = points.back().in;
            points.pop_back();
        }
        return std::move(paths_);
    }

    SvgNumbers numbers_;
    const std::string& where_;
    std::vector<SubPath> paths_;
    Place at_{}, handle_{}; ///< the current point, and the last handle of the curve that led there
    bool relative_ = false;
    char last_ = '\0'; ///< the command before
};

} // namespace

std::vector<SubPath> readPathData(const std::string& data, const std::string& where)
{
    return PathReader(data, where).read();
}

} // namespace host
