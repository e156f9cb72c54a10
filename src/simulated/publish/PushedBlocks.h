// Images that somebody pushes, as the blocks of a stream; pixels are sent, and sent again, from where they
// lie. Pushed from any thread, taken by the one that sends.
#pragma once

#include "device/FpsCalculator.h"
#include "device/SyncQueue.h"
#include "simulated/camera/IBlockSource.h"
#include "vx3/core/Status.h"
#include "vx3/image/IImage.h"

#include <atomic>
#include <memory>
#include <optional>

namespace VX3 {

class PushedBlocks final : public Simulated::IBlockSource {
public:
    static constexpr std::size_t MostWaiting = 4;

    explicit PushedBlocks(const Simulated::PacketForm& form) : form_(form) {}

    // QueueFull while MostWaiting images wait.
    [[nodiscard]] StatusCode Push(std::shared_ptr<IImage> image);
    // Next waits no longer.
    void Close();
    // Null, or why an image like this cannot be sent.
    static const char* Objection(const IImage& image);

    // As a camera at the end of a gigabit link sends, or a quarter faster than images come where that is
    // more: bursts are what receivers lose. Flat out while further images wait.
    double BytesPerSecond() const override;
    bool ExtendedIds() const override { return form_.extendedIds; }
    bool Next(std::uint64_t blockId, std::uint64_t now, Simulated::SentBlock& sent) override;
    Simulated::OutPacket Packet(std::uint32_t packetId, const Simulated::BlockStamp& stamp) override {
        return current_->Packet(packetId, stamp);
    }

private:
    // Frames that are alike share their packets' heads: laying these out costs as much as sending them.
    void Prepare(const ImageInfo& info);

    const Simulated::PacketForm form_;
    std::atomic<bool> closed_{false};
    SyncQueue<std::shared_ptr<IImage>, MostWaiting + 1> waiting_;
    FpsCalculator<32> rate_;
    std::size_t currentBytes_ = 0;
    ImageInfo prepared_; // the header that `current_` was laid out for
    std::optional<Simulated::PreparedBlock> current_;
};

} // namespace VX3
