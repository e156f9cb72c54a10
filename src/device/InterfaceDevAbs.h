// The host side of a transport. Owns the cameras found behind it and keeps the list current: a monitoring
// thread enumerates again and again, matches the result against the known cameras and reports what changed.
//
// MonitorSubDevices(false) called from the monitor's own callback stops the monitor without waiting for it.
// The destructor of each concrete class calls Shutdown() first: the monitor runs its EnumSubDevices.
#pragma once

#include "device/GenIDevice.h"
#include "device/ThreadEx.h"
#include "vx3/device/IEnumerationRounds.h"

#include <atomic>
#include <list>
#include <memory>

namespace VX3 {

class InterfaceDevAbs : public GenIDevice, public IEnumerationRounds {
public:
    InterfaceDevAbs(unsigned int typeId, const char* name);
    ~InterfaceDevAbs() override;

    bool IsInterface() const override { return true; }
    StatusCode ReadPort(unsigned long long address, unsigned char* buffer, unsigned int length) override;
    StatusCode WritePort(unsigned long long address, const unsigned char* buffer,
                         unsigned int length) override;
    std::int64_t GetXmlUrlAddr() override { return 0; }
    bool IsManifestSupported() override { return false; }

    StatusCode MonitorSubDevices(bool enable, unsigned int period, unsigned int offset,
                                 SubDeviceCallback callback) override;
    StatusCode UpdateSubDevices(bool unused) override;
    // Any thread; a heartbeat's included.
    StatusCode SubDeviceLost(IDevice* device) override;
    unsigned int FinishedRounds() const override { return finishedRounds_; }

    // The cameras reachable now, each a fresh object; waits at most `timeoutMs` for answers.
    [[nodiscard]] virtual std::list<std::shared_ptr<IDevice>> EnumSubDevices(unsigned int timeoutMs) = 0;
    // Matches `found` against the known cameras by UniqueName and returns what changed. `strict`: a connected
    // camera that was not found is lost.
    virtual SubDeviceEvents UpdateSubDevicesA(std::list<std::shared_ptr<IDevice>> found, bool strict);

protected:
    using GenIDevice::UpdateSubDevices;
    StatusCode AcquisitionStartPP(unsigned int streamIndex) override;
    StatusCode AcquisitionStopPP(unsigned int streamIndex) override;

    // For enumerations that wait: the monitor is to stop, and waits for this round to end.
    bool RoundInterrupted() const { return roundInterrupted_; }
    // Appends cameras found outside the monitor's rounds (by address), without an event.
    void AddKnownDevices(const std::list<std::shared_ptr<IDevice>>& devices) VX3_EXCLUDES(knownMutex_);
    // Stops the monitor, then what DeviceAbs::Shutdown does.
    void Shutdown();

private:
    void MonitorThread(const std::atomic<bool>& running, unsigned int period, unsigned int offset,
                       const SubDeviceCallback& callback);
    bool WaitForRound(const std::atomic<bool>& running, unsigned int waitMs) VX3_EXCLUDES(wakeMutex_);
    SubDeviceEvents Round() VX3_EXCLUDES(roundMutex_);
    void StopMonitor() VX3_EXCLUDES(monitorMutex_);
    void RequestRound() VX3_EXCLUDES(wakeMutex_);
    void WakeMonitor() VX3_EXCLUDES(wakeMutex_);
    void PublishKnown() VX3_REQUIRES(knownMutex_);

    Mutex knownMutex_;
    std::list<std::shared_ptr<IDevice>> knownDevices_ VX3_GUARDED_BY(knownMutex_);
    std::atomic<bool> updateRequested_{false};
    std::atomic<unsigned int> finishedRounds_{0};
    std::atomic<bool> immediateFirstUpdate_{true};
    std::atomic<bool> roundInterrupted_{false};
    Mutex wakeMutex_;
    CondVar wake_;
    Mutex roundMutex_; // one enumeration at a time, also while an old monitor ends
    Mutex monitorMutex_;
    std::shared_ptr<ThreadEx<>> monitor_ VX3_GUARDED_BY(monitorMutex_);
};

} // namespace VX3
