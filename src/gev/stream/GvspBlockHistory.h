// Which blocks were handed on: nothing more of them is wanted. Owned by the block queue; its thread only.
#pragma once

#include "gev/stream/GvspPacketAddr.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace VX3 {

class GvspBlockHistory {
public:
    void SetOrder(const GvspBlockOrder& order) { order_ = order; }
    void Add(std::uint32_t blockId) {
        newest_ = blockId;
        latest_[next_] = blockId;
        next_ = (next_ + 1) % latest_.size();
    }
    void Forget() {
        latest_.fill(0);
        newest_ = 0;
    }
    // Not later than what was handed on.
    bool IsPast(std::uint32_t blockId) const { return newest_ != 0 && StepsBack(blockId) >= 0; }
    // Of a past block.
    std::int64_t StepsBack(std::uint32_t blockId) const { return -order_.Distance(newest_, blockId); }
    bool IsJustCommitted(std::uint32_t blockId) const {
        return std::find(latest_.begin(), latest_.end(), blockId) != latest_.end();
    }

private:
    GvspBlockOrder order_;
    std::array<std::uint32_t, 3> latest_{}; // block ids; 0: none
    std::size_t next_ = 0;
    std::uint32_t newest_ = 0; // 0: none
};

} // namespace VX3
