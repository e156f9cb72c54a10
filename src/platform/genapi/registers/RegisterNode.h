// Register and ConfRom: bytes of the device as they are.
#pragma once

#include "platform/genapi/registers/RegisterFace.h"

#include <vector>

namespace GenApi_3_2 {
namespace Engine {

class RegisterNode final : public RegisterFace<NodeBase> {
public:
    RegisterNode(NodeContext& context, const NodeRecord& record)
        : RegisterFace(context, record, intfIRegister) {}
    // All of it, lock held.
    const std::vector<std::uint8_t>& Bytes(bool ignoreCache);
    void DropValue() override { isKnown_ = false; }

protected:
    void GetBytes(std::uint8_t* to, std::size_t length, bool ignoreCache) override;
    gcstring ShownText(bool ignoreCache) override;
    void TakeShownText(const gcstring& text, bool verify) override;
    bool HasValidCache() const override { return isKnown_; }

private:
    std::vector<std::uint8_t> bytes_;
    bool isKnown_ = false;
};

} // namespace Engine
} // namespace GenApi_3_2
