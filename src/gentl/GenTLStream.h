// A data stream of a camera behind a producer. Images of the stream's pool are announced to the producer,
// which fills them in place; each goes to the client as it is, and a fresh one takes its place. Where the
// producer does not let go of buffers while it acquires, frames are copied instead. Owned by its device.
//
// The module is open while the device is connected. One thread receives while the stream is open; it alone
// uses the blocks and keeps the stream alive, so that a producer that does not return from a call harms
// nobody else.
#pragma once

#include "device/StreamAbs.h"
#include "device/ThreadEx.h"
#include "gentl/GenTLBlocks.h"
#include "gentl/GenTLFrame.h"
#include "gentl/GenTLPort.h"
#include "vx3/core/Mutex.h"
#include "vx3/genicam/IConfigurer.h"
#include "vx3/genicam/IGenIObj.h"

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace VX3 {

class GenTLDevice;

class GenTLStream : public IGenIObj, public StreamAbs, public std::enable_shared_from_this<GenTLStream> {
public:
    // Opens the module of `streamId`; one that cannot be opened refuses to be used.
    GenTLStream(std::shared_ptr<GenTLAPI> producer, const char* streamId, GenTLDevice* device,
                unsigned int index);
    ~GenTLStream() override;

    StatusCode ReadPort(unsigned long long address, unsigned char* buffer, unsigned int length) override;
    StatusCode WritePort(unsigned long long address, const unsigned char* buffer,
                         unsigned int length) override;
    std::int64_t GetXmlUrlAddr() override { return -1; }
    bool IsManifestSupported() override { return false; }
    bool IsReachable() const override { return port_.Handle().IsOpen(); }

    // The features of the stream itself, where it has a description. NotAvailable: that cannot be used.
    [[nodiscard]] StatusCode CreateConfigurer();
    IConfigurer* GetConfigurer() override { return configurer_.get(); }
    bool IsConfigurable() const override { return configurer_ != nullptr; }
    // Bytes of one frame as the producer, or else the camera's feature, says; 0 when neither does.
    unsigned int GetPayloaSize();
    // Ends the connection: the module is closed, and neither it nor the stream can be used any more.
    void CloseModule();

    using StreamAbs::GetStatistics;
    LiveStatistics* GetStatistics() override { return &statistics_; }

protected:
    unsigned int PayloadSizeP() const override { return payloadSize_; }
    bool IsStreamingP() const override { return streaming_; }
    StatusCode OpenP(std::shared_ptr<IImagePool> pool, unsigned int bufferCount) override;
    StatusCode StartStreamP(std::shared_ptr<IImagePool> pool, unsigned int count) override;
    StatusCode StopStreamP() override;
    StatusCode CloseP() override;

private:
    void ReceivingThread(const std::atomic<bool>& run, const std::shared_ptr<IImagePool>& pool);
    void Receive(void* stream, const GenTL::EVENT_NEW_BUFFER_DATA& data);
    void Deliver(GenTLBlockInfo& block, const GenTLFrame& frame);
    std::unique_ptr<IImage> Copied(const GenTLBlockInfo& block, const GenTLFrame& frame,
                                   const ImageInfo& header);
    void Rest(const std::atomic<bool>& run);

    bool OpenModule();
    unsigned int BufferCount(unsigned int wanted);
    StatusCode OpenBuffers(unsigned int count, const std::shared_ptr<IImagePool>& pool);
    bool JoinReceiver();
    static void Revoke(const GenTLAPI& producer, const GenTLHandle::Use& stream, GenTLBlocks& blocks);
    void ReadGeometry();
    GenTLGeometry Geometry();

    const std::shared_ptr<GenTLAPI> producer_;
    const std::string id_;
    const GenTLHandle device_; // the device's, shared with it
    GenTLPort port_;
    std::unique_ptr<IConfigurer> configurer_;

    std::atomic<unsigned int> payloadSize_{0}; // bytes
    std::atomic<bool> streaming_{false};
    std::atomic<bool> closed_{false}; // for good
    unsigned int wantedBuffers_ = 0;
    LiveStatistics statistics_;

    std::shared_ptr<GenTLBlocks> blocks_;
    std::vector<std::shared_ptr<GenTLBlocks>> left_; // not given back: until the module is closed
    GenTL::EVENT_HANDLE event_ = nullptr;
    std::unique_ptr<ThreadEx<std::shared_ptr<IImagePool>>> receiver_;
    bool zeroCopy_ = true;   // the receiving thread's, as are the next two
    bool oddBuffer_ = false; // a buffer came that is not announced; said once
    GenTLFrameReader reader_;
    std::atomic<bool> newRun_{false};

    Mutex mutex_;
    CondVar receiverEnded_;
    bool receiving_ VX3_GUARDED_BY(mutex_) = false;
    bool abandoned_ VX3_GUARDED_BY(mutex_) = false; // the producer keeps the thread
    GenTLGeometry geometry_ VX3_GUARDED_BY(mutex_); // of the camera's features
};

} // namespace VX3
