#include "gev/stream/GvspParserImageA.h"

#include "gev/protocol/Gvcp.h"
#include "vx3/core/Logger.h"

#include <algorithm>
#include <cstring>

namespace VX3 {

namespace {

constexpr std::chrono::milliseconds ItemWait{2};
constexpr std::chrono::milliseconds IdleWait{300};
// A leader that goes back in block ids after a pause this long, or by this many, starts a new sequence.
constexpr std::chrono::milliseconds RestartPause{250};
constexpr std::int64_t RestartSteps = 64;

} // namespace

GvspParserImageA::GvspParserImageA(GvspImageCallback callback, const GevStreamParam& param,
                                   std::shared_ptr<IImagePool> pool, unsigned int count, Options options)
    : param_(param),
      mayRedirect_(options.redirect),
      resend_(param.resendSupported != 0),
      store_(param, std::move(pool), count),
      delivery_(std::move(callback), options.statistics, param.resendSupported != 0),
      lifted_(MaxDatagram) {}

StatusCode GvspParserImageA::HandlePacket(const std::uint8_t* data, std::size_t length, WireRoom& next,
                                          TimePoint now) {
    GvspPacket packet;
    const bool decoded = packet.Decode(data, length); // before its header is overwritten
    const bool landed = redirect_.Holds(data);
    redirect_.Restore();
    StatusCode status = Status::Malformed;
    if (decoded) {
        packet.inPlace = landed && packet.addr == redirect_.Addr();
        if (landed && !(packet.inPlace && packet.Is(Gvsp::Format::Payload)))
            Lift(packet);
        status = Dispatch(packet, now);
        if (!Failed(status)) {
            Accepted(packet, now);
            if (!early_.IsEmpty())
                ReplayEarly(now);
        }
    }
    next = AdjustSettingBlock();
    return status;
}

// A datagram that is not the one expected lies in an image that may be handed on before it is used.
void GvspParserImageA::Lift(GvspPacket& packet) {
    const std::size_t size = std::min(packet.payload.size, lifted_.size());
    std::memcpy(lifted_.data(), packet.payload.data, size);
    packet.payload = {lifted_.data(), size};
    packet.inPlace = false;
}

StatusCode GvspParserImageA::Dispatch(GvspPacket& packet, TimePoint now) {
    if (!form_.Takes(packet))
        return Status::Malformed;
    if (!IsAdmitted(packet, now))
        return Status::QueueFull;
    if (Gvsp::IsErrorStatus(packet.header.status))
        return ProcessError(packet, now);
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

// Blocks are left out where the host cannot take all.
bool GvspParserImageA::IsAdmitted(const GvspPacket& packet, TimePoint now) {
    const std::uint32_t blockId = packet.addr.blockId;
    if (!packet.Is(Gvsp::Format::Leader))
        return admission_.Takes(blockId);
    if (admission_.SeeLeader(blockId))
        return true;
    delivery_.CountLeftOut();
    if (warnings_.Allow(now))
        VxLoggerLog(LogLevel::Warning, "SDK",
                    "%s: this host cannot keep up with the stream, whole frames are left out: %llu so far",
                    param_.name.c_str(), static_cast<unsigned long long>(delivery_.LeftOut()));
    return false;
}

void GvspParserImageA::NoteDrained(TimePoint now) {
    resend_.NoteDrained(now);
    if (admission_.IsGated() && admission_.BeginRun(!resend_.IsAwaiting(admission_.MendedUpTo()), now))
        resend_.SkipTo(admission_.Current().first, now);
}

void GvspParserImageA::Observe(const GvspAdmission::Load& load, TimePoint now) {
    const bool before = admission_.IsGated();
    admission_.Observe(load, now);
    if (admission_.IsGated() && !before)
        resend_.NoteRelief();
}

StatusCode GvspParserImageA::SetPacketState(GvspParserInfo& info, const GvspPacketAddr& addr, TimePoint now) {
    if (addr.packetId >= form_.Geometry().packets) {
        if (warnings_.Allow(now))
            VxLoggerLog(LogLevel::Warning, "SDK",
                        "SetPacketState runs into error with pakcet:%u.%u!!!: its block has no such packet",
                        addr.blockId, addr.packetId);
        return Status::Malformed;
    }
    queue_.Mark(info, addr.packetId);
    return Status::Ok;
}

// The loss bookkeeping learns of a packet that was taken, and the queue of what that changed.
void GvspParserImageA::Accepted(const GvspPacket& packet, TimePoint now) {
    pace_.Learn(packet.addr, now);
    const bool again = packet.header.status == Gvcp::AckStatus::PacketResent;
    (void)resend_.UpdateResend(
        packet.addr, again ? GvspResendParser::Origin::SentAgain : GvspResendParser::Origin::Unknown,
        now); // has no way to fail
    if (packet.endsBlock)
        resend_.SkipRest(packet.addr.blockId, packet.addr.packetId + 1);
    queue_.Advance(now);
}

// Leaders -------------------------------------------------------------------------------------------------

StatusCode GvspParserImageA::ProcessLeader(const GvspPacket& packet, TimePoint now) {
    Gvsp::Leader leader;
    const GvspPacketAddr& addr = packet.addr;
    if (!form_.TakesLeader(packet, leader))
        return Status::Malformed;
    if (queue_.History().IsPast(addr.blockId)) {
        if (!StartsAnew(packet, now)) {
            LogJustCommitted("leader", addr.blockId, now);
            return Status::Malformed;
        }
        queue_.Restart(now);
        admission_.Restart();
    }
    if (!form_.IsFixed() || !store_.HasShapeOf(leader)) {
        const StatusCode status = AdoptShape(packet, leader, now);
        if (Failed(status))
            return status;
    }
    const bool expected = addr == resend_.Expected();
    GvspParserInfo* info = queue_.FindOrOpen(addr.blockId, now);
    if (info == nullptr)
        return expected ? Status::WrongState : Status::NoBuffer;
    if (!info->Has(0) && !store_.Title(*info, leader))
        return Status::NoBuffer;
    return SetPacketState(*info, addr, now);
}

// The first leader says what the stream is like, and so does every later one: a camera may change its picture
// while it streams.
StatusCode GvspParserImageA::AdoptShape(const GvspPacket& packet, const Gvsp::Leader& leader, TimePoint now) {
    GvspGeometry geometry;
    const StatusCode status = ShapeOf(packet, leader, geometry);
    if (Failed(status)) {
        if (warnings_.Allow(now))
            VxLoggerLog(
                LogLevel::Warning, "SDK",
                "leader of block %u refused: payload type %u, %u x %u of format 0x%08X in packets of %u: %s",
                packet.addr.blockId, leader.payloadType, leader.sizeX, leader.sizeY, leader.pixelFormat,
                param_.packetSize, StatusText(status).c_str());
        return status;
    }
    if (geometry == form_.Geometry())
        return Status::Ok;
    if (geometry.payloadBytes == 0 && warnings_.Allow(now))
        VxLoggerLog(LogLevel::Warning, "SDK",
                    "%s: payload type 0x%04X carries no image data that can be placed", param_.name.c_str(),
                    leader.payloadType);
    FixGeometry(packet, geometry, now);
    return Status::Ok;
}

StatusCode GvspParserImageA::ShapeOf(const GvspPacket& packet, const Gvsp::Leader& leader,
                                     GvspGeometry& geometry) {
    const StatusCode status =
        GvspGeometry::FromLeader(leader, param_.packetSize, packet.header.extended, geometry);
    if (Failed(status))
        return status;
    // Packets of this block, or of later ones, were placed by the geometry so far.
    if (form_.IsFixed() && !(geometry == form_.Geometry()) && !queue_.IsNewest(packet.addr.blockId))
        return Status::WrongState;
    return CreateImage(packet.addr.blockId, leader, geometry.packets, geometry.payloadBytes,
                       geometry.extended);
}

void GvspParserImageA::FixGeometry(const GvspPacket& packet, const GvspGeometry& geometry, TimePoint now) {
    if (form_.IsFixed()) {
        if (warnings_.Allow(now))
            VxLoggerLog(LogLevel::Info, "SDK", "%s: from block %u on a frame has %u bytes, not %u",
                        param_.name.c_str(), packet.addr.blockId, geometry.payloadBytes,
                        form_.Geometry().payloadBytes);
        queue_.HandOnAll(now);
        resend_.SkipRest(resend_.Expected().blockId, resend_.Expected().packetId);
    }
    form_.Fix(geometry, packet);
    queue_.SetOrder(GvspBlockOrder(geometry.extended));
    admission_.SetOrder(GvspBlockOrder(geometry.extended));
    (void)resend_.SetMaxPid(geometry.TrailerId());
    (void)resend_.SetFlagExt(geometry.extended);
    resend_.SetPlaces(queue_.MaxInFlight());
}

bool GvspParserImageA::StartsAnew(const GvspPacket& leader, TimePoint now) const {
    if (leader.header.status == Gvcp::AckStatus::PacketResent)
        return false;
    return now - pace_.Last() >= RestartPause ||
           queue_.History().StepsBack(leader.addr.blockId) > RestartSteps;
}

void GvspParserImageA::LogJustCommitted(const char* what, std::uint32_t blockId, TimePoint now) {
    if (queue_.History().IsJustCommitted(blockId) && warnings_.Allow(now))
        VxLoggerLog(LogLevel::Warning, "SDK",
                    "Block %u's %s received which is already committed!: it came too late, the block was "
                    "handed on without it",
                    blockId, what);
}

// Payload -------------------------------------------------------------------------------------------------

StatusCode GvspParserImageA::ProcessPayLoad(const GvspPacket& packet, TimePoint now) {
    const GvspPacketAddr& addr = packet.addr;
    if (!form_.IsFixed()) {
        KeepEarly(packet, now);
        return Status::Malformed;
    }
    if (!form_.TakesPayload(packet))
        return Status::Malformed;
    GvspParserInfo* info = queue_.Find(addr.blockId);
    if (info == nullptr) {
        if (queue_.History().IsPast(addr.blockId))
            return Status::Malformed;
        info = queue_.Open(addr.blockId, now);
        if (info == nullptr)
            return Status::NoBuffer;
    }
    if (!packet.inPlace && !info->Has(addr.packetId)) {
        const std::size_t size = form_.Geometry().DataSize(addr.packetId);
        const std::size_t offset = form_.Geometry().Offset(addr.packetId);
        if (size > info->capacity || offset > info->capacity - size)
            return Status::Malformed; // cannot be: blocks hold what the geometry says
        std::memcpy(info->data + offset, packet.payload.data, size);
    }
    return SetPacketState(*info, addr, now);
}

void GvspParserImageA::KeepEarly(const GvspPacket& packet, TimePoint now) {
    const std::size_t full = Gvsp::DataPerPacket(param_.packetSize, packet.header.extended);
    if (full == 0 || packet.payload.size != full)
        return;
    resend_.RequestLeader(packet.addr.blockId, packet.header.extended, now);
    early_.Keep(packet);
}

void GvspParserImageA::ReplayEarly(TimePoint now) {
    for (const std::vector<std::uint8_t>& datagram : early_.TakeAll()) {
        GvspPacket packet;
        if (packet.Decode(datagram.data(), datagram.size()) && !Failed(Dispatch(packet, now)))
            Accepted(packet, now);
    }
}

// Trailers and errors -------------------------------------------------------------------------------------

StatusCode GvspParserImageA::ProcessTrailer(GvspPacket& packet, TimePoint now) {
    Gvsp::Trailer trailer;
    const std::uint32_t blockId = packet.addr.blockId;
    if (!form_.TakesTrailer(packet, trailer))
        return Status::Malformed;
    if (queue_.History().IsPast(blockId)) {
        LogJustCommitted("trailer", blockId, now);
        return Status::Malformed;
    }
    GvspParserInfo* info = queue_.FindOrOpen(blockId, now);
    if (info == nullptr)
        return Status::NoBuffer;
    form_.FixTrailer(packet);
    // Some cameras leave the line count 0: then it says nothing.
    info->lines = trailer.sizeY != 0 ? trailer.sizeY : info->image->GetImageInfo()->height;
    const std::uint32_t trailerId = form_.Geometry().TrailerId();
    packet.endsBlock = packet.addr.packetId != trailerId;
    // A block may end early. Its trailer counts as the trailer wherever it comes: never as data.
    return SetPacketState(*info, {trailerId, blockId}, now);
}

StatusCode GvspParserImageA::ProcessError(const GvspPacket& packet, TimePoint now) {
    const std::uint16_t status = packet.header.status;
    // Gone for good, and the block with it; a packet that is not there yet may be asked for again.
    if (status == Gvcp::AckStatus::PacketUnavailable || status == Gvcp::AckStatus::PacketRemovedFromMemory ||
        status == Gvcp::AckStatus::PacketAndPreviousRemovedFromMemory) {
        resend_.Refused(packet.addr, now);
        queue_.CommitWhatCan(now);
    }
    return Status::Malformed;
}

// Between packets -----------------------------------------------------------------------------------------

bool GvspParserImageA::GetResendInfo(GvspResendInfo& info, TimePoint now) {
    if (!resend_.GetResendInfo(info, now))
        return false;
    GvspParserInfo* block = store_.Ring().Find(info.blockId);
    if (block != nullptr)
        block->packetsResent += info.lastPacketId - info.firstPacketId + 1;
    return true;
}

// Where the successor of the newest packet will belong. Resent packets in between do not disturb that.
WireRoom GvspParserImageA::AdjustSettingBlock() {
    if (!mayRedirect_ || !form_.IsFixed())
        return {};
    const GvspGeometry& geometry = form_.Geometry();
    const GvspPacketAddr& expected = resend_.Expected();
    if (!geometry.IsPayloadId(expected.packetId))
        return {};
    GvspParserInfo* info = queue_.Find(expected.blockId);
    if (info == nullptr || info->Has(expected.packetId))
        return {};
    const std::size_t offset = geometry.Offset(expected.packetId);
    // A whole packet must fit, since another one than the short last may come.
    if (geometry.packetData > info->capacity || offset > info->capacity - geometry.packetData)
        return {};
    return redirect_.Set(expected, info->data + offset, geometry.headerSize, geometry.packetData);
}

void GvspParserImageA::CheckSilence(WireRoom& next, TimePoint now) {
    redirect_.Restore();
    const bool quiet = pace_.IsQuiet(now, param_.resendSupported != 0);
    if (quiet)
        resend_.CloseTail(now);
    resend_.CheckListTimeOut(now, quiet);
    queue_.CommitWhatCan(now);
    if (quiet)
        queue_.CommitGivenUp(now);
    next = AdjustSettingBlock();
}

std::chrono::milliseconds GvspParserImageA::MaxWait() const {
    if (resend_.HasItems())
        return ItemWait;
    return queue_.InFlight() != 0 ? GvspPace::Quiet : IdleWait;
}

StatusCode GvspParserImageA::CommitBlock(GvspParserInfo& info) {
    redirect_.Restore(); // the image must be whole before it goes
    return queue_.CommitUpTo(info, pace_.Last());
}

StatusCode GvspParserImageA::Flush() {
    redirect_.Restore();
    queue_.Flush(pace_.Last());
    return Status::Ok;
}

} // namespace VX3
