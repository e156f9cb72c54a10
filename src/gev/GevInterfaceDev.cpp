#include "gev/GevInterfaceDev.h"

#include "core/DefaultConfig.h"
#include "gev/GevSharedDevice.h"
#include "gev/net/NICEnumerator.h"
#include "gev/net/OwnPorts.h"
#include "vx3/core/IntfDevType.h"
#include "vx3/core/Utilities.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace VX3 {

namespace {

std::uint32_t AddressOf(const std::shared_ptr<IDevice>& device) {
    GevDeviceAddress address;
    return device && !Failed(device->GetIpAddress(&address)) ? address.ip : 0;
}

bool IsInSubnet(std::uint32_t address, const NET_PARAM& param) {
    return param.mask != 0 && ((address ^ param.ip) & param.mask) == 0;
}

// The address to ask `target` from: one of its subnet, else the first.
const NET_PARAM& AskedFrom(const std::vector<NET_PARAM>& params, std::uint32_t target) {
    const auto match = std::find_if(params.begin(), params.end(),
                                    [&](const NET_PARAM& param) { return IsInSubnet(target, param); });
    return match != params.end() ? *match : params.front();
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
    std::string modelSerial = info.modelName + "(" + info.serialNumber + ")";
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
    const std::vector<NET_PARAM> params = NICEnumerator::NetParamEx(id_).params;
    if (params.empty() || params.front().ip == 0)
        return {};
    std::vector<GevDiscoveryRound::Question> questions;
    questions.reserve(params.size());
    for (const NET_PARAM& param : params)
        questions.push_back({param, 0});
    for (const std::uint32_t address : AddedAddresses())
        questions.push_back({AskedFrom(params, address), address});
    return Discover(std::move(questions));
}

std::list<std::shared_ptr<IDevice>> GevInterfaceDev::EnumSubDevices(const NET_PARAM& param,
                                                                    std::uint32_t target) {
    if (param.ip == 0)
        return {};
    return Discover({{param, target}});
}

std::list<std::shared_ptr<IDevice>>
GevInterfaceDev::Discover(std::vector<GevDiscoveryRound::Question> questions) {
    GevDiscoveryRound round(std::move(questions), Ports(), requestCounter_);
    const bool noFilter = ConfigBool(ConfigKeys::ForceNoFilter);
    std::list<std::shared_ptr<IDevice>> devices;
    for (const GevDiscovered& found : round.Run([this] { return RoundInterrupted(); }))
        if (!OwnPorts::IsOwn(found.info.currentIp, found.port))
            devices.push_back(MakeDevice(DeviceName(found.info, nameRule_), found, noFilter));
    return devices;
}

std::shared_ptr<IDevice> GevInterfaceDev::MakeDevice(const std::string& name, const GevDiscovered& found,
                                                     bool noFilter) {
    return std::make_shared<GevSharedDevice>(name, found.host, found.ack, this, noFilter, found.port,
                                             StateOf(found.control));
}

DEVICE_STATE GevInterfaceDev::StateOf(GevDiscovered::Control control) {
    switch (control) {
    case GevDiscovered::Control::Silent:
        return DEVICE_STATE::Unreachable;
    case GevDiscovered::Control::Free:
        return DEVICE_STATE::Available;
    case GevDiscovered::Control::Held:
        return DEVICE_STATE::Controlled;
    default:
        return DEVICE_STATE::Unknown;
    }
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
    const std::list<std::shared_ptr<IDevice>> found = EnumSubDevices(AskedFrom(params, address), address);
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
