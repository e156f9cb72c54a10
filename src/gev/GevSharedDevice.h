// A GigE Vision camera that this process may publish: a local and a remote user share it, and its streams.
// What discovery finds is one of these.
#pragma once

#include "device/RemotableDevice.h"
#include "device/RemotableStream.h"
#include "gev/GevDevice.h"
#include "gev/GevStream.h"

#include <memory>

namespace VX3 {

class GevSharedStream final : public RemotableStream<GevStream> {
public:
    using RemotableStream::RemotableStream;
    ~GevSharedStream() override;
};

class GevSharedDevice final : public RemotableDevice<GevDevice> {
public:
    using RemotableDevice::RemotableDevice;
    ~GevSharedDevice() override;

protected:
    std::shared_ptr<IStream> CreateStream(const char* name, unsigned int index, bool useFilter) override;
};

} // namespace VX3
