#include "gev/stream/GvspParserImageA.h"

#include "gev/protocol/Gvcp.h"
#include "vx3/core/Logger.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace VX3 {

namespace {

// A slow camera's silence is judged by its own pace, up to this.
constexpr std::chrono::milliseconds longestQuiet{1000};
// A camera that resends nothing is given longer: what its silence holds back is lost for good once given up.
constexpr std::chrono::milliseconds quietWithoutResend{200};
constexpr std::chrono::milliseconds itemWait{2};
constexpr std::chrono::milliseconds idleWait{300};

// Packet slots of a block before its leader is known; the smaller payload of the two header forms.
std::uint32_t EstimatedPackets(const GevStreamParam& param) {
    const std::size_t data = Gvsp::DataPerPacket(param.packetSize, true);
    if (data == 0)
        return 2;
    const std::uint64_t packets =
        (static_cast<std::uint64_t>(param.bufferSize) + param.packetSize - 48) / data;
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(packets, GvspGeometry::MaxPackets)) + 2;
}

} // namespace

GvspParserImageA::GvspParserImageA(GvspImageCallback callback, const GevStreamParam& param,
                                   std::shared_ptr<IImagePool> pool, unsigned int count, Options options)
    : callback_(std::move(callback)),
      param_(param),
      pool_(pool ? std::move(pool) : ImagePoolFactory::DefaultImagePool()),
      options_(options),
      statistics_(options.statistics != nullptr ? options.statistics : &ownStatistics_),
      resend_(param.resendSupported != 0),
      blockBytes_(param.bufferSize),
      blockPackets_(EstimatedPackets(param)),
      lifted_(MaxDatagram) {
    FillSpares(count == 0 ? DefaultBlocks : count);
    spareTarget_ = ring_.Size();
}

StatusCode GvspParserImageA::HandlePacket(const std::uint8_t* data, std::size_t length, WireRoom& next,
                                          TimePoint now) {
    Packet packet;
    const bool decoded = Gvsp::DecodeHeader(data, length, packet.header);
    const bool landed = redirect_.Holds(data);
    redirect_.Restore();
    StatusCode status = Status::Malformed;
    if (decoded) {
        const std::size_t headerSize = packet.header.Size();
        packet.addr = {packet.header.packetId, static_cast<std::uint32_t>(packet.header.blockId)};
        packet.payload = {data + headerSize, length - headerSize};
        packet.length = length;
        packet.inPlace = landed && packet.addr == redirect_.Addr();
        if (landed && !(packet.inPlace && packet.header.Is(Gvsp::Format::Payload)))
            Lift(packet);
        status = Dispatch(packet, now);
        if (!Failed(status)) {
            Accepted(packet, now);
            if (!early_.empty())
                ReplayEarly(now);
        }
    }
    next = AdjustSettingBlock();
    return status;
}

// A datagram that is not the one expected lies in an image that may be handed on before it is used.
void GvspParserImageA::Lift(Packet& packet) {
    const std::size_t size = std::min(packet.payload.size, lifted_.size());
    std::memcpy(lifted_.data(), packet.payload.data, size);
    packet.payload = {lifted_.data(), size};
    packet.inPlace = false;
}

// Before the first leader nothing can be placed. It may be late, or lost and sent again: the newest packets
// without it are kept.
void GvspParserImageA::KeepEarly(const Packet& packet, TimePoint now) {
    const std::size_t full = Gvsp::DataPerPacket(param_.packetSize, packet.header.extended);
    if (full == 0 || packet.payload.size != full)
        return;
    resend_.RequestLeader(packet.addr.blockId, packet.header.extended, now);
    if (early_.size() >= MaxEarly)
        early_.erase(early_.begin());
    early_.emplace_back(packet.payload.data - packet.header.Size(),
                        packet.payload.data + packet.payload.size);
}

void GvspParserImageA::ReplayEarly(TimePoint now) {
    const std::vector<std::vector<std::uint8_t>> datagrams = std::move(early_);
    early_.clear();
    for (const std::vector<std::uint8_t>& datagram : datagrams) {
        Packet packet;
        if (!Gvsp::DecodeHeader(datagram.data(), datagram.size(), packet.header))
            continue;
        packet.addr = {packet.header.packetId, static_cast<std::uint32_t>(packet.header.blockId)};
        packet.length = datagram.size();
        packet.payload = {datagram.data() + packet.header.Size(), packet.length - packet.header.Size()};
        if (!Failed(Dispatch(packet, now)))
            Accepted(packet, now);
    }
}

StatusCode GvspParserImageA::Dispatch(Packet& packet, TimePoint now) {
    if (packet.addr.blockId == 0 || (geometry_.IsFixed() && packet.header.extended != geometry_.extended))
        return Status::Malformed;
    if (Gvsp::IsErrorStatus(packet.header.status))
        return ProcessError(packet);
    switch (static_cast<Gvsp::Format>(packet.header.format)) {
    case Gvsp::Format::Leader:
        return ProcessLeader(packet, now);
    case Gvsp::Format::Payload:
        return ProcessPayLoad(packet, now);
    case Gvsp::Format::Trailer:
        return ProcessTrailer(packet, now);
    }
    return Status::Malformed;
}

StatusCode GvspParserImageA::ProcessError(const Packet& packet) {
    const std::uint16_t status = packet.header.status;
    const bool andPrevious = status == Gvcp::AckStatus::PacketAndPreviousRemovedFromMemory;
    // Gone for good; a packet that is not there yet may be asked for again.
    if (andPrevious || status == Gvcp::AckStatus::PacketUnavailable ||
        status == Gvcp::AckStatus::PacketRemovedFromMemory) {
        resend_.Refused(packet.addr, andPrevious);
        CommitWhatCan();
    }
    return Status::Malformed;
}

StatusCode GvspParserImageA::ProcessLeader(const Packet& packet, TimePoint now) {
    Gvsp::Leader leader;
    const GvspPacketAddr& addr = packet.addr;
    if ((leaderLength_ != 0 && packet.length != leaderLength_) || addr.packetId != 0 ||
        !Gvsp::DecodeLeader(packet.payload, leader))
        return Status::Malformed;
    if (IsPast(addr.blockId)) {
        if (StartsAnew(packet, now)) {
            RestartBlocks();
        } else {
            if (WasJustCommitted(addr.blockId) && warnings_.Allow(now))
                VxLoggerLog(LogLevel::Warning, "SDK",
                            "Block %u's leader received which is already committed!", addr.blockId);
            return Status::Malformed;
        }
    }
    if (!geometry_.IsFixed()) {
        const StatusCode status = FixGeometry(packet, leader);
        if (Failed(status))
            return status;
    }
    const bool expected = addr == resend_.Expected();
    GvspParserInfo* info = FindOrOpen(addr, now);
    if (info == nullptr)
        return expected ? Status::WrongState : Status::NoBuffer;
    if (!info->Has(0))
        info->image->UpdateImageInfoA(addr.blockId, static_cast<std::uint32_t>(leader.timeStamp >> 32),
                                      static_cast<std::uint32_t>(leader.timeStamp));
    return SetPacketState(*info, addr, now);
}

StatusCode GvspParserImageA::FixGeometry(const Packet& packet, const Gvsp::Leader& leader) {
    GvspGeometry geometry;
    StatusCode status = GvspGeometry::FromLeader(leader, param_.packetSize, packet.header.extended, geometry);
    if (!Failed(status))
        status = CreateImage(packet.addr.blockId, leader, geometry.packets, geometry.payloadBytes,
                             geometry.extended);
    if (Failed(status)) {
        if (warnings_.Allow(lastPacket_))
            VxLoggerLog(
                LogLevel::Warning, "SDK",
                "leader of block %u refused: payload type %u, %u x %u of format 0x%08X in packets of %u",
                packet.addr.blockId, leader.payloadType, leader.sizeX, leader.sizeY, leader.pixelFormat,
                param_.packetSize);
        return status;
    }
    if (geometry.payloadBytes == 0)
        VxLoggerLog(LogLevel::Warning, "SDK",
                    "%s: payload type 0x%04X carries no image data that can be placed", param_.name.c_str(),
                    leader.payloadType);
    geometry_ = geometry;
    leaderLength_ = packet.length;
    order_ = GvspBlockOrder(geometry.extended);
    (void)resend_.SetMaxPid(geometry.TrailerId());
    (void)resend_.SetFlagExt(geometry.extended);
    return Status::Ok;
}

StatusCode GvspParserImageA::ProcessPayLoad(const Packet& packet, TimePoint now) {
    const GvspPacketAddr& addr = packet.addr;
    if (!geometry_.IsFixed()) {
        KeepEarly(packet, now);
        return Status::Malformed;
    }
    if (!geometry_.IsPayloadId(addr.packetId) || !geometry_.AcceptsData(addr.packetId, packet.payload.size))
        return Status::Malformed;
    GvspParserInfo* info = GetParserInfoByBlockId(addr.blockId);
    if (info == nullptr) {
        if (IsPast(addr.blockId))
            return Status::Malformed;
        info = OpenBlock(addr.blockId, now);
        if (info == nullptr)
            return Status::NoBuffer;
    }
    if (!packet.inPlace && !info->Has(addr.packetId)) {
        const std::size_t size = geometry_.DataSize(addr.packetId);
        const std::size_t offset = geometry_.Offset(addr.packetId);
        if (size > info->capacity || offset > info->capacity - size)
            return Status::Malformed; // cannot be: blocks hold what the geometry says
        std::memcpy(info->data + offset, packet.payload.data, size);
    }
    return SetPacketState(*info, addr, now);
}

StatusCode GvspParserImageA::ProcessTrailer(Packet& packet, TimePoint now) {
    Gvsp::Trailer trailer;
    if (!geometry_.IsFixed() || (trailerLength_ != 0 && packet.length != trailerLength_) ||
        packet.addr.packetId == 0 || packet.addr.packetId > geometry_.TrailerId() ||
        !Gvsp::DecodeTrailer(packet.payload, trailer))
        return Status::Malformed;
    if (IsPast(packet.addr.blockId)) {
        if (WasJustCommitted(packet.addr.blockId) && warnings_.Allow(now))
            VxLoggerLog(LogLevel::Warning, "SDK", "Block %u's trailer received which is already committed!",
                        packet.addr.blockId);
        return Status::Malformed;
    }
    GvspParserInfo* info = FindOrOpen(packet.addr, now);
    if (info == nullptr)
        return Status::NoBuffer;
    trailerLength_ = packet.length;
    // Some cameras leave the line count 0: then it says nothing.
    info->lines = trailer.sizeY != 0 ? trailer.sizeY : header_.height;
    packet.endsBlock = packet.addr.packetId != geometry_.TrailerId();
    // A block may end early. Its trailer counts as the trailer wherever it comes: never as data.
    return SetPacketState(*info, {geometry_.TrailerId(), packet.addr.blockId}, now);
}

StatusCode GvspParserImageA::SetPacketState(GvspParserInfo& info, const GvspPacketAddr& addr, TimePoint now) {
    if (addr.packetId >= geometry_.packets) {
        if (warnings_.Allow(now))
            VxLoggerLog(LogLevel::Warning, "SDK", "SetPacketState runs into error with pakcet:%u.%u!!!",
                        addr.blockId, addr.packetId);
        return Status::Malformed;
    }
    if (info.Mark(addr.packetId) && IsComplete(info))
        ++complete_;
    return Status::Ok;
}

void GvspParserImageA::Accepted(const Packet& packet, TimePoint now) {
    LearnPace(packet.addr, now);
    (void)resend_.UpdateResend(&packet.addr, now);
    if (packet.endsBlock)
        resend_.SkipRest(packet.addr.blockId);
    if (complete_ != 0 && (closedSeen_ != resend_.Closed() || (current_ != nullptr && IsComplete(*current_))))
        CommitWhatCan();
}

// How long the camera itself pauses inside a block: a slow one is not to be taken for a silent one.
void GvspParserImageA::LearnPace(const GvspPacketAddr& addr, TimePoint now) {
    if (now == lastPacket_) {
        lastAddr_ = addr;
        return;
    }
    if (lastPacket_ != TimePoint{} && addr.blockId == lastAddr_.blockId &&
        addr.packetId == lastAddr_.packetId + 1) {
        const auto waited = std::chrono::duration_cast<std::chrono::microseconds>(now - lastPacket_);
        pace_ = std::max(waited, pace_ - pace_ / 64);
    }
    lastPacket_ = now;
    lastAddr_ = addr;
}

bool GvspParserImageA::GetResendInfo(GvspResendInfo& info, TimePoint now) {
    if (!resend_.GetResendInfo(info, now))
        return false;
    GvspParserInfo* block = ring_.Find(info.blockId);
    if (block != nullptr)
        block->packetsResent += info.lastPacketId == GvspResendItem::ToBlockEnd
                                    ? geometry_.packets - info.firstPacketId
                                    : info.lastPacketId - info.firstPacketId + 1;
    return true;
}

// Where the successor of the newest packet will belong. Resent packets in between do not disturb that.
WireRoom GvspParserImageA::AdjustSettingBlock() {
    if (!options_.redirect || !geometry_.IsFixed())
        return {};
    const GvspPacketAddr& expected = resend_.Expected();
    if (!geometry_.IsPayloadId(expected.packetId))
        return {};
    GvspParserInfo* info = GetParserInfoByBlockId(expected.blockId);
    if (info == nullptr || info->Has(expected.packetId))
        return {};
    const std::size_t offset = geometry_.Offset(expected.packetId);
    // A whole packet must fit, since another one than the short last may come.
    if (geometry_.packetData > info->capacity || offset > info->capacity - geometry_.packetData)
        return {};
    return redirect_.Set(expected, info->data + offset, geometry_.headerSize, geometry_.packetData);
}

void GvspParserImageA::CheckSilence(WireRoom& next, TimePoint now) {
    redirect_.Restore();
    const std::chrono::milliseconds shortest = param_.resendSupported != 0 ? Quiet : quietWithoutResend;
    const auto limit = std::clamp<std::chrono::microseconds>(pace_ * 4, shortest, longestQuiet);
    const bool quiet = lastPacket_ != TimePoint{} && now - lastPacket_ >= limit;
    if (quiet)
        resend_.CloseTail(now);
    resend_.CheckListTimeOut(now, quiet);
    CommitWhatCan();
    while (quiet && ring_.InFlight() != 0 && !resend_.IsAwaiting(ring_.At(0).blockId))
        CommitHead();
    next = AdjustSettingBlock();
}

std::chrono::milliseconds GvspParserImageA::MaxWait() const {
    if (resend_.HasItems())
        return itemWait;
    return ring_.InFlight() != 0 ? Quiet : idleWait;
}

} // namespace VX3
