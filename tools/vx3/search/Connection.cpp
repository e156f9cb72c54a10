#include "search/Connection.h"

#include "base/Console.h"
#include "base/Interrupt.h"
#include "base/ToolError.h"
#include "vx3/core/Utilities.h"

#include <chrono>
#include <utility>

namespace VX3::Tool {

namespace {

constexpr StatusCode AccessDenied = Status::FromGvcp(0x8006); // GigE Vision
// A verb that looks at interrupts itself has this long to end in good order.
constexpr std::chrono::seconds Grace{1};

const char* const OtherController = "another application controls it; if that one ended without letting go, "
                                    "the camera frees itself after its heartbeat time-out";

const char* const OtherExclusive =
    "another application has exclusive access: the camera refuses even to be read";

bool IsInOtherSubnet(const GevDeviceAddress& address) {
    return address.hostMask != 0 && (address.ip & address.hostMask) != (address.hostIp & address.hostMask);
}

// Why a camera that answers discovery (a broadcast) may still not open; empty when nothing is known.
std::string Hint(const IDevice& camera, StatusCode code) {
    if (code == AccessDenied)
        return camera.Access() == DeviceAccess::Monitor ? OtherExclusive : OtherController;
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
    case DEVICE_STATE::Unknown:
        return "-";
    }
    return "unknown";
}

Connection::Connection(FoundCamera found, Use use)
    : found_(std::move(found)), watch_([this] { WatchInterrupts(); }) {
    try {
        Connect(use);
    } catch (...) {
        leaving_ = true;
        watch_.join();
        throw;
    }
}

Connection::~Connection() {
    leaving_ = true;
    watch_.join();
    found_.camera->DisConnect();
}

void Connection::Connect(Use use) {
    // Not every camera refuses a second controller, and taking a running one over would stop its stream.
    if (found_.camera->DeviceState() == DEVICE_STATE::Controlled) {
        if (use == Use::Change)
            Refuse(AccessDenied);
        return ConnectToRead("is controlled by another application");
    }
    const StatusCode code = found_.camera->Connect();
    if (code == AccessDenied && use == Use::Read)
        return ConnectToRead("gives nobody else control");
    if (Failed(code))
        Refuse(code);
}

void Connection::ConnectToRead(const char* why) {
    const StatusCode code = found_.camera->Connect(DeviceAccess::Monitor);
    if (Failed(code))
        Refuse(code);
    Console::Instance().Say(Describe(found_) + " " + why + ": it is only read");
}

void Connection::Refuse(StatusCode code) const {
    const std::string hint = Hint(*found_.camera, code);
    throw ToolError(Describe(found_) + " could not be opened" + (hint.empty() ? "" : ", " + hint), code);
}

void Connection::WatchInterrupts() {
    using Clock = std::chrono::steady_clock;
    Clock::time_point seen{};
    while (!leaving_) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        if (!Interrupted())
            continue;
        if (seen == Clock::time_point())
            seen = Clock::now();
        if (Clock::now() - seen >= Grace)
            found_.camera->Interrupt(); // again and again: a connection may just begin
    }
}

IConfigurer& Connection::Configurer() const {
    IConfigurer* configurer = found_.camera->GetConfigurer();
    if (configurer == nullptr || !configurer->GetNodeMap())
        throw ToolError(Describe(found_) +
                        " has no features: " + Printable(found_.camera->FeaturesFailure()));
    return *configurer;
}

std::shared_ptr<GenICam::INodeMap> Connection::Nodes() const {
    return Configurer().GetNodeMap();
}

bool Connection::IsGone(const std::string& feature) const {
    if (found_.camera->DeviceState() == DEVICE_STATE::Lost)
        return true;
    IConfigurer* configurer = found_.camera->GetConfigurer();
    GenICam::NodeValue value;
    const StatusCode code =
        configurer != nullptr ? configurer->ReadNodeValue(feature, value) : Status::NotConnected;
    return code == Status::TimeOut || code == Status::NotConnected || code == Status::DeviceLost ||
           code == Status::WrongState;
}

} // namespace VX3::Tool
