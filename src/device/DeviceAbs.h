// What every device has: identity, state, the connect and disconnect sequences, streams and sub-devices.
// Devices are shared; an interface device owns its cameras.
//
// Connect and DisConnect are serialised: a second caller waits, except inside an image callback, where it
// gets WrongState. Streams that a device drops are kept for a while (KeptGenerations reconnects), because
// GetStream hands out plain pointers; ShareStream hands out owners.
//
// Destruction: the destructor of each concrete class calls Shutdown() first, while its own parts still exist.
#pragma once

#include "core/ObjectAbs.h"
#include "device/DeviceStateMachine.h"
#include "device/ParentLink.h"
#include "device/TransitionGate.h"
#include "vx3/core/Mutex.h"
#include "vx3/device/IDevice.h"

#include <atomic>
#include <deque>
#include <list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace VX3 {

class DeviceAbs : public IDevice {
public:
    static constexpr std::size_t KeptGenerations = 64;

    DeviceAbs(unsigned int typeId, const char* name, IDevice* parent);
    ~DeviceAbs() override;
    DeviceAbs(const DeviceAbs&) = delete;
    DeviceAbs& operator=(const DeviceAbs&) = delete;

    std::string Name() const override { return object_->Name(); }
    std::uint64_t ObjID() const override { return object_->ObjID(); }
    bool IsConfigurable() const override { return false; }
    IConfigurer* GetConfigurer() override { return nullptr; }
    std::shared_ptr<IConfigurer> ShareConfigurer() override;
    unsigned int ObjType() const override { return object_->ObjType(); }
    std::list<std::pair<std::string, std::string>> GetInfo() const override { return {}; }
    unsigned int TypeId() const override { return object_->TypeId(); }

    std::string DevicePath() const override { return {}; }
    std::string UniqueName() const override { return Name(); }
    std::string FriendlyName() const override { return {}; }
    std::string UserName() const override { return {}; }
    std::string VendorName() const override { return {}; }
    std::string ModelName() const override { return {}; }
    std::string DeviceVersion() const override { return {}; }
    std::string ManufacturerInfo() const override { return {}; }
    std::string SerialNumber() const override { return {}; }

    DEVICE_STATE DeviceState() const override { return state_.Get(); }
    [[nodiscard]] StatusCode Connect() override { return Connect(DeviceAccess::Control); }
    [[nodiscard]] StatusCode Connect(DeviceAccess access) override;
    DeviceAccess Access() const override { return access_; }
    std::string FeaturesFailure() const override { return {}; }
    void Interrupt() override {}
    StatusCode DisConnect() override;
    bool IsConnected() const override { return connected_; }
    bool IsConnectedLocally() const override { return connected_; }
    bool IsInterface() const override { return false; }
    unsigned int DeviceType() const override { return TypeId() & ~TypeIdCategoryMask; }
    // Null once the parent has been destroyed.
    IDevice* Parent() const override { return parent_->Get(); }

    std::vector<std::weak_ptr<IDevice>> SubDevices() override VX3_EXCLUDES(subDevicesMutex_);
    StatusCode AddSubDevice(const std::string& text) override;
    StatusCode MonitorSubDevices(bool enable, unsigned int period, unsigned int offset,
                                 SubDeviceCallback callback) override;
    StatusCode UpdateSubDevices(bool unused) override;
    StatusCode SubDeviceLost(IDevice* device) override;

    [[nodiscard]] StatusCode StartAcquisition(unsigned int streamIndex) override;
    StatusCode StopAcquisition(unsigned int streamIndex) override;
    bool IsStreamingLocally() const override;
    unsigned int StreamCnt() const override VX3_EXCLUDES(streamsMutex_);
    StatusCode StopAllStreams() override;
    IStream* GetStream(unsigned int index) override;
    std::shared_ptr<IStream> ShareStream(unsigned int index) override VX3_EXCLUDES(streamsMutex_);

    StatusCode SetIpAddress(const GevDeviceAddress* address) override;
    StatusCode GetIpAddress(GevDeviceAddress* address) const override;

    // What a later round of discovery found out about a device whose state was unknown.
    void LearnState(DEVICE_STATE state) { state_.Learn(state); }

protected:
    [[nodiscard]] StatusCode CreateConfigurer() override { return Status::NotSupported; }
    StatusCode ReleaseConfigurer() override { return Status::Ok; }
    [[nodiscard]] StatusCode PostConnect() override { return Status::Ok; }
    // First of all that DisConnect does with a connected device: waiting on other threads ends, and what is
    // still to be said to the device takes a bounded time.
    virtual void BeginDisConnect() {}

    void UpdateSubDevices(std::vector<std::weak_ptr<IDevice>> devices) VX3_EXCLUDES(subDevicesMutex_);
    // Takes the list over; the streams it replaces are no longer handed out, and released later.
    void UpdateStreams(std::vector<std::shared_ptr<IStream>>& streams) VX3_EXCLUDES(streamsMutex_);
    std::vector<std::shared_ptr<IStream>> Streams() const VX3_EXCLUDES(streamsMutex_);

    // The state that discovery found (Unreachable, Controlled, GenTL, Unknown).
    void SetInitialState(DEVICE_STATE state) { state_.SetInitial(state); }
    // Connected, and not known to be lost.
    bool IsInReach() const { return connected_ && DeviceState() != DEVICE_STATE::Lost; }
    // For heartbeat threads: marks this device lost and tells the interface device, if it still exists.
    void ReportLost();

    // Disconnects, stops and closes what still streams. Idempotent.
    void Shutdown();
    // Children find no parent from now on.
    void CutChildren() { children_->Cut(); }

private:
    friend class ParentLink;
    static constexpr unsigned int TypeIdCategoryMask = 0xFF000000U;

    void StopAndCloseStreams();
    void FinishConnect();

    std::unique_ptr<ObjectAbs> object_;
    std::shared_ptr<ParentLink> parent_;
    std::shared_ptr<ParentLink> children_;
    DeviceStateMachine state_;
    std::atomic<bool> connected_{false};
    std::atomic<DeviceAccess> access_{DeviceAccess::Control};
    TransitionGate connecting_;

    Mutex subDevicesMutex_;
    std::vector<std::weak_ptr<IDevice>> subDevices_ VX3_GUARDED_BY(subDevicesMutex_);

    mutable Mutex streamsMutex_;
    std::vector<std::shared_ptr<IStream>> streams_ VX3_GUARDED_BY(streamsMutex_);
    std::deque<std::vector<std::shared_ptr<IStream>>> retired_ VX3_GUARDED_BY(streamsMutex_);
};

} // namespace VX3
