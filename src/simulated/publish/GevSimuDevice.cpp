#include "simulated/publish/GevSimuDevice.h"

#include "core/DefaultConfig.h"
#include "gev/net/NICEnumerator.h"
#include "gev/net/OwnPorts.h"
#include "vx3/core/IntfDevType.h"
#include "vx3/core/LastFailure.h"
#include "vx3/core/Logger.h"
#include "vx3/core/Utilities.h"

#include <algorithm>
#include <cstring>

namespace VX3 {

namespace {

using namespace Bootstrap;

constexpr std::uint64_t UnknownLinkLimit = 104857600; // bit/s: what any link of today carries
constexpr std::size_t DefaultResendFrames = 8;
// A stream runs as long as its port is set. It begins when acquisition is started, for which hosts get ready
// only after they have set the port, or only test packets before; or after this time.
constexpr std::chrono::milliseconds LongestWait{500};
constexpr std::uint32_t UnknownSpeed = 1000;

std::string Or(const std::string& text, const char* otherwise) {
    return text.empty() ? otherwise : text;
}

} // namespace

std::shared_ptr<GevSimuDevice> CreateGevSimuDevice(std::uint16_t gvcpPort, std::uint16_t gvspPort,
                                                   const std::shared_ptr<IDevice>& device,
                                                   PublishOptions options, unsigned slot) {
    GevBootStrapRegsValue identity;
    identity.macLow += slot;
    identity.serialNumber = std::to_string(1234567890U + slot);
    if (device != nullptr) {
        identity.manufacturerName = Or(device->VendorName(), identity.manufacturerName.c_str());
        identity.modelName = Or(device->ModelName(), identity.modelName.c_str());
        identity.deviceVersion = Or(device->DeviceVersion(), identity.deviceVersion.c_str());
        identity.manufacturerInfo = Or(device->ManufacturerInfo(), identity.manufacturerInfo.c_str());
        identity.serialNumber = Or(device->SerialNumber(), identity.serialNumber.c_str());
        identity.userName = device->UserName();
    }
    options.port = gvcpPort;
    return std::make_shared<GevSimuDevice>(device, identity, options, gvspPort);
}

GevSimuDevice::GevSimuDevice(const std::shared_ptr<IDevice>& device, const GevBootStrapRegsValue& identity,
                             const PublishOptions& options, std::uint16_t gvspPort)
    : name_(device != nullptr ? device->UniqueName() : std::string()),
      options_(options),
      gvspPort_(gvspPort),
      camera_(device),
      registers_(identity, gvspPort, Callbacks()),
      server_(*this, true, 0) {
    Describe();
}

GevSimuDevice::~GevSimuDevice() {
    StopMonitor();
}

std::string GevSimuDevice::UniqueName() const {
    return name_;
}

// The server ----------------------------------------------------------------------------------------------

StatusCode GevSimuDevice::StartMonitor() {
    if (monitoring_)
        return Status::WrongState;
    std::uint16_t taken = 0;
    if (!server_.Bind(options_.address, options_.port))
        taken = options_.port;
    else if (options_.standardPort && !server_.BindToo(options_.address, Gvcp::Port))
        taken = Gvcp::Port;
    if (taken != 0) {
        server_.Stop();
        return SetLastFailure(
            Status::OpenFailed,
            StringFormat("UDP port %u of this host is taken, by another camera that is published or "
                         "by another program",
                         static_cast<unsigned>(taken)));
    }
    OwnPorts::Add(options_.port);
    if (options_.standardPort)
        OwnPorts::Add(Gvcp::Port);
    registers_.SetValue(ControlChannelPrivilege, ReleaseControl);
    server_.Start();
    monitoring_ = true;
    return Status::Ok;
}

void GevSimuDevice::StopMonitor() {
    if (!monitoring_.exchange(false))
        return;
    server_.Stop();
    OwnPorts::Remove(options_.port);
    if (options_.standardPort)
        OwnPorts::Remove(Gvcp::Port);
    (void)ControlChanged(ReleaseControl, {});
}

PublishState GevSimuDevice::State() const {
    PublishState state;
    state.name = name_;
    state.port = options_.port;
    state.streamPort = gvspPort_;
    state.standardPort = options_.standardPort;
    state.cameraLost = camera_.IsLost();
    for (const Channel& channel : channels_) {
        const GevSimuGvsp::Counts counts = channel.sender->GetCounts();
        state.streams += channel.sender->IsSending() ? 1 : 0;
        state.frames += counts.stream.frames;
        state.packets += counts.stream.packets;
        state.bytes += counts.stream.bytes;
        state.packetsResent += counts.stream.packetsResent;
        state.requestsNotServed += counts.stream.requestsNotServed;
        state.overLimit += counts.overLimit;
        state.overrun += counts.overrun;
    }
    MutexLock lock(stateMutex_);
    state.controller = controller_;
    return state;
}

std::uint16_t GevSimuDevice::Identify(const NET_ENDPOINT& asker, WireRoom room) {
    if (Failed(registers_.ReadMemory(Version, room)) || room.size < CurrentGateway + 4)
        return Gvcp::AckStatus::LocalProblem;
    const NET_PARAM own = routes_.Toward(asker.ip, std::chrono::steady_clock::now());
    Wire::Store(room.data + CurrentIp, own.ip);
    Wire::Store(room.data + CurrentMask, own.mask);
    Wire::Store(room.data + CurrentGateway, own.gateway);
    return Gvcp::AckStatus::Success;
}

std::uint16_t GevSimuDevice::ControlChanged(std::uint32_t privilege, const NET_ENDPOINT& holder) {
    NET_PARAM own{};
    if (privilege != ReleaseControl) {
        own = routes_.Toward(holder.ip, std::chrono::steady_clock::now());
        const std::uint32_t speed = NICEnumerator::LinkSpeed(own.ip);
        registers_.SetValue(LinkSpeed, speed != 0 ? speed : UnknownSpeed);
        const std::uint32_t can = registers_.Value(GvcpCapability) & ~LinkSpeedTold;
        registers_.SetValue(GvcpCapability, can | (speed != 0 ? LinkSpeedTold : 0));
    }
    const StatusCode status = registers_.WriteReg32(ControlChannelPrivilege, privilege);
    const bool held = privilege != ReleaseControl && !Failed(status);
    if (!held)
        own = {0, 0, 0};
    registers_.SetValue(CurrentIp, own.ip);
    registers_.SetValue(CurrentMask, own.mask);
    registers_.SetValue(CurrentGateway, own.gateway);
    registers_.SetValue(PrimaryApplicationIp, held ? holder.ip : 0);
    registers_.SetValue(PrimaryApplicationPort, held ? holder.port : 0);
    MutexLock lock(stateMutex_);
    controller_ = held ? holder : NET_ENDPOINT{};
    if (!Failed(status))
        return Gvcp::AckStatus::Success;
    VxLoggerLog(LogLevel::Error, "SDK", "%s: a remote host does not get it: %s", name_.c_str(),
                StatusText(status).c_str());
    return status == Status::DeviceLost ? Gvcp::AckStatus::LocalProblem : Gvcp::AckStatus::Error;
}

void GevSimuDevice::Resend(const Gvcp::ResendRequest& request, const NET_ENDPOINT& sender, TimePoint now) {
    if (request.channel < channels_.size())
        channels_[request.channel].sender->Resend(request, sender, now);
}

bool GevSimuDevice::Tick(TimePoint now) {
    bool again = false;
    for (unsigned i = 0; i < channels_.size(); ++i) {
        if (channels_[i].waits && now >= channels_[i].due)
            (void)StartChannel(i); // logged; the host sees no image
        again = channels_[i].sender->ServeLateResends(now) || again;
    }
    camera_.KeepStreaming(now);
    const bool lost = camera_.IsLost();
    if (lost && !lostSaid_) {
        VxLoggerLog(LogLevel::Warning, "SDK", "%s: it is published, and lost: hosts are told", name_.c_str());
        StopStream();
    }
    lostSaid_ = lost;
    return again;
}

// Control and streams -------------------------------------------------------------------------------------

GevBootStrapRegs::Callbacks GevSimuDevice::Callbacks() {
    return {[this] { return Open(); }, [this] { CloseDevice(); },
            [this](unsigned channel) { return ArmStream(channel); },
            [this](unsigned channel) { StopChannel(channel); }};
}

StatusCode GevSimuDevice::Open() {
    if (camera_.IsConnected() && !camera_.IsLost())
        return Status::Ok; // the controller writes again to say that it lives
    const StatusCode status = camera_.Connect();
    if (Failed(status))
        return status;
    Describe();
    return Status::Ok;
}

// What can be told of the camera only while it is connected.
void GevSimuDevice::Describe() {
    std::string name;
    std::string bytes;
    if (!description_.archive.empty() || !camera_.Description(name, bytes))
        return;
    description_ =
        PublishedDescription::Make(name, bytes, camera_.GetKind() == LocalCamera::Kind::GigEVision);
    if (!description_.failure.empty())
        VxLoggerLog(LogLevel::Error, "SDK", "%s: it is published without features: %s", name_.c_str(),
                    description_.failure.c_str());
    registers_.SetXmlUrl(description_.url);
    const std::uint64_t frequency = camera_.TickFrequency();
    registers_.SetValue(TickFrequencyHigh, static_cast<std::uint32_t>(frequency >> 32));
    registers_.SetValue(TickFrequencyLow, static_cast<std::uint32_t>(frequency));
    const unsigned streams = std::min(camera_.StreamCount(), GevBootStrapRegs::MostChannels);
    registers_.SetValue(StreamChannelCount, std::max(streams, 1U));
}

void GevSimuDevice::CloseDevice() {
    StopStream();
    camera_.DisConnect();
}

void GevSimuDevice::StopStream() {
    for (unsigned channel = 0; channel < channels_.size(); ++channel) {
        StopChannel(channel);
        registers_.SetValue(StreamRegister(StreamPort, channel), 0);
        registers_.SetValue(StreamRegister(StreamDestination, channel), 0);
    }
}

NET_ENDPOINT GevSimuDevice::Destination(unsigned channel) const {
    return {registers_.Value(StreamRegister(StreamDestination, channel)),
            registers_.Value(StreamRegister(StreamPort, channel)) & 0xFFFF};
}

StatusCode GevSimuDevice::ArmStream(unsigned channel) {
    const NET_ENDPOINT destination = Destination(channel);
    if (destination.ip == 0 || destination.port == 0) {
        VxLoggerLog(LogLevel::Warning, "SDK", "%s: stream %u does not start: it has no destination yet",
                    name_.c_str(), channel);
        return Status::Ok; // the address may follow
    }
    StopChannel(channel);
    channels_[channel].waits = true;
    channels_[channel].due = std::chrono::steady_clock::now() + LongestWait;
    return Status::Ok;
}

StatusCode GevSimuDevice::StartWaiting() {
    StatusCode result = Status::Ok;
    for (unsigned channel = 0; channel < channels_.size(); ++channel)
        if (channels_[channel].waits)
            if (const StatusCode status = StartChannel(channel); Failed(status))
                result = status;
    return result;
}

GevSimuGvsp::Options GevSimuDevice::SenderOptions(std::uint32_t sourceIp) const {
    constexpr std::uint32_t LoopbackNet = 127;
    GevSimuGvsp::Options options;
    options.extendedIds = (registers_.Value(GvspConfiguration) & ExtendedIdsSelected) != 0;
    options.segmentation = options_.segmentation;
    options.faults = options_.faults;
    const long long frames = ConfigInteger(ConfigKeys::SimuResendFrames);
    options.resendFrames =
        options_.resendFrames.value_or(frames > 0 ? static_cast<std::size_t>(frames) : DefaultResendFrames);
    const long long limit = ConfigInteger(ConfigKeys::SimuBandwidthLimit);
    const bool known = sourceIp >> 24 == LoopbackNet || NICEnumerator::LinkSpeed(sourceIp) != 0;
    options.bandwidthLimit = options_.bandwidthLimit.value_or(limit > 0 ? static_cast<std::uint64_t>(limit)
                                                              : known   ? 0
                                                                        : UnknownLinkLimit);
    return options;
}

StatusCode GevSimuDevice::StartChannel(unsigned index) {
    Channel& channel = channels_[index];
    channel.waits = false;
    const NET_ENDPOINT source{registers_.Value(CurrentIp),
                              registers_.Value(StreamRegister(StreamSourcePort, index)) & 0xFFFF};
    GevSimuGvsp::Options options = SenderOptions(source.ip);
    const std::uint64_t frequency = std::max<std::uint64_t>(
        std::uint64_t{registers_.Value(TickFrequencyHigh)} << 32 | registers_.Value(TickFrequencyLow), 1);
    options.packetDelay = std::chrono::nanoseconds(static_cast<long long>(
        registers_.Value(StreamRegister(StreamPacketDelay, index)) * (1e9 / static_cast<double>(frequency))));
    channel.sender->SetOptions(options);
    const std::uint32_t size = registers_.Value(StreamRegister(StreamPacketSize, index)) & PacketSizeMask;
    StatusCode status = channel.sender->Start(source, Destination(index), size);
    if (!Failed(status)) {
        registers_.SetValue(StreamRegister(StreamSourcePort, index), channel.sender->SourcePort());
        status = camera_.StartStream(index, [sender = channel.sender](const std::shared_ptr<IImage>& image,
                                                                      IDevice*, unsigned, unsigned, void*) {
            (void)sender->PushImage(image); // what is not sent is counted
        });
    }
    if (!Failed(status))
        return Status::Ok;
    channel.sender->Stop();
    VxLoggerLog(LogLevel::Error, "SDK", "%s: stream %u does not start: %s", name_.c_str(), index,
                StatusText(status).c_str());
    return status;
}

void GevSimuDevice::StopChannel(unsigned channel) {
    channels_[channel].waits = false;
    channels_[channel].sender->Stop();
    camera_.StopStream(channel);
}

} // namespace VX3
