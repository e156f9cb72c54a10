// The camera side of a frame grabber card: its registers as features, by a description file, and its one
// stream. Owned by the card's interface device.
#pragma once

#include "device/GenIDevice.h"
#include "grabber/KdGrabberCmdHelper.h"
#include "grabber/KdXDMADevice.h"

#include <list>
#include <memory>
#include <string>
#include <vector>

namespace VX3 {

class KdFrameDevice final : public GenIDevice {
public:
    KdFrameDevice(const char* name, const std::string& devicePath, IDevice* parent);
    ~KdFrameDevice() override;

    std::string DevicePath() const override { return devicePath_; }
    // Address 0 is the address of the description; all others are the card's, see KdXDMADevice. Sets the card
    // up first.
    StatusCode ReadPort(unsigned long long address, unsigned char* buffer, unsigned int length) override;
    StatusCode WritePort(unsigned long long address, const unsigned char* buffer,
                         unsigned int length) override;
    std::int64_t GetXmlUrlAddr() override { return 0; }
    bool IsManifestSupported() override { return false; }
    // The registers that a card begins with: once a card and process, as soon as there are features to set
    // them by.
    void InitDeviceReg();

    // Shared with the stream, which may outlive this.
    std::shared_ptr<KdGrabberCmdHelper> Card() const { return {window_, &window_->helper}; }

protected:
    StatusCode ConnectP() override { return Status::Ok; }
    StatusCode DisConnectP() override { return Status::Ok; }
    StatusCode PostConnect() override;
    StatusCode AcquisitionStartPP(unsigned int) override { return Status::Ok; }
    StatusCode AcquisitionStopPP(unsigned int) override { return Status::Ok; }
    std::vector<std::string> DescriptionDirectories() const override;

private:
    struct Window {
        explicit Window(const std::string& devicePath) : device(devicePath, "grabber0"), helper(&device) {}
        KdXDMADevice device;
        KdGrabberCmdHelper helper;
    };

    const std::string devicePath_;
    const std::shared_ptr<Window> window_;
};

} // namespace VX3
