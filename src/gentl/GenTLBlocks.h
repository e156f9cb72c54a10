// The buffers of an open stream: memory announced to the producer, images from a pool or, where the producer
// does not take foreign memory, its own. Shared by the stream, its receiving thread while that runs, and
// calls that the producer does not return from; used by one of them at a time.
#pragma once

#include "gentl/GenTLAPI.h"
#include "gentl/GenTLHandle.h"
#include "vx3/image/IImage.h"

#include <cstdint>
#include <list>
#include <memory>

namespace VX3 {

// One announced buffer.
struct GenTLBlockInfo {
    std::unique_ptr<IImage> image; // whose pixels were announced; null where the memory is the producer's
    GenTL::BUFFER_HANDLE handle = nullptr;
    unsigned int index = 0; // the private value announced with it
};

class GenTLBlocks {
public:
    GenTLBlocks(std::shared_ptr<GenTLAPI> producer, GenTLHandle::Use stream, std::shared_ptr<IImagePool> pool,
                unsigned int payloadSize);

    // Announces and queues `count` buffers. The number that are in use afterwards.
    unsigned int Allocate(unsigned int count);
    GenTLBlockInfo* Find(const GenTL::EVENT_NEW_BUFFER_DATA& data);
    // The code of the producer, logged when it is none of success.
    void Queue(const GenTLBlockInfo& block);
    // Takes the block's image out for its client and puts a fresh one into the producer's hands. Null, and
    // nothing changed: the producer does not let go of buffers while it acquires, which `refused` tells, or
    // the pool is empty.
    std::unique_ptr<IImage> Exchange(GenTLBlockInfo& block, bool& refused);
    // Announces what could not be announced when it was due.
    void Replenish();
    // Empties the queues and revokes every buffer; the last use of the stream. What the producer does not
    // give back is kept as long as this object.
    void Release();
    bool IsEmpty() const { return blocks_.empty(); }

    bool HasOwnMemory() const { return ownMemory_; }
    unsigned int PayloadSize() const { return payloadSize_; }
    const std::shared_ptr<IImagePool>& Pool() const { return pool_; }
    // A raw block of the payload's size, as every buffer's image starts.
    ImageInfo BlankInfo() const;

private:
    std::unique_ptr<IImage> NewImage() const;
    GenTL::GC_ERROR Announce(std::unique_ptr<IImage> image);
    GenTL::GC_ERROR AllocateInProducer();

    const std::shared_ptr<GenTLAPI> producer_;
    GenTLHandle::Use stream_;
    const std::shared_ptr<IImagePool> pool_;
    const unsigned int payloadSize_; // bytes
    bool ownMemory_ = true;
    unsigned int nextIndex_ = 1;
    unsigned int missing_ = 0;
    std::list<GenTLBlockInfo> blocks_;
};

} // namespace VX3
