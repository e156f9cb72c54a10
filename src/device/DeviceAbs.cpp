#include "device/DeviceAbs.h"

#include "vx3/core/Logger.h"

#include <exception>

namespace VX3 {

DeviceAbs::DeviceAbs(unsigned int typeId, const char* name, IDevice* parent)
    : object_(std::make_unique<ObjectAbs>(typeId, name)),
      parent_(ParentLink::To(parent)),
      children_(std::make_shared<ParentLink>(this)) {}

DeviceAbs::~DeviceAbs() {
    CutChildren();
}

std::shared_ptr<IConfigurer> DeviceAbs::ShareConfigurer() {
    return nullptr;
}

// ---- connection ----

StatusCode DeviceAbs::Connect() {
    const TransitionGate::Pass pass(connecting_);
    if (!pass)
        return Status::WrongState;
    if (connected_)
        return Status::Ok;
    const StatusCode status = ConnectP();
    if (Failed(status))
        return status;
    connected_ = true;
    state_.Apply(DeviceEvent::Connected);
    FinishConnect();
    return Status::Ok;
}

// A camera without a usable description, or one that refuses a setting, is connected all the same.
void DeviceAbs::FinishConnect() {
    try {
        const StatusCode features = CreateConfigurer();
        if (Failed(features) && features != Status::NotSupported) // some kinds have none
            VxLoggerLog(LogLevel::Warning, "SDK", "%s: connected without features: %s", Name().c_str(),
                        StatusText(features).c_str());
        const StatusCode setUp = PostConnect();
        if (Failed(setUp))
            VxLoggerLog(LogLevel::Warning, "SDK", "%s: connected, but not set up: %s", Name().c_str(),
                        StatusText(setUp).c_str());
    } catch (const std::exception& error) {
        VxLoggerLog(LogLevel::Error, "SDK", "%s: %s", Name().c_str(), error.what());
    } catch (const char* text) {
        VxLoggerLog(LogLevel::Error, "SDK", "%s: %s", Name().c_str(), text);
    }
}

StatusCode DeviceAbs::DisConnect() {
    const TransitionGate::Pass pass(connecting_);
    if (!pass)
        return Status::WrongState;
    if (!connected_)
        return Status::Ok;
    StopAndCloseStreams();
    connected_ = false;
    ReleaseConfigurer();
    state_.Apply(DeviceEvent::Disconnected);
    return DisConnectP();
}

void DeviceAbs::StopAndCloseStreams() {
    for (const auto& stream : Streams()) {
        if (stream->IsStreaming())
            stream->Stop();
        stream->Close();
    }
}

void DeviceAbs::Shutdown() {
    DisConnect();
    // Streams of software devices run without a connection too.
    StopAndCloseStreams();
}

void DeviceAbs::ReportLost() {
    state_.Apply(DeviceEvent::HeartbeatLost);
    parent_->TellLost(this);
}

// ---- sub-devices ----

std::vector<std::weak_ptr<IDevice>> DeviceAbs::SubDevices() {
    MutexLock lock(subDevicesMutex_);
    return subDevices_;
}

void DeviceAbs::UpdateSubDevices(std::vector<std::weak_ptr<IDevice>> devices) {
    MutexLock lock(subDevicesMutex_);
    subDevices_ = std::move(devices);
}

StatusCode DeviceAbs::AddSubDevice(const std::string&) {
    return Status::NotSupported;
}
StatusCode DeviceAbs::MonitorSubDevices(bool, unsigned int, unsigned int, SubDeviceCallback) {
    return Status::NotSupported;
}
StatusCode DeviceAbs::UpdateSubDevices(bool) {
    return Status::NotSupported;
}
StatusCode DeviceAbs::SubDeviceLost(IDevice*) {
    return Status::NotSupported;
}
StatusCode DeviceAbs::SetIpAddress(const GevDeviceAddress*) {
    return Status::NotSupported;
}
StatusCode DeviceAbs::GetIpAddress(GevDeviceAddress*) const {
    return Status::NotSupported;
}

// ---- acquisition and streams ----

StatusCode DeviceAbs::StartAcquisition(unsigned int streamIndex) {
    if (!connected_)
        return Status::WrongState;
    state_.Apply(DeviceEvent::AcquisitionStarted);
    return AcquisitionStartP(streamIndex);
}

StatusCode DeviceAbs::StopAcquisition(unsigned int streamIndex) {
    if (!connected_)
        return Status::WrongState;
    if (streamIndex >= StreamCnt())
        return Status::NotFound;
    state_.Apply(DeviceEvent::AcquisitionStopped);
    return AcquisitionStopP(streamIndex);
}

std::vector<std::shared_ptr<IStream>> DeviceAbs::Streams() const {
    MutexLock lock(streamsMutex_);
    return streams_;
}

void DeviceAbs::UpdateStreams(std::vector<std::shared_ptr<IStream>>& streams) {
    std::vector<std::shared_ptr<IStream>> expired; // destroyed after the lock is gone: that may take a while
    MutexLock lock(streamsMutex_);
    if (!streams_.empty())
        retired_.push_back(std::move(streams_));
    streams_ = std::move(streams);
    streams.clear();
    if (retired_.size() > KeptGenerations) {
        expired = std::move(retired_.front());
        retired_.pop_front();
    }
}

bool DeviceAbs::IsStreamingLocally() const {
    for (const auto& stream : Streams())
        if (stream->IsStreamingLocally())
            return true;
    return false;
}

unsigned int DeviceAbs::StreamCnt() const {
    MutexLock lock(streamsMutex_);
    return static_cast<unsigned int>(streams_.size());
}

StatusCode DeviceAbs::StopAllStreams() {
    StatusCode result = Status::Ok;
    for (const auto& stream : Streams()) {
        if (!stream->IsStreaming())
            continue;
        const StatusCode status = stream->Stop();
        if (Failed(status))
            result = status;
    }
    return result;
}

IStream* DeviceAbs::GetStream(unsigned int index) {
    return DeviceAbs::ShareStream(index).get();
}

std::shared_ptr<IStream> DeviceAbs::ShareStream(unsigned int index) {
    MutexLock lock(streamsMutex_);
    return connected_ && index < streams_.size() ? streams_[index] : nullptr;
}

} // namespace VX3
