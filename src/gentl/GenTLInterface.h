// An open interface module of a producer: its handle, its registers and the list of cameras behind it. Shared
// by the interface devices of all managers, since a producer opens it only once; closed with the last.
#pragma once

#include "gentl/GenTLPort.h"
#include "vx3/core/Mutex.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace VX3 {

class GenTLInterface {
public:
    struct DeviceEntry {
        std::string id;
        std::string displayName;
    };

    // On a thread of the producer's. Without success it has no handle, and says why once in the log.
    GenTLInterface(std::shared_ptr<GenTLAPI> producer, std::string id);
    ~GenTLInterface();
    GenTLInterface(const GenTLInterface&) = delete;
    GenTLInterface& operator=(const GenTLInterface&) = delete;

    // The same from any thread; null when the producer does not return.
    static std::shared_ptr<GenTLInterface> Open(const std::shared_ptr<GenTLAPI>& producer,
                                                const std::string& id);

    GenTLPort& Port() { return port_; }
    const std::shared_ptr<GenTLAPI>& Producer() const { return port_.Producer(); }

    // The cameras of a list that the producer has updated, waiting at most that long for it. Nothing when it
    // cannot be asked: who was not heard may be there all the same.
    static std::optional<std::vector<DeviceEntry>> ListDevices(const std::shared_ptr<GenTLInterface>& self,
                                                               std::chrono::milliseconds timeout);
    // What DEVICE_INFO_... says of a camera; empty where the producer does not say. On a producer's thread.
    std::string DeviceText(const std::string& device, std::int32_t command);

private:
    bool OpenHandle();
    bool UpdateList(std::chrono::milliseconds timeout);
    std::optional<std::vector<DeviceEntry>> List(std::chrono::milliseconds timeout) VX3_EXCLUDES(listMutex_);

    const std::string id_;
    GenTLPort port_;
    std::atomic<bool> listing_{false};
    Mutex listMutex_; // updates, counts and ids belong together
    bool complained_ VX3_GUARDED_BY(listMutex_) = false;
};

} // namespace VX3
