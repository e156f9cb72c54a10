#include "platform/genapi/registers/ConfigRom.h"

#include "platform/genapi/registers/RegisterBits.h"

#include <algorithm>
#include <vector>

namespace GenApi_3_2 {
namespace Engine {
namespace {

constexpr std::size_t MaxDirectories = 64;
constexpr std::int64_t RegisterSpace = 0xFFFFF0000000;

// The memory as 32-bit words; words beyond its end are 0.
struct Rom {
    const std::uint8_t* bytes;
    std::size_t words;
    std::uint32_t Word(std::size_t index) const {
        return index < words ? static_cast<std::uint32_t>(LoadBytes(bytes + 4 * index, 4, true)) : 0;
    }
};

std::uint8_t KeyOf(std::uint32_t entry) {
    return static_cast<std::uint8_t>(entry >> 24);
}
std::uint32_t ValueOf(std::uint32_t entry) {
    return entry & 0xFFFFFF;
}

// The word index of the first entry with this key; 0 when there is none.
std::size_t FindEntry(const Rom& rom, std::uint8_t key) {
    std::vector<std::size_t> directories{1 + (rom.Word(0) >> 24)};
    for (std::size_t i = 0; i < directories.size(); ++i) {
        const std::size_t start = directories[i];
        const std::size_t end = std::min<std::size_t>(rom.words, start + 1 + (rom.Word(start) >> 16));
        for (std::size_t word = start + 1; word < end; ++word) {
            const std::uint32_t entry = rom.Word(word);
            if (KeyOf(entry) == key)
                return word;
            const std::size_t target = word + ValueOf(entry);
            const bool isKnown =
                std::find(directories.begin(), directories.end(), target) != directories.end();
            if (KeyOf(entry) >> 6 == 3 && !isKnown && directories.size() < MaxDirectories)
                directories.push_back(target);
        }
    }
    return 0;
}

std::string LeafText(const Rom& rom, std::size_t leaf) {
    // Two words tell character set and language, the rest is text.
    const std::size_t end = std::min<std::size_t>(rom.words, leaf + 1 + (rom.Word(leaf) >> 16));
    std::string text;
    for (std::size_t word = leaf + 3; word < end; ++word)
        text.append(reinterpret_cast<const char*>(rom.bytes + 4 * word), 4);
    return text.substr(0, text.find('\0'));
}

} // namespace

std::optional<std::int64_t> FindRomKey(const std::uint8_t* rom, std::size_t size, std::uint8_t key) {
    const Rom words{rom, size / 4};
    const std::size_t entry = FindEntry(words, key);
    if (entry == 0)
        return std::nullopt;
    const std::int64_t value = ValueOf(words.Word(entry));
    return key >> 6 == 1 ? RegisterSpace + 4 * value : value;
}

std::optional<std::string> FindRomText(const std::uint8_t* rom, std::size_t size, std::uint8_t key) {
    const Rom words{rom, size / 4};
    std::size_t entry = FindEntry(words, key);
    if (entry == 0)
        return std::nullopt;
    if (key >> 6 != 2) // the text belongs to the entry before it
        ++entry;
    if (KeyOf(words.Word(entry)) >> 6 != 2)
        return std::nullopt;
    return LeafText(words, entry + ValueOf(words.Word(entry)));
}

} // namespace Engine
} // namespace GenApi_3_2
