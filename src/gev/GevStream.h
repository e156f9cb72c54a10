// A stream channel of a GigE Vision camera: makes the receiver listen, then tells the camera where to send.
// Owned by its device.
#pragma once

#include "device/StreamAbs.h"
#include "gev/IGevStreamChannels.h"
#include "gev/protocol/Gvcp.h"
#include "gev/receive/IGvspReceiver.h"
#include "vx3/gev/NetParam.h"

#include <cstdint>
#include <memory>

namespace VX3 {

class GevStream : public StreamAbs {
public:
    // `useFilter` asks for reception through the kernel filter driver; where that is not available the
    // socket receiver serves, and the log says so. `channels`: the face of `device` for its streams, which
    // lives as long. `gvcpPort`: of the camera.
    GevStream(const char* name, IDevice* device, unsigned int index, bool useFilter,
              IGevStreamChannels* channels, std::uint32_t gvcpPort = Gvcp::Port);
    ~GevStream() override;

    LiveStatistics* GetStatistics() override { return receiver_->GetStatistics(); }
    using StreamAbs::GetStatistics;

protected:
    bool IsStreamingP() const override { return receiver_->IsListening(); }
    StatusCode StartStreamP(std::shared_ptr<IImagePool> pool, unsigned int count) override;
    StatusCode StopStreamP() override;

private:
    void StreamCallBack(std::unique_ptr<IImage>&& image, unsigned int id);
    // Null once the device has been destroyed.
    IGevStreamChannels* Channels() { return Parent() == nullptr ? nullptr : channels_; }

    IGevStreamChannels* const channels_;
    std::unique_ptr<IGvspReceiver> receiver_;
    GevStreamParam param_;
};

} // namespace VX3
