#include "simulated/camera/CameraTarget.h"

#include "gev/protocol/Bootstrap.h"

namespace VX3 {
namespace Simulated {

namespace AckStatus = Gvcp::AckStatus;

std::uint16_t CameraTarget::Read(std::uint64_t address, WireRoom room) {
    return registers_.Read(address, room) ? AckStatus::Success : AckStatus::InvalidAddress;
}

// What describes the frame does not change while a host has it locked.
bool CameraTarget::IsLocked(std::uint64_t address, std::size_t size) const {
    const bool lockable = address < CameraRegister::PixelFormat + 4 && address + size > CameraRegister::Width;
    return lockable && registers_.Value(CameraRegister::ParamsLocked) != 0;
}

std::uint16_t CameraTarget::Write(std::uint64_t address, WireBytes bytes) {
    if (!registers_.Contains(address, bytes.size))
        return AckStatus::InvalidAddress;
    if (!registers_.IsWritable(address, bytes.size))
        return AckStatus::WriteProtect;
    if (IsLocked(address, bytes.size))
        return AckStatus::AccessDenied;
    if (!registers_.Write(address, bytes))
        return AckStatus::InvalidAddress;
    if (address % 4 == 0)
        for (std::size_t at = 0; at + 4 <= bytes.size; at += 4)
            streams_.Written(static_cast<std::uint32_t>(address + at),
                             Wire::Load<std::uint32_t>(bytes.data + at));
    return AckStatus::Success;
}

std::uint16_t CameraTarget::ControlChanged(std::uint32_t privilege, const NET_ENDPOINT& holder) {
    (void)registers_.SetValue(Bootstrap::ControlChannelPrivilege, privilege);
    if (tellsPrimary_) {
        (void)registers_.SetValue(Bootstrap::PrimaryApplicationIp, holder.ip);
        (void)registers_.SetValue(Bootstrap::PrimaryApplicationPort, holder.port);
    }
    if (privilege == Bootstrap::ReleaseControl)
        streams_.StopAll();
    return AckStatus::Success;
}

std::uint16_t CameraTarget::ForceIp(const Gvcp::ForceIpRequest& request) {
    (void)registers_.SetValue(Bootstrap::CurrentIp, request.ip);
    (void)registers_.SetValue(Bootstrap::CurrentMask, request.mask);
    (void)registers_.SetValue(Bootstrap::CurrentGateway, request.gateway);
    return AckStatus::Success;
}

} // namespace Simulated
} // namespace VX3
