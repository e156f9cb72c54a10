#include "vx3/image/PixelFormat.h"

namespace VX3 {

namespace {

// How many bytes p pixels take: p x numerator >> shift.
struct BufferRule {
    unsigned int numerator;
    unsigned int shift;
};
constexpr BufferRule OneByte{1, 0};
constexpr BufferRule TwoBytes{2, 0};
constexpr BufferRule ThreeBytes{3, 0};
constexpr BufferRule FourBytes{4, 0};
constexpr BufferRule SixBytes{6, 0};
constexpr BufferRule EightBytes{8, 0};
constexpr BufferRule FiveQuarters{5, 2};
constexpr BufferRule ThreeHalves{3, 1};

struct FormatRow {
    const char* name;
    unsigned int channels;
    unsigned int bitDepth;
    BufferRule rule;
    bool packed;
    PixelChannelID ids[4];
};

#define VX3_PIXEL_FORMAT_ROW(name, code, text, channels, depth, rule, packed, a, b, c, d)                    \
    constexpr FormatRow Row##name{                                                                           \
        text, channels, depth,                                                                               \
        rule, packed,   {PixelChannelID::a, PixelChannelID::b, PixelChannelID::c, PixelChannelID::d}};
VX3_PIXEL_FORMAT_TABLE(VX3_PIXEL_FORMAT_ROW)
#undef VX3_PIXEL_FORMAT_ROW

constexpr PixelChannelID NoId = PixelChannelID::Invalid;
constexpr FormatRow UnknownRow{"UNKNOWN", 0, 0, OneByte, false, {NoId, NoId, NoId, NoId}};

const FormatRow& RowOf(PixelFormatValue value) {
    switch (value) {
#define VX3_PIXEL_FORMAT_CASE(name, ...)                                                                     \
    case name:                                                                                               \
        return Row##name;
        VX3_PIXEL_FORMAT_TABLE(VX3_PIXEL_FORMAT_CASE)
#undef VX3_PIXEL_FORMAT_CASE
    default:
        return UnknownRow;
    }
}

} // namespace

unsigned int PixelFormat::BuffNeeded(unsigned int width, unsigned int height) const {
    if (value_ == RawBlock)
        return height;
    const BufferRule rule = RowOf(value_).rule;
    return (width * height * rule.numerator) >> rule.shift;
}

std::uint64_t PixelFormat::BuffNeeded64(unsigned int width, unsigned int height) const {
    if (value_ == RawBlock)
        return height;
    const BufferRule rule = RowOf(value_).rule;
    // Saturates instead of wrapping: nothing near 2^64 bytes is ever allocated.
    std::uint64_t bytes = 0;
    if (__builtin_mul_overflow(static_cast<std::uint64_t>(width) * height, rule.numerator, &bytes))
        return UINT64_MAX;
    return bytes >> rule.shift;
}

unsigned int PixelFormat::Channels() const {
    return RowOf(value_).channels;
}

PixelChannelID PixelFormat::ChannelID(unsigned int index) const {
    const FormatRow& row = RowOf(value_);
    return index < row.channels ? row.ids[index] : PixelChannelID::Invalid;
}

unsigned int PixelFormat::BitDepth() const {
    return RowOf(value_).bitDepth;
}

bool PixelFormat::IsPacked() const {
    return RowOf(value_).packed;
}

std::string PixelFormat::ToString() const {
    return RowOf(value_).name;
}

PixelFormatValue PixelFormat::FromString(const std::string& name) {
#define VX3_PIXEL_FORMAT_MATCH(format, ...)                                                                  \
    if (name == Row##format.name)                                                                            \
        return format;
    VX3_PIXEL_FORMAT_TABLE(VX3_PIXEL_FORMAT_MATCH)
#undef VX3_PIXEL_FORMAT_MATCH
    return InvalidFormat;
}

} // namespace VX3
