// Looks for cameras behind every interface at once and finds the one a person means. Owns the manager and
// with it the interfaces; lives as long as a verb works with a camera.
#pragma once

#include "base/GlobalOptions.h"
#include "vx3/device/IManager.h"

#include <memory>
#include <string>
#include <vector>

namespace VX3::Tool {

struct FoundCamera {
    std::shared_ptr<IDevice> camera;
    std::shared_ptr<IDevice> interfaceDevice;
};

class CameraSearch {
public:
    // Lists the interfaces; throws when --interface names none of them, or the library has no such family.
    explicit CameraSearch(const GlobalOptions& options);
    ~CameraSearch();
    CameraSearch(const CameraSearch&) = delete;
    CameraSearch& operator=(const CameraSearch&) = delete;

    const std::vector<std::shared_ptr<IDevice>>& Interfaces() const { return interfaces_; }
    // Waits for the first round of every interface (about a second on a network, together).
    std::vector<FoundCamera> Cameras();
    // Asks serial ports that are not configured, once, for five seconds at most; says when no camera
    // answered.
    void ProbeSerialPorts();
    // The one camera that `selector` names; throws, listing the candidates, when there is none or several. An
    // address that broadcast does not reach is asked directly.
    FoundCamera Find(const std::string& selector);

private:
    void AskAddress(const std::string& address);

    std::unique_ptr<IManager> manager_;
    std::vector<std::shared_ptr<IDevice>> interfaces_;
};

// The family bits that --transport names; all of them for an empty name.
unsigned int TransportBits(const std::string& name);
// "virtual", "gige", ... of a device.
std::string TransportName(const IDevice& device);
// Dotted address, or the path of the port or node behind which it is; empty for a camera that has neither.
std::string AddressOf(const IDevice& camera);
// "Name" or "Name at 10.0.0.2 behind eth0", for people.
std::string Describe(const FoundCamera& found);

} // namespace VX3::Tool
