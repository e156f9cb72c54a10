#include "gev/stream/GvspResendParser.h"

#include "vx3/core/Logger.h"

#include <algorithm>

namespace VX3 {

namespace {

constexpr std::uint32_t checkEvery = 10;           // packets
constexpr std::uint32_t firstCountdown = 51;       // plus the range's length
constexpr std::uint32_t laterCountdown = 201;      // likewise
constexpr std::uint64_t tokensPerPacket = 4;       // a request for one packet costs four received ones
constexpr std::uint64_t minTokenPackets = 2048;    // a burst that may always be asked for
constexpr std::chrono::microseconds tokenTime{12}; // refills a silent stream: one token each
constexpr std::chrono::microseconds shortestRetry{500};
constexpr std::chrono::microseconds longestRetry{40000};
constexpr std::chrono::milliseconds longestBacklog{250};

std::uint32_t CountdownFor(std::uint32_t length, std::uint32_t base) {
    return length > 0xFFFFU ? 0xFFFFU : length + base;
}

} // namespace

GvspResendParser::GvspResendParser(bool resendSupported)
    : maxAttempts_(resendSupported ? MaxAttempts : std::uint8_t{0}),
      tokens_(minTokenPackets * tokensPerPacket) {
    requests_.reserve(MaxItems + 1);
    waiting_.reserve(MaxItems + 1);
}

StatusCode GvspResendParser::SetMaxPid(std::uint32_t packetId) {
    maxPid_ = packetId;
    tokens_ = TokenCapacity();
    return Status::Ok;
}

StatusCode GvspResendParser::SetFlagExt(bool extended) {
    extended_ = extended;
    order_ = GvspBlockOrder(extended);
    return Status::Ok;
}

std::uint64_t GvspResendParser::TokenCapacity() const {
    return std::max<std::uint64_t>(minTokenPackets, 2ULL * maxPid_) * tokensPerPacket;
}

void GvspResendParser::AdvanceFrom(const GvspPacketAddr& addr) {
    if (addr.packetId < maxPid_)
        expected_ = {addr.packetId + 1, addr.blockId};
    else
        expected_ = {0, order_.Next(addr.blockId)};
}

StatusCode GvspResendParser::UpdateResend(const GvspPacketAddr* addr, TimePoint now) {
    ++packets_;
    if (++checkCounter_ >= checkEvery)
        CheckListTimeOut(now, false);
    if (*addr == expected_ && seen_) {
        AdvanceFrom(*addr);
    } else if (!seen_) {
        seen_ = true;
        requests_.clear(); // at most a leader asked for
        waiting_.clear();
        AdvanceFrom(*addr);
    } else if (order_.IsLater(*addr, expected_)) {
        CreateResendInfo(expected_, *addr, now);
        AdvanceFrom(*addr);
    } else {
        Late(*addr, now);
    }
    return Status::Ok;
}

StatusCode GvspResendParser::UpdateResend(const GvspPacketAddr* from, const GvspPacketAddr* to,
                                          TimePoint now) {
    if (from->blockId != to->blockId || from->packetId > to->packetId)
        return Status::WrongState;
    GvspPacketAddr addr = *from;
    for (;; ++addr.packetId) {
        (void)UpdateResend(&addr, now);
        if (addr.packetId == to->packetId)
            return Status::Ok;
    }
}

void GvspResendParser::CreateResendInfo(const GvspPacketAddr& from, const GvspPacketAddr& to, TimePoint now) {
    // The gap ends just before `to`.
    GvspPacketAddr end = to;
    if (to.packetId == 0)
        end = {GvspResendItem::ToBlockEnd, order_.Previous(to.blockId)};
    else
        --end.packetId;
    const bool log = maxAttempts_ != 0 && itemLog_.Allow(now);
    if (from.blockId == end.blockId) {
        if (log)
            VxLoggerLog(LogLevel::Info, "SDK", "one resend item created:%u.%u~%d.", end.blockId,
                        from.packetId, static_cast<int>(end.packetId));
        AddItem(end.blockId, from.packetId, end.packetId, now);
        return;
    }
    const std::int64_t between = order_.Distance(from.blockId, end.blockId) - 1;
    if (between > 0)
        imagesLost_.fetch_add(static_cast<std::uint64_t>(between), std::memory_order_relaxed);
    if (log)
        VxLoggerLog(LogLevel::Info, "SDK", "two resend item created: %u.%u~%d and %u.%u~%d!", from.blockId,
                    from.packetId, -1, end.blockId, 0U, static_cast<int>(end.packetId));
    AddItem(from.blockId, from.packetId, GvspResendItem::ToBlockEnd, now);
    AddItem(end.blockId, 0, end.packetId, now);
}

void GvspResendParser::AddItem(std::uint32_t blockId, std::uint32_t first, std::uint32_t last,
                               TimePoint now) {
    GvspResendItem item;
    item.next = item.first = first;
    item.blockId = blockId;
    item.last = last;
    item.created = now;
    item.createdAt = packets_;
    item.extended = extended_;
    item.countdown = CountdownFor(LastOf(item) - first, firstCountdown);
    if (requests_.size() + waiting_.size() >= MaxItems)
        GiveUp(item);
    else
        requests_.push_back(item);
}

// The last packet of an item's range, as far as the block's length is known.
std::uint32_t GvspResendParser::LastOf(const GvspResendItem& item) const {
    return item.last == GvspResendItem::ToBlockEnd ? std::max(maxPid_, item.first) : item.last;
}

void GvspResendParser::Late(const GvspPacketAddr& addr, TimePoint now) {
    if (!TakeFrom(waiting_, addr, now))
        (void)TakeFrom(requests_, addr, now);
}

bool GvspResendParser::TakeFrom(Items& items, const GvspPacketAddr& addr, TimePoint now) {
    for (std::size_t i = 0; i < items.size(); ++i) {
        const GvspResendItem& item = items[i];
        if (item.blockId != addr.blockId || !item.Holds(addr.packetId))
            continue;
        if (item.attempts == 1) {
            const auto took = std::chrono::duration_cast<std::chrono::microseconds>(now - item.asked);
            roundTrip_ += (took - roundTrip_) / 8;
        }
        Shrink(items, i, addr.packetId);
        return true;
    }
    return false;
}

// Takes one packet out of a range: from its ends, or leaving a range on either side.
void GvspResendParser::Shrink(Items& items, std::size_t index, std::uint32_t packetId) {
    GvspResendItem& item = items[index];
    const std::uint32_t last = LastOf(item);
    if (item.next == packetId) {
        ++item.next;
    } else if (packetId < last) {
        GvspResendItem rest = item;
        rest.next = packetId + 1;
        item.last = packetId - 1;
        if (requests_.size() + waiting_.size() < MaxItems)
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

void GvspResendParser::GiveUp(const GvspResendItem& item) {
    ++closed_;
    if (item.IsWholeBlock())
        imagesLost_.fetch_add(1, std::memory_order_relaxed);
}

bool GvspResendParser::GetResendInfo(GvspResendInfo& info, TimePoint now) {
    if (!requestDue_)
        return false;
    const auto found =
        std::find_if(requests_.begin(), requests_.end(), [](const GvspResendItem& item) { return item.due; });
    if (found == requests_.end()) {
        requestDue_ = false;
        return false;
    }
    const std::uint64_t packets = static_cast<std::uint64_t>(LastOf(*found)) - found->next + 1;
    const std::uint64_t cost = std::min(packets * tokensPerPacket, TokenCapacity());
    if (cost > tokens_)
        return false; // stays due; packets and time refill
    tokens_ -= cost;
    info = {found->blockId, 0, found->extended ? 1U : 0U, found->next, found->last};
    found->due = false;
    found->asked = now;
    ++found->attempts;
    waiting_.push_back(*found);
    requests_.erase(found);
    return true;
}

std::chrono::microseconds GvspResendParser::RetryDelay(const GvspResendItem& item) const {
    const auto base = std::clamp(roundTrip_ * 3, shortestRetry, longestRetry);
    const unsigned doublings = item.attempts == 0 ? 0U : std::min<unsigned>(item.attempts - 1U, 5U);
    return std::min(base * (1 << doublings), longestRetry);
}

void GvspResendParser::CheckListTimeOut(TimePoint now, bool force) {
    const std::uint64_t checked = checkCounter_;
    checkCounter_ = 0;
    tokens_ += checked;
    if (refilled_ != TimePoint{} && now > refilled_)
        tokens_ += static_cast<std::uint64_t>((now - refilled_) / tokenTime);
    refilled_ = now;
    tokens_ = std::min(tokens_, TokenCapacity());
    if (!waiting_.empty())
        CheckWaiting(now, force);
    if (!requests_.empty())
        CheckRequests(now, force);
}

void GvspResendParser::CheckWaiting(TimePoint now, bool force) {
    for (std::size_t i = 0; i < waiting_.size();) {
        GvspResendItem& item = waiting_[i];
        item.countdown -= std::min(item.countdown, checkEvery);
        const auto waited = now - item.asked;
        const bool late = item.countdown <= checkEvery || force || waited >= longestRetry;
        const auto delay = RetryDelay(item);
        const bool unanswered = drained_ - item.asked >= delay || waited >= longestBacklog;
        if (!late || waited < delay || !unanswered) {
            ++i;
            continue;
        }
        if (item.attempts >= maxAttempts_) {
            GiveUp(item);
        } else {
            item.first = item.next;
            item.countdown = CountdownFor(LastOf(item) - item.next, laterCountdown);
            item.due = true;
            requests_.push_back(item);
        }
        waiting_.erase(waiting_.begin() + static_cast<std::ptrdiff_t>(i));
    }
}

void GvspResendParser::CheckRequests(TimePoint now, bool force) {
    for (std::size_t i = 0; i < requests_.size();) {
        GvspResendItem& item = requests_[i];
        if (!item.due)
            item.due =
                force || packets_ - item.createdAt >= ReorderPackets || now - item.created >= ReorderTime;
        if (item.due && maxAttempts_ == 0) {
            GiveUp(item);
            requests_.erase(requests_.begin() + static_cast<std::ptrdiff_t>(i));
            continue;
        }
        requestDue_ = requestDue_ || item.due;
        ++i;
    }
}

void GvspResendParser::CloseTail(TimePoint now) {
    if (!seen_ || expected_.packetId == 0)
        return;
    const GvspPacketAddr next{0, order_.Next(expected_.blockId)};
    CreateResendInfo(expected_, next, now);
    expected_ = next;
}

void GvspResendParser::SkipRest(std::uint32_t blockId) {
    if (expected_.blockId == blockId && expected_.packetId != 0)
        expected_ = {0, order_.Next(blockId)};
}

void GvspResendParser::RequestLeader(std::uint32_t blockId, bool extended, TimePoint now) {
    if (seen_ || maxAttempts_ == 0)
        return;
    ++packets_;
    if (blockId != headlessBlock_) {
        headlessBlock_ = blockId;
        requests_.clear();
        waiting_.clear();
        (void)SetFlagExt(extended);
        AddItem(blockId, 0, 0, now);
    }
    if (++checkCounter_ >= checkEvery)
        CheckListTimeOut(now, false);
}

template <typename Pick>
void GvspResendParser::RemoveIf(Pick pick) {
    for (Items* items : {&requests_, &waiting_}) {
        std::size_t kept = 0;
        for (std::size_t i = 0; i < items->size(); ++i) {
            if (pick((*items)[i]))
                GiveUp((*items)[i]);
            else
                (*items)[kept++] = (*items)[i];
        }
        items->resize(kept);
    }
}

StatusCode GvspResendParser::Remove(std::uint32_t blockId) {
    RemoveIf([&](const GvspResendItem& item) { return item.blockId == blockId; });
    return Status::Ok;
}

void GvspResendParser::RemoveUpTo(std::uint32_t blockId) {
    if (!HasItems())
        return;
    RemoveIf([&](const GvspResendItem& item) { return order_.Distance(item.blockId, blockId) >= 0; });
}

void GvspResendParser::Refused(const GvspPacketAddr& addr, bool andPrevious) {
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

void GvspResendParser::Restart() {
    closed_ += requests_.size() + waiting_.size();
    requests_.clear();
    waiting_.clear();
    seen_ = false;
    requestDue_ = false;
    expected_ = {0, 1};
}

bool GvspResendParser::IsAwaiting(std::uint32_t blockId) const {
    const auto holds = [&](const GvspResendItem& item) {
        return order_.Distance(item.blockId, blockId) >= 0;
    };
    return std::any_of(requests_.begin(), requests_.end(), holds) ||
           std::any_of(waiting_.begin(), waiting_.end(), holds);
}

} // namespace VX3
