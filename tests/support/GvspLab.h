// Streams of GVSP datagrams in memory: makes packets, feeds an image parser with a clock of its own, checks
// the images that come out. No sockets, no threads.
#pragma once

#include "gev/protocol/Gvsp.h"
#include "gev/stream/GvspParserImageA.h"
#include "vx3/image/IImagePool.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace VX3::Test {

using Datagram = std::vector<std::uint8_t>;

struct LabShape {
    std::uint32_t width = 1000;
    std::uint32_t height = 1000;
    std::uint32_t pixelFormat = 0x01080001;
    std::uint32_t packetSize = 1500;
    bool extended = false;
    bool resend = true;
    bool redirect = true;
    unsigned blocks = 0;                   // spare blocks, 0: the parser's default
    std::uint32_t bufferSize = 0xFFFFFFFF; // as the camera's features say; all bits: what the frame takes

    std::uint32_t FrameBytes() const { return width * height * ((pixelFormat >> 16) & 0xFF) / 8; }
    std::uint32_t PerPacket() const {
        return static_cast<std::uint32_t>(Gvsp::DataPerPacket(packetSize, extended));
    }
    std::uint32_t TrailerId() const { return (FrameBytes() + PerPacket() - 1) / PerPacket() + 1; }
};

// What came out of the parser.
struct LabImage {
    std::uint64_t blockId = 0;
    std::uint32_t lines = 0;
    std::uint32_t lost = 0;
    std::uint32_t resent = 0;
    std::uint64_t timeStamp = 0;
    std::uint32_t width = 0;
    bool intact = false; // every pixel byte is what was sent
};

class GvspLab {
public:
    explicit GvspLab(const LabShape& shape = {},
                     std::shared_ptr<IImagePool> pool = ImagePoolFactory::CreateRecycleImagePool(1U << 30,
                                                                                                 "lab"))
        : shape_(shape) {
        GevStreamParam param;
        param.packetSize = shape.packetSize;
        param.bufferSize = shape.bufferSize == 0xFFFFFFFF ? shape.FrameBytes() : shape.bufferSize;
        param.resendSupported = shape.resend ? 1 : 0;
        param.name = "lab";
        GvspParserImageA::Options options;
        options.redirect = shape.redirect;
        parser_ = std::make_unique<GvspParserImageA>(
            [this](std::unique_ptr<IImage>&& image, unsigned int) { Keep(*image); }, param, std::move(pool),
            shape.blocks, options);
    }

    // The pixel bytes of a block: neighbouring blocks and packets differ.
    static const std::uint8_t* Pixels(std::uint32_t blockId) {
        static const std::vector<std::uint8_t> pattern = [] {
            std::vector<std::uint8_t> bytes(0x1000000);
            std::uint32_t state = 1;
            for (std::uint8_t& byte : bytes)
                byte = static_cast<std::uint8_t>((state = state * 1664525U + 1013904223U) >> 24);
            return bytes;
        }();
        return pattern.data() + blockId % 4096U * 31U;
    }

    // Any packet of a block by its id: 0 the leader, TrailerId() the trailer.
    Datagram Make(std::uint32_t blockId, std::uint32_t packetId, std::uint16_t status = 0) const {
        Gvsp::Header header;
        header.blockId = blockId;
        header.packetId = packetId;
        header.status = status;
        header.extended = shape_.extended;
        Datagram packet(shape_.packetSize + 64U);
        const WireRoom room{packet.data(), packet.size()};
        std::size_t size = 0;
        if (packetId == 0) {
            Gvsp::Leader leader;
            leader.pixelFormat = shape_.pixelFormat;
            leader.sizeX = shape_.width;
            leader.sizeY = shape_.height;
            leader.timeStamp = (std::uint64_t{7} << 32) + blockId;
            size = Gvsp::EncodeLeader(room, header, leader);
        } else if (packetId == shape_.TrailerId()) {
            Gvsp::Trailer trailer;
            trailer.sizeY = shape_.height;
            size = Gvsp::EncodeTrailer(room, header, trailer);
        } else {
            const std::size_t offset = std::size_t{shape_.PerPacket()} * (packetId - 1);
            const std::size_t length =
                std::min<std::size_t>(shape_.PerPacket(), shape_.FrameBytes() - offset);
            size = Gvsp::EncodePayload(room, header, {Pixels(blockId) + offset, length});
        }
        packet.resize(size);
        return packet;
    }

    // Receives as a receiver would: into the room the parser gave, when there is one and it is large enough.
    StatusCode Give(const Datagram& datagram) {
        parser_->NoteDrained(now_);
        if (datagram.empty())
            return parser_->HandlePacket(own_.data(), 0, next_, now_);
        std::uint8_t* to = next_.data;
        if (to == nullptr || next_.size < datagram.size()) {
            own_.resize(std::max(own_.size(), datagram.size()));
            to = own_.data();
        } else {
            ++landed_;
        }
        std::memcpy(to, datagram.data(), datagram.size());
        return parser_->HandlePacket(to, datagram.size(), next_, now_);
    }
    StatusCode Give(std::uint32_t blockId, std::uint32_t packetId) { return Give(Make(blockId, packetId)); }
    void GiveRange(std::uint32_t blockId, std::uint32_t first, std::uint32_t last) {
        for (std::uint32_t id = first; id <= last; ++id)
            (void)Give(blockId, id);
    }
    void GiveBlock(std::uint32_t blockId) { GiveRange(blockId, 0, shape_.TrailerId()); }

    void Pass(std::chrono::microseconds time) { now_ += time; }
    // Silence, looked at as often as the parser asks for.
    void Silence(std::chrono::milliseconds time,
                 const std::function<void(const GvspResendInfo&)>& serve = {}) {
        const auto end = now_ + time;
        while (now_ < end) {
            now_ += std::min<std::chrono::nanoseconds>(parser_->MaxWait(), end - now_);
            parser_->NoteDrained(now_);
            parser_->CheckSilence(next_, now_);
            for (const GvspResendInfo& info : Requests())
                if (serve)
                    serve(info);
        }
    }
    std::vector<GvspResendInfo> Requests() {
        std::vector<GvspResendInfo> all;
        GvspResendInfo info;
        while (parser_->GetResendInfo(info, now_))
            all.push_back(info);
        return all;
    }

    // The camera's picture from now on.
    void Resize(std::uint32_t width, std::uint32_t height) {
        shape_.width = width;
        shape_.height = height;
    }
    GvspParserImageA& Parser() { return *parser_; }
    const LabShape& Shape() const { return shape_; }
    const std::vector<LabImage>& Images() const { return images_; }
    Statistics Counts() { return parser_->GetStatistics()->Snapshot(); }
    std::chrono::steady_clock::time_point Now() const { return now_; }
    std::size_t Landed() const { return landed_; }

private:
    void Keep(const IImage& image) {
        const ImageInfo& info = *image.GetImageInfo();
        LabImage kept;
        kept.blockId = info.blockId;
        kept.lines = info.statusA;
        kept.lost = info.lostPackets;
        kept.resent = info.statusC;
        kept.timeStamp = (std::uint64_t{info.timestampHigh} << 32) + info.timestampLow;
        kept.width = info.width;
        LabShape sent = shape_;
        sent.width = info.width;
        sent.height = info.height;
        kept.intact = std::memcmp(image.GetImageBuff(), Pixels(static_cast<std::uint32_t>(info.blockId)),
                                  sent.FrameBytes()) == 0;
        images_.push_back(kept);
    }

    LabShape shape_;
    std::chrono::steady_clock::time_point now_{std::chrono::seconds(1000)};
    WireRoom next_;
    Datagram own_ = Datagram(GvspParserImageA::MaxDatagram);
    std::vector<LabImage> images_;
    std::size_t landed_ = 0;
    std::unique_ptr<GvspParserImageA> parser_;
};

} // namespace VX3::Test
