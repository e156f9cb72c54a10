#include "gev/GevDevice.h"

#include "core/UniqueFd.h"
#include "gev/GevStream.h"
#include "gev/control/GvspPacketSizeTester.h"
#include "gev/protocol/Bootstrap.h"
#include "vx3/core/IntfDevType.h"
#include "vx3/core/Logger.h"
#include "vx3/core/Utilities.h"
#include "vx3/genicam/GenICamPointer.h"
#include "vx3/image/PixelFormat.h"

#include <algorithm>
#include <arpa/inet.h>
#include <chrono>
#include <fcntl.h>
#include <limits>
#include <vector>

namespace VX3 {

namespace {

constexpr std::uint32_t InitialTimeoutMs = 1000;
// A camera's pending time-out beyond this is a broken register; honouring it would block every thread.
constexpr std::uint32_t LongestTimeoutMs = 30000;
// All that is still said to a camera while it is given back. One that answers takes milliseconds.
constexpr std::uint32_t WindDownMs = 2000;
constexpr std::uint32_t GiveUpMs = 200;
constexpr std::uint32_t MostStreams = 4;
constexpr unsigned int DefaultPacketSize = 1500;
constexpr const char* PacketSizeFeature = "GevSCPSPacketSize";

bool ReadInteger(IConfigurer& configurer, const char* feature, std::uint32_t& value) {
    const GenICam::NodeValue node = configurer.GetNodeValue(feature);
    if (node.GetType() != GenICam::NodeValue::Type::Integer || node.AsInteger() < 0 ||
        node.AsInteger() > std::numeric_limits<std::uint32_t>::max())
        return false;
    value = static_cast<std::uint32_t>(node.AsInteger());
    return true;
}

} // namespace

GevDevice::GevDevice(const std::string& name, const NET_PARAM& local, const GVCP_DISCOVERY_ACK& discovery,
                     IDevice* parent, bool noFilter, std::uint16_t port, DEVICE_STATE state)
    : GevDevice(TypeIds::SubDevice + static_cast<unsigned int>(IntfDevType::GigEVision), name, local,
                discovery, parent, noFilter, port, state) {}

GevDevice::GevDevice(unsigned int typeId, const std::string& name, const NET_PARAM& local,
                     const GVCP_DISCOVERY_ACK& discovery, IDevice* parent, bool noFilter, std::uint16_t port,
                     DEVICE_STATE state)
    : GenIDevice(typeId, name.c_str(), parent),
      port_(port),
      noFilter_(noFilter),
      local_(local),
      control_([this] { HeartBeatTimeOut(); }) {
    (void)DecodeDiscoveryAck(discovery, discovery_); // the record has the layout's full size
    SetInitialState(state);
}

GevDevice::~GevDevice() {
    Shutdown();
    control_.StopHeartBeat();
}

NET_PARAM GevDevice::RemoteParam() const {
    return {discovery_.currentIp, discovery_.subnetMask, discovery_.defaultGateway, 0xFFFFFFFFU};
}

std::shared_ptr<GevCmdHelper> GevDevice::Helper() const {
    MutexLock lock(helperMutex_);
    return helper_;
}

void GevDevice::SetHelper(std::shared_ptr<GevCmdHelper> helper) {
    MutexLock lock(helperMutex_);
    helper_.swap(helper);
}

std::shared_ptr<GevCmdHelper> GevDevice::UsableHelper(StatusCode& reason) const {
    reason = DeviceState() == DEVICE_STATE::Lost ? Status::DeviceLost : Status::NotConnected;
    return reason == Status::DeviceLost ? nullptr : Helper();
}

void GevDevice::Interrupt() {
    if (const auto helper = Helper())
        helper->Interrupt();
}

// Identity ------------------------------------------------------------------------------------------------

std::string GevDevice::UniqueName() const {
    return Name() + "@" + Ipv4Text(discovery_.currentIp) + "-" + Ipv4Text(discovery_.subnetMask) + "-" +
           Ipv4Text(discovery_.defaultGateway);
}

std::list<std::pair<std::string, std::string>> GevDevice::GetInfo() const {
    std::list<std::pair<std::string, std::string>> info{{"Manufacture", discovery_.manufacturerName},
                                                        {"ModelName", discovery_.modelName},
                                                        {"SerialNumber", discovery_.serialNumber},
                                                        {"IpAddr", Ipv4Text(discovery_.currentIp)},
                                                        {"GateWay", Ipv4Text(discovery_.defaultGateway)}};
    if (discovery_.currentIp == local_.ip)
        info.emplace_back("Published", "by a program of this host");
    return info;
}

StatusCode GevDevice::GetIpAddress(GevDeviceAddress* address) const {
    if (address == nullptr)
        return Status::NotFound;
    *address = {discovery_.currentIp,
                discovery_.subnetMask,
                discovery_.defaultGateway,
                discovery_.currentIpConfig,
                discovery_.macLow,
                discovery_.macHigh,
                local_.ip,
                local_.mask,
                local_.gateway};
    return Status::Ok;
}

StatusCode GevDevice::SetIpAddress(const GevDeviceAddress* address) {
    if (address == nullptr)
        return Status::NotFound;
    GevCmdHelper broadcast(local_, {BroadcastIp, 0, 0, 0xFFFFFFFFU}, InitialTimeoutMs, requestCounter_,
                           Gvcp::Port);
    return broadcast.ForceIp(htonl(address->ip), htonl(address->mask), htonl(address->gateway),
                             htonl(address->macLow), htonl(address->macHigh));
}

// Registers -----------------------------------------------------------------------------------------------

StatusCode GevDevice::ReadPort(unsigned long long address, unsigned char* buffer, unsigned int length) {
    StatusCode reason = Status::Ok;
    const auto helper = UsableHelper(reason);
    if (!helper)
        return reason;
    if (length != 4)
        return helper->ReadMemory(address, buffer, length, true);
    std::uint32_t value = 0;
    const StatusCode result = helper->ReadRegister(address, value);
    if (!Failed(result))
        Wire::Store(buffer, value);
    return result;
}

StatusCode GevDevice::WritePort(unsigned long long address, const unsigned char* buffer,
                                unsigned int length) {
    if (!IsWritable())
        return Status::NotAvailable;
    StatusCode reason = Status::Ok;
    const auto helper = UsableHelper(reason);
    if (!helper)
        return reason;
    if (length != 4)
        return helper->WriteMemory(address, buffer, length);
    return helper->WriteRegister(address, Wire::Load<std::uint32_t>(buffer));
}

std::int64_t GevDevice::GetXmlUrlAddr() {
    return Bootstrap::FirstUrl;
}

// Connection ----------------------------------------------------------------------------------------------

StatusCode GevDevice::GetControlAccess() {
    return control_.Take(Helper());
}

StatusCode GevDevice::ReleaseAccess() {
    return control_.Release(DeviceState() != DEVICE_STATE::Lost);
}

StatusCode GevDevice::OpenChannel() {
    const auto helper =
        std::make_shared<GevCmdHelper>(local_, RemoteParam(), gvcpTimeoutMs_, requestCounter_, port_);
    SetHelper(helper);
    std::uint32_t pending = 0;
    if (!Failed(helper->ReadRegister(Bootstrap::PendingTimeout, pending)) && pending != 0)
        gvcpTimeoutMs_ = std::min(pending, LongestTimeoutMs);
    helper->SetTimeout(gvcpTimeoutMs_);
    helper->SetPendingTimeout(pending);
    return Access() == DeviceAccess::Monitor ? control_.Watch(helper) : GetControlAccess();
}

// The camera may have given us control all the same: its answer was lost, or not waited for.
void GevDevice::GiveUp() {
    const auto helper = Helper();
    helper->LimitTotal(GiveUpMs);
    helper->Resume();
    if (Access() == DeviceAccess::Control)
        (void)helper->WriteRegister(Bootstrap::ControlChannelPrivilege, Bootstrap::ReleaseControl);
}

StatusCode GevDevice::ConnectP() {
    const StatusCode result = OpenChannel();
    if (Failed(result)) {
        if (!Status::IsGvcp(result))
            GiveUp();
        SetHelper(nullptr);
        return result;
    }
    ReadCapabilities();
    if (Access() == DeviceAccess::Control)
        CreateStreams();
    control_.StartHeartBeat();
    return Status::Ok;
}

// Best effort: a register that cannot be read keeps what it had.
void GevDevice::ReadCapabilities() {
    const std::pair<std::uint32_t, std::atomic<std::uint32_t>*> registers[] = {
        {Bootstrap::MessageChannelCount, &messageChannels_},
        {Bootstrap::GvcpCapability, &gvcpCapability_},
        {Bootstrap::GvspCapability, &gvspCapability_},
        {Bootstrap::MessageCapability, &messageCapability_},
        {Bootstrap::StreamChannelCount, &streamChannels_},
        {Bootstrap::GvcpConfiguration, &gvcpConfiguration_},
        {Bootstrap::StreamCapability, &streamCapability_},
    };
    const auto helper = Helper();
    for (const auto& [address, field] : registers) {
        std::uint32_t value = 0;
        if (!Failed(helper->ReadRegister(address, value)))
            *field = value;
    }
}

void GevDevice::CreateStreams() {
    VxLoggerLog(LogLevel::Debug, "SDK", "Create gev-streams!");
    const bool useFilter = !noFilter_ && CanUseFilter();
    if (useFilter)
        VxLoggerLog(LogLevel::Debug, "SDK", "Try to Use filter to Create GevStream!");
    const std::uint32_t reported = streamChannels_;
    const std::uint32_t count = reported > MostStreams ? 1 : reported;
    std::vector<std::shared_ptr<IStream>> streams;
    for (std::uint32_t index = 0; index < count; ++index)
        streams.push_back(CreateStream("", index, useFilter));
    UpdateStreams(streams);
}

std::shared_ptr<IStream> GevDevice::CreateStream(const char* name, unsigned int index, bool useFilter) {
    return std::make_shared<GevStream>(name, this, index, useFilter, this, port_);
}

bool GevDevice::CanUseFilter() {
    return static_cast<bool>(UniqueFd(::open("/dev/VxGevFilter", O_RDWR | O_CLOEXEC)));
}

StatusCode GevDevice::PostConnect() {
    if (Access() == DeviceAccess::Monitor)
        return Status::Ok; // the packet size is its controller's business
    const auto configurer = ShareConfigurer();
    if (!configurer)
        return Status::WrongState;
    const auto map = configurer->GetNodeMap();
    GenICam::INode* node = map ? map->GetNode(PacketSizeFeature) : nullptr;
    if (node == nullptr)
        return Status::Ok;
    const GenICam::GenICamPointer<GenICam::IInteger, GenICam::INode> feature(node);
    const std::int64_t max = feature->GetMax();
    const std::int64_t size = GvspPacketSizeTester::TestPacketSize(*Helper(), discovery_.currentIp, local_.ip,
                                                                   max, feature->GetMin(), feature->GetInc());
    node->InvalidateNode(); // the test wrote the register behind the node's back
    if (Failed(configurer->SetNodeValue(PacketSizeFeature, static_cast<unsigned int>(size))))
        VxLoggerLog(LogLevel::Warning, "SDK", "%s: refuses packets of %lld bytes", Name().c_str(),
                    static_cast<long long>(size));
    return Status::Ok;
}

// Whatever other threads wait for ends now, and the rest is bounded: a camera that answers with nothing but
// pending acknowledgements, or not at all, holds nobody.
void GevDevice::BeginDisConnect() {
    if (const auto helper = Helper()) {
        helper->LimitTotal(WindDownMs);
        helper->Interrupt();
        helper->Resume();
    }
}

StatusCode GevDevice::DisConnectP() {
    control_.StopHeartBeat();
    const StatusCode result = ReleaseAccess();
    SetHelper(nullptr);
    std::vector<std::shared_ptr<IStream>> none;
    UpdateStreams(none);
    return result;
}

// Heartbeat -----------------------------------------------------------------------------------------------

void GevDevice::HeartBeatTimeOut() {
    VxLoggerLog(LogLevel::Warning, "SDK",
                "%s Device heart beat timeout!: it gave no answer for so long that it has given up control; "
                "look at its power "
                "and its cable",
                Name().c_str());
    ReportLost();
}

// Streams -------------------------------------------------------------------------------------------------

StatusCode GevDevice::StreamParam(unsigned int channel, GevStreamParam& param) {
    param.host = local_;
    param.channelIndex = channel;
    param.resendSupported = (gvcpCapability_ & Bootstrap::PacketResendSupported) != 0 ? 1 : 0;
    param.name = Name();
    StatusCode reason = Status::Ok;
    const auto helper = UsableHelper(reason);
    if (!helper)
        return reason;
    std::uint32_t packetSize = 0;
    const std::pair<std::uint32_t, std::uint32_t*> registers[] = {
        {Bootstrap::StreamRegister(Bootstrap::StreamPacketSize, channel), &packetSize},
        {Bootstrap::CurrentIp, &param.camera.ip},
        {Bootstrap::CurrentMask, &param.camera.mask},
        {Bootstrap::CurrentGateway, &param.camera.gateway},
    };
    for (const auto& [address, value] : registers) {
        const StatusCode result = helper->ReadRegister(address, *value);
        if (Failed(result))
            return result;
    }
    param.packetSize = packetSize & Bootstrap::PacketSizeMask;
    param.bufferSize = BlockBytes();
    return Status::Ok;
}

// From the image geometry, else the payload size; 0 when the camera tells neither.
std::uint32_t GevDevice::BlockBytes() {
    const auto configurer = ShareConfigurer();
    if (!configurer)
        return 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t format = 0;
    if (ReadInteger(*configurer, "Width", width) && ReadInteger(*configurer, "Height", height) &&
        ReadInteger(*configurer, "PixelFormat", format)) {
        const std::uint64_t bytes = PixelFormat(format).BuffNeeded64(width, height);
        if (bytes <= std::numeric_limits<std::uint32_t>::max())
            return static_cast<std::uint32_t>(bytes);
    }
    std::uint32_t payload = 0;
    return ReadInteger(*configurer, "PayloadSize", payload) ? payload : 0;
}

unsigned int GevDevice::GetPacketSize() {
    std::uint32_t value = 0;
    StatusCode result = Status::Ok;
    if (const auto helper = UsableHelper(result))
        result = helper->ReadRegister(Bootstrap::StreamPacketSize, value);
    const unsigned int size = value & Bootstrap::PacketSizeMask;
    if (!Failed(result) && size != 0)
        return size;
    VxLoggerLog(
        LogLevel::Error, "SDK",
        "%s GetPakcetSize error! rtn(%x) size(%d): the camera does not tell its packet size, %u is taken",
        Name().c_str(), static_cast<unsigned int>(result), static_cast<int>(size), DefaultPacketSize);
    return DefaultPacketSize;
}

StatusCode GevDevice::SetStreamDest(unsigned int channel, std::uint32_t ip, std::uint32_t port) {
    const std::uint32_t destination = Bootstrap::StreamRegister(Bootstrap::StreamDestination, channel);
    const std::uint32_t hostPort = Bootstrap::StreamRegister(Bootstrap::StreamPort, channel);
    StatusCode reason = Status::Ok;
    const auto helper = UsableHelper(reason);
    if (!helper)
        return port == 0 && reason == Status::DeviceLost ? Status::Ok : reason;
    // The second answer counts; the first one, when it is another, is for the log.
    const auto write = [&](std::uint32_t address, std::uint32_t value) {
        if (Failed(helper->WriteRegister(address, value)))
            VxLoggerLog(LogLevel::Warning, "SDK", "%s: stream register 0x%X does not take 0x%X",
                        Name().c_str(), address, value);
    };
    if (port != 0) {
        write(destination, ip);
        return helper->WriteRegister(hostPort, port);
    }
    write(hostPort, 0);
    return helper->WriteRegister(destination, ip);
}

} // namespace VX3
