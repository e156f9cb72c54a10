// What a connection sets up at the device, and takes back: control, heartbeat, the highest rate that both
// have. Owned by the port that is connected; used by one thread at a time.
#pragma once

#include "platform/clprotocol/GenCpLink.h"

#include <chrono>
#include <cstdint>
#include <string>

namespace CLProtocol {

class GenCpSession {
public:
    // The device answers over `link` already.
    explicit GenCpSession(GenCpLink& link);

    // Throws PortError; what was taken until then is given back by Close.
    void Open();
    // Takes two seconds at most; never throws.
    void Close() noexcept;

    // The rate at which the device is found next; `lost`: it was not told that this ends.
    std::uint32_t RateAfterwards(bool lost) const;
    // For so long the device bears silence; 0: for ever.
    std::chrono::milliseconds HeartbeatTimeout() const { return heartbeat_; }
    // What was done otherwise than it should be, in words; empty when nothing was.
    const std::string& Note() const { return note_; }

private:
    void AddNote(const std::string& text);
    void TakeControl();
    void RaiseRate();
    std::uint32_t HighestCommonRate(std::uint32_t supported);
    bool SwitchRate(std::uint32_t rate);
    void FallBack(std::uint32_t rate);
    void GiveBack();

    GenCpLink& link_;
    const std::uint32_t foundRate_;
    std::uint64_t capability_ = 0;
    std::uint64_t sbrm_ = 0; // 0: the device has none
    std::chrono::milliseconds heartbeat_{0};
    bool exclusive_ = false;
    std::string note_;
};

} // namespace CLProtocol
