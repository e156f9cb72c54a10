// A device that two users share: a local client, through IDevice, and a remote one, whom this process serves.
// One real connection carries both and ends with the last. Found by dynamic_cast from IDevice; its streams
// are IRemotableStream.
#pragma once

#include "vx3/core/Status.h"

namespace VX3 {

class IRemotableDevice {
public:
    virtual ~IRemotableDevice() = default;
    // The remote user's Connect. WrongState where only monitor access is held; AlreadyConnected when the
    // remote user is connected already.
    [[nodiscard]] virtual StatusCode ConnectRemotely() = 0;
    // Stops the remote user's streams first. The local user's pictures go on after a pause of at most 500 ms.
    virtual StatusCode DisConnectRemotely() = 0;
    virtual bool IsConnectedRemotely() const = 0;
};

} // namespace VX3
