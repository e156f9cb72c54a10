// Local cameras for other hosts: a published camera answers as a GigE Vision camera on a port of this host,
// whatever it is here. Another host opens it with this library (family Remote) or with any other program that
// speaks GigE Vision; the local program goes on using it meanwhile.
//
//   VX3::PublishOptions options;
//   options.standardPort = true; // where other programs look
//   if (VX3::Failed(VX3::Publish(camera, options)))
//       ...
//
// All functions may be called from any thread. One thread serves each published camera, another one each
// stream that a host has started.
#pragma once

#include "vx3/core/Export.h"
#include "vx3/core/Status.h"
#include "vx3/device/IDevice.h"
#include "vx3/gev/NetParam.h"
#include "vx3/simulated/CameraScript.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace VX3 {

struct PublishOptions {
    // Of the control channel; streams leave from the next one. 0: the first of 56000, 56002, 56004 and 56006
    // that is free, where remote devices are looked for.
    std::uint16_t port = 0;
    // Port 3956 too, where ordinary programs look. One camera an address of this host can have it.
    bool standardPort = false;
    std::uint32_t address = 0; // of this host, host order; 0: all
    // Bit/s of a stream above which images are dropped; 0: none. Empty: the configuration's key
    // "SimuBandwidthLimit"; without one 104857600 where the link's speed cannot be read, else none.
    std::optional<std::uint64_t> bandwidthLimit;
    // Frames whose packets can be sent again. Empty: the configuration's key "SimuResendFrames", else 8.
    std::optional<std::size_t> resendFrames;
    // Hand the kernel trains of packets, which it cuts (UDP_SEGMENT). Where the receiver sits on this machine
    // and reads below UDP (a packet socket on a virtual link), it sees the trains uncut: say false then.
    bool segmentation = true;
    Simulated::StreamFaults faults; // what goes wrong on its way out
};

struct PublishState {
    std::string name; // the camera's unique name
    std::uint16_t port = 0;
    std::uint16_t streamPort = 0;
    bool standardPort = false;
    bool cameraLost = false;  // gone, or no longer answering; hosts are told
    NET_ENDPOINT controller;  // zeros: nobody
    unsigned int streams = 0; // that hosts have started
    std::uint64_t frames = 0;
    std::uint64_t packets = 0;
    std::uint64_t bytes = 0; // of images
    std::uint64_t packetsResent = 0;
    std::uint64_t requestsNotServed = 0; // packets asked for too late
    std::uint64_t overLimit = 0;         // images dropped by the bandwidth limit
    std::uint64_t overrun = 0;           // images dropped because the network was slower
};

// Ok; NotSupported: a camera that two users cannot share; WrongState: published already; NoBuffer: four are;
// OpenFailed: the port is taken. The thread's last failure says more. The camera must stay alive: it is not
// owned, and one that is gone is reported to hosts as such.
[[nodiscard]] VX3_API StatusCode Publish(const std::shared_ptr<IDevice>& camera,
                                         const PublishOptions& options = {});
// Hosts lose the camera, its local user does not. NotFound: it was not published.
VX3_API StatusCode Withdraw(const IDevice& camera);
// NotFound: it is not published.
[[nodiscard]] VX3_API StatusCode GetPublishState(const IDevice& camera, PublishState& state);

} // namespace VX3
