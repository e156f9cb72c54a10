// Identity of the image pools. Each must be owned by a std::shared_ptr, because its images hold it.
#pragma once

#include "core/ObjectAbs.h"
#include "vx3/image/IImagePool.h"

namespace VX3 {

class ImagePoolAbs : public IImagePool, public std::enable_shared_from_this<IImagePool> {
public:
    ImagePoolAbs(unsigned long long poolSize, const char* name);

    std::uint64_t PoolSize() const override { return 0; }

    std::string Name() const override { return object_.Name(); }
    std::uint64_t ObjID() const override { return object_.ObjID(); }
    bool IsConfigurable() const override { return object_.IsConfigurable(); }
    IConfigurer* GetConfigurer() override { return object_.GetConfigurer(); }
    unsigned int ObjType() const override { return object_.ObjType(); }
    std::list<std::pair<std::string, std::string>> GetInfo() const override { return object_.GetInfo(); }
    unsigned int TypeId() const override { return object_.TypeId(); }

protected:
    std::uint64_t Limit() const { return poolSize_; }
    // Whether an image can be made of this header at all: right version, sizes that do not wrap.
    static bool IsUsable(const ImageInfo* info);
    std::unique_ptr<IImage> Wrap(std::unique_ptr<IImage>&& image);

private:
    ObjectAbs object_;
    std::uint64_t poolSize_;
};

} // namespace VX3
