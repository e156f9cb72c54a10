#include "grabber/KdStream.h"

#include "core/LogListener.h"
#include "grabber/KdFrameDevice.h"
#include "vx3/core/LastFailure.h"
#include "vx3/core/Logger.h"
#include "vx3/core/Utilities.h"
#include "vx3/genicam/IConfigurer.h"

#include <chrono>
#include <exception>
#include <limits>
#include <thread>
#include <utility>

namespace VX3 {

namespace {

using std::chrono::milliseconds;

constexpr unsigned int ReadyRegister = 0x203000; // 1: the host waits for the next segment
constexpr unsigned int FirstStreamEvent = 8;
// A stop is noticed after at most this long.
constexpr milliseconds Slice{50};
constexpr milliseconds FailurePause{100};
// The thread waits before the card begins.
constexpr milliseconds StartPause{100};

std::shared_ptr<KdGrabberCmdHelper> CardOf(IDevice* device) {
    const auto* frame = dynamic_cast<const KdFrameDevice*>(device);
    return frame != nullptr ? frame->Card() : nullptr;
}

std::uint32_t IntegerOf(IConfigurer& configurer, const char* name) {
    const GenICam::NodeValue value = configurer.GetNodeValue(name);
    const long number = value.GetType() == GenICam::NodeValue::Type::Integer ? value.AsInteger() : 0;
    return number > 0 && number <= std::numeric_limits<std::uint32_t>::max()
               ? static_cast<std::uint32_t>(number)
               : 0;
}

} // namespace

KdStream::KdStream(IDevice* device, const std::string& devicePath, unsigned int index)
    : StreamAbs(StringFormat("KdStream #%u", index).c_str(), device, index),
      card_(CardOf(device)),
      dma_(devicePath + "_c2h_0"),
      events_(devicePath + "_events_" + std::to_string(index + FirstStreamEvent)),
      assembler_([this](std::unique_ptr<IImage>&& image) {
          LiveStatistics::Add(statistics_.blocks); // before the client can see it
          InsertImage(std::move(image), 0);
      }),
      reader_([this](const std::atomic<bool>& run, const std::shared_ptr<IImagePool>& pool) {
          ThreadReadFrames(run, pool);
      }) {
    statistics_.reserved = 1;
    VxLoggerLog(LogLevel::Debug, "SDK", "Ready to open XDMA C2H0 & EVENT2...");
    // What is missing now is asked for again, and told, when the stream is opened.
    (void)dma_.Open();
    (void)events_.Open();
}

KdStream::~KdStream() {
    Shutdown();
}

StatusCode KdStream::OpenP(std::shared_ptr<IImagePool>, unsigned int) {
    if (!card_)
        return Status::WrongState;
    for (KdNode* node : {static_cast<KdNode*>(&dma_), static_cast<KdNode*>(&events_)}) {
        const StatusCode status = node->Open();
        if (Failed(status))
            return status;
    }
    return Status::Ok;
}

// Start and stop -------------------------------------------------------------------------------------------

StatusCode KdStream::SetNode(const char* name, unsigned int value) {
    IDevice* device = Parent();
    const auto configurer = device != nullptr ? device->ShareConfigurer() : nullptr;
    return configurer ? configurer->SetNodeValue(name, value) : Status::Ok;
}

StatusCode KdStream::StartStreamP(std::shared_ptr<IImagePool> pool, unsigned int) {
    if (!card_ || !dma_.IsOpen() || !events_.IsOpen())
        return SetLastFailure(Status::OpenFailed, Name() + ": " +
                                                      (dma_.IsOpen() ? events_.Path() : dma_.Path()) +
                                                      " is not open");
    if (!reader_.Start(std::move(pool)))
        return Status::AlreadyStreaming;
    std::this_thread::sleep_for(StartPause);
    for (const char* node : {"SoftResetPulse", "IntrEnable", "S2mmRun"})
        if (const StatusCode status = SetNode(node, 1); Failed(status))
            return SetLastFailure(status, Name() + ": the card refuses " + node + ": " + StatusText(status));
    return Status::Ok;
}

StatusCode KdStream::StopStreamP() {
    const StatusCode run = SetNode("S2mmRun", 2);
    const StatusCode interrupts = SetNode("IntrEnable", 0);
    VxLoggerLog(LogLevel::Debug, "SDK", "StopStreamP reset S2mmRun & IntrEnable with rtn: %d & %d", run,
                interrupts);
    reader_.Stop();
    return Status::Ok;
}

// The reading thread ---------------------------------------------------------------------------------------

ImageInfo KdStream::ReadHeader() {
    ImageInfo header;
    IDevice* device = Parent();
    const auto configurer = device != nullptr ? device->ShareConfigurer() : nullptr;
    if (!configurer)
        return header;
    header.width = IntegerOf(*configurer, "Width");
    header.height = IntegerOf(*configurer, "Height");
    header.pixelFormat = IntegerOf(*configurer, "PixelFormat");
    if (!header.SizesFit() || header.ImageDataSize() == 0)
        VxLoggerLog(LogLevel::Error, "SDK", "%s: no image can be made of %u x %u pixels of format 0x%x",
                    Name().c_str(), header.width, header.height, header.pixelFormat);
    return header;
}

void KdStream::ThreadReadFrames(const std::atomic<bool>& run, const std::shared_ptr<IImagePool>& pool) {
    try {
        statistics_.Reset();
        statistics_.reserved = 1;
        assembler_.Start(ReadHeader(), pool);
        ReadFrames(run);
    } catch (const std::exception& error) {
        VxLoggerLog(LogLevel::Error, "SDK", "%s: %s", Name().c_str(), error.what());
    }
    assembler_.Stop();
}

void KdStream::ReadFrames(const std::atomic<bool>& run) {
    while (run) {
        // Once before each wait: a segment that is told meanwhile would be overwritten.
        if (Failed(card_->WriteRegister(ReadyRegister, 1))) {
            VxLoggerLog(LogLevel::Error, "SDK", "%s: the card's registers are not there", Name().c_str());
            return;
        }
        if (WaitForSegment(run))
            (void)ReceiveOneBlock(run); // told where it fails, and the next segment is another matter
    }
}

// False when the wait is to begin anew, or the stream to end.
bool KdStream::WaitForSegment(const std::atomic<bool>& run) {
    while (run) {
        switch (events_.Wait(Slice)) {
        case KdEventNode::Result::Event:
            return true;
        case KdEventNode::Result::Silence:
            break;
        case KdEventNode::Result::Failed:
            std::this_thread::sleep_for(FailurePause);
            return false;
        case KdEventNode::Result::Unexpected:
            return false;
        }
    }
    return false;
}

StatusCode KdStream::ReceiveOneBlock(const std::atomic<bool>& run) {
    KdSegment segment;
    StatusCode status = ReadSegment(*card_, segment);
    if (Failed(status))
        return status;
    const KdBlockAssembler::Place place = assembler_.Accept(segment);
    if (place.drain)
        (void)dma_.Drain(segment.offset, segment.length, run); // a failure is told once, and changes nothing
    if (Failed(place.status))
        return place.status;
    if (HasLogListener(LogLevel::Debug))
        VxLoggerLog(LogLevel::Debug, "SDK",
                    "Ready to read frame 0x%x-%u from device, offset :0x%llx, length: 0x%x", segment.blockId,
                    static_cast<unsigned int>(segment.number),
                    static_cast<unsigned long long>(segment.offset), segment.length);
    status = dma_.Read(segment.offset, place.target, segment.length, run);
    if (!Failed(status)) {
        assembler_.Arrived();
    } else if (run) {
        assembler_.NotArrived();
        std::this_thread::sleep_for(FailurePause);
    }
    return status;
}

} // namespace VX3
