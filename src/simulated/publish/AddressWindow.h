// Where the addresses of a published camera lie for the hosts that use it. The first page of every GigE
// Vision camera belongs to the server; the camera's own registers are moved behind it, those far up in its
// space page by page, so that all of them stay below the bit that marks the accesses of a remote device.
//
//   0x00000000  the server's registers
//   0x00001000  the camera's own addresses, where they are
//   0x00010000  the camera's addresses below 1 GiB, moved up by 0x10000
//   0x48000000  the description
//   0x50000000  48 pages of 16 MiB, from wherever the camera's description names registers
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace VX3 {

class AddressWindow {
public:
    static constexpr std::uint32_t ServerEnd = 0x1000;
    static constexpr std::uint32_t Base = 0x10000;
    static constexpr std::uint32_t Near = 0x40000000; // bytes of the camera's addresses that are moved as one
    static constexpr std::uint32_t Description = 0x48000000;
    static constexpr std::uint32_t Pages = 0x50000000;
    static constexpr std::uint32_t PageSize = 0x01000000;
    static constexpr std::size_t MostPages = 48;

    enum class Place { Server, Description, Camera, Nowhere };
    struct Route {
        Place place = Place::Nowhere;
        std::uint64_t address = 0; // there; in the description: from its first byte
    };

    // What is added to a camera's address to get the one hosts use; reserves a page where that is needed.
    // Empty when there is none left.
    std::optional<std::int64_t> ShiftOf(std::uint64_t cameraAddress);
    // Of `size` bytes, all in one place. The remote bit must be off.
    Route Find(std::uint32_t address, std::size_t size) const;

private:
    std::vector<std::uint64_t> pages_; // the camera's, numbered as they lie for hosts
};

} // namespace VX3
