// Device states, sub-device events and the small records of the device interfaces.
#pragma once

#include "vx3/core/Export.h"

#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <utility>

namespace VX3 {

class IDevice;

enum class DEVICE_STATE : std::uint32_t {
    Available = 0,
    Connected = 1, // idle
    Acquiring = 2,
    Unreachable = 3, // its control-privilege register cannot be read
    Controlled = 4,  // another application holds control
    GenTL = 5,       // set by GenTL devices
    Lost = 6,        // the heartbeat timed out
    Unknown = 7,     // nobody has asked the camera yet
};

// How a client connects. Control: the camera is this client's alone until it disconnects. Monitor: registers
// are read beside whoever controls it; nothing can be written and no stream started.
enum class DeviceAccess : std::uint32_t { Control = 1, Monitor = 2 };

enum class SUB_DEVICE_EVENT : std::uint32_t { Found = 1, Lost = 2, StateChanged = 3 };

// At most one entry per kind, each with the cameras concerned.
using SubDeviceEvents = std::list<std::pair<SUB_DEVICE_EVENT, std::list<std::shared_ptr<IDevice>>>>;
// Runs on the monitoring thread of `interfaceDevice`.
using SubDeviceCallback = std::function<void(IDevice* interfaceDevice, SubDeviceEvents events)>;

// What SetHistoryFrames keeps: every delivered frame, those with packets asked for again, those with packets
// missing. Any other value keeps nothing.
enum class FrameType : std::uint32_t { All = 1, Resent = 2, Incomplete = 3 };

// Passed through to the transport; the base gives the values no meaning.
enum class SnapMode : std::uint32_t { Default = 0 };

// IPv4 settings of a GigE Vision camera and of the host it was found from; host byte order.
struct VX3_API GevDeviceAddress {
    std::uint32_t ip = 0;
    std::uint32_t mask = 0;
    std::uint32_t gateway = 0;
    std::uint32_t ipConfiguration = 0; // current IP configuration bits of the bootstrap registers
    std::uint32_t macLow = 0;
    std::uint32_t macHigh = 0;
    std::uint32_t hostIp = 0;
    std::uint32_t hostMask = 0;
    std::uint32_t hostGateway = 0;
};

} // namespace VX3
