#include "gev/GevInterfaceDev.h"

#include "core/DefaultConfig.h"
#include "gev/control/GevCmdHelper.h"
#include "gev/net/NICEnumerator.h"
#include "vx3/core/IntfDevType.h"
#include "vx3/core/Utilities.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace VX3 {

namespace {

constexpr std::uint32_t discoveryTimeoutMs = 1000;

std::uint32_t AddressOf(const std::shared_ptr<IDevice>& device) {
    GevDeviceAddress address;
    return device && !Failed(device->GetIpAddress(&address)) ? address.ip : 0;
}

bool IsDiscoveryAck(const GVCP_DISCOVERY_ACK& ack) {
    Gvcp::AckPacket packet;
    return Gvcp::DecodeAck({ack.bytes.data(), ack.bytes.size()}, packet) &&
           packet.header.code == Gvcp::Ack::Discovery;
}

} // namespace

GevInterfaceDev::GevInterfaceDev(const std::string& name, const std::string& description,
                                 const std::string& id, std::uint32_t macHigh, std::uint32_t macLow)
    : GevInterfaceDev(TypeIds::InterfaceDevice + static_cast<unsigned int>(IntfDevType::GigEVision), name,
                      description, id, macHigh, macLow) {}

GevInterfaceDev::GevInterfaceDev(unsigned int typeId, const std::string& name, const std::string& description,
                                 const std::string& id, std::uint32_t macHigh, std::uint32_t macLow)
    : InterfaceDevAbs(typeId, name.c_str()),
      description_(description),
      id_(id),
      macHigh_(macHigh),
      macLow_(macLow) {}

GevInterfaceDev::~GevInterfaceDev() {
    Shutdown();
}

std::list<std::pair<std::string, std::string>> GevInterfaceDev::GetInfo() const {
    std::list<std::pair<std::string, std::string>> info = {{"Name", Name()}, {"Description", description_}};
    for (const NET_PARAM& param : NICEnumerator::NetParamEx(id_).params) {
        info.emplace_back("IpAddr", Ipv4Text(param.ip));
        info.emplace_back("Mask", Ipv4Text(param.mask));
        info.emplace_back("GateWay", Ipv4Text(param.gateway));
    }
    return info;
}

std::string GevInterfaceDev::DeviceName(const GevDiscoveryInfo& info, std::uint32_t rule) {
    const std::string modelSerial = info.modelName + "(" + info.serialNumber + ")";
    const std::string ip = Ipv4Text(info.currentIp);
    switch (rule) {
    case ModelIp:
        return info.modelName + "@" + ip;
    case ModelSerialIp:
        return modelSerial + "@" + ip;
    case Model:
        return info.modelName;
    default:
        return modelSerial;
    }
}

std::list<std::shared_ptr<IDevice>> GevInterfaceDev::EnumSubDevices(unsigned int /*timeoutMs*/) {
    std::list<std::shared_ptr<IDevice>> found;
    std::set<std::uint32_t> silent = AddedAddresses();
    const std::vector<NET_PARAM> params = NICEnumerator::NetParamEx(id_).params;
    for (const NET_PARAM& param : params)
        if (param.ip != 0)
            found.splice(found.end(), EnumSubDevices(param, 0));
    for (const auto& device : found)
        silent.erase(AddressOf(device));
    for (const std::uint32_t address : silent)
        found.splice(found.end(), EnumSubDevices(params.front(), address));
    return found;
}

std::list<std::shared_ptr<IDevice>> GevInterfaceDev::EnumSubDevices(const NET_PARAM& param,
                                                                    std::uint32_t target) {
    return Discover(param, target, Gvcp::Port);
}

std::list<std::shared_ptr<IDevice>> GevInterfaceDev::Discover(const NET_PARAM& param, std::uint32_t target,
                                                              std::uint16_t port) {
    std::list<std::shared_ptr<IDevice>> found;
    if (param.ip == 0)
        return found;
    const NET_PARAM remote{target != 0 ? target : BroadcastIp, 0, 0, 0xFFFFFFFFU};
    std::vector<GVCP_DISCOVERY_ACK> acks =
        GevCmdHelper(param, remote, discoveryTimeoutMs, requestCounter_, port).Discovery();
    const bool noFilter = ConfigBool(ConfigKeys::ForceNoFilter);
    for (auto ack = acks.begin(); ack != acks.end(); ++ack) {
        // Some cameras answer twice: to the host and to everybody.
        const bool repeated =
            std::any_of(acks.begin(), ack, [&](const auto& earlier) { return earlier.bytes == ack->bytes; });
        GevDiscoveryInfo info;
        if (repeated || !IsDiscoveryAck(*ack) || !DecodeDiscoveryAck(*ack, info))
            continue;
        found.push_back(MakeDevice(DeviceName(info, nameRule_), param, *ack, noFilter, port));
    }
    return found;
}

std::shared_ptr<IDevice> GevInterfaceDev::MakeDevice(const std::string& name, const NET_PARAM& param,
                                                     const GVCP_DISCOVERY_ACK& ack, bool noFilter,
                                                     std::uint16_t port) {
    return std::make_shared<GevDevice>(name, param, ack, this, noFilter, port);
}

std::uint32_t GevInterfaceDev::ParseAddress(const std::string& text) {
    const std::vector<std::string> pieces = SplitString(text, '.');
    std::uint32_t address = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        const long number = i < pieces.size() ? std::strtol(pieces[i].c_str(), nullptr, 10) : 0;
        address = (address << 8) | static_cast<std::uint8_t>(number);
    }
    return address;
}

StatusCode GevInterfaceDev::AddSubDevice(const std::string& text) {
    const std::uint32_t address = ParseAddress(text);
    if (address == 0)
        return Status::NotFound;
    if (Knows(address))
        return Status::Ok;
    const std::vector<NET_PARAM> params = NICEnumerator::NetParamEx(id_).params;
    if (params.empty() || params.front().ip == 0)
        return Status::NoIpAddress;
    const std::list<std::shared_ptr<IDevice>> found = EnumSubDevices(params.front(), address);
    if (found.empty())
        return Status::NotFound;
    {
        MutexLock lock(addedMutex_);
        added_.insert(address);
    }
    AddKnownDevices(found);
    return Status::Ok;
}

bool GevInterfaceDev::Knows(std::uint32_t address) {
    for (const std::weak_ptr<IDevice>& device : SubDevices())
        if (AddressOf(device.lock()) == address)
            return true;
    return false;
}

std::set<std::uint32_t> GevInterfaceDev::AddedAddresses() const {
    MutexLock lock(addedMutex_);
    return added_;
}

} // namespace VX3
