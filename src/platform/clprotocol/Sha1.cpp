#include "platform/clprotocol/Sha1.h"

#include "wire/WireCursor.h"

#include <cstring>

namespace CLProtocol {

namespace {

constexpr std::size_t BlockSize = 64;
using State = std::array<std::uint32_t, 5>;

std::uint32_t Rotate(std::uint32_t value, unsigned count) {
    return (value << count) | (value >> (32 - count));
}

struct Round {
    std::uint32_t mix;
    std::uint32_t constant;
};

Round RoundOf(std::size_t i, std::uint32_t b, std::uint32_t c, std::uint32_t d) {
    if (i < 20)
        return {(b & c) | (~b & d), 0x5A827999U};
    if (i < 40)
        return {b ^ c ^ d, 0x6ED9EBA1U};
    if (i < 60)
        return {(b & c) | (b & d) | (c & d), 0x8F1BBCDCU};
    return {b ^ c ^ d, 0xCA62C1D6U};
}

void Mix(State& state, const std::uint8_t* block) {
    std::array<std::uint32_t, 80> words{};
    for (std::size_t i = 0; i < 16; ++i)
        words[i] = VX3::Wire::Load<std::uint32_t>(block + 4 * i);
    for (std::size_t i = 16; i < words.size(); ++i)
        words[i] = Rotate(words[i - 3] ^ words[i - 8] ^ words[i - 14] ^ words[i - 16], 1);
    State s = state;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const Round round = RoundOf(i, s[1], s[2], s[3]);
        const std::uint32_t next = Rotate(s[0], 5) + round.mix + s[4] + round.constant + words[i];
        s = {next, s[0], Rotate(s[1], 30), s[2], s[3]};
    }
    for (std::size_t i = 0; i < state.size(); ++i)
        state[i] += s[i];
}

} // namespace

Sha1Digest Sha1(const void* data, std::size_t size) {
    State state{0x67452301U, 0xEFCDAB89U, 0x98BADCFEU, 0x10325476U, 0xC3D2E1F0U};
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    std::size_t at = 0;
    for (; size - at >= BlockSize; at += BlockSize)
        Mix(state, bytes + at);
    std::array<std::uint8_t, 2 * BlockSize> tail{};
    const std::size_t rest = size - at;
    if (rest != 0)
        std::memcpy(tail.data(), bytes + at, rest);
    tail[rest] = 0x80;
    const std::size_t end = rest < BlockSize - 8 ? BlockSize : 2 * BlockSize;
    VX3::Wire::Store<std::uint64_t>(tail.data() + end - 8, std::uint64_t{size} * 8);
    for (std::size_t block = 0; block < end; block += BlockSize)
        Mix(state, tail.data() + block);
    Sha1Digest digest{};
    for (std::size_t i = 0; i < state.size(); ++i)
        VX3::Wire::Store(digest.data() + 4 * i, state[i]);
    return digest;
}

} // namespace CLProtocol
