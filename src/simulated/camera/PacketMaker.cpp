#include "simulated/camera/PacketMaker.h"

#include "gev/protocol/Gvcp.h"
#include "gev/protocol/GvspBlockCodec.h"

#include <algorithm>

namespace VX3 {
namespace Simulated {

namespace {

constexpr std::size_t MostZones = 32;
constexpr std::size_t MostParts = 255;
constexpr std::uint64_t MostDataBytes = std::uint64_t{1} << 31;

// Lengths that were left to the data.
Block Completed(Block block) {
    Gvsp::BlockInfo& info = block.info;
    std::uint64_t total = 0;
    for (const SharedBytes& piece : block.data)
        total += piece.size;
    if (info.payloadSize == 0)
        info.payloadSize = total;
    const std::uint16_t base = Gvsp::PayloadType::Base(info.payloadType);
    const bool chunks = base == Gvsp::PayloadType::ChunkData || base == Gvsp::PayloadType::ExtendedChunkData;
    if (chunks && info.chunkPayloadLength == 0)
        info.chunkPayloadLength = static_cast<std::uint32_t>(total);
    if (base == Gvsp::PayloadType::MultiPart) {
        info.parts.resize(block.data.size());
        for (std::size_t i = 0; i < info.parts.size(); ++i)
            if (info.parts[i].length == 0)
                info.parts[i].length = block.data[i].size;
    }
    if (base == Gvsp::PayloadType::MultiZone && !block.data.empty())
        info.additionalZones = static_cast<std::uint8_t>(block.data.size() - 1);
    return block;
}

PacketForm FormFor(const Block& block, PacketForm form) {
    form.extendedIds = form.extendedIds || Gvsp::NeedsExtendedIds(block.info.payloadType);
    return form;
}

std::uint8_t LeaderCount(const Gvsp::BlockInfo& info) {
    switch (Gvsp::PayloadType::Base(info.payloadType)) {
    case Gvsp::PayloadType::MultiPart:
        return static_cast<std::uint8_t>(info.parts.size());
    case Gvsp::PayloadType::MultiZone:
        return info.additionalZones;
    default:
        return 0;
    }
}

bool HasPieces(std::uint16_t payloadType, std::size_t pieces) {
    switch (Gvsp::PayloadType::Base(payloadType)) {
    case Gvsp::PayloadType::MultiPart:
        return pieces >= 1 && pieces <= MostParts;
    case Gvsp::PayloadType::MultiZone:
        return pieces >= 1 && pieces <= MostZones;
    case Gvsp::PayloadType::GenDc:
        return pieces >= 1 && pieces <= 0xFFFF;
    default:
        return pieces == 1;
    }
}

} // namespace

const char* PacketMaker::Objection(const Block& block) {
    std::uint64_t total = 0;
    for (const SharedBytes& piece : block.data) {
        if (piece.data == nullptr || piece.size == 0 || piece.size > MostDataBytes)
            return "a piece of the block's data is empty or too large";
        total += piece.size;
    }
    if (!HasPieces(block.info.payloadType, block.data.size()))
        return "the payload type has another number of data pieces";
    return total > MostDataBytes ? "the block is larger than 2 GiB" : nullptr;
}

PacketMaker::PacketMaker(Block block, const PacketForm& form)
    : block_(Completed(std::move(block))),
      form_(FormFor(block_, form)),
      layout_(block_, form_),
      timeInPayload_(Gvsp::PayloadType::Base(block_.info.payloadType) == Gvsp::PayloadType::H264) {
    // A leader with a file name or a record a part is the largest; MakeHead refuses rooms that are too small.
    const Gvsp::BlockInfo& info = block_.info;
    largestHead_ = Gvsp::ExtendedHeaderSize + 64 + info.fileName.size() + 48 * info.parts.size();
}

std::size_t PacketMaker::PayloadHeadSize() const {
    return Gvsp::HeaderSize(form_.extendedIds) + Gvsp::PayloadPrefixSize(block_.info.payloadType);
}

std::size_t PacketMaker::MakeHead(std::uint32_t packetId, const BlockStamp& stamp, std::uint16_t status,
                                  WireRoom room) const {
    const bool leader = packetId == 0;
    const bool trailer = packetId > layout_.PayloadPackets();
    const auto format = leader    ? static_cast<std::uint8_t>(Gvsp::Format::Leader)
                        : trailer ? static_cast<std::uint8_t>(Gvsp::Format::Trailer)
                                  : static_cast<std::uint8_t>(Gvsp::PayloadFormat(block_.info.payloadType));
    const Gvsp::Header header{stamp.blockId, packetId, status, format, form_.extendedIds};
    Gvsp::HeaderExtras extras;
    extras.resent = status == Gvcp::AckStatus::PacketResent;
    extras.count = leader ? LeaderCount(block_.info) : std::uint8_t{0};
    const std::size_t size = Gvsp::EncodeHeader(room, header, extras);
    if (size == 0)
        return 0;
    const WireRoom rest{room.data + size, room.size - size};
    const std::size_t body = leader    ? Gvsp::EncodeLeaderBody(rest, block_.info)
                             : trailer ? Gvsp::EncodeTrailerBody(rest, block_.info)
                                       : MakePrefix(packetId, rest);
    if (body == 0 && (leader || trailer))
        return 0;
    Restamp(packetId, stamp, room.data);
    return size + body;
}

std::size_t PacketMaker::MakePrefix(std::uint32_t packetId, WireRoom room) const {
    const BlockLayout::Slot& slot = layout_.At(packetId);
    Gvsp::PayloadPlace place;
    place.part = slot.part;
    place.blockOffset = slot.blockOffset;
    place.size = slot.size;
    place.firstOfPart = slot.offset == 0;
    place.lastOfPart = slot.lastOfPart;
    return Gvsp::EncodePayloadPrefix(room, block_.info, place);
}

WireBytes PacketMaker::Data(std::uint32_t packetId, const BlockStamp& stamp) const {
    if (packetId == 0 || packetId > layout_.PayloadPackets())
        return {};
    const BlockLayout::Slot& slot = layout_.At(packetId);
    const std::uint8_t* piece =
        stamp.pixels != nullptr && slot.part == 0 ? stamp.pixels : block_.data[slot.part].data.get();
    return {piece + slot.offset, slot.size};
}

} // namespace Simulated
} // namespace VX3
