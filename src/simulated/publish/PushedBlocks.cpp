#include "simulated/publish/PushedBlocks.h"

#include "vx3/core/Logger.h"
#include "vx3/core/Utilities.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace VX3 {

namespace {

using Simulated::Block;

constexpr std::chrono::milliseconds LongestWait{200};
// Bytes a second.
constexpr double Gigabit = 125e6;
constexpr double FlatOut = 1e12;
constexpr double Headroom = 1.25;
constexpr std::size_t Behind = 2; // images

std::uint64_t TimeStampOf(const ImageInfo& info) {
    return std::uint64_t{info.timestampHigh} << 32 | info.timestampLow;
}

// Without time stamp and pixels, which are each frame's own.
Block BlockOf(const ImageInfo& info) {
    Block block;
    const bool plain = info.pixelFormat == RawBlock;
    block.info.payloadType = plain ? Gvsp::PayloadType::RawData : Gvsp::PayloadType::Image;
    if (plain && Gvsp::PayloadType::Base(info.imageType) == Gvsp::PayloadType::Jpeg)
        block.info.payloadType = Gvsp::PayloadType::Jpeg;
    block.info.image = {info.pixelFormat, info.width,    info.height,  info.offsetX,
                        info.offsetY,     info.paddingX, info.paddingY};
    block.data.push_back({nullptr, info.ImageDataSize()});
    return block;
}

bool IsAlike(const ImageInfo& a, const ImageInfo& b) {
    return a.pixelFormat == b.pixelFormat && a.width == b.width && a.height == b.height &&
           a.offsetX == b.offsetX && a.offsetY == b.offsetY && a.paddingX == b.paddingX &&
           a.paddingY == b.paddingY && a.imageType == b.imageType;
}

} // namespace

const char* PushedBlocks::Objection(const IImage& image) {
    const ImageInfo* const info = image.GetImageInfo();
    if (image.IsNull() || info == nullptr || image.GetImageBuff() == nullptr || !info->SizesFit() ||
        info->ImageDataSize() == 0)
        return "it has no pixels";
    return nullptr;
}

StatusCode PushedBlocks::Push(std::shared_ptr<IImage> image) {
    if (!waiting_.Push(std::move(image)))
        return Status::QueueFull;
    rate_.Update(GetTimeStampLinux());
    return Status::Ok;
}

double PushedBlocks::BytesPerSecond() const {
    if (waiting_.Size() >= Behind)
        return FlatOut;
    return std::max(Gigabit, Headroom * rate_.Get() * static_cast<double>(currentBytes_));
}

void PushedBlocks::Close() {
    closed_ = true;
    waiting_.Wake();
}

void PushedBlocks::Prepare(const ImageInfo& info) {
    if (current_ && IsAlike(info, prepared_))
        return;
    current_.reset();
    auto maker = std::make_shared<const Simulated::PacketMaker>(BlockOf(info), form_);
    currentBytes_ = static_cast<std::size_t>(maker->Layout().DataBytes());
    current_.emplace(std::move(maker), false);
    prepared_ = info;
}

bool PushedBlocks::Next(std::uint64_t blockId, std::uint64_t now, Simulated::SentBlock& sent) {
    std::shared_ptr<IImage> image;
    if (!waiting_.Pop(image, LongestWait, [this] { return closed_.load(); }) || closed_)
        return false;
    try {
        const ImageInfo& info = *image->GetImageInfo();
        Prepare(info);
        const std::uint64_t stamp = TimeStampOf(info);
        sent.stamp = {blockId, stamp != 0 ? stamp : now, std::as_const(*image).GetImageBuff()};
        sent.maker = current_->Maker();
        sent.owner = std::move(image);
        return true;
    } catch (const std::exception& error) { // no memory: this image is not sent
        VxLoggerLog(LogLevel::Error, "SDK", "an image of a published camera is not sent: %s", error.what());
        return false;
    }
}

} // namespace VX3
