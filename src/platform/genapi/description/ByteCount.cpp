#include "platform/genapi/description/ByteCount.h"

#include <cstdint>
#include <cstring>

namespace GenApi_3_2 {
namespace Engine {

namespace {

constexpr std::uint64_t Ones = 0x0101010101010101u;
constexpr std::uint64_t Low7 = 0x7F7F7F7F7F7F7F7Fu;
constexpr std::size_t Step = sizeof(std::uint64_t);

// 1 in each byte of `word` that equals the byte repeated in `pattern`, 0 in the others.
std::uint64_t Matches(const char* at, std::uint64_t pattern) {
    std::uint64_t word;
    std::memcpy(&word, at, Step);
    word ^= pattern;
    return (~(((word & Low7) + Low7) | word | Low7)) >> 7;
}

std::uint64_t Repeated(char c) {
    return Ones * static_cast<unsigned char>(c);
}
std::size_t Sum(std::uint64_t bytes) {
    return static_cast<std::size_t>((bytes * Ones) >> 56);
}

} // namespace

std::size_t CountByte(std::string_view text, char wanted) {
    const std::uint64_t pattern = Repeated(wanted);
    std::size_t found = 0;
    std::size_t i = 0;
    for (; i + Step <= text.size(); i += Step)
        found += Sum(Matches(text.data() + i, pattern));
    for (; i < text.size(); ++i)
        found += text[i] == wanted;
    return found;
}

std::size_t CountPair(std::string_view text, char first, char second) {
    const std::uint64_t pattern1 = Repeated(first);
    const std::uint64_t pattern2 = Repeated(second);
    std::size_t found = 0;
    std::size_t i = 0;
    for (; i + Step + 1 <= text.size(); i += Step)
        found += Sum(Matches(text.data() + i, pattern1) & Matches(text.data() + i + 1, pattern2));
    for (; i + 1 < text.size(); ++i)
        found += text[i] == first && text[i + 1] == second;
    return found;
}

} // namespace Engine
} // namespace GenApi_3_2
