// A camera behind a producer that a local and a remote user share; what every such camera is created as.
// Connect and DisConnect tell each user exactly how things stand: AlreadyConnected for a second connect,
// NotConnected for the disconnect of one who was not.
#pragma once

#include "device/RemotableDevice.h"
#include "gentl/GenTLDevice.h"

namespace VX3 {

class GenTLRemotableDevice final : public RemotableDevice<GenTLDevice> {
public:
    using RemotableDevice::RemotableDevice;
    ~GenTLRemotableDevice() override;

    using RemotableDevice::Connect;
    StatusCode Connect(DeviceAccess access) override { return MUserConnect(StreamUsers::Local, access); }
    StatusCode DisConnect() override { return LeaveLocally(); }

protected:
    std::shared_ptr<IStream> CreateStream(std::shared_ptr<GenTLAPI> producer, const char* streamId,
                                          unsigned int index) override;
};

} // namespace VX3
