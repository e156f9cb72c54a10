// Remembers the newest commands a camera received.
#pragma once

#include "gev/protocol/Gvcp.h"
#include "vx3/core/Mutex.h"
#include "vx3/simulated/CameraScript.h"

#include <deque>
#include <vector>

namespace VX3 {
namespace Simulated {

// What a command says; fields that it is too short for stay 0.
SeenCommand Describe(const Gvcp::CommandPacket& command, std::size_t datagramSize);

// Safe to use from any thread.
class CommandLog {
public:
    explicit CommandLog(std::size_t capacity) : capacity_(capacity) {}

    void Add(SeenCommand command);
    std::vector<SeenCommand> All() const; // oldest first
    void Clear();

private:
    const std::size_t capacity_;
    mutable Mutex mutex_;
    std::deque<SeenCommand> commands_ VX3_GUARDED_BY(mutex_);
};

} // namespace Simulated
} // namespace VX3
