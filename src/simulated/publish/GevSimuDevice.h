// A local camera as a GigE Vision camera for other hosts: answers their commands from its own registers and
// from the camera's, and sends the camera's images where they want them. Shared by the list of published
// cameras and whoever asks for its state.
//
// One thread serves commands, one each running stream sends. Registers are for the server's thread, or for
// the owner while it does not run.
#pragma once

#include "simulated/camera/GvcpServer.h"
#include "simulated/publish/GevBootStrapRegs.h"
#include "simulated/publish/GevSimuGvsp.h"
#include "simulated/publish/HostRoutes.h"
#include "simulated/publish/LocalCamera.h"
#include "simulated/publish/PublishedDescription.h"
#include "vx3/simulated/Publish.h"

#include <array>
#include <atomic>
#include <memory>
#include <string>

namespace VX3 {

class GevSimuDevice final : public Simulated::IGvcpTarget {
public:
    GevSimuDevice(const std::shared_ptr<IDevice>& device, const GevBootStrapRegsValue& identity,
                  const PublishOptions& options, std::uint16_t gvspPort);
    ~GevSimuDevice() override;

    // OpenFailed when the port is somebody else's; the thread's last failure says which.
    [[nodiscard]] StatusCode StartMonitor();
    // Ends within a second: control is over, streams stop, the local user goes on.
    void StopMonitor();
    bool IsMonitoring() const { return monitoring_; }
    std::uint16_t GvcpPort() const { return options_.port; }
    std::uint16_t GvspPort() const { return gvspPort_; }
    std::string UniqueName() const;
    PublishState State() const;

    // By the addresses that hosts use. NotFound where there is nothing, and where the camera is gone.
    [[nodiscard]] StatusCode ReadReg32(std::uint32_t address, std::uint32_t& value);
    [[nodiscard]] StatusCode WriteReg32(std::uint32_t address, std::uint32_t value);
    [[nodiscard]] StatusCode ReadMemory(std::uint64_t address, WireRoom room);
    [[nodiscard]] StatusCode WriteMemory(std::uint64_t address, WireBytes bytes);
    void StopStream();
    void CloseDevice();

    // Of the server.
    std::uint16_t Read(std::uint64_t address, WireRoom room) override;
    std::uint16_t Write(std::uint64_t address, WireBytes bytes) override;
    std::uint16_t ReadRegister(std::uint32_t address, std::uint32_t& value) override;
    std::uint16_t WriteRegister(std::uint32_t address, std::uint32_t value) override;
    std::uint16_t Identify(const NET_ENDPOINT& asker, WireRoom room) override;
    std::uint16_t ControlChanged(std::uint32_t privilege, const NET_ENDPOINT& holder) override;
    // The host's addresses are not ours to change.
    std::uint16_t ForceIp(const Gvcp::ForceIpRequest&) override { return Gvcp::AckStatus::NotImplemented; }
    void Resend(const Gvcp::ResendRequest& request, const NET_ENDPOINT& sender, TimePoint now) override;
    bool Tick(TimePoint now) override;

private:
    struct Channel {
        std::shared_ptr<GevSimuGvsp> sender = std::make_shared<GevSimuGvsp>();
        bool waits = false; // its port is set, its images are not asked for yet
        TimePoint due{};
    };

    GevBootStrapRegs::Callbacks Callbacks();
    StatusCode Open();
    StatusCode ArmStream(unsigned channel);
    StatusCode StartChannel(unsigned channel);
    void StopChannel(unsigned channel);
    StatusCode StartWaiting();
    void Describe();
    GevSimuGvsp::Options SenderOptions(std::uint32_t sourceIp) const;
    NET_ENDPOINT Destination(unsigned channel) const;

    StatusCode WriteServer(std::uint32_t address, std::uint32_t value);
    StatusCode WriteServerMemory(std::uint32_t address, WireBytes bytes);
    void FireTestPacket(unsigned channel, std::uint32_t value);
    void TakeTimestamp();
    StatusCode Command(WireBytes text);
    StatusCode WriteCamera(std::uint64_t address, WireBytes bytes);
    AddressWindow::Route RouteOf(std::uint64_t address, std::size_t size) const;

    const std::string name_;
    PublishOptions options_;
    const std::uint16_t gvspPort_;
    LocalCamera camera_;
    PublishedDescription description_;
    GevBootStrapRegs registers_;
    std::array<Channel, GevBootStrapRegs::MostChannels> channels_;
    HostRoutes routes_;
    bool lostSaid_ = false;
    std::atomic<bool> monitoring_{false};
    mutable Mutex stateMutex_;
    NET_ENDPOINT controller_ VX3_GUARDED_BY(stateMutex_);
    Simulated::GvcpServer server_; // last: its thread uses all of the above
};

// With the local camera's own texts where it has them, else those of the default identity. `slot`: tells
// several cameras of a host apart.
std::shared_ptr<GevSimuDevice> CreateGevSimuDevice(std::uint16_t gvcpPort, std::uint16_t gvspPort,
                                                   const std::shared_ptr<IDevice>& device,
                                                   PublishOptions options = {}, unsigned slot = 0);

} // namespace VX3
