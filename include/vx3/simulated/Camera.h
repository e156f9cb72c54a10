// A GigE Vision camera made of data, for tests that have none of glass: it answers discovery, registers and
// memory, holds the control privilege with its heartbeat, streams, resends, and misbehaves as its script
// says.
//
//   VX3::Simulated::CameraConfig config;
//   config.width = 1920;
//   VX3::Simulated::Camera camera(config);
//   if (VX3::Failed(camera.Start()))
//       ...
//   // open the camera at camera.Ip() and camera.GvcpPort() like any other
//
// Owned by the client. Safe to use from any thread, except that nobody may use a camera that is being
// destroyed. One thread serves commands, one each running stream sends; both end with Stop or the destructor.
#pragma once

#include "vx3/core/Export.h"
#include "vx3/core/Status.h"
#include "vx3/gev/NetParam.h"
#include "vx3/simulated/CameraConfig.h"
#include "vx3/simulated/CameraScript.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <vector>

namespace VX3 {
namespace Simulated {

class VX3_API Camera {
public:
    explicit Camera(CameraConfig config = {});
    ~Camera();
    Camera(const Camera&) = delete;
    Camera& operator=(const Camera&) = delete;

    // Powers up: registers as at first. WrongState when it runs already, OpenFailed when its address and port
    // are not to be had.
    [[nodiscard]] StatusCode Start();
    // Ends streams and server within 100 ms.
    void Stop();
    bool IsRunning() const;
    // As configured; what was left to be chosen is known once Start succeeded.
    std::uint32_t Ip() const;
    std::uint16_t GvcpPort() const;

    // Registers and memory past every access rule and without any effect besides: the owner's own hands.
    // A value outside the registers is 0; setting one is NotFound, like reading or writing memory there.
    std::uint32_t Register(std::uint32_t address) const;
    StatusCode SetRegister(std::uint32_t address, std::uint32_t value);
    [[nodiscard]] StatusCode ReadMemory(std::uint64_t address, void* destination, std::size_t count) const;
    StatusCode WriteMemory(std::uint64_t address, const void* source, std::size_t count);
    // Held by some host.
    bool Controlled() const { return Register(0x0A00) != 0; }

    // Faults of acknowledgements, applied in the order added; used-up rules are forgotten.
    void AddAckRule(const AckRule& rule);
    // Oldest first, the newest CameraConfig::rememberedCommands.
    std::vector<SeenCommand> Seen() const;
    void ClearSeen();

    // How the next stream of a channel (0 to 3) is sent. NotFound for other channels.
    StatusCode SetStreamScript(const StreamScript& script, unsigned channel = 0);
    // As if a host had written the channel's destination and the start command; a stream that runs is started
    // anew. NotFound for other channels, WrongState when the camera does not run, NotAvailable when the
    // registers or the script describe no stream that can be sent (destination, size of the frame).
    StatusCode StartStream(const NET_ENDPOINT& destination, unsigned channel = 0);
    void StopStream(unsigned channel = 0);
    // True once the script's last frame is out; false after `timeout`.
    bool WaitStreamDone(std::chrono::milliseconds timeout, unsigned channel = 0);
    StreamCounts Counts(unsigned channel = 0) const;
    // How often hosts asked for each packet since the stream started; at most 1,000,000 packets.
    std::map<PacketAddress, unsigned> ResendRequests(unsigned channel = 0) const;
    // Size of the newest datagram a host sent to the stream's source port; 0 when there was none.
    std::size_t OpeningDatagram(unsigned channel = 0);

    // The pixel bytes of a block of the camera's own pictures: at least `size` of them, the same for every
    // camera and run, different for neighbouring blocks, valid for ever. Null above 256 MiB.
    static const std::uint8_t* ExpectedData(std::uint64_t blockId, std::size_t size);

    // Stops answering and sending, as if the cable were pulled.
    void Vanish();
    // Answers again; `rebooted`: with every register as at first and nobody in control.
    void Return(bool rebooted = true);

private:
    class Parts;
    std::unique_ptr<Parts> parts_;
};

} // namespace Simulated
} // namespace VX3
