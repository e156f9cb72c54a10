// One serial line, 8N1 without flow control, owned by the conversation over it. Nothing is written to a port
// that somebody else holds, and its settings are as they were found once it is closed. Used by one thread at
// a time.
#pragma once

#include "platform/clprotocol/PortRegister.h"
#include "wire/WireCursor.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

struct termios2;

namespace CLProtocol {

class SerialPort {
public:
    using Time = std::chrono::steady_clock::time_point;
    enum class Result { Done, TimedOut, HungUp };

    // Throws PortError: Unusable, or InUse for a port that is locked (flock, TIOCEXCL) or that this process
    // has open under any of its names.
    explicit SerialPort(const std::string& path);
    ~SerialPort();
    SerialPort(const SerialPort&) = delete;
    SerialPort& operator=(const SerialPort&) = delete;

    const std::string& Path() const { return path_; }
    std::uint32_t Baud() const { return baud_; }
    // False when the hardware has no rate near enough; the old one stays.
    [[nodiscard]] bool SetBaud(std::uint32_t rate);
    // Tries it for a moment, while nothing travels.
    bool Supports(std::uint32_t rate);
    void Discard(); // what stands in the queues of either direction

    Result Send(VX3::WireBytes bytes, Time until);
    // At least one byte when Done; `size` says how many.
    Result Receive(VX3::WireRoom room, std::size_t& size, Time until);

private:
    class Descriptor;

    void Lock();
    void MakeRaw();
    Result Wait(short events, Time until);

    const std::string path_;
    std::unique_ptr<PortRegister::Claim> claim_;
    std::unique_ptr<Descriptor> fd_;
    std::unique_ptr<termios2> found_; // what the port is given back with
    std::uint32_t baud_ = 0;
};

} // namespace CLProtocol
