#include "gev/stream/GvspResendParser.h"

#include "vx3/core/Logger.h"

namespace VX3 {

StatusCode GvspResendParser::SetMaxPid(std::uint32_t packetId) {
    maxPid_ = packetId;
    missing_.SetMaxPid(packetId);
    return Status::Ok;
}

StatusCode GvspResendParser::SetFlagExt(bool extended) {
    order_ = GvspBlockOrder(extended);
    missing_.SetFlagExt(extended);
    return Status::Ok;
}

void GvspResendParser::AdvanceFrom(const GvspPacketAddr& addr) {
    if (addr.packetId < maxPid_)
        expected_ = {addr.packetId + 1, addr.blockId};
    else
        expected_ = {0, order_.Next(addr.blockId)};
}

StatusCode GvspResendParser::UpdateResend(const GvspPacketAddr& addr, Origin origin, TimePoint now) {
    missing_.CountPacket(now);
    const bool later = seen_ && order_.IsLater(addr, expected_);
    if (seen_ && !later && !(addr == expected_)) {
        missing_.Arrived(addr, origin, now);
        return Status::Ok;
    }
    if (!seen_)
        missing_.Clear(); // at most a leader asked for
    if (!seen_ || addr.packetId == 0 || addr.blockId != expected_.blockId)
        missing_.BlockBegins(addr.blockId, now);
    if (later)
        CreateResendInfo(expected_, addr, now);
    seen_ = true;
    AdvanceFrom(addr);
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
        end = {GvspGap::ToBlockEnd, order_.Previous(to.blockId)};
    else
        --end.packetId;
    const bool log = missing_.MayAsk() && itemLog_.Allow(now);
    if (from.blockId == end.blockId) {
        if (log)
            VxLoggerLog(LogLevel::Info, "SDK", "one resend item created:%u.%u~%d.", end.blockId,
                        from.packetId, static_cast<int>(end.packetId));
        AddRange(end.blockId, from.packetId, end.packetId, now);
        return;
    }
    if (log)
        VxLoggerLog(LogLevel::Info, "SDK", "two resend item created: %u.%u~%d and %u.%u~%d!", from.blockId,
                    from.packetId, -1, end.blockId, 0U, static_cast<int>(end.packetId));
    AddRange(from.blockId, from.packetId, GvspGap::ToBlockEnd, now);
    std::int64_t between = order_.Distance(from.blockId, end.blockId) - 1;
    std::uint32_t blockId = order_.Next(from.blockId);
    if (between > MaxWholeBlocks) {
        missing_.CountLost(static_cast<std::uint64_t>(between - MaxWholeBlocks));
        between = MaxWholeBlocks;
        blockId = order_.Back(end.blockId, between);
    }
    for (; between > 0; --between, blockId = order_.Next(blockId))
        missing_.AddBlock(blockId, now);
    AddRange(end.blockId, 0, end.packetId, now);
}

void GvspResendParser::AddRange(std::uint32_t blockId, std::uint32_t first, std::uint32_t last,
                                TimePoint now) {
    if (first == 0 && last == GvspGap::ToBlockEnd)
        missing_.AddBlock(blockId, now);
    else
        missing_.Add(blockId, first, last, now);
}

void GvspResendParser::CloseTail(TimePoint now) {
    if (!seen_ || expected_.packetId == 0)
        return;
    const GvspPacketAddr next{0, order_.Next(expected_.blockId)};
    CreateResendInfo(expected_, next, now);
    expected_ = next;
}

void GvspResendParser::SkipTo(std::uint32_t blockId, TimePoint now) {
    CloseTail(now);
    if (seen_ && order_.Distance(expected_.blockId, blockId) > 0)
        expected_ = {0, blockId};
}

void GvspResendParser::SkipRest(std::uint32_t blockId, std::uint32_t packetId) {
    missing_.CutFrom(blockId, packetId);
    if (expected_.blockId == blockId && expected_.packetId != 0)
        expected_ = {0, order_.Next(blockId)};
}

void GvspResendParser::RequestLeader(std::uint32_t blockId, bool extended, TimePoint now) {
    if (seen_ || !missing_.MayAsk())
        return;
    missing_.CountPacket(now);
    if (blockId == headlessBlock_)
        return;
    headlessBlock_ = blockId;
    missing_.Clear();
    (void)SetFlagExt(extended);
    missing_.Add(blockId, 0, 0, now);
}

StatusCode GvspResendParser::Remove(std::uint32_t blockId) {
    missing_.Remove(blockId);
    return Status::Ok;
}

void GvspResendParser::Restart() {
    missing_.Clear();
    seen_ = false;
    expected_ = {0, 1};
}

} // namespace VX3
