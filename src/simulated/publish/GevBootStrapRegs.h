// The registers every GigE Vision camera has, of a published one: what it is, and what hosts write to have it
// controlled and its streams started. Owned by its GevSimuDevice. Safe to use from any thread; the callbacks
// run on the thread that writes.
#pragma once

#include "simulated/camera/RegisterFile.h"
#include "vx3/core/Status.h"

#include <cstdint>
#include <functional>
#include <string>

namespace VX3 {

// Texts longer than their registers are cut; numbers are in host order.
struct GevBootStrapRegsValue {
    std::uint32_t currentIp = 0xC0A80064; // 192.168.0.100
    std::uint32_t subnetMask = 0xFFFFFF00;
    std::uint32_t defaultGateway = 0xC0A80001;
    std::uint32_t heartbeatTimeoutMs = 3000;
    std::string manufacturerName = "Test";
    std::string modelName = "test-100";
    std::string deviceVersion = "0.0.0";
    std::string manufacturerInfo = "Test";
    std::string serialNumber = "1234567890";
    std::string userName;
    std::uint32_t macLow = 0x567890AB;
};

class GevBootStrapRegs {
public:
    static constexpr std::uint32_t Size = 4096;
    static constexpr std::uint32_t LastRegister = 4093; // at and above it no register fits
    static constexpr unsigned MostChannels = 4;
    static constexpr std::uint32_t DefaultPacketSize = 1500;

    // Each may be missing. `channel`: of the stream.
    struct Callbacks {
        std::function<StatusCode()> open; // somebody controls
        std::function<void()> close;      // nobody does any more
        std::function<StatusCode(unsigned channel)> start;
        std::function<void(unsigned channel)> stop;
    };

    GevBootStrapRegs(const GevBootStrapRegsValue& value, std::uint16_t gvspPort, Callbacks callbacks);

    // NotFound outside the registers. A write of the control privilege or of a stream's port calls its
    // callback, whose code is returned; the value is stored unless that failed.
    [[nodiscard]] StatusCode ReadReg32(std::uint32_t address, std::uint32_t& value) const;
    [[nodiscard]] StatusCode WriteReg32(std::uint32_t address, std::uint32_t value);
    [[nodiscard]] StatusCode ReadMemory(std::uint32_t address, WireRoom room) const;
    // Without callbacks: nothing that starts or stops is written so.
    [[nodiscard]] StatusCode WriteMemory(std::uint32_t address, WireBytes bytes);

    // Whether hosts may write there.
    bool IsWritable(std::uint32_t address, std::size_t size) const { return file_.IsWritable(address, size); }
    // The owner's own hands: no callbacks.
    std::uint32_t Value(std::uint32_t address) const { return file_.Value(address); }
    void SetValue(std::uint32_t address, std::uint32_t value) { (void)file_.SetValue(address, value); }
    void SetXmlUrl(const std::string& url);

private:
    StatusCode Effect(std::uint32_t address, std::uint32_t value) const;

    const Callbacks callbacks_;
    Simulated::RegisterFile file_;
};

} // namespace VX3
