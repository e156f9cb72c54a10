// SHA-1 (FIPS 180-4), by which a manifest tells a description that arrived whole. No protection against
// anybody.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace CLProtocol {

using Sha1Digest = std::array<std::uint8_t, 20>;

Sha1Digest Sha1(const void* data, std::size_t size);

} // namespace CLProtocol
