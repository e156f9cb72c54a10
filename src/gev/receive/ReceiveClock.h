// The receive thread's time. Reading the clock costs as much as parsing a packet, so it is not read once a
// datagram while they queue up. Owned by that thread.
#pragma once

#include <chrono>
#include <cstddef>

namespace VX3 {

class ReceiveClock {
public:
    using TimePoint = std::chrono::steady_clock::time_point;
    static constexpr std::size_t DatagramsPerReading = 16;

    explicit ReceiveClock(TimePoint (*read)() = std::chrono::steady_clock::now) : read_(read), now_(read()) {}

    TimePoint Now() const { return now_; }
    // After a receive call that brought so many datagrams, and may have slept (`waited`) before it did.
    TimePoint Advance(std::size_t datagrams, bool waited) {
        since_ += datagrams;
        if (waited || since_ >= DatagramsPerReading) {
            now_ = read_();
            since_ = 0;
        }
        return now_;
    }

private:
    TimePoint (*const read_)();
    TimePoint now_;
    std::size_t since_ = 0; // datagrams since the last reading
};

} // namespace VX3
