#include "platform/genapi/registers/StringRegNode.h"

#include <algorithm>
#include <vector>

namespace GenApi_3_2 {
namespace Engine {

using GenICam_3_2::OutOfRangeException;

std::int64_t StringRegNode::MaxLength() {
    return static_cast<std::int64_t>(core_.Length(*this));
}

std::string StringRegNode::ReadText(bool ignoreCache) {
    if (isKnown_ && !ignoreCache)
        return text_;
    std::vector<std::uint8_t> bytes(core_.Length(*this));
    ReadDevice(bytes.data(), bytes.size());
    std::string text(bytes.begin(), std::find(bytes.begin(), bytes.end(), 0));
    if (isKnown_ && text != text_)
        Context().GetCache().Refreshed(*this);
    text_ = text;
    isKnown_ = IsCachable();
    return text;
}

void StringRegNode::WriteText(const std::string& value, bool) {
    // A NUL in the middle would hide what follows.
    const std::string visible = value.substr(0, value.find('\0'));
    std::vector<std::uint8_t> bytes(core_.Length(*this), 0);
    if (visible.size() > bytes.size())
        Fail<OutOfRangeException>(*this, "takes at most " + std::to_string(bytes.size()) + " bytes, not " +
                                             std::to_string(visible.size()));
    std::copy(visible.begin(), visible.end(), bytes.begin());
    WriteDevice(bytes.data(), bytes.size());
    text_ = visible;
    isKnown_ = IsCachable() && KeepsWritten();
}

} // namespace Engine
} // namespace GenApi_3_2
