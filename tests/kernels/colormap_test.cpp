#include "processing/colormaps/ColorTables.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

namespace VX3::Test {
namespace {

std::array<int, 4> Entry(unsigned int map, unsigned int bits, std::size_t index) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(g_colorTable[map][bits - 8] + index);
    return {bytes[0], bytes[1], bytes[2], bytes[3]};
}

// Samples taken from matplotlib itself: every map at every resolution, within one level.
TEST(ColorMaps, AgreeWithTheGoldenSamples) {
    const std::map<std::string, unsigned int> numbers = {
        {"CMRmap", 0}, {"cubehelix", 1}, {"gist_earth", 2},    {"gist_heat", 3}, {"gnuplot2", 4}, {"hot", 5},
        {"jet", 6},    {"magma", 7},     {"nipy_spectral", 8}, {"plasma", 9},    {"viridis", 10}};
    std::ifstream file(VX3_SOURCE_DIR "/tests/kernels/colormap_golden.txt");
    std::string line;
    int samples = 0;
    while (std::getline(file, line)) {
        if (line.empty() || line[0] == '#')
            continue;
        std::istringstream words(line);
        std::string name;
        unsigned int bits = 0;
        std::size_t index = 0;
        std::array<int, 3> expected{};
        words >> name >> bits >> index >> expected[0] >> expected[1] >> expected[2];
        ASSERT_TRUE(words && numbers.count(name) == 1 && bits >= 8 && bits <= 14) << line;
        const auto entry = Entry(numbers.at(name), bits, index);
        for (std::size_t c = 0; c < 3; ++c)
            ASSERT_LE(std::abs(entry[c] - expected[c]), 1) << line;
        ASSERT_EQ(entry[3], 255) << line;
        ++samples;
    }
    EXPECT_EQ(samples, 11 * 7 * 64);
}

TEST(ColorMaps, KnownEntriesAndTheGreyRamp) {
    EXPECT_EQ(Entry(10, 8, 0), (std::array<int, 4>{68, 1, 84, 255}));
    EXPECT_EQ(Entry(6, 14, 0), (std::array<int, 4>{0, 0, 128, 255}));
    for (unsigned int bits = 8; bits <= 14; ++bits) {
        for (std::size_t i = 0; i < std::size_t{1} << bits; ++i) {
            const int level = static_cast<int>(i * 256 >> bits);
            ASSERT_EQ(Entry(ColorMapMono, bits, i), (std::array<int, 4>{level, level, level, 255}));
        }
    }
}

} // namespace
} // namespace VX3::Test
