// One GigE Vision camera: what discovery told about it, its control channel and heartbeat, its registers as
// the node map's port, and what its streams need. Owned by the interface device that found it.
//
// Application, heartbeat and receive threads share the control channel; it serialises their transactions. The
// channel exists while the device is connected: before and after, registers answer NotConnected, and a known
// camera costs no socket. A lost camera is not asked any more: registers answer DeviceLost.
#pragma once

#include "device/GenIDevice.h"
#include "gev/GevControl.h"
#include "gev/IGevStreamChannels.h"
#include "gev/control/GevCmdHelper.h"
#include "gev/protocol/DiscoveryInfo.h"
#include "vx3/core/Mutex.h"
#include "vx3/gev/NetParam.h"

#include <atomic>
#include <cstdint>
#include <list>
#include <memory>
#include <string>
#include <utility>

namespace VX3 {

class GevDevice : public GenIDevice, public IGevStreamChannels {
public:
    // `noFilter`: never receive through the filter driver. `state`: what discovery found out about control,
    // Unreachable, Controlled, Available or Unknown. The camera is not asked for anything.
    GevDevice(const std::string& name, const NET_PARAM& local, const GVCP_DISCOVERY_ACK& discovery,
              IDevice* parent, bool noFilter, std::uint16_t port = Gvcp::Port,
              DEVICE_STATE state = DEVICE_STATE::Unknown);
    ~GevDevice() override;

    std::string UniqueName() const override; // name@ip-mask-gateway
    std::string FriendlyName() const override { return Name(); }
    std::string UserName() const override { return discovery_.userDefinedName; }
    std::string VendorName() const override { return discovery_.manufacturerName; }
    std::string ModelName() const override { return discovery_.modelName; }
    std::string DeviceVersion() const override { return discovery_.deviceVersion; }
    std::string ManufacturerInfo() const override { return discovery_.manufacturerInfo; }
    std::string SerialNumber() const override { return discovery_.serialNumber; }
    std::list<std::pair<std::string, std::string>> GetInfo() const override;

    // Bytes as on the wire, 4 of them as a register, any other count as memory.
    StatusCode ReadPort(unsigned long long address, unsigned char* buffer, unsigned int length) override;
    StatusCode WritePort(unsigned long long address, const unsigned char* buffer,
                         unsigned int length) override;
    std::int64_t GetXmlUrlAddr() override;
    void Interrupt() override VX3_EXCLUDES(helperMutex_);
    bool IsManifestSupported() override { return false; }

    StatusCode GetIpAddress(GevDeviceAddress* address) const override;
    // Broadcasts FORCEIP to the camera with that MAC address; it may then have to be found anew.
    StatusCode SetIpAddress(const GevDeviceAddress* address) override;

    [[nodiscard]] StatusCode StreamParam(unsigned int channel, GevStreamParam& param) override;
    [[nodiscard]] StatusCode SetStreamDest(unsigned int channel, std::uint32_t ip,
                                           std::uint32_t port) override;
    // Bytes of a stream packet, IP and UDP headers included; 1500 when the camera does not say.
    unsigned int GetPacketSize();
    // True where the filter driver's device node can be opened.
    static bool CanUseFilter();

    const GevDiscoveryInfo& DiscoveryInfo() const { return discovery_; }

protected:
    // A derived class with another device type.
    GevDevice(unsigned int typeId, const std::string& name, const NET_PARAM& local,
              const GVCP_DISCOVERY_ACK& discovery, IDevice* parent, bool noFilter, std::uint16_t port,
              DEVICE_STATE state);

    StatusCode ConnectP() override;
    StatusCode PostConnect() override;
    void BeginDisConnect() override;
    StatusCode DisConnectP() override;
    StatusCode AcquisitionStartPP(unsigned int) override { return Status::Ok; }
    StatusCode AcquisitionStopPP(unsigned int) override { return Status::Ok; }

    virtual std::shared_ptr<IStream> CreateStream(const char* name, unsigned int index, bool useFilter);
    [[nodiscard]] StatusCode GetControlAccess();
    StatusCode ReleaseAccess();
    // The control channel; null while there is no connection.
    std::shared_ptr<GevCmdHelper> Helper() const VX3_EXCLUDES(helperMutex_);
    // The control channel of a camera that may be asked, else null and the reason.
    std::shared_ptr<GevCmdHelper> UsableHelper(StatusCode& reason) const;
    std::uint16_t ControlPort() const { return port_; }

private:
    NET_PARAM RemoteParam() const;
    void SetHelper(std::shared_ptr<GevCmdHelper> helper) VX3_EXCLUDES(helperMutex_);
    [[nodiscard]] StatusCode OpenChannel();
    void GiveUp();
    void ReadCapabilities();
    void CreateStreams();
    std::uint32_t BlockBytes();

    void HeartBeatTimeOut();

    const std::uint16_t port_;
    const bool noFilter_;
    const NET_PARAM local_;
    GevDiscoveryInfo discovery_;
    std::atomic<std::uint16_t> requestCounter_{1};
    mutable Mutex helperMutex_;
    std::shared_ptr<GevCmdHelper> helper_ VX3_GUARDED_BY(helperMutex_);

    // As read when the camera was connected.
    std::atomic<std::uint32_t> gvcpCapability_{0};
    std::atomic<std::uint32_t> messageChannels_{0};
    std::atomic<std::uint32_t> gvspCapability_{0};
    std::atomic<std::uint32_t> messageCapability_{0};
    std::atomic<std::uint32_t> streamChannels_{0};
    std::atomic<std::uint32_t> gvcpConfiguration_{0};
    std::atomic<std::uint32_t> streamCapability_{0};
    std::atomic<std::uint32_t> gvcpTimeoutMs_{1000};
    GevControl control_;
};

} // namespace VX3
