#include "platform/genapi/registers/FloatRegNode.h"

#include "platform/genapi/registers/RegisterBits.h"

#include <cmath>
#include <cstring>
#include <limits>

namespace GenApi_3_2 {
namespace Engine {

using GenICam_3_2::OutOfRangeException;

std::size_t FloatRegNode::CheckedLength() const {
    const std::size_t length = core_.Length(*this);
    if (length != 4 && length != 8)
        Fail<OutOfRangeException>(*this,
                                  "floating registers have 4 or 8 bytes, not " + std::to_string(length));
    return length;
}

double FloatRegNode::ReadNumber(bool ignoreCache) {
    const std::size_t length = CheckedLength();
    std::uint8_t bytes[8] = {};
    ReadDevice(bytes, length);
    const std::uint64_t bits = LoadBytes(bytes, length, core_.IsBigEndian());
    double value = 0;
    if (length == 4) {
        const auto low = static_cast<std::uint32_t>(bits);
        float single = 0;
        std::memcpy(&single, &low, sizeof single);
        value = static_cast<double>(single);
    } else {
        std::memcpy(&value, &bits, sizeof value);
    }
    if (ignoreCache && HasValidCache() && value != GetFloat(false))
        Context().GetCache().Refreshed(*this);
    return value;
}

void FloatRegNode::WriteNumber(double value, bool) {
    const std::size_t length = CheckedLength();
    std::uint64_t bits = 0;
    if (length == 4) {
        if (std::isfinite(value) && std::abs(value) > static_cast<double>(std::numeric_limits<float>::max()))
            Fail<OutOfRangeException>(*this, "the value does not fit 4 bytes");
        const auto single = static_cast<float>(value);
        std::uint32_t low = 0;
        std::memcpy(&low, &single, sizeof low);
        bits = low;
        value = static_cast<double>(single);
    } else {
        std::memcpy(&bits, &value, sizeof bits);
    }
    std::uint8_t bytes[8] = {};
    StoreBytes(bytes, length, core_.IsBigEndian(), bits);
    WriteDevice(bytes, length);
    if (KeepsWritten())
        value_.Keep(value);
}

FloatRange FloatRegNode::ReadRange() {
    FloatRange range;
    if (CheckedLength() == 4) {
        range.max = static_cast<double>(std::numeric_limits<float>::max());
        range.min = -range.max;
    }
    return range;
}

} // namespace Engine
} // namespace GenApi_3_2
