#include "vx3/library/CameraSearch.h"

#include "vx3/core/LastFailure.h"
#include "vx3/core/Utilities.h"
#include "vx3/device/IEnumerationRounds.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace VX3 {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using DeviceList = std::vector<std::shared_ptr<IDevice>>;

constexpr unsigned int MonitorPeriodMs = 10000;
constexpr unsigned int MonitorOffsetMs = 9500;
constexpr milliseconds PollPeriod{5};
constexpr std::size_t MostNamed = 8; // in a failure's text

unsigned int RoundsOf(const IDevice& device) {
    const auto* rounds = dynamic_cast<const IEnumerationRounds*>(&device);
    return rounds != nullptr ? rounds->FinishedRounds() : 1;
}

std::string AddressOf(const IDevice& camera) {
    GevDeviceAddress address;
    return camera.GetIpAddress(&address) == Status::Ok ? Ipv4Text(address.ip) : std::string();
}

bool LooksLikeAddress(const std::string& text) {
    return std::count(text.begin(), text.end(), '.') == 3 &&
           text.find_first_not_of("0123456789.") == std::string::npos;
}

bool IsNamed(const IDevice& camera, const std::string& text) {
    return text == camera.Name() || text == camera.SerialNumber() || text == camera.UserName() ||
           text == camera.UniqueName() || text == AddressOf(camera);
}

bool IsVirtual(const IDevice& camera) {
    return (camera.DeviceType() & 0xFFFFU) == static_cast<unsigned int>(IntfDevType::Virtual);
}

// One look of every interface device, all at the same time.
class Look {
public:
    explicit Look(const DeviceList& interfaces) {
        for (const auto& device : interfaces) {
            if (!device)
                continue;
            const unsigned int before = RoundsOf(*device);
            // Refused where it is monitored already, which is as good; then a new look is asked for.
            if (Failed(device->MonitorSubDevices(true, MonitorPeriodMs, MonitorOffsetMs, nullptr)) &&
                before > 0)
                device->UpdateSubDevices(true);
            waiting_.emplace_back(device, before);
        }
    }
    bool IsFinished() const {
        return std::all_of(waiting_.begin(), waiting_.end(), [](const auto& entry) {
            return RoundsOf(*entry.first) > entry.second ||
                   dynamic_cast<const IEnumerationRounds*>(entry.first.get()) == nullptr;
        });
    }
    DeviceList Cameras() const {
        DeviceList cameras;
        for (const auto& [device, before] : waiting_)
            for (const auto& weak : device->SubDevices())
                if (auto camera = weak.lock())
                    cameras.push_back(std::move(camera));
        return cameras;
    }
    // Interface devices that know no addresses refuse, which is as good.
    void AskAddress(const std::string& address) const {
        for (const auto& [device, before] : waiting_)
            (void)device->AddSubDevice(address);
    }

private:
    std::vector<std::pair<std::shared_ptr<IDevice>, unsigned int>> waiting_; // and its rounds before this one
};

// The camera meant; `finished`: no more will come. A better one may when it is not.
std::shared_ptr<IDevice> Choose(const DeviceList& cameras, const std::string& text, bool finished) {
    const auto first = [&](auto&& fits) {
        const auto found = std::find_if(cameras.begin(), cameras.end(), fits);
        return found != cameras.end() ? *found : nullptr;
    };
    if (auto camera = first([&](const auto& c) { return text.empty() ? !IsVirtual(*c) : IsNamed(*c, text); }))
        return camera;
    if (!finished)
        return nullptr;
    return first([&](const auto& c) { return text.empty() || c->ModelName() == text; });
}

void SayWhatThereIs(const DeviceList& cameras, const std::string& text, bool finished) {
    std::string what = text.empty() ? "no camera was found" : "no camera \"" + text + "\" was found";
    if (!cameras.empty())
        what += ", but";
    for (std::size_t i = 0; i < std::min(cameras.size(), MostNamed); ++i)
        what += (i == 0 ? " " : ", ") + cameras[i]->Name();
    if (cameras.size() > MostNamed)
        what += " and others";
    if (!finished)
        what += "; the time did not suffice to ask all";
    SetLastFailure(finished ? Status::NotFound : Status::TimeOut, what);
}

DeviceList InterfacesOf(IManager& manager) {
    DeviceList interfaces;
    const int count = manager.GetDevices(IntfDevType::All);
    for (int i = 0; i < count; ++i)
        interfaces.push_back(manager.GetDevice(static_cast<unsigned int>(i), IntfDevType::All));
    return interfaces;
}

} // namespace

std::vector<std::shared_ptr<IDevice>> FindCameras(IManager& manager, milliseconds timeout) {
    const auto deadline = steady_clock::now() + timeout;
    const Look look(InterfacesOf(manager));
    while (!look.IsFinished() && steady_clock::now() < deadline)
        std::this_thread::sleep_for(PollPeriod);
    return look.Cameras();
}

std::shared_ptr<IDevice> FindCamera(IManager& manager, const std::string& text, milliseconds timeout) {
    return FindCamera(InterfacesOf(manager), text, timeout);
}

std::shared_ptr<IDevice> FindCamera(const std::vector<std::shared_ptr<IDevice>>& interfaces,
                                    const std::string& text, milliseconds timeout) {
    const auto deadline = steady_clock::now() + timeout;
    const Look look(interfaces);
    for (bool asked = false;;) {
        const bool finished = look.IsFinished(); // before the list is read, which may grow meanwhile
        const bool last = finished || steady_clock::now() >= deadline;
        const DeviceList cameras = look.Cameras();
        if (auto camera = Choose(cameras, text, last))
            return camera;
        if (last && !asked && LooksLikeAddress(text)) {
            look.AskAddress(text);
            asked = true;
            continue;
        }
        if (last) {
            SayWhatThereIs(cameras, text, finished);
            return nullptr;
        }
        std::this_thread::sleep_for(PollPeriod);
    }
}

} // namespace VX3
