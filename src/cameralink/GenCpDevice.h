// A CameraLink camera that speaks GenCP: its features, over its own serial port. Its images come through the
// frame grabber. Owned by the GenCP interface.
//
// A camera that does not answer any more, after all retries, and one whose port has gone, is lost; one that
// refuses an access is not.
#pragma once

#include "cameralink/CLPortA.h"
#include "cameralink/GenCpHeartBeat.h"
#include "device/GenIDevice.h"

#include <atomic>
#include <exception>
#include <memory>
#include <string>

namespace VX3 {

class GenCpDevice final : public GenIDevice {
public:
    GenCpDevice(const char* name, const std::string& portId, const std::string& deviceId, IDevice* parent);
    ~GenCpDevice() override;

    // Two cameras may have the same name: not all have serial numbers.
    std::string UniqueName() const override { return Name() + "@" + portId_; }
    std::string DevicePath() const override { return portId_; }
    // Before a connection, what the camera said when it was found.
    std::string ModelName() const override;
    std::string SerialNumber() const override;
    std::list<std::pair<std::string, std::string>> GetInfo() const override;

    // The length; DeviceLost, NotConnected, FromGvcp with the status of a refusal (the two protocols number
    // them alike), Malformed. WritePort: NotAvailable for a device that is connected to be read only.
    StatusCode ReadPort(unsigned long long address, unsigned char* buffer, unsigned int length) override;
    StatusCode WritePort(unsigned long long address, const unsigned char* buffer,
                         unsigned int length) override;
    std::int64_t GetXmlUrlAddr() override { return 0; }
    bool IsManifestSupported() override { return true; }
    [[nodiscard]] std::unique_ptr<IXmlData> GetXmlData() override;
    void Interrupt() override { serial_.Abandon(); }

    // The camera is lost: says so once, frees its port and tells the interface.
    void HeartBeatTimeOut();

protected:
    // DeviceLost: nobody, or another camera, answers at the port. OpenFailed: another program has it.
    StatusCode ConnectP() override;
    StatusCode DisConnectP() override;
    void BeginDisConnect() override { serial_.Abandon(); }
    StatusCode AcquisitionStartPP(unsigned int) override { return Status::Ok; }
    StatusCode AcquisitionStopPP(unsigned int) override { return Status::Ok; }

private:
    template <typename Operation>
    StatusCode Transfer(unsigned int length, Operation operation);
    StatusCode Judge(const std::exception& error);
    bool Beat();
    void LogNote();

    CLPortA serial_;
    const std::string portId_;
    const std::string deviceId_;
    std::atomic<bool> lossTold_{false};
    std::atomic<std::chrono::milliseconds> period_{std::chrono::milliseconds(1000)};
    GenCpHeartBeat heart_; // last: it uses the others
};

} // namespace VX3
