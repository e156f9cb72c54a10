// A serial port of a CameraLink frame grabber and the GenCP device behind it: lists and probes ports, and
// holds one connection. Operations throw PortError. Any thread; Connect and the destructor exclude all
// others.
#pragma once

#include "platform/clprotocol/GenCpLink.h"
#include "platform/clprotocol/GenCpSession.h"
#include "platform/clprotocol/Manifest.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace CLProtocol {

class CCLPort {
public:
    // Which ports there are to be asked: paths and patterns. None at first, and nothing is ever written to a
    // port that is not named here or in a call.
    static void SetPortPatterns(const std::string& patterns);
    static std::vector<std::string> GetPortIDs();
    static std::vector<std::string> ExpandPorts(const std::string& patterns);
    static std::vector<std::string> GetDeviceIDTemplates();
    // The id of the device at the port, or an empty text; takes `timeoutMs` at most. In this time the port is
    // asked at one rate after the other, each once, beginning where the last probe of the port ended. Throws
    // PortError when the port cannot be used. Ends early, within 100 ms, once `abandoned` is true.
    static std::string ProbeDevice(const std::string& portId, const std::string& deviceIdTemplate,
                                   unsigned int timeoutMs, std::function<bool()> abandoned = {});

    CCLPort() = default;
    ~CCLPort();
    CCLPort(const CCLPort&) = delete;
    CCLPort& operator=(const CCLPort&) = delete;

    // Takes control of the device with that id and goes to the highest rate that both have.
    void Connect(const std::string& portId, const std::string& deviceId);
    void Read(void* buffer, std::uint64_t address, std::size_t length);
    void Write(const void* buffer, std::uint64_t address, std::size_t length);
    // The best first.
    std::vector<std::string> GetXMLIDs();
    // From the device only: nothing is kept.
    std::string GetXML(const std::string& xmlId, bool fromDevice);

    // Ends what other threads wait for, within 100 ms, and all that is asked later. Any thread, at any time.
    void Abandon() { abandoned_ = true; }
    // The device has gone: nothing more is said to it at the end.
    void Forget() { forgotten_ = true; }
    // So much silence the device bears; 0: any.
    std::chrono::milliseconds HeartbeatTimeout() const;
    // Reads a register when the device was not heard for `silence`.
    void KeepAlive(std::chrono::milliseconds silence);
    std::uint32_t BaudRate() const;
    // What was done otherwise than it should be, in words, once each.
    std::string TakeNote();

private:
    GenCpLink& Link() const;
    void CheckIdentity(const std::string& deviceId);
    void FindEntries();

    std::string portId_;
    std::string model_;
    std::unique_ptr<GenCpLink> link_;
    std::unique_ptr<GenCpSession> session_;
    std::vector<ManifestEntry> entries_;
    std::string note_;
    std::atomic<bool> abandoned_{false};
    std::atomic<bool> forgotten_{false};
};

} // namespace CLProtocol
