// Frames of a grabber card, put together from whatever segments the input tells, in whatever order: every
// place given lies within its image, every image handed on has the geometry and counts what is missing, and
// ends are ends.
//
// Input: width, height (1 byte each), then segments: what follows (1: arrives, does not, start anew, stop),
// block id (1), number, count (1 each), length (2).
#include "FuzzInput.h"
#include "grabber/KdBlockAssembler.h"

using namespace VX3;
using Fuzz::Require;

namespace {

class Line {
public:
    void Run(Fuzz::FuzzInput& input) {
        header_.width = input.Take();
        header_.height = input.Take();
        header_.pixelFormat = Mono8;
        Start();
        while (!input.Empty())
            Step(input);
        assembler_.Stop();
    }

private:
    void Start() { assembler_.Start(header_, ImagePoolFactory::DefaultImagePool()); }

    void Step(Fuzz::FuzzInput& input) {
        const std::uint8_t what = input.Take();
        KdSegment segment;
        segment.blockId = input.Take();
        segment.number = input.Take();
        segment.count = input.Take();
        segment.length = input.Take<std::uint16_t>();
        if (segment.length == 0xFFFF)
            segment.length = 0xFFFFFFFF;
        if (what % 8 == 6)
            Start();
        if (what % 8 == 7)
            assembler_.Stop();
        const KdBlockAssembler::Place place = assembler_.Accept(segment);
        Require(Failed(place.status) ? place.target == nullptr : place.target != nullptr && !place.drain);
        if (Failed(place.status))
            return;
        if (segment.number == 0)
            begin_ = place.target;
        const auto at = static_cast<std::size_t>(place.target - begin_);
        Require(at <= header_.ImageDataSize() && segment.length <= header_.ImageDataSize() - at);
        std::memset(place.target, what, segment.length);
        if (what % 8 == 5)
            assembler_.NotArrived();
        else
            assembler_.Arrived();
    }

    static void Check(const IImage& image) {
        const ImageInfo& info = *image.GetImageInfo();
        Require(info.blockId != 0 && info.lostPackets <= 0xFFFF);
    }

    ImageInfo header_;
    const unsigned char* begin_ = nullptr; // of the image in progress
    KdBlockAssembler assembler_{[](std::unique_ptr<IImage>&& image) { Check(*image); }};
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Fuzz::Silence silence;
    Fuzz::FuzzInput input(data, std::min<std::size_t>(size, 4096));
    Line().Run(input);
    return 0;
}
