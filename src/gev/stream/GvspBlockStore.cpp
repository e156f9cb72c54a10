#include "gev/stream/GvspBlockStore.h"

#include <algorithm>
#include <cstring>
#include <tuple>
#include <utility>
#include <vector>

namespace VX3 {

namespace {

// A leader may claim more than the camera's features promised (a pixel format that we do not know, features
// that could not be read), but not without bound.
constexpr std::uint64_t MaxUnpromisedBytes = 0x10000000U;
constexpr std::uint64_t MaxRemadeBytes = 0x40000000U; // of all spare blocks together

std::uint64_t MostBytes(std::uint32_t promised) {
    return promised == 0 ? MaxUnpromisedBytes : 8ULL * promised + ImageInfo::SlackBytes;
}

// Packet slots of a block before its leader is known; the smaller payload of the two header forms.
std::uint32_t EstimatedPackets(const GevStreamParam& param) {
    const std::size_t data = Gvsp::DataPerPacket(param.packetSize, true);
    if (data == 0)
        return 2;
    const std::uint64_t packets =
        (static_cast<std::uint64_t>(param.bufferSize) + param.packetSize - 48) / data;
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(packets, GvspGeometry::MaxPackets)) + 2;
}

// Without the time stamp: a block whose own leader is lost has no known one, and 0 says so. An estimate would
// pass for what the camera measured.
ImageInfo HeaderFrom(const Gvsp::Leader& leader) {
    ImageInfo header;
    header.fieldInfo = leader.fieldInfo;
    header.imageType = leader.payloadType;
    header.pixelFormat = leader.pixelFormat;
    header.width = leader.sizeX;
    header.height = leader.sizeY;
    header.offsetX = leader.offsetX;
    header.offsetY = leader.offsetY;
    header.paddingX = leader.paddingX;
    header.paddingY = leader.paddingY;
    header.dataOffset = GvspBlockStore::DataOffset;
    return header;
}

// A buffer of bytes: width, height and format mean nothing.
void MakeRaw(ImageInfo& header, std::uint32_t bytes) {
    header.pixelFormat = RawBlock;
    header.width = 1;
    header.height = bytes;
    header.paddingX = header.paddingY = 0;
}

} // namespace

GvspBlockStore::GvspBlockStore(const GevStreamParam& param, std::shared_ptr<IImagePool> pool,
                               unsigned int count)
    : promisedBytes_(param.bufferSize),
      pool_(pool ? std::move(pool) : ImagePoolFactory::DefaultImagePool()),
      blockBytes_(param.bufferSize),
      blockPackets_(EstimatedPackets(param)) {
    FillSpares(count == 0 ? DefaultBlocks : count);
    target_ = ring_.Size();
}

void GvspBlockStore::FillSpares(unsigned int count) {
    for (unsigned int i = 0; i < count && !ring_.IsFull(); ++i)
        if (Failed(AddSpare()))
            break;
}

StatusCode GvspBlockStore::Extend() {
    const StatusCode status = AddSpare();
    if (!Failed(status))
        ++target_;
    return status;
}

StatusCode GvspBlockStore::AddSpare() {
    if (ring_.IsFull())
        return Status::QueueFull;
    // A raw block: its buffer takes the payload whatever the pixel format turns out to be.
    ImageInfo info;
    info.imageType = ImageTypeImage;
    info.dataOffset = DataOffset;
    info.extraInfoSize = blockPackets_;
    MakeRaw(info, blockBytes_);
    std::unique_ptr<IImage> image;
    if (info.SizesFit())
        image = pool_->Create(&info, nullptr, 0);
    if (!image || image->GetImageBuff() == nullptr)
        return Status::NoBuffer;
    // Only the recycle pool promises slack behind the pixels.
    const std::size_t slack = IsRecycling() ? ImageInfo::SlackBytes : 0;
    ring_.AddSpare(std::move(image), nextBufferId_, blockBytes_ + slack);
    nextBufferId_ = nextBufferId_ == 0xFFFFFFFFU ? 1 : nextBufferId_ + 1;
    return Status::Ok;
}

StatusCode GvspBlockStore::Shape(std::uint32_t blockId, const Gvsp::Leader& leader, std::uint32_t packets,
                                 std::uint32_t bytes, bool extended) {
    ImageInfo header = HeaderFrom(leader);
    header.blockId = blockId;
    header.extraInfoSize = packets;
    header.streamFlag = extended ? 1 : 0;
    if (leader.IsPlainBytes())
        MakeRaw(header, bytes);
    if (!header.SizesFit())
        return Status::Malformed;
    // Clients read what the header's geometry says: the buffer must hold that too.
    const StatusCode status = MakeRoom(std::max<std::uint64_t>(bytes, header.ImageDataSize()), packets);
    if (Failed(status))
        return status;
    blockPackets_ = packets;
    shape_ = leader;
    ++shapes_;
    header_ = header;
    return Status::Ok;
}

bool GvspBlockStore::HasShapeOf(const Gvsp::Leader& leader) const {
    const auto all = [](const Gvsp::Leader& l) {
        return std::tie(l.fieldInfo, l.payloadType, l.pixelFormat, l.sizeX, l.sizeY, l.offsetX, l.offsetY,
                        l.paddingX, l.paddingY);
    };
    return all(leader) == all(shape_);
}

bool GvspBlockStore::Title(GvspParserInfo& info, const Gvsp::Leader& leader) {
    if (info.shape != shapes_) {
        // Opened before its leader came. The new header clears what is noted of the packets.
        const std::vector<std::uint8_t> state(info.state, info.state + header_.extraInfoSize);
        header_.blockId = info.blockId;
        if (Failed(static_cast<StatusCode>(info.image->UpdateImageInfo(&header_))))
            return false;
        info.state = info.image->GetExtraInfoBuff();
        std::copy(state.begin(), state.end(), info.state);
        info.shape = shapes_;
    }
    info.image->UpdateImageInfoA(info.blockId, static_cast<std::uint32_t>(leader.timeStamp >> 32),
                                 static_cast<std::uint32_t>(leader.timeStamp));
    return true;
}

StatusCode GvspBlockStore::MakeRoom(std::uint64_t bytes, std::uint32_t packets) {
    if (bytes <= blockBytes_)
        return Status::Ok;
    if (bytes > MostBytes(promisedBytes_))
        return Status::NoBuffer;
    const auto most = static_cast<unsigned int>(std::max<std::uint64_t>(2, MaxRemadeBytes / bytes));
    const auto count = std::min(static_cast<unsigned int>(ring_.Size()), most);
    blockBytes_ = static_cast<std::uint32_t>(bytes);
    blockPackets_ = packets;
    ring_.DropSpares();
    FillSpares(2); // a leader alone may not take all that memory: the rest follow when they are needed
    target_ = std::max(count, 2U);
    return ring_.HasSpare() ? Status::Ok : Status::NoBuffer;
}

GvspParserInfo* GvspBlockStore::Open(std::uint32_t blockId, const GvspBlockOrder& order,
                                     const GvspGeometry& geometry) {
    GvspParserInfo& info = ring_.Open(blockId, order);
    if (Prepare(info, blockId, geometry))
        return &info;
    ring_.Close(info);
    return nullptr;
}

bool GvspBlockStore::Prepare(GvspParserInfo& info, std::uint32_t blockId, const GvspGeometry& geometry) {
    header_.blockId = blockId;
    if (Failed(static_cast<StatusCode>(info.image->UpdateImageInfo(&header_))))
        return false;
    info.blockId = blockId;
    info.shape = shapes_;
    info.state = info.image->GetExtraInfoBuff();
    info.data = info.image->GetImageBuff();
    if (info.state == nullptr || info.data == nullptr || info.capacity < geometry.payloadBytes)
        return false;
    std::memset(info.state, 0, geometry.packets);
    return true;
}

} // namespace VX3
