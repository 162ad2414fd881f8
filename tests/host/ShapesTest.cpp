#include "images.h"

#include <host/shape/Shapes.h>

#include <fstream>

namespace {

class ShapesFile : public ::testing::Test
{
protected:
    host::Shapes read(const std::string& name, const std::string& text) const
    {
        const std::string path = dir_.file(name);
        std::ofstream(path) << text;
        return host::readShapes(path);
    }

    /// What is wrong with a file, behind its name.
    std::string wrong(const std::string& name, const std::string& text) const
    {
        const std::string error = errorOf([&] { read(name, text); }).what();
        const std::string start = std::string("'").append(dir_.file(name)).append("': ");
        EXPECT_TRUE(error.starts_with(start)) << error;
        EXPECT_EQ(error.find('\n'), error.npos) << error;
        return error.substr(std::min(start.size(), error.size()));
    }

private:
    TempDirectory dir_;
};

std::string shapeJson(const std::string& members)
{
    return R"({"shapes": [{"points": [{"at": [0, 0]}, {"at": [9, 0]}, {"at": [9, 9]}], "fill": "open"}, {)" +
           members + "}]}";
}

TEST_F(ShapesFile, SaysWhatIsWrongWhereInJson)
{
    const std::string points = R"("points": [{"at": [0, 0]}, {"at": [9, 0]}, {"at": [9, 9]}])";
    const struct
    {
        std::string members, expected;
    } cases[] = {
        {R"("name": "arm")", R"(shape 'arm': expected either "points" or "keys")"},
        {points + R"(, "keys": [])", R"(shape 2: expected either "points" or "keys")"},
        {points + R"(, "kind": "spline")", R"(shape 2: "kind" is "spline"; expected polygon, bezier, nurbs)"},
        {points + R"(, "color": 1)", "shape 2: unknown member 'color'; did you mean 'colour'?"},
        {points + R"(, "name": 3)", R"(shape 2: "name" is 3; expected a text)"},
        {points + R"(, "width": 3)", R"(expected it with "fill": "open" or "outlined")"},
        {points + R"(, "drop-off": "round")", "expected linear, gaussian, ease-out, ease-in, smooth"},
        {points + R"(, "colour": [1, 2])",
         R"(shape 2: "colour" is [1,2]; expected an opacity from 0 to 1, or red)"},
        {points + R"(, "colour": [1, 1, 1, 2])", "expected an alpha from 0 to 1"},
        {points + R"(, "samples": [9, 8])", "up to 64 together"},
        {points + R"(, "samples": [2.5, 1])", "whole numbers"},
        {points + R"(, "feather": "soft")", R"("feather" is "soft"; expected a number from -1000 to 1000)"},
        {R"("points": [{"at": [0, 0]}])", "shape 2: 1 point; expected 2 at least"},
        {R"("kind": "nurbs", "points": [{"at": [0, 0]}, {"at": [1, 0]}])", "2 points; expected 3 at least"},
        {R"("points": [{"at": [0, 0]}, {"in": [1, 1]}])",
         R"(point 2: no "at"; expected x and y, two numbers)"},
        {R"("points": [{"at": [0, 1e7]}])", R"(point 1: "at" is [0,10000000.0]; expected x and y)"},
        {R"("points": [{"at": [0, 0], "in": 3}])", R"(point 1: "in" is 3; expected)"},
        {R"("kind": "polygon", "points": [{"at": [0, 0], "in": [0, 0]}])", "point 1: unknown member 'in'"},
        {R"("points": [{"at": [0, 0], "alpha": 1.5}])",
         R"(point 1: "alpha" is 1.5; expected a number from 0 to 1)"},
        {R"("points": [3])", "point 1: expected an object instead of 3"},
        {R"("keys": [])", R"("keys" is []; expected one key at least)"},
        {R"("keys": [{)" + points + "}]", R"(shape 2: key 1: no "frame"; expected a number of a frame)"},
        {R"("keys": [{"frame": 5, )" + points + R"(}, {"frame": 5, )" + points + "}]",
         R"(key 2: "frame" is 5; expected one after)"},
        {R"("keys": [{"frame": 1, )" + points +
             R"(}, {"frame": 5, "points": [{"at": [0, 0]}, {"at": [1, 0]}]}])",
         "shape 2: key 2: 2 points; expected as many as in key 1, 3"},
        {points + ", " + points, "entry 2: 'points' is given twice"},
    };
    for (const auto& [members, expected] : cases)
        EXPECT_NE(wrong("a.json", shapeJson(members)).find(expected), std::string::npos)
            << members << "\n"
            << wrong("a.json", shapeJson(members));
    EXPECT_NE(wrong("a.json", "{\"shapes\": [}").find("line 1, column 13"), std::string::npos);
    EXPECT_NE(wrong("a.json", "[]").find("expected an object instead of []"), std::string::npos);
    EXPECT_NE(wrong("a.json", "{}").find("no \"shapes\"; expected a list of shapes"), std::string::npos);
    EXPECT_TRUE(says(errorOf([&] { read("a.txt", "{}"); }), "expected one that ends in .json or .svg"));
}

TEST_F(ShapesFile, SaysWhatIsWrongWhereInADrawing)
{
    const struct
    {
        std::string element, expected;
    } cases[] = {
        {"<path d='M0 0 L1 x'/>", "path 1: path data, character 9: expected a number"},
        {"<path id='p' d='L1 1'/>", "path 'p': path data, character 1: expected M first"},
        {"<path d='M0 0A1 A 0 0 1 5 5'/>", "character 8: expected a number"},
        {"<path d='M0 0 1 1 B'/>", "character 10: expected one of the commands"},
        {"<path d='M nan 0'/>", "character 3: expected a number"},
        {"<path fill='url(#g)' d='M0 0'/>",
         "<path>: fill 'url(#g)' is not known; expected none, black, white, #rgb"},
        {"<g id='a' stroke='#12345'/>", "<g> 'a': stroke '#12345' is not known"},
        {"<g style='fill-opacity: much'/>",
         "fill-opacity 'much' is not known; expected a number from 0 to 1"},
        {"<g transform='skewX(3)'/>",
         "transform 'skewX(3)' is not known; expected matrix(a b c d e f), translate"},
        {"<path d='M0 0'>", "line 2: no XML: "},
    };
    for (const auto& [element, expected] : cases)
        EXPECT_NE(wrong("a.svg", "<svg>\n" + element + "</svg>").find(expected), std::string::npos)
            << element << "\n"
            << wrong("a.svg", "<svg>\n" + element + "</svg>");
    EXPECT_NE(wrong("a.svg", "<html/>").find("expected an <svg> element"), std::string::npos);
    EXPECT_NE(wrong("a.svg", "<svg viewBox='0 0 1'/>").find("expected four numbers"), std::string::npos);
    EXPECT_NE(wrong("a.svg", "<svg width='2furlong'/>").find("width '2furlong' is no size"),
              std::string::npos);
    const host::Shapes shapes =
        read("a.svg", "<svg><defs><path d='M0 0 1 1 0 2'/></defs><text>x</text><text/><title/>"
                      "<path clip-path='url(#c)' d=''/><path style='display:none' d='M0 0 1 1'/></svg>");
    EXPECT_TRUE(shapes.shapes.empty());
    ASSERT_EQ(shapes.notes.size(), 1u);
    EXPECT_TRUE(shapes.notes[0].ends_with("it is not known: <text> (2 times), clip-path")) << shapes.notes[0];
}

void expectPlaces(const host::ShapePoints& points, const std::vector<host::Place>& places)
{
    ASSERT_EQ(points.size(), places.size());
    for (size_t i = 0; i < places.size(); ++i)
        for (size_t axis = 0; axis < 2; ++axis)
            EXPECT_NEAR(points[i].at[axis], places[i][axis], 1e-12) << i;
}

TEST_F(ShapesFile, FollowsThePathsOfADrawing)
{
    const auto path = [this](const std::string& data) {
        return read("a.svg", "<svg><path d='" + data + "'/></svg>").shapes.at(0).keys.at(0).points;
    };
    const std::vector<host::Place> square = {{1, 2}, {4, 2}, {4, 5}, {1, 5}};
    for (const char* data :
         {"M1 2 4 2 4 5 1 5", "m1,2l3,0,0,3-3 0z", "M1 2H4V5H1V2Z", "M+1 2.h3v3h-3z", "m1 2 3-0 0 3-3 0"})
        expectPlaces(path(data), square);
    const host::ShapePoints curve = path("M0 0C0 3 3 6 6 6s6-3 6-6T24 0Q 30 6 36 0");
    expectPlaces(curve, {{0, 0}, {6, 6}, {12, 0}, {24, 0}, {36, 0}});
    EXPECT_EQ(curve[1].out, (host::Place{9, 6})); // the mirror of 3, 6
    EXPECT_EQ(curve[2].in, (host::Place{12, 3}));
    EXPECT_EQ(curve[2].out, (host::Place{12, 0})); // no quadratic curve before: nothing to mirror
    EXPECT_EQ(curve[3].out, (host::Place{28, 4}));
    EXPECT_EQ(curve[4].in, (host::Place{32, 4}));

    const std::vector<host::Place> ellipse = {{10, 5}, {8, 6}, {6, 5}, {8, 4}};
    expectPlaces(path("M10 5A2 1 0 01 6 5 2 1 0 0110 5z"), ellipse);
    expectPlaces(path("M10 5a-1 2 90 1 1-2-1z"), ellipse);
    expectPlaces(path("M0 0A1 1 0 0 0 6 8"), {{0, 0}, {-1, 7}, {6, 8}}); // grows to reach
    EXPECT_NEAR(path("M10 5A2 1 0 0 1 6 5")[0].out[1], 5 + 0.5522847498, 1e-9);

    // a hole becomes part of the outline, what lies apart is a shape of its own
    const host::Shapes ring = read("a.svg", "<svg><path d='M0 0H9V9H0ZM2 3V6H6V3ZM20 20h1v1z'/></svg>");
    ASSERT_EQ(ring.shapes.size(), 2u);
    EXPECT_TRUE(ring.notes.empty());
    expectPlaces(ring.shapes[0].keys[0].points,
                 {{0, 0}, {2, 3}, {2, 6}, {6, 6}, {6, 3}, {2, 3}, {0, 0}, {9, 0}, {9, 9}, {0, 9}});

    // by the even-odd rule a hole may have the same sense as what is around it
    const auto evenOdd = read("a.svg", "<svg><path fill-rule='evenodd' d='M0 0H9V9H0ZM2 3H6V6H2Z'/></svg>");
    expectPlaces(evenOdd.shapes.at(0).keys[0].points,
                 {{0, 0}, {2, 3}, {2, 6}, {6, 6}, {6, 3}, {2, 3}, {0, 0}, {9, 0}, {9, 9}, {0, 9}});

    const host::Shapes others =
        read("a.svg", "<svg><rect x='1' y='2' width='3' height='3'/><polygon points='1,2 4,2 4,5 1,5'/>"
                      "<ellipse cx='8' cy='5' rx='2' ry='1'/><rect rx='1'/><line x1='1' y2='2' "
                      "stroke='white' fill='none'/></svg>");
    ASSERT_EQ(others.shapes.size(), 4u);
    expectPlaces(others.shapes[0].keys[0].points, square);
    expectPlaces(others.shapes[1].keys[0].points, square);
    expectPlaces(others.shapes[2].keys[0].points, ellipse);
    expectPlaces(others.shapes[3].keys[0].points, {{1, 0}, {0, 2}});
    EXPECT_EQ(others.notes.size(), 2u); // round corners, and what lies over another

    const host::Shapes scaled = read("a.svg", "<svg width='1in' height='48' viewBox='10 0 48 48'><g "
                                              "transform='translate(10 4) rotate(90)' opacity='.5'>"
                                              "<path transform='scale(2)' fill='#f00' fill-opacity='50%' "
                                              "stroke='rgb(0%, 100%, 20%)' stroke-width='3px' "
                                              "d='M0 0H1V1z'/></g></svg>");
    ASSERT_EQ(scaled.shapes.size(), 2u);
    EXPECT_EQ(*scaled.size, (host::Place{96, 48}));
    expectPlaces(scaled.shapes[0].keys[0].points, {{24, 4}, {24, 6}, {22, 6}});
    EXPECT_EQ(scaled.shapes[0].colour, (std::array<float, 4>{1.0f, 0.0f, 0.0f, 0.25f}));
    EXPECT_EQ(scaled.shapes[1].colour, (std::array<float, 4>{0.0f, 1.0f, 0.2f, 0.5f}));
    EXPECT_NEAR(scaled.shapes[1].width, 6.0, 1e-12);
    ASSERT_EQ(scaled.notes.size(), 1u);
    EXPECT_TRUE(scaled.notes[0].ends_with("where shapes overlap, the largest value counts, not the last"));
    EXPECT_EQ(scaled.shapes[1].keys[0].points.size(), 5u); // goes on along its first edge
}

TEST_F(ShapesFile, PointsGoStraightFromKeyToKey)
{
    const host::Shape shape =
        read(
            "a.json",
            shapeJson(
                R"("keys": [{"frame": 10, "points": [{"at": [0, 8], "out": [1, 8]}, {"at": [8, 8], "alpha": 0}]},
                                             {"frame": 20, "points": [{"at": [4, 0], "feather": 2}, {"at": [8, 0]}]},
                                             {"frame": 21, "points": [{"at": [0, 0]}, {"at": [8, 4]}]}])"))
            .shapes.at(1);
    const auto first = [&](double frame) { return shape.at(frame)[0]; };
    for (const auto& [frame, x, y] : {std::tuple{-5.0, 0.0, 8.0},
                                      {10.0, 0.0, 8.0},
                                      {12.5, 1.0, 6.0},
                                      {20.0, 4.0, 0.0},
                                      {20.25, 3.0, 0.0},
                                      {21.0, 0.0, 0.0},
                                      {99.0, 0.0, 0.0}})
        EXPECT_EQ(first(frame).at, (host::Place{x, y})) << frame;
    EXPECT_EQ(first(15.0).out, (host::Place{2.5, 4.0}));
    EXPECT_EQ(first(15.0).in, (host::Place{2.0, 4.0})); // without a handle it is the point
    EXPECT_EQ(first(15.0).feather, 1.0);
    EXPECT_EQ(shape.at(15.0)[1].alpha, 0.5);
}

} // namespace
