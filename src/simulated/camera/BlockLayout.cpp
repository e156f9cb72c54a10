#include "simulated/camera/BlockLayout.h"

#include "gev/protocol/GvspBlockCodec.h"

#include <algorithm>

namespace VX3 {
namespace Simulated {

namespace {

std::size_t DataPerPacket(std::uint16_t payloadType, const PacketForm& form) {
    const std::size_t size =
        std::clamp(form.packetSize, BlockLayout::SmallestPacket, BlockLayout::LargestPacket);
    return Gvsp::DataPerPacket(size, form.extendedIds) - Gvsp::PayloadPrefixSize(payloadType);
}

} // namespace

BlockLayout::BlockLayout(const Block& block, const PacketForm& form) {
    const std::size_t perPacket = DataPerPacket(block.info.payloadType, form);
    for (std::uint32_t part = 0; part < block.data.size(); ++part) {
        const std::size_t size = block.data[part].size;
        for (std::size_t offset = 0; offset < size; offset += perPacket) {
            const std::size_t here = std::min(perPacket, size - offset);
            largestSlot_ = std::max(largestSlot_, here);
            slots_.push_back(
                {part, static_cast<std::uint32_t>(here), offset, dataBytes_ + offset, offset + here == size});
        }
        dataBytes_ += size;
    }
}

} // namespace Simulated
} // namespace VX3
