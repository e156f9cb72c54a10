#include "simulated/camera/BlockSource.h"

#include "gev/protocol/GvspBlockCodec.h"
#include "simulated/camera/PixelPattern.h"

#include <algorithm>

namespace VX3 {
namespace Simulated {

namespace {

constexpr std::size_t MostLaidOutWhole = std::size_t{64} << 20; // bytes of all blocks of a stream

std::uint64_t FrameBytes(const Gvsp::ImageShape& image) {
    const std::uint64_t bits = (image.pixelFormat >> 16) & 0xFF; // of a pixel, as the code says
    const std::uint64_t pixels = std::uint64_t{image.sizeX} * image.sizeY;
    return pixels > PixelPattern::LargestFrame ? pixels : (pixels * bits + 7) / 8;
}

Block OwnPicture(const StreamScript& script, const Gvsp::ImageShape& image) {
    Block block;
    block.info.payloadType = script.payloadType;
    block.info.image = image;
    block.info.trailerSizeY = script.trailerSizeY;
    const auto size = static_cast<std::size_t>(FrameBytes(image));
    // The pattern belongs to nobody and lives for ever.
    block.data.push_back({std::shared_ptr<const std::uint8_t>(PixelPattern::Of(1, size), [](auto) {}), size});
    return block;
}

} // namespace

const char* BlockSource::Objection(const StreamScript& script, const Gvsp::ImageShape& image) {
    for (const Block& block : script.blocks)
        if (const char* objection = PacketMaker::Objection(block))
            return objection;
    if (!script.blocks.empty())
        return nullptr;
    const std::uint64_t size = FrameBytes(image);
    if (size == 0 || size > PixelPattern::LargestFrame)
        return "frames are empty or larger than 256 MiB";
    return PacketMaker::Objection(OwnPicture(script, image));
}

BlockSource::BlockSource(const StreamScript& script, const Gvsp::ImageShape& image, const PacketForm& form)
    : form_(form), moving_(script.movingPicture) {
    std::vector<Block> blocks = script.blocks;
    if (blocks.empty()) {
        blocks.push_back(OwnPicture(script, image));
        patternBytes_ = blocks.front().data.front().size;
    }
    // One channel, one kind of ids.
    for (const Block& block : blocks)
        form_.extendedIds = form_.extendedIds || Gvsp::NeedsExtendedIds(block.info.payloadType);
    std::size_t room = MostLaidOutWhole;
    for (Block& block : blocks) {
        auto maker = std::make_shared<const PacketMaker>(std::move(block), form_);
        const auto bytes = static_cast<std::size_t>(maker->Layout().DataBytes());
        const bool whole = bytes <= room && (patternBytes_ == 0 || !moving_);
        room -= whole ? bytes : 0;
        blocks_.emplace_back(std::move(maker), whole);
    }
}

bool BlockSource::Next(std::uint64_t blockId, std::uint64_t now, SentBlock& sent) {
    current_ = next_;
    next_ = (next_ + 1) % blocks_.size();
    sent.maker = blocks_[current_].Maker();
    sent.stamp = {};
    sent.stamp.blockId = blockId;
    sent.stamp.timeStamp = sent.maker->OwnTimeStamp() != 0 ? sent.maker->OwnTimeStamp() : now;
    if (patternBytes_ != 0 && moving_)
        sent.stamp.pixels = PixelPattern::Of(blockId, patternBytes_);
    return true;
}

} // namespace Simulated
} // namespace VX3
