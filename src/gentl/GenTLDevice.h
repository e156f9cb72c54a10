// A camera behind a producer: its registers as the node map's port, its descriptions, its streams. Owned by
// the interface device that lists it; created as GenTLRemotableDevice.
//
// Its handles exist while it is connected. Connect takes the camera exclusively, or where the producer has no
// such access, so that others may read; monitor access opens it to be read only.
#pragma once

#include "device/GenIDevice.h"
#include "gentl/GenTLEvents.h"
#include "gentl/GenTLInterface.h"

#include <list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace VX3 {

class GenTLDevice : public GenIDevice {
public:
    // Writing 4 bytes there, a number of milliseconds in host order, only waits; not longer than the
    // connection.
    static constexpr unsigned long long SleepAddress = 0x80000000ULL;

    // Asks the producer who the camera is; texts that it does not give stay empty. Only one whose parent is a
    // GenTL interface can be connected.
    GenTLDevice(std::shared_ptr<GenTLAPI> producer, const char* id, const char* displayName, IDevice* parent);
    ~GenTLDevice() override;

    StatusCode ReadPort(unsigned long long address, unsigned char* buffer, unsigned int length) override;
    StatusCode WritePort(unsigned long long address, const unsigned char* buffer,
                         unsigned int length) override;
    std::int64_t GetXmlUrlAddr() override { return -1; }
    bool IsManifestSupported() override { return false; }
    // The first of its descriptions.
    StatusCode GetXmlUrl(std::string& url) override;

    std::string VendorName() const override { return vendor_; }
    std::string ModelName() const override { return model_; }
    std::string DeviceVersion() const override { return version_; }
    std::string SerialNumber() const override { return serial_; }
    std::string ManufacturerInfo() const override { return {}; }
    std::string UserName() const override { return {}; }
    std::string UniqueName() const override { return id_; }
    std::list<std::pair<std::string, std::string>> GetInfo() const override;

    // The producer lists it no more: nothing is asked of it until it is disconnected.
    void MarkLost() { ReportLost(); }
    const GenTLHandle& DeviceHandle() const { return device_; }

protected:
    StatusCode ConnectP() override;
    StatusCode PostConnect() override;
    void BeginDisConnect() override;
    StatusCode DisConnectP() override;
    StatusCode CreateConfigurer() override;
    StatusCode AcquisitionStartP(unsigned int streamIndex) override;
    StatusCode AcquisitionStartPP(unsigned int) override { return Status::Ok; }
    StatusCode AcquisitionStopPP(unsigned int) override { return Status::Ok; }
    virtual std::shared_ptr<IStream> CreateStream(std::shared_ptr<GenTLAPI> producer, const char* streamId,
                                                  unsigned int index);

private:
    struct Opened;

    static Opened OpenModule(GenTLInterface& interface, const std::string& id, DeviceAccess access);
    StatusCode Sleep(const unsigned char* milliseconds);
    std::vector<std::string> DescriptionUrls();
    void OnEvent(const GenTLEvents::Event& event);

    const std::shared_ptr<GenTLAPI> producer_;
    const std::weak_ptr<GenTLInterface> interface_;
    const std::string id_;
    std::string vendor_;
    std::string model_;
    std::string version_;
    std::string serial_;
    GenTLHandle device_;
    GenTLPort port_; // of the remote device
    std::unique_ptr<GenTLEvents> events_;
};

} // namespace VX3
