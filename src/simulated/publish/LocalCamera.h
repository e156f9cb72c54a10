// The local side of a published camera: the device that this process has, as its remote user sees it. Owned
// by the published camera and used on its server's thread; the device may go at any time.
#pragma once

#include "device/IRemotableDevice.h"
#include "device/IRemotableStream.h"
#include "vx3/device/IDevice.h"
#include "wire/WireCursor.h"

#include <chrono>
#include <map>
#include <memory>
#include <string>

namespace VX3 {

class LocalCamera {
public:
    using TimePoint = std::chrono::steady_clock::time_point;
    enum class Kind { Virtual, GigEVision, Other };

    // The device must be an IRemotableDevice.
    explicit LocalCamera(const std::shared_ptr<IDevice>& device);

    static bool CanBePublished(const IDevice* device);
    std::shared_ptr<IDevice> Device() const { return device_.lock(); }
    Kind GetKind() const { return kind_; }
    // Gone, or known not to answer any more.
    bool IsLost() const;

    // Ok too where this user is connected already. DeviceLost when the device is gone.
    [[nodiscard]] StatusCode Connect();
    // The local user's pictures go on.
    void DisConnect();
    bool IsConnected() const { return connected_; }

    // Its registers: bytes as its port has them.
    [[nodiscard]] StatusCode Read(std::uint64_t address, WireRoom room) const;
    [[nodiscard]] StatusCode Write(std::uint64_t address, WireBytes bytes) const;
    // Name and bytes of its description, false where it has none at present.
    bool Description(std::string& name, std::string& bytes) const;
    // In ticks of the time stamps that its images carry.
    std::uint64_t TickFrequency() const;
    std::uint64_t TimeStamp() const;

    unsigned StreamCount() const;
    [[nodiscard]] StatusCode StartStream(unsigned index, ImageCallback callback);
    // The local user's pictures go on.
    void StopStream(unsigned index);
    // Both of all users. NotAvailable without such a stream, WrongState where it refuses.
    [[nodiscard]] StatusCode Pause(unsigned index);
    [[nodiscard]] StatusCode Restart(unsigned index);
    // Takes acquisition up again where the local user ended it for both.
    void KeepStreaming(TimePoint now);

private:
    struct Started {
        bool paused = false;
        TimePoint lookAgain{};
    };

    std::shared_ptr<IStream> Stream(unsigned index) const;

    const std::weak_ptr<IDevice> device_;
    Kind kind_ = Kind::Other;
    bool connected_ = false;
    std::map<unsigned, Started> started_;
};

} // namespace VX3
