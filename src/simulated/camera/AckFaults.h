// What goes wrong with acknowledgements: rules taken in the order they were added, and what becomes of an
// acknowledgement under each.
#pragma once

#include "vx3/core/Mutex.h"
#include "vx3/simulated/CameraScript.h"
#include "wire/WireCursor.h"

#include <optional>
#include <vector>

namespace VX3 {
namespace Simulated {

// One thing to do instead of simply sending the acknowledgement.
struct AckStep {
    enum class Kind { Send, SendFromElsewhere, Wait };
    Kind kind = Kind::Send;
    std::vector<std::uint8_t> bytes; // to send
    unsigned ms = 0;                 // to wait
};

// Safe to use from any thread.
class AckFaults {
public:
    void Add(const AckRule& rule);
    // The rule that this command falls under; it is one command nearer to its end then.
    std::optional<AckRule> Take(const SeenCommand& command);

    // What is done with the acknowledgement of a command that falls under `rule`, in this order.
    static std::vector<AckStep> Steps(const AckRule& rule, WireBytes ack);

private:
    Mutex mutex_;
    std::vector<AckRule> rules_ VX3_GUARDED_BY(mutex_);
};

} // namespace Simulated
} // namespace VX3
