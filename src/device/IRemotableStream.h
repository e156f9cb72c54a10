// A stream that two users share, of an IRemotableDevice. Both see the same images; the remote user's callback
// runs on the stream's delivery thread, after the local one's. Pause ends acquisition for both, Restart
// (both of IStream) takes it up again for whoever still holds a callback.
#pragma once

#include "vx3/device/IStream.h"

namespace VX3 {

class IRemotableStream {
public:
    virtual ~IRemotableStream() = default;
    // Opens the stream with `frames` buffers where it is not open. NotFound when the remote user has started
    // it already.
    [[nodiscard]] virtual StatusCode StartRemotely(ImageCallback callback, void* userData,
                                                   unsigned int frames, std::shared_ptr<IImagePool> pool) = 0;
    // Ends acquisition for both users; NotFound when the remote user had not started it.
    virtual StatusCode StopRemotely() = 0;
    virtual bool IsStreamingRemotely() const = 0;
};

} // namespace VX3
