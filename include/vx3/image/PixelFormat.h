// Pixel-format codes (GenICam PFNC) and everything derived from them: one table serves the whole library.
#pragma once

#include "vx3/core/Export.h"

#include <cstdint>
#include <string>

namespace VX3 {

// X(PFNC name, code, display name, channels, bit depth, buffer rule, packed, channel ids in memory order).
// The buffer rule names how many bytes width x height pixels take; Bayer formats report the four positions of
// their 2 x 2 colour cell, read row by row.
#define VX3_PIXEL_FORMAT_TABLE(X)                                                                            \
    X(Mono8, 0x01080001, "MONO8", 1, 8, OneByte, false, Mono, Invalid, Invalid, Invalid)                     \
    X(Mono10, 0x01100003, "MONO10", 1, 10, TwoBytes, false, Mono, Invalid, Invalid, Invalid)                 \
    X(Mono10Packed, 0x010C0004, "MONO10 PACKED", 1, 10, ThreeHalves, true, Mono, Invalid, Invalid, Invalid)  \
    X(Mono10p, 0x010A0046, "MONO10P", 1, 10, FiveQuarters, true, Mono, Invalid, Invalid, Invalid)            \
    X(Mono12, 0x01100005, "MONO12", 1, 12, TwoBytes, false, Mono, Invalid, Invalid, Invalid)                 \
    X(Mono12Packed, 0x010C0006, "MONO12 PACKED", 1, 12, ThreeHalves, true, Mono, Invalid, Invalid, Invalid)  \
    X(Mono12p, 0x010C0047, "MONO12P", 1, 12, ThreeHalves, true, Mono, Invalid, Invalid, Invalid)             \
    X(Mono14, 0x01100025, "MONO14", 1, 14, TwoBytes, false, Mono, Invalid, Invalid, Invalid)                 \
    X(Mono16, 0x01100007, "MONO16", 1, 16, TwoBytes, false, Mono, Invalid, Invalid, Invalid)                 \
    X(Mono32f, 0x81200111, "MONO32F", 1, 32, FourBytes, true, Mono, Invalid, Invalid, Invalid)               \
    X(BayerRG8, 0x01080009, "BAYER RG8", 4, 8, OneByte, false, Red, Green, Green, Blue)                      \
    X(BayerGR8, 0x01080008, "BAYER GR8", 4, 8, OneByte, false, Green, Red, Blue, Green)                      \
    X(BayerBG8, 0x0108000B, "BAYER BG8", 4, 8, OneByte, false, Blue, Green, Green, Red)                      \
    X(BayerGB8, 0x0108000A, "BAYER GB8", 4, 8, OneByte, false, Green, Blue, Red, Green)                      \
    X(BayerRG10, 0x0110000D, "BAYER RG10", 4, 10, TwoBytes, false, Red, Green, Green, Blue)                  \
    X(BayerGR10, 0x0110000C, "BAYER GR10", 4, 10, TwoBytes, false, Green, Red, Blue, Green)                  \
    X(BayerBG10, 0x0110000F, "BAYER BG10", 4, 10, TwoBytes, false, Blue, Green, Green, Red)                  \
    X(BayerGB10, 0x0110000E, "BAYER GB10", 4, 10, TwoBytes, false, Green, Blue, Red, Green)                  \
    X(BayerRG12, 0x01100011, "BAYER RG12", 4, 12, TwoBytes, false, Red, Green, Green, Blue)                  \
    X(BayerGR12, 0x01100010, "BAYER GR12", 4, 12, TwoBytes, false, Green, Red, Blue, Green)                  \
    X(BayerBG12, 0x01100013, "BAYER BG12", 4, 12, TwoBytes, false, Blue, Green, Green, Red)                  \
    X(BayerGB12, 0x01100012, "BAYER GB12", 4, 12, TwoBytes, false, Green, Blue, Red, Green)                  \
    X(RGB8, 0x02180014, "RGB8", 3, 8, ThreeBytes, false, Red, Green, Blue, Invalid)                          \
    X(BGR8, 0x02180015, "BGR8", 3, 8, ThreeBytes, false, Blue, Green, Red, Invalid)                          \
    X(RGBa8, 0x02200016, "RGBa8", 4, 8, FourBytes, false, Red, Green, Blue, Alpha)                           \
    X(BGRa8, 0x02200017, "BGRa8", 4, 8, FourBytes, false, Blue, Green, Red, Alpha)                           \
    X(RGB10, 0x02300018, "RGB10", 3, 10, SixBytes, false, Red, Green, Blue, Invalid)                         \
    X(BGR10, 0x02300019, "BGR10", 3, 10, SixBytes, false, Blue, Green, Red, Invalid)                         \
    X(RGB12, 0x0230001A, "RGB12", 3, 12, SixBytes, false, Red, Green, Blue, Invalid)                         \
    X(BGR12, 0x0230001B, "BGR12", 3, 12, SixBytes, false, Blue, Green, Red, Invalid)                         \
    X(RGB14, 0x0230005E, "RGB14", 3, 14, SixBytes, false, Red, Green, Blue, Invalid)                         \
    X(BGR14, 0x0230004A, "BGR14", 3, 14, SixBytes, false, Blue, Green, Red, Invalid)                         \
    X(RGB16, 0x02300033, "RGB16", 3, 16, SixBytes, false, Red, Green, Blue, Invalid)                         \
    X(BGR16, 0x0230004B, "BGR16", 3, 16, SixBytes, false, Blue, Green, Red, Invalid)                         \
    X(RGBa10, 0x0240005F, "RGBa10", 4, 10, EightBytes, false, Red, Green, Blue, Alpha)                       \
    X(BGRa10, 0x0240004C, "BGRa10", 4, 10, EightBytes, false, Blue, Green, Red, Alpha)                       \
    X(RGBa12, 0x02400061, "RGBa12", 4, 12, EightBytes, false, Red, Green, Blue, Alpha)                       \
    X(BGRa12, 0x0240004E, "BGRa12", 4, 12, EightBytes, false, Blue, Green, Red, Alpha)                       \
    X(RGBa14, 0x02400063, "RGBa14", 4, 14, EightBytes, false, Red, Green, Blue, Alpha)                       \
    X(BGRa14, 0x02400050, "BGRa14", 4, 14, EightBytes, false, Blue, Green, Red, Alpha)                       \
    X(RGBa16, 0x02400064, "RGBa16", 4, 16, EightBytes, false, Red, Green, Blue, Alpha)                       \
    X(BGRa16, 0x02400051, "BGRa16", 4, 16, EightBytes, false, Blue, Green, Red, Alpha)

enum class PixelChannelID : std::uint32_t {
    Mono = 0,
    Red = 1,
    Green = 2,
    Blue = 3,
    Alpha = 4,
    Invalid = 255
};

// PFNC codes, plus two of our own. Unscoped on purpose: codes come off the wire as plain numbers.
enum PixelFormatValue : std::uint32_t {
    InvalidFormat = 0,
    RawBlock = 1, // a buffer of `height` bytes whose format is not known yet
#define VX3_PIXEL_FORMAT_VALUE(name, code, ...) name = code,
    VX3_PIXEL_FORMAT_TABLE(VX3_PIXEL_FORMAT_VALUE)
#undef VX3_PIXEL_FORMAT_VALUE
};

// A pixel-format code and what it implies. Codes outside the table have 0 channels, depth 0, the name
// "UNKNOWN" and one byte per pixel.
class VX3_API PixelFormat {
public:
    PixelFormat(unsigned int code) : value_(static_cast<PixelFormatValue>(code)) {}
    PixelFormat(PixelFormatValue value) : value_(value) {}

    PixelFormatValue GetFormat() const { return value_; }
    operator PixelFormatValue() const { return value_; }
    bool IsValid() const { return value_ != InvalidFormat; }
    // Bytes of width x height pixels without padding, 32-bit arithmetic that wraps: check sizes from outside
    // with BuffNeeded64 before trusting them. RawBlock gives `height`.
    unsigned int BuffNeeded(unsigned int width, unsigned int height) const;
    std::uint64_t BuffNeeded64(unsigned int width, unsigned int height) const;
    unsigned int Channels() const;
    PixelChannelID ChannelID(unsigned int index) const;
    unsigned int BitDepth() const;
    bool IsPacked() const;
    // The upper-case display name, "UNKNOWN" outside the table.
    std::string ToString() const;
    // Exact, case-sensitive inverse of ToString; InvalidFormat for every other text.
    static PixelFormatValue FromString(const std::string& name);

private:
    PixelFormatValue value_;
};

} // namespace VX3
