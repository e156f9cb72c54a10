#include "simulated/publish/LocalCamera.h"

#include "device/StopForOne.h"
#include "gev/protocol/Bootstrap.h"
#include "vx3/core/IntfDevType.h"
#include "vx3/core/Logger.h"
#include "vx3/core/Utilities.h"
#include "vx3/genicam/IConfigurer.h"
#include "vx3/genicam/IGenIObj.h"

#include <utility>

namespace VX3 {

namespace {

constexpr unsigned StreamBuffers = 8;
// How soon a stream that the local user has stopped is looked after.
constexpr std::chrono::milliseconds LookAgain{50};
constexpr std::uint64_t Nanoseconds = 1000000000;
constexpr std::uint64_t VirtualTicks = 976563; // of GetTimeStampLinux, a second

bool IsFamily(const IDevice& device, IntfDevType family) {
    return (device.DeviceType() & 0xFFFFU) == static_cast<unsigned>(family);
}

} // namespace

LocalCamera::LocalCamera(const std::shared_ptr<IDevice>& device) : device_(device) {
    if (device != nullptr && IsFamily(*device, IntfDevType::Virtual))
        kind_ = Kind::Virtual;
    else if (device != nullptr && IsFamily(*device, IntfDevType::GigEVision))
        kind_ = Kind::GigEVision;
}

bool LocalCamera::CanBePublished(const IDevice* device) {
    return dynamic_cast<const IRemotableDevice*>(device) != nullptr &&
           dynamic_cast<const IGenIObj*>(device) != nullptr;
}

bool LocalCamera::IsLost() const {
    const auto device = Device();
    return device == nullptr || device->DeviceState() == DEVICE_STATE::Lost;
}

// Connection ----------------------------------------------------------------------------------------------

StatusCode LocalCamera::Connect() {
    const auto device = Device();
    auto* const remotable = dynamic_cast<IRemotableDevice*>(device.get());
    if (remotable == nullptr)
        return Status::DeviceLost;
    const StatusCode status = remotable->ConnectRemotely();
    connected_ = !Failed(status) || status == Status::AlreadyConnected;
    return connected_ ? Status::Ok : status;
}

void LocalCamera::DisConnect() {
    const auto device = Device();
    if (!std::exchange(connected_, false))
        return;
    while (!started_.empty())
        StopStream(started_.begin()->first);
    if (auto* const remotable = dynamic_cast<IRemotableDevice*>(device.get()))
        remotable->DisConnectRemotely();
    else
        VxLoggerLog(LogLevel::Warning, "SDK", "GevSimuDevie trying to close a invalid local device.");
}

// Registers -----------------------------------------------------------------------------------------------

StatusCode LocalCamera::Read(std::uint64_t address, WireRoom room) const {
    const auto device = Device();
    auto* const port = dynamic_cast<IGenIObj*>(device.get());
    return port == nullptr ? Status::NotFound
                           : port->ReadPort(address, room.data, static_cast<unsigned>(room.size));
}

StatusCode LocalCamera::Write(std::uint64_t address, WireBytes bytes) const {
    const auto device = Device();
    auto* const port = dynamic_cast<IGenIObj*>(device.get());
    if (port == nullptr)
        return Status::NotFound;
    const StatusCode status = port->WritePort(address, bytes.data, static_cast<unsigned>(bytes.size));
    // What the local user's nodes remember may be true no longer.
    const auto configurer = device->ShareConfigurer();
    const auto map = configurer != nullptr ? configurer->GetNodeMap() : nullptr;
    if (map != nullptr)
        map->InvalidateNodes();
    return status;
}

bool LocalCamera::Description(std::string& name, std::string& bytes) const {
    const auto device = Device();
    const auto configurer = device != nullptr ? device->ShareConfigurer() : nullptr;
    const IXmlData* const xml = configurer != nullptr ? configurer->GetXmlData() : nullptr;
    if (xml == nullptr || xml->GetXmlData() == nullptr)
        return false;
    name = device->ModelName();
    bytes.assign(xml->GetXmlData(), xml->GetXmlData() + xml->GetXmlDataSize());
    return true;
}

std::uint64_t LocalCamera::TickFrequency() const {
    if (kind_ == Kind::Virtual)
        return VirtualTicks;
    std::uint8_t bytes[8] = {};
    if (kind_ != Kind::GigEVision || Failed(Read(Bootstrap::TickFrequencyHigh, {bytes, 4})) ||
        Failed(Read(Bootstrap::TickFrequencyLow, {bytes + 4, 4})))
        return Nanoseconds;
    return Wire::Load<std::uint64_t>(bytes);
}

std::uint64_t LocalCamera::TimeStamp() const {
    if (kind_ == Kind::Virtual)
        return GetTimeStampLinux();
    std::uint8_t bytes[8] = {};
    std::uint8_t latch[4];
    Wire::Store(latch, Bootstrap::LatchTimestamp);
    if (kind_ == Kind::GigEVision && !Failed(Write(Bootstrap::TimestampControl, {latch, 4})) &&
        !Failed(Read(Bootstrap::TimestampHigh, {bytes, 4})) &&
        !Failed(Read(Bootstrap::TimestampLow, {bytes + 4, 4})))
        return Wire::Load<std::uint64_t>(bytes);
    return static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
}

// Streams -------------------------------------------------------------------------------------------------

std::shared_ptr<IStream> LocalCamera::Stream(unsigned index) const {
    const auto device = Device();
    return device != nullptr ? device->ShareStream(index) : nullptr;
}

unsigned LocalCamera::StreamCount() const {
    const auto device = Device();
    return device != nullptr ? device->StreamCnt() : 0;
}

StatusCode LocalCamera::StartStream(unsigned index, ImageCallback callback) {
    if (Device() == nullptr) {
        VxLoggerLog(LogLevel::Warning, "SDK", "GevSimuDevie trying to start a invalid local device.");
        return Status::DeviceLost;
    }
    const auto stream = Stream(index);
    auto* const remotable = dynamic_cast<IRemotableStream*>(stream.get());
    if (remotable == nullptr)
        return Status::NotAvailable;
    const StatusCode status = remotable->StartRemotely(std::move(callback), nullptr, StreamBuffers, nullptr);
    if (!Failed(status))
        started_[index] = {};
    return status;
}

void LocalCamera::StopStream(unsigned index) {
    if (started_.erase(index) == 0)
        return;
    if (Device() == nullptr) {
        VxLoggerLog(LogLevel::Warning, "SDK", "GevsimuDevice trying to stop a invalid localDevice.");
        return;
    }
    if (const auto stream = Stream(index))
        StopForRemoteUser(*stream);
}

StatusCode LocalCamera::Pause(unsigned index) {
    const auto stream = Stream(index);
    if (stream == nullptr)
        return Status::NotAvailable;
    const auto started = started_.find(index);
    if (started != started_.end())
        started->second.paused = true; // before it stops: nobody starts it again
    return Failed(stream->Pause()) ? Status::WrongState : Status::Ok;
}

StatusCode LocalCamera::Restart(unsigned index) {
    const auto stream = Stream(index);
    if (stream == nullptr)
        return Status::NotAvailable;
    const auto started = started_.find(index);
    if (started != started_.end())
        started->second.paused = false;
    return Failed(stream->Restart()) ? Status::WrongState : Status::Ok;
}

void LocalCamera::KeepStreaming(TimePoint now) {
    for (auto& [index, started] : started_) {
        if (started.paused || now < started.lookAgain)
            continue;
        started.lookAgain = now + LookAgain;
        const auto stream = Stream(index);
        if (stream != nullptr && !stream->IsStreaming())
            (void)stream->Restart(); // tried again
    }
}

} // namespace VX3
