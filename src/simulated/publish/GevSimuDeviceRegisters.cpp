// What the addresses of a published camera mean: registers of the server, its description, or the camera's.
#include "gev/protocol/RemoteAddresses.h"
#include "simulated/publish/GevSimuDevice.h"
#include "vx3/core/Logger.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace VX3 {

namespace {

using namespace Bootstrap;
using Place = AddressWindow::Place;
namespace AckStatus = Gvcp::AckStatus;

constexpr std::uint32_t CommandElsewhere = 0x0FB0; // of cameras whose own command register is not known
constexpr std::size_t LongestText = 64;
constexpr std::uint64_t LargestShort =
    0xFFFFFFFF; // of addresses; longer ones come with the extended commands

bool IsRemote(std::uint64_t address) {
    return address <= LargestShort && (address & RemoteAddresses::RemoteBit) != 0;
}

std::uint16_t ReadStatus(StatusCode status) {
    if (!Failed(status))
        return AckStatus::Success;
    if (Status::IsGvcp(status)) // the camera's own answer
        return static_cast<std::uint16_t>(static_cast<std::uint32_t>(status));
    switch (status) {
    case Status::NotFound:
        return AckStatus::InvalidAddress;
    case Status::DeviceLost:
    case Status::NotConnected:
    case Status::TimeOut:
        return AckStatus::LocalProblem;
    default:
        return AckStatus::Error;
    }
}

std::uint16_t WriteStatus(StatusCode status) {
    if (status == Status::NotAvailable || status == Status::NotFound)
        return AckStatus::Error;
    return ReadStatus(status);
}

// "pause 1": the number behind the word; false for any other text.
bool IndexBehind(const char* word, const std::string& text, unsigned& index) {
    const std::size_t length = std::strlen(word);
    if (text.compare(0, length, word) != 0 || text.size() <= length || text.size() > length + 4 ||
        text.find_first_not_of("0123456789", length) != std::string::npos)
        return false;
    index = static_cast<unsigned>(std::strtoul(text.c_str() + length, nullptr, 10));
    return true;
}

} // namespace

AddressWindow::Route GevSimuDevice::RouteOf(std::uint64_t address, std::size_t size) const {
    if (address > LargestShort)
        return {Place::Camera, address}; // as it is
    return description_.window.Find(static_cast<std::uint32_t>(address) & ~RemoteAddresses::RemoteBit, size);
}

// As the owner sees them ----------------------------------------------------------------------------------

StatusCode GevSimuDevice::ReadReg32(std::uint32_t address, std::uint32_t& value) {
    std::uint8_t bytes[4] = {};
    const StatusCode status = ReadMemory(address, {bytes, sizeof(bytes)});
    if (Failed(status))
        return status;
    // Between devices of this library the number travels, not its bytes.
    if (IsRemote(address) && RouteOf(address, sizeof(bytes)).place == Place::Camera)
        std::memcpy(&value, bytes, sizeof(value));
    else
        value = Wire::Load<std::uint32_t>(bytes);
    return Status::Ok;
}

StatusCode GevSimuDevice::WriteReg32(std::uint32_t address, std::uint32_t value) {
    const AddressWindow::Route route = RouteOf(address, sizeof(value));
    std::uint8_t bytes[4];
    switch (route.place) {
    case Place::Server:
        return WriteServer(static_cast<std::uint32_t>(route.address), value);
    case Place::Camera:
        if (IsRemote(address))
            std::memcpy(bytes, &value, sizeof(bytes));
        else
            Wire::Store(bytes, value);
        return WriteCamera(route.address, {bytes, sizeof(bytes)});
    default:
        return Status::NotFound;
    }
}

StatusCode GevSimuDevice::ReadMemory(std::uint64_t address, WireRoom room) {
    const AddressWindow::Route route = RouteOf(address, room.size);
    switch (route.place) {
    case Place::Server:
        return registers_.ReadMemory(static_cast<std::uint32_t>(route.address), room);
    case Place::Camera:
        return camera_.IsLost() ? Status::DeviceLost : camera_.Read(route.address, room);
    case Place::Description: {
        // Its last word may reach past its end.
        const std::string& archive = description_.archive;
        if (route.address >= archive.size())
            return Status::NotFound;
        const auto at = static_cast<std::size_t>(route.address);
        const std::size_t there = std::min(room.size, archive.size() - at);
        std::memset(room.data, 0, room.size);
        std::memcpy(room.data, archive.data() + at, there);
        return Status::Ok;
    }
    default:
        return Status::NotFound;
    }
}

StatusCode GevSimuDevice::WriteMemory(std::uint64_t address, WireBytes bytes) {
    const AddressWindow::Route route = RouteOf(address, bytes.size);
    switch (route.place) {
    case Place::Server:
        if (route.address == RemoteAddresses::TextCommands)
            return Command(bytes);
        return WriteServerMemory(static_cast<std::uint32_t>(route.address), bytes);
    case Place::Camera:
        return WriteCamera(route.address, bytes);
    default:
        return Status::NotFound;
    }
}

// The server's registers ----------------------------------------------------------------------------------

StatusCode GevSimuDevice::WriteServer(std::uint32_t address, std::uint32_t value) {
    if (address == CommandElsewhere)
        return StartWaiting();
    if (address == TimestampControl) {
        if ((value & LatchTimestamp) != 0)
            TakeTimestamp();
        return Status::Ok;
    }
    const bool ofStream =
        address >= StreamPort && address < StreamRegister(StreamPort, GevBootStrapRegs::MostChannels);
    const unsigned channel = ofStream ? (address - StreamPort) / StreamChannelStride : 0;
    const std::uint32_t reg = address - channel * StreamChannelStride;
    if (ofStream && reg == StreamPacketSize && (value & Bootstrap::FireTestPacket) != 0) {
        FireTestPacket(channel, value);
        return Status::Ok;
    }
    const StatusCode status = registers_.WriteReg32(address, value);
    // A port that was set before the address waits for it.
    if (ofStream && reg == StreamDestination && !Failed(status) && value != 0 &&
        Destination(channel).port != 0 && !channels_[channel].sender->IsSending())
        return ArmStream(channel);
    return status;
}

StatusCode GevSimuDevice::WriteServerMemory(std::uint32_t address, WireBytes bytes) {
    if (address % 4 != 0 || bytes.size % 4 != 0)
        return registers_.WriteMemory(address, bytes);
    for (std::size_t at = 0; at < bytes.size; at += 4) {
        const StatusCode status =
            WriteServer(address + static_cast<std::uint32_t>(at), Wire::Load<std::uint32_t>(bytes.data + at));
        if (Failed(status))
            return status;
    }
    return Status::Ok;
}

void GevSimuDevice::FireTestPacket(unsigned channel, std::uint32_t value) {
    registers_.SetValue(StreamRegister(StreamPacketSize, channel), value & ~Bootstrap::FireTestPacket);
    // Whoever tests wants no images yet, until he starts acquisition.
    channels_[channel].due = TimePoint::max();
    const std::uint32_t ip = registers_.Value(CurrentIp);
    if (const auto line = Simulated::StreamChannel::Open(ip))
        line->SendTestPacket(Destination(channel), value & PacketSizeMask, true);
}

void GevSimuDevice::TakeTimestamp() {
    const std::uint64_t now = camera_.TimeStamp();
    registers_.SetValue(TimestampHigh, static_cast<std::uint32_t>(now >> 32));
    registers_.SetValue(TimestampLow, static_cast<std::uint32_t>(now));
}

StatusCode GevSimuDevice::Command(WireBytes bytes) {
    std::string text;
    (void)WireReader(bytes).Text(std::min(bytes.size, LongestText), text);
    unsigned index = 0;
    if (IndexBehind("restart ", text, index))
        return camera_.Restart(index);
    if (IndexBehind("pause ", text, index))
        return camera_.Pause(index);
    return Status::NotFound;
}

// The camera's --------------------------------------------------------------------------------------------

StatusCode GevSimuDevice::WriteCamera(std::uint64_t address, WireBytes bytes) {
    const auto& ignored = description_.ignoredRegisters;
    if (std::find(ignored.begin(), ignored.end(), address) != ignored.end())
        return StartWaiting(); // acquisition follows the stream's port; whoever starts it waits no longer
    return camera_.IsLost() ? Status::DeviceLost : camera_.Write(address, bytes);
}

// As hosts see them ---------------------------------------------------------------------------------------

std::uint16_t GevSimuDevice::Read(std::uint64_t address, WireRoom room) {
    return ReadStatus(ReadMemory(address, room));
}

std::uint16_t GevSimuDevice::ReadRegister(std::uint32_t address, std::uint32_t& value) {
    return ReadStatus(ReadReg32(address, value));
}

std::uint16_t GevSimuDevice::Write(std::uint64_t address, WireBytes bytes) {
    const AddressWindow::Route route = RouteOf(address, bytes.size);
    const auto at = static_cast<std::uint32_t>(route.address);
    if (route.place == Place::Description ||
        (route.place == Place::Server && at != RemoteAddresses::TextCommands &&
         !registers_.IsWritable(at, bytes.size)))
        return AckStatus::WriteProtect;
    return WriteStatus(WriteMemory(address, bytes));
}

std::uint16_t GevSimuDevice::WriteRegister(std::uint32_t address, std::uint32_t value) {
    VxLoggerLog(LogLevel::Debug, "SDK", "GevSimuDevice WriteReg, addr:0x%x value:0x%x", address, value);
    const AddressWindow::Route route = RouteOf(address, sizeof(value));
    if (route.place == Place::Description ||
        (route.place == Place::Server &&
         !registers_.IsWritable(static_cast<std::uint32_t>(route.address), sizeof(value))))
        return AckStatus::WriteProtect;
    return WriteStatus(WriteReg32(address, value));
}

} // namespace VX3
