// The register window of a card, mapped for as long as this lives. Owned by the card's frame device and its
// stream. Any thread: every access is plain loads and stores of whole words.
#pragma once

#include "core/UniqueFd.h"
#include "vx3/core/Status.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace VX3 {

class KdXDMADevice {
public:
    static constexpr std::size_t WindowSize = 0x300000;

    // Opens and maps `devicePath` + "_user"; what fails is logged, and every access then refused.
    KdXDMADevice(const std::string& devicePath, const char* name);
    ~KdXDMADevice();
    KdXDMADevice(const KdXDMADevice&) = delete;
    KdXDMADevice& operator=(const KdXDMADevice&) = delete;

    bool IsOpen() const { return base_ != nullptr; }
    // 4 bytes: the 32-bit register at byte `offset`, rounded down to whole words, in host order. Any other
    // length: a block from the 32-bit word `offset` on. The length, or WrongState without a window or beyond
    // it.
    StatusCode Read(unsigned char* buffer, unsigned int length, unsigned long long offset) const;
    StatusCode Write(const unsigned char* buffer, unsigned int length, unsigned long long offset);

private:
    // The access's first word; null when it does not lie within the window.
    volatile std::uint32_t* Place(unsigned int length, unsigned long long offset) const;

    UniqueFd fd_;
    volatile std::uint32_t* base_ = nullptr;
};

} // namespace VX3
