// The table in a GenCP device that says where its descriptions lie. A pure function over foreign bytes.
#pragma once

#include "platform/clprotocol/Sha1.h"
#include "wire/WireCursor.h"

#include <cstdint>
#include <vector>

namespace CLProtocol {

struct ManifestEntry {
    static constexpr std::size_t Size = 64;

    std::uint32_t fileVersion = 0; // major, minor in 8 bits each, subminor in 16
    std::uint8_t schemaMajor = 0;
    std::uint8_t schemaMinor = 0;
    bool zipped = false;
    bool describesDevice = false; // buffers may have descriptions, too
    std::uint64_t address = 0;
    std::uint64_t size = 0; // as it is stored
    Sha1Digest sha1{};      // all zero: not told
};

// The descriptions of the device among whole entries, the best first: the highest schema that is understood
// (1.x), then the highest version. Entries without bytes are left out.
std::vector<ManifestEntry> DeviceDescriptions(VX3::WireBytes table);

} // namespace CLProtocol
