#include "platform/genapi/registers/RegisterNode.h"

#include "platform/genapi/base/NumberText.h"
#include "platform/genapi/base/ValueText.h"

#include <algorithm>

namespace GenApi_3_2 {
namespace Engine {

using GenICam_3_2::InvalidArgumentException;

const std::vector<std::uint8_t>& RegisterNode::Bytes(bool ignoreCache) {
    Enter();
    if (isKnown_ && !ignoreCache)
        return bytes_;
    isKnown_ = false;
    bytes_.assign(core_.Length(*this), 0);
    ReadDevice(bytes_.data(), bytes_.size());
    isKnown_ = IsCachable();
    return bytes_;
}

void RegisterNode::GetBytes(std::uint8_t* to, std::size_t length, bool ignoreCache) {
    if (!isKnown_ && length < core_.Length(*this))
        return ReadDevice(to, length); // a part is read as it is asked for
    const auto& bytes = Bytes(ignoreCache);
    std::copy_n(bytes.begin(), std::min(length, bytes.size()), to);
}

gcstring RegisterNode::ShownText(bool ignoreCache) {
    const auto& bytes = Bytes(ignoreCache);
    return BytesText(bytes.data(), bytes.size()).c_str();
}

void RegisterNode::TakeShownText(const gcstring& text, bool) {
    std::string_view digits = Strip(std::string_view(text.c_str(), text.size()));
    if (digits.substr(0, 2) == "0x" || digits.substr(0, 2) == "0X")
        digits.remove_prefix(2);
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
        const auto byte = ParseInteger("0x" + std::string(digits.substr(i, 2)));
        if (!byte)
            break;
        bytes.push_back(static_cast<std::uint8_t>(*byte));
    }
    if (digits.size() % 2 != 0 || 2 * bytes.size() != digits.size())
        Fail<InvalidArgumentException>(*this, std::string("'") + text.c_str() + "' is not hexadecimal");
    if (bytes.size() != core_.Length(*this))
        Fail<InvalidArgumentException>(*this, "takes " + std::to_string(core_.Length(*this)) +
                                                  " bytes, not " + std::to_string(bytes.size()));
    SetBytes(bytes.data(), bytes.size());
}

} // namespace Engine
} // namespace GenApi_3_2
