// GenCP answers built by the letter of the standard, without the library's codec.
#pragma once

#include "support/Hex.h"

#include <cstddef>
#include <cstdint>

namespace VX3::Test::GenCpPackets {

inline void Append(Bytes& bytes, std::uint64_t value, std::size_t size) {
    while (size-- != 0)
        bytes.push_back(static_cast<std::uint8_t>(value >> (8 * size)));
}
inline std::uint64_t Number(const Bytes& bytes, std::size_t at, std::size_t size) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < size; ++i)
        value = (value << 8) | bytes[at + i];
    return value;
}
// As in UDP: added byte by byte, the even ones as upper halves, the carries folded in, inverted.
inline std::uint16_t Sum(const Bytes& bytes, std::size_t from, std::size_t to) {
    unsigned long sum = 0;
    for (std::size_t i = from; i < to; ++i)
        sum += (i - from) % 2 == 0 ? 256UL * bytes[i] : bytes[i];
    while (sum > 0xFFFF)
        sum = sum % 0x10000 + sum / 0x10000;
    return static_cast<std::uint16_t>(0xFFFF - sum);
}
inline Bytes Answer(std::uint16_t status, std::uint16_t command, std::uint16_t id, const Bytes& payload,
                    std::uint16_t channel = 0) {
    Bytes head;
    for (const std::uint64_t word : {std::uint64_t{channel}, std::uint64_t{status}, std::uint64_t{command},
                                     static_cast<std::uint64_t>(payload.size()), std::uint64_t{id}})
        Append(head, word, 2);
    Bytes all = head;
    all.insert(all.end(), payload.begin(), payload.end());
    Bytes packet{0x01, 0x00};
    Append(packet, Sum(head, 0, head.size()), 2);
    Append(packet, Sum(all, 0, all.size()), 2);
    packet.insert(packet.end(), all.begin(), all.end());
    return packet;
}

} // namespace VX3::Test::GenCpPackets
