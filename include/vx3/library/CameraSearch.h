// Finding cameras, whatever family they are of.
#pragma once

#include "vx3/device/IManager.h"

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace VX3 {

// Every camera behind the manager's interface devices. Has each of them look for its cameras, all at once,
// and waits until each has finished a look, at most `timeout`. They go on looking every 10 s for as long as
// the manager lives.
VX3_API std::vector<std::shared_ptr<IDevice>> FindCameras(IManager& manager,
                                                          std::chrono::milliseconds timeout);

// The camera with that name, unique name, name given by its user, serial number or address ("192.168.0.10",
// reached even where it does not answer broadcasts); where there is none, the first of that model. With an
// empty text the first camera of the network or any other family, and only where there is none a virtual one.
// Returns as soon as it is clear which one it is, at the latest after `timeout`. Null: there is none; the
// thread's last failure says which ones there are. The manager must outlive the camera.
VX3_API std::shared_ptr<IDevice> FindCamera(IManager& manager, const std::string& text,
                                            std::chrono::milliseconds timeout);

// The same behind the interface devices given.
VX3_API std::shared_ptr<IDevice> FindCamera(const std::vector<std::shared_ptr<IDevice>>& interfaces,
                                            const std::string& text, std::chrono::milliseconds timeout);

} // namespace VX3
