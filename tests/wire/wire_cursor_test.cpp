#include "wire/WireCursor.h"

#include <gtest/gtest.h>
#include <vector>

namespace VX3 {
namespace {

// The heap block is exactly as long as the cursor says, so that AddressSanitizer sees every overrun.
TEST(WireCursor, WhatDoesNotFitFailsAndMovesNothing) {
    for (std::size_t size = 0; size < 8; ++size) {
        std::vector<std::uint8_t> exact(size, 0xAA);
        exact.shrink_to_fit();
        WireReader reader(exact.data(), exact.size());
        std::uint64_t value = 42;
        WireBytes view;
        EXPECT_FALSE(reader.U64(value));
        EXPECT_FALSE(reader.Skip(size + 1));
        EXPECT_FALSE(reader.View(static_cast<std::size_t>(-1), view));
        EXPECT_EQ(value, 42U);
        EXPECT_EQ(reader.Remaining(), size);

        WireWriter writer(exact.data(), exact.size());
        EXPECT_FALSE(writer.U64(0));
        EXPECT_FALSE(writer.Zeros(size + 1));
        EXPECT_FALSE(writer.Text("abc", size + 1));
        EXPECT_EQ(writer.Written(), 0U);
    }
}

} // namespace
} // namespace VX3
