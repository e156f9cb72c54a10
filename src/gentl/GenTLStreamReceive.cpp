// What the receiving thread of a GenTLStream does.
#include "gentl/GenTLStream.h"

#include <utility>

namespace VX3 {

using std::chrono::milliseconds;

void GenTLStream::ReceivingThread(const std::atomic<bool>& run, const std::shared_ptr<IImagePool>&) {
    VxLoggerLog(LogLevel::Debug, "SDK", "Enter GenTLStream receiving thread...");
    constexpr std::uint64_t WaitMs = 100;
    const auto camera = device_.Borrow(); // neither is closed while the producer keeps this thread
    const auto use = port_.Handle().Borrow();
    while (run && use) {
        GenTL::EVENT_NEW_BUFFER_DATA data{};
        std::size_t size = sizeof(data);
        const auto code = producer_->CallQuietly<&GenTLAPI::pEventGetData>(event_, static_cast<void*>(&data),
                                                                           &size, WaitMs);
        if (code == GenTL::GC_ERR_SUCCESS) {
            if (run)
                Receive(use.Get(), data);
        } else if (code != GenTL::GC_ERR_TIMEOUT && run) {
            VxLoggerLog(LogLevel::Error, "SDK", "GenTL::EventGetData error with %d!", code);
            Rest(run);
        }
        if (run)
            blocks_->Replenish();
    }
    VxLoggerLog(LogLevel::Debug, "SDK", "GenTLStream::ReceivingThread exited...");
    bool abandoned = false;
    {
        MutexLock lock(mutex_);
        abandoned = abandoned_;
        receiving_ = abandoned;
        receiverEnded_.NotifyAll();
    }
    if (!abandoned)
        return;
    Revoke(*producer_, use, *blocks_);
    if (!blocks_->IsEmpty())
        producer_->Keep(blocks_);
    MutexLock lock(mutex_);
    blocks_.reset();
    receiving_ = abandoned_ = false;
}

// A wait that fails at once must not keep a processor busy.
void GenTLStream::Rest(const std::atomic<bool>& run) {
    MutexLock lock(mutex_);
    if (run)
        receiverEnded_.WaitFor(mutex_, milliseconds(100));
}

void GenTLStream::Receive(void* stream, const GenTL::EVENT_NEW_BUFFER_DATA& data) {
    GenTLBlockInfo* const block = blocks_->Find(data);
    if (block == nullptr) {
        if (!std::exchange(oddBuffer_, true))
            VxLoggerLog(LogLevel::Warning, "SDK", "%s: the producer reports a buffer that it does not have",
                        Name().c_str());
        return;
    }
    if (newRun_.exchange(false))
        reader_.Reset();
    const GenTLFrame frame = reader_.Read(*producer_, stream, block->handle, Geometry(), !block->image);
    if (streaming_ && frame.newData)
        Deliver(*block, frame);
    else
        blocks_->Queue(*block);
}

void GenTLStream::Deliver(GenTLBlockInfo& block, const GenTLFrame& frame) {
    const ImageInfo header = frame.Header(payloadSize_);
    if (header.lostPackets != 0)
        LiveStatistics::Add(statistics_.incompleteBlocks);
    LiveStatistics::Add(statistics_.blocks);
    std::unique_ptr<IImage> image;
    if (zeroCopy_) {
        bool refused = false;
        image = blocks_->Exchange(block, refused);
        if (image && image->UpdateImageInfo(&header) != static_cast<unsigned int>(Status::Ok))
            VxLoggerLog(LogLevel::Error, "SDK", "%s: a frame has a header that does not fit it",
                        Name().c_str());
        if (refused) {
            zeroCopy_ = false;
            VxLoggerLog(LogLevel::Error, "SDK", "pDSRevokeBuffer Error, not supported?");
        }
        if (!image && !refused) { // no memory is left: the frame is lost, its buffer is not
            LiveStatistics::Add(statistics_.lostBlocks);
            blocks_->Queue(block);
            return;
        }
    }
    if (!image) {
        image = Copied(block, frame, header);
        if (!image)
            LiveStatistics::Add(statistics_.lostBlocks);
        blocks_->Queue(block);
    }
    if (image)
        InsertImage(std::move(image), 0);
}

std::unique_ptr<IImage> GenTLStream::Copied(const GenTLBlockInfo& block, const GenTLFrame& frame,
                                            const ImageInfo& header) {
    const unsigned char* bytes =
        block.image ? block.image->GetImageBuff() : static_cast<const unsigned char*>(frame.base);
    if (bytes == nullptr)
        return nullptr;
    ImageInfo plain = header;
    plain.dataOffset = 0;
    return ImageCreator::Create(&plain, blocks_->Pool(), bytes + header.dataOffset);
}

} // namespace VX3
