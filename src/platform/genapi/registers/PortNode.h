// Port: where registers are read and written. Turns whatever the device's port throws into GenApi exceptions.
#pragma once

#include "platform/genapi/nodes/NodeBase.h"

#include <cstddef>
#include <cstdint>

namespace GenApi_3_2 {
namespace Engine {

class PortNode final : public NodeBase, public IPortConstruct {
public:
    PortNode(NodeContext& context, const NodeRecord& record) : NodeBase(context, record, intfIPort) {}

    void Read(void* pBuffer, std::int64_t Address, std::int64_t Length) override;
    void Write(const void* pBuffer, std::int64_t Address, std::int64_t Length) override;
    void SetPortImpl(IPort* pPort) override;
    EAccessMode GetAccessMode() const override { return NodeBase::GetAccessMode(); }

    // For registers, lock held: one access of the device each. `user` is named in failures.
    void Read(const NodeBase& user, std::uint64_t address, std::uint8_t* to, std::size_t length);
    void Write(const NodeBase& user, std::uint64_t address, const std::uint8_t* from, std::size_t length);
    bool SwapsBytes() const { return swapsBytes_; }

protected:
    bool Take(const Element& element) override;
    EAccessMode InnerAccess() const override { return port_ ? port_->GetAccessMode() : NA; }

private:
    IPort* port_ = nullptr;
    bool swapsBytes_ = false;
};

} // namespace Engine
} // namespace GenApi_3_2
