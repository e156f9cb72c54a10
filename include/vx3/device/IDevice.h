// A device: the host side of a transport (interface device) or a camera (sub-device).
//
// Connect, DisConnect and stream handling are for one client thread at a time; SubDevices may be called while
// the monitoring thread works.
#pragma once

#include "vx3/core/IObject.h"
#include "vx3/core/Status.h"
#include "vx3/device/IStream.h"
#include "vx3/device/Types.h"

#include <memory>
#include <string>
#include <vector>

namespace VX3 {

class VX3_API IDevice : public IObject {
public:
    virtual std::string DevicePath() const = 0;
    virtual std::string UniqueName() const = 0;
    virtual std::string FriendlyName() const = 0;
    virtual std::string UserName() const = 0;
    virtual DEVICE_STATE DeviceState() const = 0;
    // Takes the camera over, fetches its description and builds the configurer. 0 when already connected. A
    // camera whose description cannot be had is connected all the same: FeaturesFailure says why.
    [[nodiscard]] virtual StatusCode Connect() = 0;
    // Stops and closes every stream first; streams and configurers of this connection then answer
    // NotConnected. 0 also for a camera that is lost, which is not asked any more.
    virtual StatusCode DisConnect() = 0;
    virtual bool IsConnected() const = 0;
    virtual bool IsConnectedLocally() const = 0;
    virtual bool IsInterface() const = 0;
    virtual unsigned int DeviceType() const = 0;
    // Not owned; null for interface devices.
    virtual IDevice* Parent() const = 0;
    // The cameras behind an interface device, as of the last enumeration.
    virtual std::vector<std::weak_ptr<IDevice>> SubDevices() = 0;
    // Adds a camera that broadcast does not reach, by address text.
    [[nodiscard]] virtual StatusCode AddSubDevice(const std::string& text) = 0;
    // Starts (Generic, -1, when it runs already) or stops re-enumeration every `period` ms; the second round
    // comes `period - offset` ms after the first. The callback runs on the monitoring thread.
    virtual StatusCode MonitorSubDevices(bool enable, unsigned int period, unsigned int offset,
                                         SubDeviceCallback callback) = 0;
    // Asks the monitor for a round at once.
    virtual StatusCode UpdateSubDevices(bool unused) = 0;
    virtual StatusCode SubDeviceLost(IDevice* device) = 0;
    [[nodiscard]] virtual StatusCode StartAcquisition(unsigned int streamIndex) = 0;
    virtual StatusCode StopAcquisition(unsigned int streamIndex) = 0;
    virtual bool IsStreamingLocally() const = 0;
    virtual unsigned int StreamCnt() const = 0;
    virtual StatusCode StopAllStreams() = 0;
    // Not owned; null when not connected or past the end. Valid while the device lives; a client whose other
    // threads disconnect meanwhile takes ShareStream instead.
    virtual IStream* GetStream(unsigned int index) = 0;
    // GigE Vision only: force and read IPv4 settings.
    [[nodiscard]] virtual StatusCode SetIpAddress(const GevDeviceAddress* address) = 0;
    [[nodiscard]] virtual StatusCode GetIpAddress(GevDeviceAddress* address) const = 0;
    virtual std::string VendorName() const = 0;
    virtual std::string ModelName() const = 0;
    virtual std::string DeviceVersion() const = 0;
    virtual std::string ManufacturerInfo() const = 0;
    virtual std::string SerialNumber() const = 0;
    // GetStream and GetConfigurer as owners: what they return stays usable whatever other threads do (its
    // operations then say NotOpen or NodeFailed). Empty where the plain ones are null.
    virtual std::shared_ptr<IStream> ShareStream(unsigned int index) = 0;
    virtual std::shared_ptr<IConfigurer> ShareConfigurer() = 0;
    // Connect with the access of choice. WrongState when connected with another one. Where another client has
    // exclusive access, a GigE Vision camera may refuse even to be read: Status::FromGvcp(0x8006).
    [[nodiscard]] virtual StatusCode Connect(DeviceAccess access) = 0;
    // Of the connection, or of the last one.
    virtual DeviceAccess Access() const = 0;
    // Why this connected device offers no features, in words; empty where it does, and where its
    // kind has none.
    virtual std::string FeaturesFailure() const = 0;
    // Ends whatever waits for the camera's answers, on any thread, within 100 ms: it fails with WrongState,
    // and so does all that follows until DisConnect, which still gives the camera back. From any thread.
    virtual void Interrupt() = 0;

protected:
    [[nodiscard]] virtual StatusCode AcquisitionStartP(unsigned int streamIndex) = 0;
    virtual StatusCode AcquisitionStopP(unsigned int streamIndex) = 0;
    [[nodiscard]] virtual StatusCode ConnectP() = 0;
    virtual StatusCode DisConnectP() = 0;
    [[nodiscard]] virtual StatusCode CreateConfigurer() = 0;
    virtual StatusCode ReleaseConfigurer() = 0;
    [[nodiscard]] virtual StatusCode PostConnect() = 0;
};

} // namespace VX3
