#include "gev/stream/GvspMissingRanges.h"

#include <algorithm>

namespace VX3 {

namespace {

constexpr std::uint32_t FirstCountdown = 51;  // plus the range's length
constexpr std::uint32_t LaterCountdown = 201; // likewise
constexpr std::chrono::milliseconds LongestBacklog{250};

std::uint32_t CountdownFor(std::uint32_t length, std::uint32_t base) {
    return length > 0xFFFFU ? 0xFFFFU : length + base;
}

} // namespace

GvspMissingRanges::GvspMissingRanges(bool resendSupported)
    : maxAttempts_(resendSupported ? MaxAttempts : std::uint8_t{0}) {
    requests_.reserve(MaxItems + 1);
    waiting_.reserve(MaxItems + 1);
}

void GvspMissingRanges::SetMaxPid(std::uint32_t packetId) {
    maxPid_ = packetId;
    budget_.SetMaxPid(packetId);
}

void GvspMissingRanges::SetFlagExt(bool extended) {
    extended_ = extended;
    order_ = GvspBlockOrder(extended);
}

// The last packet of an item's range, as far as the block's length is known.
std::uint32_t GvspMissingRanges::LastOf(const GvspResendItem& item) const {
    return item.last == GvspResendItem::ToBlockEnd ? std::max(maxPid_, item.first) : item.last;
}

void GvspMissingRanges::Add(std::uint32_t blockId, std::uint32_t first, std::uint32_t last, TimePoint now) {
    GvspResendItem item;
    item.next = item.first = first;
    item.blockId = blockId;
    item.last = last;
    item.created = now;
    item.createdAt = packets_;
    item.extended = extended_;
    item.countdown = CountdownFor(LastOf(item) - first, FirstCountdown);
    if (Count() >= MaxItems)
        GiveUp(item);
    else
        requests_.push_back(item);
}

void GvspMissingRanges::GiveUp(const GvspResendItem& item) {
    ++closed_;
    if (item.IsWholeBlock())
        CountLost(1);
}

// Packets that came after all, or will not come -----------------------------------------------------------

void GvspMissingRanges::Arrived(const GvspPacketAddr& addr, TimePoint now) {
    if (!TakeFrom(waiting_, addr, now))
        (void)TakeFrom(requests_, addr, now);
}

bool GvspMissingRanges::TakeFrom(Items& items, const GvspPacketAddr& addr, TimePoint now) {
    for (std::size_t i = 0; i < items.size(); ++i) {
        const GvspResendItem& item = items[i];
        if (item.blockId != addr.blockId || !item.Holds(addr.packetId))
            continue;
        if (item.attempts == 1) // of later answers nobody knows which request they answer
            roundTrip_.Learn(now - item.asked);
        Shrink(items, i, addr.packetId);
        return true;
    }
    return false;
}

// Takes one packet out of a range: from its ends, or leaving a range on either side.
void GvspMissingRanges::Shrink(Items& items, std::size_t index, std::uint32_t packetId) {
    GvspResendItem& item = items[index];
    const std::uint32_t last = LastOf(item);
    if (item.next == packetId) {
        ++item.next;
    } else if (packetId < last) {
        GvspResendItem rest = item;
        rest.next = packetId + 1;
        item.last = packetId - 1;
        if (Count() < MaxItems)
            items.push_back(rest); // within the reserved room
        return;
    } else {
        item.last = packetId - 1;
    }
    if (item.next > LastOf(item)) {
        items.erase(items.begin() + static_cast<std::ptrdiff_t>(index));
        ++closed_;
    }
}

void GvspMissingRanges::Refused(const GvspPacketAddr& addr, bool andPrevious) {
    if (!andPrevious) {
        for (Items* items : {&waiting_, &requests_})
            for (std::size_t i = 0; i < items->size(); ++i)
                if ((*items)[i].blockId == addr.blockId && (*items)[i].Holds(addr.packetId))
                    return Shrink(*items, i, addr.packetId);
        return;
    }
    for (Items* items : {&waiting_, &requests_})
        for (GvspResendItem& item : *items)
            if (item.blockId == addr.blockId && item.next <= addr.packetId && LastOf(item) > addr.packetId)
                item.next = addr.packetId + 1;
    RemoveIf([&](const GvspResendItem& item) {
        return item.blockId == addr.blockId && LastOf(item) <= addr.packetId;
    });
}

template <typename Pick>
void GvspMissingRanges::RemoveIf(Pick pick) {
    for (Items* items : {&requests_, &waiting_}) {
        std::size_t kept = 0;
        for (std::size_t i = 0; i < items->size(); ++i)
            if (pick((*items)[i]))
                GiveUp((*items)[i]);
            else
                (*items)[kept++] = (*items)[i];
        items->resize(kept);
    }
}

void GvspMissingRanges::Remove(std::uint32_t blockId) {
    RemoveIf([&](const GvspResendItem& item) { return item.blockId == blockId; });
}

void GvspMissingRanges::RemoveUpTo(std::uint32_t blockId) {
    if (!IsEmpty())
        RemoveIf([&](const GvspResendItem& item) { return order_.Distance(item.blockId, blockId) >= 0; });
}

void GvspMissingRanges::Clear() {
    closed_ += Count();
    requests_.clear();
    waiting_.clear();
    requestDue_ = false;
}

bool GvspMissingRanges::IsAwaiting(std::uint32_t blockId) const {
    const auto holds = [&](const GvspResendItem& item) {
        return order_.Distance(item.blockId, blockId) >= 0;
    };
    return std::any_of(requests_.begin(), requests_.end(), holds) ||
           std::any_of(waiting_.begin(), waiting_.end(), holds);
}

// Requests ------------------------------------------------------------------------------------------------

bool GvspMissingRanges::NextRequest(GvspResendInfo& info, TimePoint now) {
    if (!requestDue_)
        return false;
    const auto found =
        std::find_if(requests_.begin(), requests_.end(), [](const GvspResendItem& item) { return item.due; });
    if (found == requests_.end()) {
        requestDue_ = false;
        return false;
    }
    if (!budget_.Take(static_cast<std::uint64_t>(LastOf(*found)) - found->next + 1))
        return false; // stays due; packets and time refill
    info = {found->blockId, 0, found->extended ? 1U : 0U, found->next, found->last};
    found->due = false;
    found->asked = now;
    ++found->attempts;
    waiting_.push_back(*found);
    requests_.erase(found);
    return true;
}

void GvspMissingRanges::Check(TimePoint now, bool force) {
    budget_.Refill(checkCounter_, now);
    checkCounter_ = 0;
    if (!waiting_.empty())
        CheckWaiting(now, force);
    if (!requests_.empty())
        CheckRequests(now, force);
}

void GvspMissingRanges::CheckWaiting(TimePoint now, bool force) {
    for (std::size_t i = 0; i < waiting_.size();) {
        GvspResendItem& item = waiting_[i];
        item.countdown -= std::min(item.countdown, CheckEvery);
        const auto waited = now - item.asked;
        const bool late = item.countdown <= CheckEvery || force || waited >= GvspRoundTrip::LongestRetry;
        const auto delay = roundTrip_.RetryDelay(item.attempts);
        const bool unanswered = drained_ - item.asked >= delay || waited >= LongestBacklog;
        if (!late || waited < delay || !unanswered) {
            ++i;
            continue;
        }
        if (item.attempts >= maxAttempts_) {
            GiveUp(item);
        } else {
            item.first = item.next;
            item.countdown = CountdownFor(LastOf(item) - item.next, LaterCountdown);
            item.due = true;
            requests_.push_back(item);
        }
        waiting_.erase(waiting_.begin() + static_cast<std::ptrdiff_t>(i));
    }
}

void GvspMissingRanges::CheckRequests(TimePoint now, bool force) {
    for (std::size_t i = 0; i < requests_.size();) {
        GvspResendItem& item = requests_[i];
        if (!item.due)
            item.due =
                force || packets_ - item.createdAt >= ReorderPackets || now - item.created >= ReorderTime;
        if (item.due && !MayAsk()) {
            GiveUp(item);
            requests_.erase(requests_.begin() + static_cast<std::ptrdiff_t>(i));
            continue;
        }
        requestDue_ = requestDue_ || item.due;
        ++i;
    }
}

} // namespace VX3
