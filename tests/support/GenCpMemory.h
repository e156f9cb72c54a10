// The registers of a GenCP camera, its manifest and its description: bytes by address, in the order of the
// standard.
#pragma once

#include "support/Hex.h"

#include <cstdint>
#include <map>
#include <set>
#include <string>

namespace VX3::Test {

struct GenCpCameraData {
    std::string model = "Linea";
    std::string serial = "S0042";
    std::string description; // XML; none without
    bool zipped = true;
    Bytes hash = Bytes(20, 0); // as the manifest tells it
    std::uint32_t rate = 9600;
    std::uint32_t supportedRates = 0xFF;
    bool hasSbrm = true;
    bool hasHeartbeat = true;
    std::uint32_t heartbeatMs = 3000;
    std::uint32_t responseMs = 100;
    bool tellsWritten = true; // the written length, in answers to writes
};

class GenCpMemory {
public:
    static constexpr std::uint64_t Sbrm = 0x10000;
    static constexpr std::uint64_t Scratch = 0x40000;  // registers to write, 256 bytes
    static constexpr std::uint64_t ReadOnly = 0x50000; // 64 bytes
    static constexpr std::uint32_t Rates[] = {9600, 19200, 38400, 57600, 115200, 230400, 460800, 921600};

    explicit GenCpMemory(const GenCpCameraData& data);

    std::uint64_t Get(std::uint64_t address, std::size_t size) const;
    void Put(std::uint64_t address, std::uint64_t value, std::size_t size);
    // A GenCP status; 0 when it was done.
    std::uint16_t Read(std::uint64_t address, std::size_t size, Bytes& data) const;
    std::uint16_t Write(std::uint64_t address, const Bytes& data);

private:
    void LoadRegisters(const GenCpCameraData& data);
    void LoadDescription(const GenCpCameraData& data);
    void PutText(std::uint64_t address, const std::string& text, std::size_t size);

    std::map<std::uint64_t, std::uint8_t> bytes_;
    std::set<std::uint64_t> writable_;
};

} // namespace VX3::Test
