#include "gentl/GenTLBlocks.h"

#include <algorithm>

namespace VX3 {

namespace {

void* Private(unsigned int index) {
    return reinterpret_cast<void*>(static_cast<std::uintptr_t>(index));
}

} // namespace

GenTLBlocks::GenTLBlocks(std::shared_ptr<GenTLAPI> producer, GenTLHandle::Use stream,
                         std::shared_ptr<IImagePool> pool, unsigned int payloadSize)
    : producer_(std::move(producer)),
      stream_(std::move(stream)),
      pool_(std::move(pool)),
      payloadSize_(payloadSize) {}

ImageInfo GenTLBlocks::BlankInfo() const {
    ImageInfo info;
    info.imageType = ImageTypeImage;
    info.pixelFormat = RawBlock;
    info.height = payloadSize_;
    return info;
}

std::unique_ptr<IImage> GenTLBlocks::NewImage() const {
    const ImageInfo info = BlankInfo();
    return info.SizesFit() ? pool_->Create(&info, nullptr, 0) : nullptr;
}

// ---- into the producer's hands ----

// One buffer; where the first is refused, the producer may want memory of its own for all.
unsigned int GenTLBlocks::Allocate(unsigned int count) {
    unsigned int usable = 0;
    for (unsigned int i = 0; i < count; ++i) {
        GenTL::GC_ERROR code = GenTL::GC_ERR_OUT_OF_MEMORY;
        if (ownMemory_) {
            VxLoggerLog(LogLevel::Info, "SDK", "Ready to create buffer with size %d...",
                        static_cast<int>(BlankInfo().ImageDataSize()));
            auto image = NewImage();
            if (!image)
                break; // fewer will have to do
            VxLoggerLog(LogLevel::Info, "SDK", "Buffer created, now to gentlApi->pDSAnnounceBuffer...");
            code = Announce(std::move(image));
        }
        const bool refused = !ownMemory_ || (usable == 0 && blocks_.back().handle == nullptr);
        if (refused) {
            if (ownMemory_)
                VxLoggerLog(LogLevel::Error, "SDK", "pDSAnnounceBuffer & pDSQueueBuffer err with:%d", code);
            blocks_.remove_if([](const GenTLBlockInfo& block) { return block.handle == nullptr; });
            ownMemory_ = false;
            code = AllocateInProducer();
        }
        if (code != GenTL::GC_ERR_SUCCESS)
            VxLoggerLog(LogLevel::Error, "SDK", "pDSAnnounceBuffer & pDSQueueBuffer err with:%d", code);
        else
            ++usable;
    }
    return usable;
}

GenTL::GC_ERROR GenTLBlocks::Announce(std::unique_ptr<IImage> image) {
    GenTLBlockInfo block;
    block.index = nextIndex_++;
    void* const memory = image->GetImageBuff();
    block.image = std::move(image);
    GenTL::GC_ERROR code = producer_->Call<&GenTLAPI::pDSAnnounceBuffer>(
        stream_.Get(), memory, std::size_t{payloadSize_}, Private(block.index), &block.handle);
    if (code == GenTL::GC_ERR_SUCCESS) {
        VxLoggerLog(LogLevel::Info, "SDK",
                    "gentlApi->pDSAnnounceBuffer OK, now to gentlApi->pDSQueueBuffer...");
        code = producer_->Call<&GenTLAPI::pDSQueueBuffer>(stream_.Get(), block.handle);
        if (code == GenTL::GC_ERR_SUCCESS)
            VxLoggerLog(LogLevel::Info, "SDK", "gentlApi->pDSQueueBuffer OK");
    } else {
        block.handle = nullptr;
    }
    blocks_.push_back(std::move(block));
    return code;
}

GenTL::GC_ERROR GenTLBlocks::AllocateInProducer() {
    GenTLBlockInfo block;
    block.index = nextIndex_++;
    GenTL::GC_ERROR code = producer_->Call<&GenTLAPI::pDSAllocAndAnnounceBuffer>(
        stream_.Get(), std::size_t{payloadSize_}, Private(block.index), &block.handle);
    if (code != GenTL::GC_ERR_SUCCESS)
        return code;
    code = producer_->Call<&GenTLAPI::pDSQueueBuffer>(stream_.Get(), block.handle);
    blocks_.push_back(std::move(block));
    return code;
}

// ---- while frames come ----

// Neither the private value nor the handle alone is believed: some producers mix up what they were told.
GenTLBlockInfo* GenTLBlocks::Find(const GenTL::EVENT_NEW_BUFFER_DATA& data) {
    void* const handle = data.BufferHandle;
    const auto index = reinterpret_cast<std::uintptr_t>(data.pUserPointer);
    const auto block = std::find_if(blocks_.begin(), blocks_.end(), [&](const GenTLBlockInfo& candidate) {
        return candidate.index == index && candidate.handle == handle && handle != nullptr;
    });
    return block == blocks_.end() ? nullptr : &*block;
}

void GenTLBlocks::Queue(const GenTLBlockInfo& block) {
    const auto code = producer_->CallQuietly<&GenTLAPI::pDSQueueBuffer>(stream_.Get(), block.handle);
    if (code != GenTL::GC_ERR_SUCCESS)
        VxLoggerLog(LogLevel::Error, "SDK", "pDSQueueBuffer error with %d!", code);
}

std::unique_ptr<IImage> GenTLBlocks::Exchange(GenTLBlockInfo& block, bool& refused) {
    auto fresh = NewImage();
    if (!fresh)
        return nullptr;
    void* memory = nullptr;
    void* index = nullptr;
    refused = producer_->CallQuietly<&GenTLAPI::pDSRevokeBuffer>(stream_.Get(), block.handle, &memory,
                                                                 &index) != GenTL::GC_ERR_SUCCESS;
    if (refused)
        return nullptr;
    std::unique_ptr<IImage> filled = std::move(block.image);
    block.index = nextIndex_++;
    block.handle = nullptr;
    block.image = std::move(fresh);
    memory = block.image->GetImageBuff();
    const auto code = producer_->CallQuietly<&GenTLAPI::pDSAnnounceBuffer>(
        stream_.Get(), memory, std::size_t{payloadSize_}, Private(block.index), &block.handle);
    if (code != GenTL::GC_ERR_SUCCESS) {
        VxLoggerLog(LogLevel::Error, "SDK", "pDSAnnounceBuffer error with %d!", code);
        blocks_.remove_if([&](const GenTLBlockInfo& candidate) { return &candidate == &block; });
        ++missing_;
        return filled;
    }
    Queue(block);
    return filled;
}

void GenTLBlocks::Replenish() {
    while (missing_ > 0) {
        auto image = NewImage();
        if (!image || Announce(std::move(image)) != GenTL::GC_ERR_SUCCESS) {
            blocks_.remove_if([](const GenTLBlockInfo& block) { return block.handle == nullptr; });
            return;
        }
        --missing_;
    }
}

// ---- out of its hands ----

// Memory that the producer does not give back may be written to until the stream's module is closed.
void GenTLBlocks::Release() {
    const auto flush = [&](std::int32_t operation) {
        (void)producer_->Call<&GenTLAPI::pDSFlushQueue>(stream_.Get(), operation);
    };
    const auto revoke = [&](const GenTLBlockInfo& block) {
        return producer_->Call<&GenTLAPI::pDSRevokeBuffer>(
            stream_.Get(), block.handle, static_cast<void**>(nullptr), static_cast<void**>(nullptr));
    };
    flush(GenTL::ACQ_QUEUE_INPUT_TO_OUTPUT);
    flush(GenTL::ACQ_QUEUE_OUTPUT_DISCARD);
    blocks_.remove_if([&](const GenTLBlockInfo& block) {
        if (block.handle == nullptr)
            return true;
        GenTL::GC_ERROR code = revoke(block);
        if (code == GenTL::GC_ERR_BUSY) {
            flush(GenTL::ACQ_QUEUE_ALL_DISCARD);
            code = revoke(block);
        }
        if (code != GenTL::GC_ERR_SUCCESS)
            VxLoggerLog(LogLevel::Error, "SDK", "pDSRevokeBuffer err with %d", code);
        return code == GenTL::GC_ERR_SUCCESS;
    });
    stream_ = GenTLHandle::Use();
}

} // namespace VX3
