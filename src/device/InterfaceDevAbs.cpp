#include "device/InterfaceDevAbs.h"

#include "core/ClientCall.h"
#include "vx3/core/Logger.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <utility>

namespace VX3 {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using DeviceList = std::list<std::shared_ptr<IDevice>>;

constexpr unsigned int EnumTimeoutMs = 5000;
constexpr milliseconds Slice(100);

enum class Verdict { Kept, Changed, Lost };

// What becomes of a known camera, given the fresh object of the same unique name (or null).
Verdict Judge(const IDevice& known, const IDevice* found, bool strict) {
    const DEVICE_STATE state = known.DeviceState();
    if (found != nullptr && state != DEVICE_STATE::Lost) {
        const DEVICE_STATE now = found->DeviceState();
        const bool stable = now == state || now == DEVICE_STATE::GenTL || now == DEVICE_STATE::Unknown ||
                            state == DEVICE_STATE::Unknown || state == DEVICE_STATE::Connected ||
                            state == DEVICE_STATE::Acquiring;
        return stable ? Verdict::Kept : Verdict::Changed;
    }
    if (state == DEVICE_STATE::Lost || (known.IsConnected() && strict)) {
        VxLoggerLog(LogLevel::Warning, "SDK", "%s tagged with lost...: %s", known.Name().c_str(),
                    state == DEVICE_STATE::Lost ? "its heartbeat ended"
                                                : "it is connected and does not answer");
        return Verdict::Lost;
    }
    if (known.IsConnected()) {
        VxLoggerLog(LogLevel::Warning, "SDK",
                    "%s not found but connected...: it did not answer this look for cameras; its heartbeat "
                    "tells whether it is lost",
                    known.Name().c_str());
        return Verdict::Kept;
    }
    return Verdict::Lost;
}

// Removes and returns the first device of that unique name.
std::shared_ptr<IDevice> TakeByUniqueName(DeviceList& devices, const std::string& name) {
    const auto match = std::find_if(devices.begin(), devices.end(),
                                    [&](const auto& device) { return device->UniqueName() == name; });
    if (match == devices.end())
        return nullptr;
    std::shared_ptr<IDevice> device = *match;
    devices.erase(match);
    return device;
}

// A state that was not known is no change.
void Learn(IDevice& known, const IDevice& found) {
    if (auto* device = dynamic_cast<DeviceAbs*>(&known))
        device->LearnState(found.DeviceState());
}

void Report(SubDeviceEvents& events, SUB_DEVICE_EVENT event, const DeviceList& devices) {
    if (devices.empty())
        return;
    const bool found = event == SUB_DEVICE_EVENT::Found;
    const char* what = found ? "Found!!!"
                       : event == SUB_DEVICE_EVENT::Lost
                           ? "Lost!!!: it does not answer any more; it is listed again when it does"
                           : "State Changed!!!: another program took it or let it go";
    for (const auto& device : devices)
        VxLoggerLog(found ? LogLevel::Info : LogLevel::Warning, "SDK", "%s %s", device->Name().c_str(), what);
    events.emplace_back(event, devices);
}

} // namespace

InterfaceDevAbs::InterfaceDevAbs(unsigned int typeId, const char* name) : GenIDevice(typeId, name, nullptr) {}

InterfaceDevAbs::~InterfaceDevAbs() {
    StopMonitor();
    CutChildren();
}

void InterfaceDevAbs::Shutdown() {
    StopMonitor();
    GenIDevice::Shutdown();
    CutChildren();
}

StatusCode InterfaceDevAbs::ReadPort(unsigned long long, unsigned char*, unsigned int) {
    return Status::NotSupported;
}
StatusCode InterfaceDevAbs::WritePort(unsigned long long, const unsigned char*, unsigned int) {
    return Status::NotSupported;
}
StatusCode InterfaceDevAbs::AcquisitionStartPP(unsigned int) {
    return Status::NotSupported;
}
StatusCode InterfaceDevAbs::AcquisitionStopPP(unsigned int) {
    return Status::NotSupported;
}

// ---- the known cameras ----

void InterfaceDevAbs::AddKnownDevices(const std::list<std::shared_ptr<IDevice>>& devices) {
    MutexLock lock(knownMutex_);
    knownDevices_.insert(knownDevices_.end(), devices.begin(), devices.end());
    PublishKnown();
}

void InterfaceDevAbs::PublishKnown() {
    GenIDevice::UpdateSubDevices(
        std::vector<std::weak_ptr<IDevice>>(knownDevices_.begin(), knownDevices_.end()));
}

SubDeviceEvents InterfaceDevAbs::UpdateSubDevicesA(std::list<std::shared_ptr<IDevice>> found, bool strict) {
    DeviceList kept;
    DeviceList changed;
    DeviceList lost;
    DeviceList replaced; // released after the lock is gone
    {
        MutexLock lock(knownMutex_);
        for (const auto& known : knownDevices_) {
            const auto match = TakeByUniqueName(found, known->UniqueName());
            switch (Judge(*known, match.get(), strict)) {
            case Verdict::Kept:
                if (match)
                    Learn(*known, *match);
                kept.push_back(known);
                break;
            case Verdict::Changed:
                changed.push_back(match);
                break;
            case Verdict::Lost:
                lost.push_back(known);
                if (match) // it answers again: a new camera, and found in this very round
                    found.push_back(match);
                break;
            }
        }
        replaced.swap(knownDevices_);
        for (const DeviceList* devices : {&kept, &changed, &found})
            knownDevices_.insert(knownDevices_.end(), devices->begin(), devices->end());
        PublishKnown();
    }
    SubDeviceEvents events;
    Report(events, SUB_DEVICE_EVENT::Lost, lost);
    Report(events, SUB_DEVICE_EVENT::StateChanged, changed);
    Report(events, SUB_DEVICE_EVENT::Found, found);
    return events;
}

// ---- monitoring ----

StatusCode InterfaceDevAbs::MonitorSubDevices(bool enable, unsigned int period, unsigned int offset,
                                              SubDeviceCallback callback) {
    if (!enable) {
        StopMonitor();
        return Status::Ok;
    }
    ClientCall::CloseAtExit();
    MutexLock lock(monitorMutex_);
    if (monitor_)
        return Status::Generic;
    monitor_ = std::make_shared<ThreadEx<>>(
        [this, period, offset, callback = std::move(callback)](const std::atomic<bool>& running) {
            MonitorThread(running, period, offset, callback);
        });
    monitor_->Start();
    return Status::Ok;
}

void InterfaceDevAbs::StopMonitor() {
    std::shared_ptr<ThreadEx<>> monitor;
    {
        MutexLock lock(monitorMutex_);
        monitor = std::move(monitor_);
        monitor_.reset();
    }
    if (!monitor)
        return;
    monitor->RequestStop();
    roundInterrupted_ = true;
    WakeMonitor();
    monitor->Stop();
    roundInterrupted_ = false;
}

StatusCode InterfaceDevAbs::UpdateSubDevices(bool) {
    RequestRound();
    return Status::Ok;
}

StatusCode InterfaceDevAbs::SubDeviceLost(IDevice*) {
    RequestRound();
    return Status::Ok;
}

void InterfaceDevAbs::RequestRound() {
    updateRequested_ = true;
    WakeMonitor();
}

void InterfaceDevAbs::WakeMonitor() {
    MutexLock lock(wakeMutex_);
    wake_.NotifyAll();
}

// False when the monitor was told to stop.
bool InterfaceDevAbs::WaitForRound(const std::atomic<bool>& running, unsigned int waitMs) {
    const auto deadline = steady_clock::now() + milliseconds(waitMs);
    MutexLock lock(wakeMutex_);
    while (running) {
        const auto now = steady_clock::now();
        if (updateRequested_.exchange(false) || now >= deadline)
            return true;
        wake_.WaitUntil(wakeMutex_, std::min(deadline, now + Slice));
    }
    return false;
}

// After the callback nothing of this object is touched once `running` is cleared: the callback may have
// dropped the last reference to it.
void InterfaceDevAbs::MonitorThread(const std::atomic<bool>& running, unsigned int period,
                                    unsigned int offset, const SubDeviceCallback& callback) {
    unsigned int wait = period >= offset ? period - offset : period;
    while (running) {
        if (!immediateFirstUpdate_.exchange(false)) {
            if (!WaitForRound(running, wait))
                return;
            wait = period;
        }
        try {
            SubDeviceEvents events = Round();
            if (events.empty() || !callback)
                continue;
            if (const ClientCall call; call)
                callback(this, std::move(events));
        } catch (const std::exception& error) {
            VxLoggerLog(LogLevel::Error, "SDK", "Device monitoring: %s", error.what());
        }
    }
}

SubDeviceEvents InterfaceDevAbs::Round() {
    MutexLock lock(roundMutex_);
    auto found = EnumSubDevices(EnumTimeoutMs);
    if (RoundInterrupted()) // who was not heard may be there all the same
        return {};
    SubDeviceEvents events = UpdateSubDevicesA(std::move(found), false);
    ++finishedRounds_;
    return events;
}

} // namespace VX3
