// One pixel: a grey level, or four 16-bit components packed into 64 bits.
#pragma once

#include "vx3/image/PixelFormat.h"

#include <cstdint>

namespace VX3 {

class VX3_API PixelValue {
public:
    PixelValue(unsigned int value, PixelFormat format);
    PixelValue(unsigned int r, unsigned int g, unsigned int b, unsigned int a, PixelFormat format);

    PixelFormat Format() const { return format_; }
    bool IsMonoChrome() const { return monochrome_; }
    // A monochrome pixel answers its whole value for every channel.
    std::uint64_t Value(PixelChannelID channel) const;

private:
    std::uint64_t value_;
    PixelFormat format_;
    bool monochrome_;
};

} // namespace VX3
