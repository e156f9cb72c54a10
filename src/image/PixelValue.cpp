#include "vx3/image/PixelValue.h"

namespace VX3 {

namespace {
constexpr unsigned int GreenShift = 16;
constexpr unsigned int RedShift = 32;
constexpr unsigned int OtherShift = 48;
constexpr std::uint64_t ComponentMask = 0xFFFFU;
} // namespace

PixelValue::PixelValue(unsigned int value, PixelFormat format)
    : value_(value), format_(format), monochrome_(format.Channels() == 1) {}

PixelValue::PixelValue(unsigned int r, unsigned int g, unsigned int b, unsigned int a, PixelFormat format)
    : value_((b & ComponentMask) | (g & ComponentMask) << GreenShift | (r & ComponentMask) << RedShift |
             (a & ComponentMask) << OtherShift),
      format_(format),
      monochrome_(format.Channels() == 1) {}

std::uint64_t PixelValue::Value(PixelChannelID channel) const {
    if (monochrome_)
        return value_;
    switch (channel) {
    case PixelChannelID::Blue:
        return value_ & ComponentMask;
    case PixelChannelID::Green:
        return value_ >> GreenShift & ComponentMask;
    case PixelChannelID::Red:
        return value_ >> RedShift & ComponentMask;
    default:
        return value_ >> OtherShift;
    }
}

} // namespace VX3
