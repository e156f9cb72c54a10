// The one interface device of CameraLink cameras that speak GenCP: asks the serial ports that are free, all
// at once. Owned by its manager; owns its cameras. Nothing is written to a port that is not listed.
#pragma once

#include "device/InterfaceDevAbs.h"
#include "vx3/core/Mutex.h"

#include <atomic>
#include <list>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace VX3 {

class GenCpInterfaceDev final : public InterfaceDevAbs {
public:
    static constexpr unsigned int LaterProbeMs =
        300; // of a free port, once all have been asked at every rate
    static constexpr unsigned int FirstProbeMs = 4800; // until then

    // The ports are those of the setting "CameraLinkPorts".
    explicit GenCpInterfaceDev(const char* name);
    GenCpInterfaceDev(const char* name, const std::string& ports);
    ~GenCpInterfaceDev() override;

    std::list<std::shared_ptr<IDevice>> EnumSubDevices(unsigned int timeoutMs) override
        VX3_EXCLUDES(knownMutex_);
    // Asks further ports, paths or patterns, once, for five seconds at most. NotFound: no camera answered
    // that is not known already. NotSupported: no absolute path.
    StatusCode AddSubDevice(const std::string& ports) override;
    // Its port is asked again. Any thread.
    StatusCode SubDeviceLost(IDevice* device) override VX3_EXCLUDES(knownMutex_);

protected:
    StatusCode ConnectP() override { return Status::Ok; }
    StatusCode DisConnectP() override { return Status::Ok; }

private:
    using Devices = std::list<std::shared_ptr<IDevice>>;

    Devices Known() const VX3_EXCLUDES(knownMutex_);
    std::vector<std::string> Free(const std::list<std::string>& ports) const VX3_EXCLUDES(knownMutex_);
    // The cameras found; they are known from then on. `failures`: why ports could not be asked.
    Devices Probe(const std::vector<std::string>& ports, const std::string& deviceIdTemplate,
                  unsigned int timeoutMs, std::vector<std::string>& failures) VX3_EXCLUDES(knownMutex_);
    void TellFailures(const std::vector<std::string>& failures) VX3_EXCLUDES(knownMutex_);

    std::atomic<bool> firstRound_{true};
    mutable Mutex knownMutex_;
    Devices known_ VX3_GUARDED_BY(knownMutex_);
    std::set<std::string> failures_ VX3_GUARDED_BY(knownMutex_); // of the last round, told
};

} // namespace VX3
