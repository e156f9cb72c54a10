#include "wire/WireCursor.h"

#include <array>
#include <gtest/gtest.h>
#include <vector>

namespace VX3 {
namespace {

TEST(WireCursor, NumbersAreBigEndianAtAnyAlignment) {
    std::array<std::uint8_t, 17> bytes{};
    WireWriter writer(bytes.data() + 1, 15);
    ASSERT_TRUE(writer.U8(0x01));
    ASSERT_TRUE(writer.U16(0x0203));
    ASSERT_TRUE(writer.U32(0x04050607));
    ASSERT_TRUE(writer.U64(0x08090A0B0C0D0E0FULL));
    for (std::uint8_t i = 1; i <= 15; ++i)
        EXPECT_EQ(bytes[i], i);
    EXPECT_EQ(bytes[16], 0) << "wrote past its room";

    WireReader reader(bytes.data() + 1, 15);
    std::uint8_t a = 0;
    std::uint16_t b = 0;
    std::uint32_t c = 0;
    std::uint64_t d = 0;
    ASSERT_TRUE(reader.U8(a) && reader.U16(b) && reader.U32(c) && reader.U64(d));
    EXPECT_EQ(a, 0x01);
    EXPECT_EQ(b, 0x0203);
    EXPECT_EQ(c, 0x04050607U);
    EXPECT_EQ(d, 0x08090A0B0C0D0E0FULL);
    EXPECT_EQ(reader.Remaining(), 0U);
}

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

TEST(WireCursor, TextFieldsNeedNoTerminator) {
    std::array<std::uint8_t, 8> bytes{};
    WireWriter writer(bytes.data(), bytes.size());
    ASSERT_TRUE(writer.Text("abcdefgh", 4)); // cut to the field
    ASSERT_TRUE(writer.Text("x", 4));        // filled with NULs
    WireReader reader(bytes.data(), bytes.size());
    std::string full;
    std::string part;
    ASSERT_TRUE(reader.Text(4, full) && reader.Text(4, part));
    EXPECT_EQ(full, "abcd");
    EXPECT_EQ(part, "x");
    EXPECT_FALSE(reader.Text(1, part));
    EXPECT_EQ(part, "x");
}

} // namespace
} // namespace VX3
