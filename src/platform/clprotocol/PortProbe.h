// Asks one serial port for a GenCP device: at the rate it answered at before, or at the rates in turn, each
// once, while the time lasts; then for the device's name. What the time did not suffice for goes on with the
// next probe.
#pragma once

#include "platform/clprotocol/GenCpLink.h"
#include "platform/clprotocol/PortMemory.h"

#include <chrono>
#include <functional>
#include <string>

namespace CLProtocol {

class PortProbe {
public:
    using Clock = GenCpLink::Clock;

    PortProbe(const std::string& portId, Clock::time_point end, std::function<bool()> abandoned);

    // The device's id; empty without a device, or without its whole name yet. Throws PortError when the port
    // cannot be used.
    std::string Run();

    // Leaves the link at a rate at which the device answers. False when it does so at none of them in time.
    static bool FindRate(GenCpLink& link, PortMemory::Entry& entry, Clock::time_point end);
    static std::string ReadText(GenCpLink& link, std::uint64_t address);

private:
    std::string ReadName(GenCpLink& link, PortMemory::Entry& entry);

    const std::string portId_;
    const Clock::time_point end_;
    const std::function<bool()> abandoned_;
};

} // namespace CLProtocol
