#include "platform/genapi/base/AccessModes.h"

namespace GenApi_3_2 {
namespace Engine {

EAccessMode CombineAccess(EAccessMode left, EAccessMode right) {
    if (left == NI || right == NI)
        return NI;
    const bool canRead = IsReadable(left) && IsReadable(right);
    const bool canWrite = IsWritable(left) && IsWritable(right);
    if (canRead)
        return canWrite ? RW : RO;
    return canWrite ? WO : NA;
}

EAccessMode LockedAccess(EAccessMode mode) {
    if (mode == RW)
        return RO;
    return mode == WO ? NA : mode;
}

std::optional<EAccessMode> AccessModeOfText(std::string_view text) {
    // The usual ones first: each description has thousands of them.
    for (const EAccessMode mode : {RO, RW, WO, NA, NI})
        if (text == std::string_view(AccessText(mode), 2))
            return mode;
    return std::nullopt;
}

const char* AccessText(EAccessMode mode) {
    switch (mode) {
    case NI:
        return "NI";
    case WO:
        return "WO";
    case RO:
        return "RO";
    case RW:
        return "RW";
    default:
        return "NA";
    }
}

} // namespace Engine
} // namespace GenApi_3_2
