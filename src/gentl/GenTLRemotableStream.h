// A data stream that a local and a remote user share. Its start and stop tell each user exactly how things
// stand: NotFound for a second start, and for a stop of one who had not started it; a stop ends acquisition
// for both, and Restart takes it up for the other.
#pragma once

#include "device/RemotableStream.h"
#include "gentl/GenTLStream.h"

namespace VX3 {

class GenTLRemotableStream final : public RemotableStream<GenTLStream> {
public:
    using RemotableStream::RemotableStream;
    ~GenTLRemotableStream() override { Shutdown(); }

    StatusCode Start(ImageCallback callback, void* userData, unsigned int frames,
                     std::shared_ptr<IImagePool> pool) override {
        return MUserStart(std::move(callback), userData, frames, std::move(pool), StreamUsers::Local);
    }
    StatusCode Stop() override { return MUserStop(StreamUsers::Local); }
};

} // namespace VX3
