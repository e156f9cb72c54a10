// How many packets may be on their way from the camera for a second time. The stream leaves the receiver only
// so much to spare, and asking for more than that drops packets of the stream itself, which are then asked
// for too. So it is a congestion window as transport protocols have it: it grows with the answers, is halved
// when the socket overruns or most answers stay away, and grows by little from then on.
// Owned by the resend bookkeeping; its thread only. Packets throughout.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>

namespace VX3 {

class GvspRecoveryWindow {
public:
    using TimePoint = std::chrono::steady_clock::time_point;
    static constexpr std::uint32_t Initial = 64;
    static constexpr std::uint32_t Smallest = 4;

    // What the socket's buffer has room for beside the stream.
    void SetLargest(std::uint32_t packets) {
        largest_ = std::max(packets, Smallest);
        size_ = std::min(size_, largest_);
    }
    // What the stream cannot do without: an overrun does not make the window smaller than that, as it may be
    // the stream's own.
    void SetSmallest(std::uint32_t packets) {
        smallest_ = std::clamp(packets, Smallest, largest_);
        size_ = std::max(size_, smallest_);
    }
    std::uint32_t Size() const { return size_; }
    std::uint32_t Room() const { return inFlight_ < size_ ? size_ - inFlight_ : 0; }
    // At most so many in one request: the next one may then follow the first answers.
    std::uint32_t Piece() const { return std::max(size_ / 4, 1U); }
    // The socket, or the way, has shown how much it can take.
    bool IsLimited() const { return threshold_ != Unlimited; }

    void Asked(std::uint32_t packets) { inFlight_ += packets; }
    void Answered() {
        ++answered_;
        // A window that is not used says nothing about a larger one.
        if (inFlight_ * 2 >= size_ && size_ < largest_ && (size_ < threshold_ || ++credit_ >= size_)) {
            ++size_;
            credit_ = 0;
        }
        Forget(1);
    }
    // Asked for in vain, as far as can be known.
    void Late(std::uint32_t packets, TimePoint now, std::chrono::microseconds roundTrip) {
        late_ += packets;
        if (late_ >= MassLoss && late_ > answered_)
            Shrink(now, roundTrip);
        Forget(packets);
    }
    // No longer wanted.
    void Forget(std::uint32_t packets) { inFlight_ -= std::min(packets, inFlight_); }
    // The stream leaves more room than before: what was learnt holds no more.
    void Restart() {
        threshold_ = Unlimited;
        size_ = std::max(size_, std::min(Initial, largest_));
    }
    // The socket dropped what came.
    void Overrun(TimePoint now, std::chrono::microseconds roundTrip) { Shrink(now, roundTrip); }

private:
    static constexpr std::uint32_t Unlimited = 0xFFFFFFFFU;
    static constexpr std::uint32_t MassLoss = 16;

    // Once a round trip at most: what is lost meanwhile was under way already.
    void Shrink(TimePoint now, std::chrono::microseconds roundTrip) {
        if (shrunk_ != TimePoint{} && now - shrunk_ < roundTrip)
            return;
        shrunk_ = now;
        threshold_ = size_ = std::max(size_ / 2, smallest_);
        answered_ = late_ = credit_ = 0;
    }

    std::uint32_t largest_ = 4096;
    std::uint32_t smallest_ = Smallest;
    std::uint32_t size_ = Initial;
    std::uint32_t threshold_ = Unlimited; // above it the window grows by one a window's worth of answers
    std::uint32_t inFlight_ = 0;
    std::uint32_t credit_ = 0;   // answers since the window grew last
    std::uint32_t answered_ = 0; // since it shrank last
    std::uint32_t late_ = 0;
    TimePoint shrunk_{};
};

} // namespace VX3
