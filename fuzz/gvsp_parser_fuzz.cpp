// Streams through the image parser. The input is a program: a header that picks the stream's shape, then one
// byte an operation (low half what, high half on which block) that sends packets as a camera would make them,
// mangled ones, any bytes at all, lets time pass, and answers resend requests.
#include "FuzzInput.h"
#include "gev/stream/GvspParserImageA.h"

#include <array>

using namespace VX3;
using namespace VX3::Fuzz;

namespace {

class Stream {
public:
    explicit Stream(FuzzInput& input) : in_(input), options_(in_.Take()) {
        header_.extended = (options_ & 1) != 0;
        leader_.sizeX = in_.Take() + 1U;
        leader_.sizeY = in_.Take() % 32U + 1U;
        leader_.pixelFormat =
            in_.OneOf(std::array{0x01080001U, 0x01100003U, 0x010C0006U, 0x02180014U, 0x010A0046U});
        leader_.paddingX = in_.OneOf(std::array<std::uint16_t, 4>{0, 0, 0, 5});
        param_.packetSize = in_.OneOf(std::array{100U, 576U, 60U, 40U, 1500U});
        perPacket_ = Gvsp::DataPerPacket(param_.packetSize, header_.extended);
        bytes_ = ((leader_.pixelFormat >> 16) & 0xFF) * leader_.sizeX * leader_.sizeY / 8 +
                 leader_.paddingX * leader_.sizeY;
        trailerId_ =
            perPacket_ == 0 ? 1 : static_cast<std::uint32_t>((bytes_ + perPacket_ - 1) / perPacket_) + 1;
        param_.bufferSize =
            static_cast<std::uint32_t>(in_.OneOf(std::array<std::size_t, 4>{bytes_, 1, 4096, bytes_ / 2}));
        param_.resendSupported = (options_ & 2) != 0 ? 0 : 1;
        GvspParserImageA::Options options;
        options.redirect = (options_ & 4) == 0;
        pool_ = (options_ & 8) != 0
                    ? ImagePoolFactory::CreateRingAImagePool(16 * 32768, 32768, 4096, "fuzz ring")
                    : ImagePoolFactory::CreateRecycleImagePool(1U << 26, "fuzz");
        parser_ = std::make_unique<GvspParserImageA>(
            [this](std::unique_ptr<IImage>&& image, unsigned int) { Check(*image); }, param_, pool_,
            (options_ & 16) != 0 ? 3 : 0, options);
    }
    ~Stream() {
        // Whatever came: silence lets every block go, if slowly where much is missing and requests are paid
        // for. Half of the inputs end without it, in a flush.
        const bool silent = (options_ & 32) != 0 && parser_->Geometry().IsFixed();
        for (int i = 0; silent && parser_->BlocksInFlight() != 0; ++i, now_ += GvspPace::Quiet) {
            Require(i < 10000);
            parser_->NoteDrained(now_);
            parser_->CheckSilence(next_, now_);
            for (GvspResendInfo info; parser_->GetResendInfo(info, now_);)
                Require(info.firstPacketId <= info.lastPacketId);
        }
        (void)parser_->Flush();
        Require(parser_->BlocksInFlight() == 0);
        parser_.reset();
        Require(pool_.use_count() == 1); // no image is left behind
    }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    void Step() {
        const unsigned operation = in_.Take();
        header_.blockId = block_ + (operation >> 4) - 4;
        header_.status = 0;
        switch (operation & 15) {
        case 0:
            return Send(0);
        case 1:
            return SendMangled();
        case 2:
            return Send(in_.Take());
        case 3: {
            const unsigned first = in_.Take();
            return SendRange(first, first + in_.Take() % 64U);
        }
        case 4:
            return Send(trailerId_);
        case 5:
            return SendRange(0, trailerId_);
        case 6:
            header_.status = in_.OneOf(std::array<std::uint16_t, 5>{0x800C, 0x8010, 0x8011, 0x8012, 0x0100});
            return Send(in_.Take());
        case 7:
            honest_ = false;
            return Give(in_.Bytes(in_.Take()));
        case 8:
            now_ += std::chrono::microseconds(in_.Take() * 8U);
            return;
        case 9:
            now_ += std::chrono::milliseconds(in_.Take());
            return parser_->CheckSilence(next_, now_);
        case 10:
            return Answer(in_.Take());
        case 11:
            ++block_;
            return;
        case 12:
            block_ += in_.Take<std::uint16_t>();
            return;
        case 13:
            return parser_->NoteDrained(now_);
        default:
            (void)parser_->AllocOneBuff();
        }
    }

private:
    static std::uint8_t Pixel(std::uint64_t block, std::size_t offset) {
        return static_cast<std::uint8_t>((block & 0xFFFF) * 31 + offset * 7 + offset / 251);
    }

    // The datagram of that packet of the block in header_, as the camera would send it.
    std::vector<std::uint8_t> Make(std::uint32_t packetId) {
        header_.packetId = packetId;
        std::array<std::uint8_t, 2048> datagram;
        const WireRoom room{datagram.data(), datagram.size()};
        std::size_t size = 0;
        if (packetId == 0) {
            size = Gvsp::EncodeLeader(room, header_, leader_);
        } else if (packetId == trailerId_) {
            size = Gvsp::EncodeTrailer(room, header_, {Gvsp::PayloadType::Image, leader_.sizeY});
        } else {
            std::array<std::uint8_t, 1500> data{};
            const std::size_t offset = perPacket_ * (packetId - 1);
            const std::size_t length = packetId < trailerId_ ? std::min(perPacket_, bytes_ - offset) : 0;
            for (std::size_t i = 0; i < length; ++i)
                data[i] = Pixel(header_.blockId, offset + i);
            size = Gvsp::EncodePayload(room, header_, {data.data(), length});
        }
        return {datagram.data(), datagram.data() + size};
    }
    void Send(std::uint32_t packetId) { Give(Make(packetId)); }
    void SendRange(std::uint32_t first, std::uint32_t last) {
        for (std::uint32_t id = first; id <= std::min(last, trailerId_); ++id)
            Send(id);
    }
    // Three bytes of a packet changed (of a leader: another geometry than the packets have), or its end cut.
    void SendMangled() {
        honest_ = false;
        const unsigned choice = in_.Take();
        auto datagram = Make((choice & 3) < 2 ? 0 : (choice & 3) == 2 ? trailerId_ : in_.Take());
        for (int i = 0; i < 3 && !datagram.empty(); ++i) {
            const std::size_t at = in_.Take() % datagram.size();
            datagram[at] = in_.Take();
        }
        if ((choice & 4) != 0)
            datagram.resize(std::min<std::size_t>(datagram.size(), choice / 8));
        Give(datagram);
    }
    // The due requests, each packet of them unless its bit in `lost` says no.
    void Answer(unsigned lost) {
        GvspResendInfo info;
        for (int i = 0; i < 8 && parser_->GetResendInfo(info, now_); ++i) {
            Require(info.firstPacketId <= info.lastPacketId);
            header_.blockId = info.blockId;
            header_.status = 0x0100;
            if ((lost >> i & 1) == 0)
                SendRange(info.firstPacketId, std::min(info.lastPacketId, info.firstPacketId + 64));
        }
    }
    // Received as a receiver would: where the parser wants it when it fits there.
    void Give(const std::vector<std::uint8_t>& datagram) {
        const std::uint8_t* packet = datagram.data();
        if (!datagram.empty() && next_.data != nullptr && next_.size >= datagram.size()) {
            std::memcpy(next_.data, datagram.data(), datagram.size());
            packet = next_.data;
        }
        (void)parser_->HandlePacket(packet, datagram.size(), next_, now_);
        Require(parser_->BlocksInFlight() < GvspBlockRing::Slots);
    }

    void Check(const IImage& image) {
        const ImageInfo& info = *image.GetImageInfo();
        const std::uint8_t* pixels = image.GetImageBuff();
        Require(info.SizesFit() && info.extraInfoSize == parser_->Geometry().packets);
        Require(info.lostPackets <= parser_->Geometry().packets);
        for (unsigned int i = 0; i < info.ImageDataSize();
             i += 61) // an image larger than its buffer is found
            Touch(pixels + i);
        if (info.ImageDataSize() != 0)
            Touch(pixels + info.ImageDataSize() - 1);
        if (honest_ && info.lostPackets == 0)
            for (unsigned int i = 0; i < bytes_; ++i)
                Require(pixels[i] == Pixel(info.blockId, i));
        ++images_;
        missing_ += info.lostPackets;
        incomplete_ += info.lostPackets != 0;
        resent_ += info.statusC;
        const Statistics counted = parser_->GetStatistics()->Snapshot();
        Require(counted.blocks == images_ && counted.missingPackets == missing_);
        Require(counted.incompleteBlocks == incomplete_ && counted.resentPackets == resent_);
    }

    FuzzInput& in_;
    unsigned options_;
    GevStreamParam param_;
    Gvsp::Header header_;
    Gvsp::Leader leader_;
    std::size_t perPacket_;
    std::size_t bytes_;
    std::uint32_t trailerId_;
    std::shared_ptr<IImagePool> pool_;
    std::unique_ptr<GvspParserImageA> parser_;
    IGvspParser::TimePoint now_{std::chrono::seconds(1)};
    WireRoom next_;
    std::uint64_t block_ = 5;
    bool honest_ = true; // nothing was sent that a camera with this leader would not send
    std::uint64_t images_ = 0, missing_ = 0, incomplete_ = 0, resent_ = 0;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Silence silence;
    FuzzInput input(data, size);
    Stream stream(input);
    for (int steps = 0; !input.Empty() && steps < 1000; ++steps)
        stream.Step();
    return 0;
}
