#include "search/CameraSearch.h"

#include "base/Console.h"
#include "base/Interrupt.h"
#include "base/NearMiss.h"
#include "base/ToolError.h"
#include "vx3/core/LastFailure.h"
#include "vx3/core/Utilities.h"
#include "vx3/device/IEnumerationRounds.h"
#include "vx3/library/System.h"

#include <algorithm>
#include <chrono>
#include <thread>

namespace VX3::Tool {

namespace {

struct Transport {
    const char* name;
    IntfDevType family;
};

constexpr Transport Transports[] = {{"virtual", IntfDevType::Virtual}, {"gige", IntfDevType::GigEVision},
                                    {"gencp", IntfDevType::GenCP},     {"grabber", IntfDevType::Grabber},
                                    {"gentl", IntfDevType::Misc},      {"remote", IntfDevType::Remote}};

// A later round is never waited for: the first one is the list.
constexpr unsigned int MonitorPeriodMs = 3600U * 1000U;
constexpr std::chrono::seconds LongestRound(10);
constexpr const char* SerialPorts = "/dev/ttyUSB* /dev/ttyS* /dev/serial/by-id/*";

bool HasFinishedRound(const IDevice& device) {
    const auto* rounds = dynamic_cast<const IEnumerationRounds*>(&device);
    return rounds == nullptr || rounds->FinishedRounds() > 0;
}

std::vector<std::shared_ptr<IDevice>> SubDevicesOf(IDevice& device) {
    std::vector<std::shared_ptr<IDevice>> cameras;
    for (const std::weak_ptr<IDevice>& weak : device.SubDevices())
        if (std::shared_ptr<IDevice> camera = weak.lock())
            cameras.push_back(std::move(camera));
    return cameras;
}

std::vector<std::string> NamesOf(const IDevice& camera) {
    return {camera.Name(), camera.SerialNumber(), camera.UserName(), camera.UniqueName(), AddressOf(camera)};
}

bool Contains(const std::vector<std::string>& names, const std::string& name, bool anyCase) {
    return std::any_of(names.begin(), names.end(), [&](const std::string& known) {
        return !known.empty() && (known == name || (anyCase && Lower(known) == Lower(name)));
    });
}

// Those that the selector names; where there is none, those of that model; where there is none either, the
// same without regard to case.
std::vector<FoundCamera> Matching(const std::vector<FoundCamera>& cameras, const std::string& selector) {
    for (const bool anyCase : {false, true}) {
        std::vector<FoundCamera> named;
        std::vector<FoundCamera> models;
        for (const FoundCamera& found : cameras)
            if (Contains(NamesOf(*found.camera), selector, anyCase))
                named.push_back(found);
            else if (Contains({found.camera->ModelName()}, selector, anyCase))
                models.push_back(found);
        if (!named.empty() || !models.empty())
            return named.empty() ? models : named;
    }
    return {};
}

// The families that this library was built with: asked of the library, which is the one to know.
std::string BuiltFamilies() {
    std::string names;
    const auto manager = System::CreateManager(IntfDevType::All);
    for (const IntfDevType family : manager->DeviceTypeSupported())
        for (const Transport& transport : Transports)
            if (transport.family == family)
                names += (names.empty() ? "" : ", ") + std::string(transport.name);
    return names;
}

std::string Candidates(const std::vector<FoundCamera>& cameras) {
    std::string text;
    for (const FoundCamera& found : cameras)
        text += "\n  " + Describe(found);
    return text;
}

bool LooksLikeAddress(const std::string& text) {
    return std::count(text.begin(), text.end(), '.') == 3 &&
           text.find_first_not_of("0123456789.") == std::string::npos;
}

} // namespace

unsigned int TransportBits(const std::string& name) {
    unsigned int all = 0;
    for (const Transport& transport : Transports) {
        if (name == transport.name)
            return static_cast<unsigned int>(transport.family);
        all |= static_cast<unsigned int>(transport.family);
    }
    return all;
}

std::string TransportName(const IDevice& device) {
    const auto type = static_cast<IntfDevType>(device.DeviceType() & 0xFFFFU);
    for (const Transport& transport : Transports)
        if (type == transport.family || (type == IntfDevType::GenTL && transport.family == IntfDevType::Misc))
            return transport.name;
    return "other";
}

std::string AddressOf(const IDevice& camera) {
    GevDeviceAddress address;
    return camera.GetIpAddress(&address) == Status::Ok ? Ipv4Text(address.ip) : camera.DevicePath();
}

std::string Describe(const FoundCamera& found) {
    std::string text = found.camera->Name();
    const std::string address = AddressOf(*found.camera);
    if (!address.empty())
        text += " at " + address;
    if (found.interfaceDevice)
        text += " behind " + found.interfaceDevice->Name();
    return Printable(text);
}

CameraSearch::CameraSearch(const GlobalOptions& options)
    : manager_(System::CreateManager(TransportBits(options.transport))) {
    if (!manager_)
        throw ToolError("the library made no manager");
    if (manager_->DeviceTypeSupported().empty())
        throw ToolError("family not built: this library has no \"" + options.transport + "\", only " +
                        BuiltFamilies());
    const int count = manager_->GetDevices(IntfDevType::All);
    for (int i = 0; i < count; ++i) {
        std::shared_ptr<IDevice> device = manager_->GetDevice(static_cast<unsigned int>(i), IntfDevType::All);
        if (device && (options.interfaceName.empty() || device->Name() == options.interfaceName))
            interfaces_.push_back(std::move(device));
    }
    if (!options.interfaceName.empty() && interfaces_.empty())
        throw ToolError("there is no interface \"" + options.interfaceName + "\"");
}

CameraSearch::~CameraSearch() {
    for (const std::shared_ptr<IDevice>& device : interfaces_)
        device->MonitorSubDevices(false, 0, 0, nullptr);
}

std::vector<FoundCamera> CameraSearch::Cameras() {
    for (const std::shared_ptr<IDevice>& device : interfaces_)
        device->MonitorSubDevices(true, MonitorPeriodMs, 0, nullptr);
    const auto deadline = std::chrono::steady_clock::now() + LongestRound;
    std::vector<FoundCamera> cameras;
    for (const std::shared_ptr<IDevice>& device : interfaces_) {
        while (!HasFinishedRound(*device) && std::chrono::steady_clock::now() < deadline && !Interrupted())
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        for (std::shared_ptr<IDevice>& camera : SubDevicesOf(*device))
            cameras.push_back({std::move(camera), device});
    }
    return cameras;
}

void CameraSearch::ProbeSerialPorts() {
    for (const std::shared_ptr<IDevice>& device : interfaces_)
        if (TransportName(*device) == "gencp" && Failed(device->AddSubDevice(SerialPorts)))
            Console::Instance().Say(LastFailure().text);
}

// Interfaces that cannot be asked refuse, which is fine.
void CameraSearch::AskAddress(const std::string& address) {
    for (const std::shared_ptr<IDevice>& device : interfaces_)
        (void)device->AddSubDevice(address);
}

FoundCamera CameraSearch::Find(const std::string& selector) {
    std::vector<FoundCamera> cameras = Cameras();
    if (Interrupted())
        throw ToolError("while looking for cameras");
    std::vector<FoundCamera> matches = Matching(cameras, selector);
    if (matches.empty() && LooksLikeAddress(selector)) {
        AskAddress(selector);
        cameras = Cameras();
        matches = Matching(cameras, selector);
    }
    if (matches.size() > 1)
        throw ToolError("\"" + selector + "\" names " + std::to_string(matches.size()) +
                        " cameras:" + Candidates(matches));
    if (matches.empty())
        throw ToolError("no camera \"" + selector + "\"; " +
                        (cameras.empty() ? "none was found" : "found:" + Candidates(cameras)));
    return matches.front();
}

} // namespace VX3::Tool
