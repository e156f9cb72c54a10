// The images of a frame grabber card: waits for its interrupts, fetches the segments they announce and hands
// on the frames made of them. Owned by the card's frame device.
#pragma once

#include "device/StreamAbs.h"
#include "device/ThreadEx.h"
#include "grabber/KdBlockAssembler.h"
#include "grabber/KdGrabberCmdHelper.h"
#include "grabber/KdNodes.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

namespace VX3 {

class KdStream final : public StreamAbs {
public:
    // `device` is a KdFrameDevice, whose registers are used.
    KdStream(IDevice* device, const std::string& devicePath, unsigned int index);
    ~KdStream() override;

    // Blocks counts frames handed on; the sixth counter is 1; the base counts what it drops.
    using StreamAbs::GetStatistics;
    LiveStatistics* GetStatistics() override { return &statistics_; }
    std::uint64_t LastBlockGap() const { return assembler_.LastGap(); }
    std::uint64_t NextBlockId() const { return assembler_.NextBlockId(); }

protected:
    bool IsStreamingP() const override { return reader_.IsRunning(); }
    // OpenFailed: a node of the card cannot be opened; the thread's last failure names it.
    StatusCode OpenP(std::shared_ptr<IImagePool> pool, unsigned int bufferCount) override;
    StatusCode StartStreamP(std::shared_ptr<IImagePool> pool, unsigned int count) override;
    StatusCode StopStreamP() override;

private:
    void ThreadReadFrames(const std::atomic<bool>& run, const std::shared_ptr<IImagePool>& pool);
    void ReadFrames(const std::atomic<bool>& run);
    bool WaitForSegment(const std::atomic<bool>& run);
    StatusCode ReceiveOneBlock(const std::atomic<bool>& run);
    ImageInfo ReadHeader();
    StatusCode SetNode(const char* name, unsigned int value);

    const std::shared_ptr<KdGrabberCmdHelper> card_;
    KdDmaNode dma_;
    KdEventNode events_;
    LiveStatistics statistics_;
    KdBlockAssembler assembler_;
    ThreadEx<std::shared_ptr<IImagePool>> reader_; // last: it uses the others
};

} // namespace VX3
