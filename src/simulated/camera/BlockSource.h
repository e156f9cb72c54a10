// The blocks a script gives, or pictures of the camera's own, over and over.
#pragma once

#include "simulated/camera/IBlockSource.h"

#include <memory>
#include <vector>

namespace VX3 {
namespace Simulated {

class BlockSource final : public IBlockSource {
public:
    // `image`: the camera's own pictures.
    BlockSource(const StreamScript& script, const Gvsp::ImageShape& image, const PacketForm& form);

    // Null when such a stream can be sent; otherwise why not.
    static const char* Objection(const StreamScript& script, const Gvsp::ImageShape& image);

    bool ExtendedIds() const override { return form_.extendedIds; }
    bool Next(std::uint64_t blockId, std::uint64_t now, SentBlock& sent) override;
    OutPacket Packet(std::uint32_t packetId, const BlockStamp& stamp) override {
        return blocks_[current_].Packet(packetId, stamp);
    }

private:
    PacketForm form_;
    std::vector<PreparedBlock> blocks_;
    std::size_t current_ = 0;
    std::size_t next_ = 0;
    std::size_t patternBytes_ = 0; // not 0: pictures of the camera's own
    bool moving_;
};

} // namespace Simulated
} // namespace VX3
