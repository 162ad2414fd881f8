#include "images.h"

#include <host/chain/Chain.h>
#include <host/chain/LookUpFile.h>
#include <host/text/Error.h>

#include <gtest/gtest.h>

#include <fstream>

namespace {

std::string written(const TempDirectory& directory, const std::string& name, const std::string& text)
{
    const std::string path = directory.file(name);
    std::ofstream(path, std::ios::binary) << text;
    return path;
}

float evaluate(const host::LookUp& lookUp, int channel, float v)
{
    return lookUp.table ? lookUp.table->channel(channel).evaluate(v)
                        : lookUp.clip->track(channel)->evaluate(v);
}

const std::string cubeRows = "0 0 0\r\n0.5 0.6 0.7\n\n  1 2 3";

TEST(LookUpFile, ReadsTablesAndKeys)
{
    const struct
    {
        const char* name;
        std::string text;
        int channels;
        bool isTable;
        float at, last; ///< of the last channel
    } cases[] = {
        {"a.cube", "TITLE \"a # b\"\n# note\nLUT_1D_SIZE 3\n" + cubeRows, 3, true, 0.25f, 0.35f},
        {"a.CUBE", "LUT_1D_SIZE 3 # rows\nDOMAIN_MAX 2 2 2\n" + cubeRows, 3, true, 0.5f, 0.35f},
        {"a.cube", "LUT_1D_INPUT_RANGE -1 1\nLUT_1D_SIZE 3\n" + cubeRows, 3, true, 0.0f, 0.7f},
        {"a.cube", "LUT_1D_SIZE 3\nDOMAIN_MIN 0 0 -2\nDOMAIN_MAX 1 1 2\n" + cubeRows, 3, false, -1.0f, 0.35f},
        {"a.csv", "1 # one\n2\n4\n", 1, true, 0.75f, 3.0f},
        {"a.csv", "\xEF\xBB\xBFx; y\n-1; 3\n0; 5\n1; 4", 1, true, -0.5f, 4.0f},
        {"a.csv", "0,0.333\n0.3333,1\n0.6667,2\n1,3\n", 1, true, 0.5f, 1.5f},
        {"a.csv", "# x r g b\n0 1 2 3\n0.1\t1 2 4\n1 1 2 13\n", 3, false, 0.2f, 5.0f},
    };
    const TempDirectory directory;
    for (const auto& c : cases) {
        const host::LookUp lookUp = host::readLookUpFile(written(directory, c.name, c.text));
        EXPECT_EQ(lookUp.channels, c.channels) << c.text;
        EXPECT_EQ(lookUp.table != nullptr, c.isTable) << c.text;
        EXPECT_NEAR(evaluate(lookUp, c.channels - 1, c.at), c.last, 1e-6) << c.text;
    }
}

TEST(LookUpFile, ErrorsNameTheLine)
{
    const struct
    {
        const char* name;
        std::string text, expected;
    } cases[] = {
        {"a.cube", "LUT_3D_SIZE 17\n", "a.cube', line 1: a 3-D cube; expected a 1-D one"},
        {"a.cube", "LUT_1D_SIZE 3\n1 2 3\n\n1 2\n", "line 4: expected 3 numbers instead of 2"},
        {"a.cube", "LUT_1D_SIZE 2\n1 2 3\n1 inf 3\n", "line 3: 'inf' is no number"},
        {"a.cube", "LUT_1D_SIZE 2\nnan 1 1\n", "line 2: 'nan' is no number"},
        {"a.cube", "LUT_1D_SIZE 2 3\n", "line 1: expected 1 number instead of 2"},
        {"a.cube", "LUT_1D_SIZE 2\nLUT_1D_SIZE 2\n", "line 2: 'LUT_1D_SIZE' is given twice"},
        {"a.cube", "DOMAIN_MIN 0 0 0\nLUT_1D_INPUT_RANGE 0 1\n", "line 2: LUT_1D_INPUT_RANGE beside"},
        {"a.cube", "LUT_1D_SIZE 1e9\n", "line 1: '1e9' is no whole number from 2 to 65536"},
        {"a.cube", "LUT_1D_SIZE 4\n" + cubeRows, "promises 4 rows, there are 3"},
        {"a.cube", "LUT_1D_SIZE 2\n" + cubeRows, "one row more than LUT_1D_SIZE promises"},
        {"a.cube", cubeRows, "line 1: numbers before LUT_1D_SIZE"},
        {"a.cube", "LUT_1D_SIZE 3\nDOMAIN_MIN 1 0 0\n" + cubeRows, "the domain ends where it begins"},
        {"a.cube", "LUT_2D_SIZE 3\n", "line 1: unknown keyword 'LUT_2D_SIZE'"},
        {"a.cube", "", "no LUT_1D_SIZE"},
        {"a.csv", "0,5;1\n1;2\n", "line 1: '0,5' is no number"},
        {"a.csv", "x,y\n0,1\n0,2\n", "line 3: x is 0, not above that of the row before"},
        {"a.csv", "0,1,2\n", "line 1: 3 columns; expected values, or x and y"},
        {"a.csv", "0,1\n1,2,3\n", "line 2: expected 2 numbers instead of 3"},
        {"a.csv", "x,y\n0,1\n", "expected two rows"},
        {"a.txt", "0\n", "expected .cube or .csv"},
    };
    const TempDirectory directory;
    for (const auto& c : cases) {
        const auto read = [&] { host::readLookUpFile(written(directory, c.name, c.text)); };
        EXPECT_TRUE(says(errorOf(read), c.expected));
    }
}

TEST(LookUpFile, AChainFindsItBesideItselfAndLeavesAlpha)
{
    const TempDirectory directory;
    written(directory, "a \"look\".cube", "LUT_1D_SIZE 3\n" + cubeRows);
    const host::Chain chain = host::Chain::fromJsonFile(
        written(directory, "chain.json", R"([{"function": "lut", "file": "a \"look\".cube"}])"));
    const host::Chain::Built built = host::Chain::fromText(chain.text()).build();
    EXPECT_EQ(built.components, (host::Components{true, true, true, false}));
    built.head->buildPixelEngine();
    EXPECT_FLOAT_EQ(built.head->processValue(0.75f, 2), 1.85f);
}

} // namespace
