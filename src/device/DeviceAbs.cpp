#include "device/DeviceAbs.h"

#include "core/ExplainFailure.h"
#include "device/StreamAbs.h"
#include "vx3/core/LastFailure.h"
#include "vx3/core/Logger.h"

#include <algorithm>
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

StatusCode DeviceAbs::Connect(DeviceAccess access) {
    const TransitionGate::Pass pass(connecting_);
    if (!pass)
        return Status::WrongState;
    if (connected_)
        return access == access_
                   ? Status::Ok
                   : SetLastFailure(Status::WrongState, Name() + " is connected with another access already");
    access_ = access;
    const ExplainFailure explain(Name());
    const StatusCode status = ConnectP();
    if (Failed(status))
        return explain(status);
    connected_ = true;
    state_.Apply(DeviceEvent::Connected);
    FinishConnect();
    return Status::Ok;
}

// A camera without a usable description, or one that refuses a setting, is connected all the same; that it
// cannot be used is said aloud, and by FeaturesFailure.
void DeviceAbs::FinishConnect() {
    try {
        const StatusCode features = CreateConfigurer();
        const std::string failure = FeaturesFailure();
        if (!failure.empty() && !IsInterface()) // few interfaces have any
            VxLoggerLog(LogLevel::Error, "SDK",
                        "%s: connected without features: %s; it can be neither configured nor started",
                        Name().c_str(), failure.c_str());
        const StatusCode setUp = PostConnect();
        if (Failed(setUp) && !Failed(features))
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
    BeginDisConnect();
    StopAndCloseStreams();
    connected_ = false;
    ReleaseConfigurer();
    const StatusCode status = DisConnectP();
    state_.Apply(DeviceEvent::Disconnected);
    return Failed(status) ? status : Status::Ok;
}

void DeviceAbs::StopAndCloseStreams() {
    for (const auto& stream : Streams()) {
        if (auto* own = dynamic_cast<StreamAbs*>(stream.get()))
            own->StopA();
        else if (stream->IsStreaming())
            stream->Stop();
        stream->Close();
    }
}

void DeviceAbs::Shutdown() {
    DeviceAbs::DisConnect();
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
    if (DeviceState() == DEVICE_STATE::Lost)
        return Status::DeviceLost;
    state_.Apply(DeviceEvent::AcquisitionStarted);
    const StatusCode status = AcquisitionStartP(streamIndex);
    if (Failed(status))
        state_.Apply(DeviceEvent::AcquisitionStopped);
    return status;
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
    for (const auto& dropped : streams_)
        if (auto* stream = dynamic_cast<StreamAbs*>(dropped.get());
            stream != nullptr && std::find(streams.begin(), streams.end(), dropped) == streams.end())
            stream->Retire();
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
        if (!stream->IsStreaming() || !stream->IsStreamingLocally())
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
