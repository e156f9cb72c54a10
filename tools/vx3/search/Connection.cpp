#include "search/Connection.h"

#include "base/ToolError.h"
#include "vx3/core/Utilities.h"

#include <utility>

namespace VX3::Tool {

namespace {

constexpr std::uint16_t GvcpAccessDenied = 0x8006;

const char* const OtherController = "another application controls it; if that one ended without letting go, "
                                    "the camera frees itself after its heartbeat time-out";

bool IsInOtherSubnet(const GevDeviceAddress& address) {
    return address.hostMask != 0 && (address.ip & address.hostMask) != (address.hostIp & address.hostMask);
}

// Why a camera that answers discovery (a broadcast) may still not open; empty when nothing is known.
std::string Hint(const IDevice& camera, StatusCode code) {
    if (code == Status::FromGvcp(GvcpAccessDenied))
        return OtherController;
    GevDeviceAddress address;
    if (camera.GetIpAddress(&address) != Status::Ok)
        return {};
    if (IsInOtherSubnet(address))
        return "its address " + Ipv4Text(address.ip) + " is not in the subnet of this host's interface (" +
               Ipv4Text(address.hostIp) + " mask " + Ipv4Text(address.hostMask) +
               "); give it one with 'vx3 force-ip'";
    if (code == Status::TimeOut)
        return "it does not answer; a firewall, a second host with its address or a cut link may be why";
    return {};
}

} // namespace

std::string StateText(DEVICE_STATE state) {
    switch (state) {
    case DEVICE_STATE::Available:
        return "available";
    case DEVICE_STATE::Connected:
        return "connected";
    case DEVICE_STATE::Acquiring:
        return "acquiring";
    case DEVICE_STATE::Unreachable:
        return "unreachable";
    case DEVICE_STATE::Controlled:
        return "controlled by another application";
    case DEVICE_STATE::GenTL:
        return "available through GenTL";
    case DEVICE_STATE::Lost:
        return "lost";
    }
    return "unknown";
}

Connection::Connection(FoundCamera found) : found_(std::move(found)) {
    IDevice& camera = *found_.camera;
    // Not every camera refuses a second controller, and taking a running one over would stop its stream.
    if (camera.DeviceState() == DEVICE_STATE::Controlled)
        throw ToolError(Describe(found_) + " could not be opened, " + OtherController,
                        Status::FromGvcp(GvcpAccessDenied));
    const StatusCode code = camera.Connect();
    if (!Failed(code))
        return;
    const std::string hint = Hint(camera, code);
    throw ToolError(Describe(found_) + " could not be opened" + (hint.empty() ? "" : ", " + hint), code);
}

Connection::~Connection() {
    found_.camera->DisConnect();
}

IConfigurer& Connection::Configurer() const {
    IConfigurer* configurer = found_.camera->GetConfigurer();
    if (configurer == nullptr)
        throw ToolError(Describe(found_) + " gave no description of its features");
    return *configurer;
}

std::shared_ptr<GenICam::INodeMap> Connection::Nodes() const {
    std::shared_ptr<GenICam::INodeMap> nodes = Configurer().GetNodeMap();
    if (!nodes)
        throw ToolError("the description of " + Describe(found_) + " could not be used");
    return nodes;
}

GenICam::INode& Connection::Node(const std::string& name) const {
    GenICam::INode* node = Nodes()->GetNode(name);
    if (node == nullptr)
        throw ToolError(Describe(found_) + " has no feature \"" + name + "\"");
    return *node;
}

} // namespace VX3::Tool
