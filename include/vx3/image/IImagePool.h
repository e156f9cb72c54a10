// Turns headers into ready images and takes released images back. Any thread; never blocks.
#pragma once

#include "vx3/core/IObject.h"
#include "vx3/image/ImageInfo.h"

#include <cstdint>
#include <memory>

namespace VX3 {

class IImage;

class VX3_API IImagePool : public IObject {
public:
    // An image with this header; `data` (may be null) is copied in, `len` bytes (0: all of the image's).
    // Empty when the pool cannot serve.
    [[nodiscard]] virtual std::unique_ptr<IImage> Create(const ImageInfo* info, const unsigned char* data,
                                                         unsigned int len) = 0;
    // Called when the last owner drops an image. The pool may take it or leave it for the caller to delete.
    virtual unsigned int Release(std::unique_ptr<IImage>&& image) = 0;
    // 2 recycle pool, 3 ring pool.
    virtual unsigned int PoolType() const = 0;
    // Bytes held in reserve (recycle pool), else 0.
    virtual std::uint64_t PoolSize() const = 0;
};

class VX3_API ImagePoolFactory {
public:
    // Keeps released images by size class (1 MiB and more), evicting the one released longest ago when more
    // than `poolSize` bytes are in reserve.
    [[nodiscard]] static std::shared_ptr<IImagePool> CreateRecycleImagePool(unsigned long long poolSize,
                                                                            const char* name);
    // poolSize / blockSize equal slots in one arena, handed out in rotation: the newest images overwrite the
    // oldest. `infoSize` bytes of header and extra information a slot. Empty, and the thread's last
    // failure NoBuffer, where there is no memory for the arena.
    [[nodiscard]] static std::shared_ptr<IImagePool> CreateRingAImagePool(unsigned long long poolSize,
                                                                          unsigned int blockSize,
                                                                          unsigned int infoSize,
                                                                          const char* name);
    // The library-wide recycle pool; an empty pool argument means this one everywhere.
    static std::shared_ptr<IImagePool> DefaultImagePool();
};

} // namespace VX3
