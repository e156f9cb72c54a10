#include "platform/genapi/NameTable.h"

#include <cstring>
#include <random>

namespace GenApi_3_2 {
namespace Engine {

namespace {

constexpr std::size_t SmallestTable = 16;

// Different in every process, so that no description can be made of names that all collide.
std::uint64_t Seed() {
    static const std::uint64_t seed = (std::uint64_t{std::random_device{}()} << 32) | std::random_device{}();
    return seed;
}

// Names are short: eight characters at a time, well mixed at the end.
std::uint32_t HashOf(std::string_view name) {
    constexpr std::uint64_t factor = 0x9E3779B97F4A7C15u;
    std::uint64_t hash = Seed() ^ name.size();
    std::uint64_t word;
    for (; name.size() >= sizeof(word); name.remove_prefix(sizeof(word))) {
        std::memcpy(&word, name.data(), sizeof(word));
        hash = (hash ^ word) * factor;
        hash ^= hash >> 32;
    }
    word = 0;
    for (char c : name)
        word = (word << 8) | static_cast<unsigned char>(c);
    hash = (hash ^ word) * factor;
    return static_cast<std::uint32_t>(hash >> 32);
}

} // namespace

void NameTable::Reserve(std::size_t names) {
    std::size_t slots = SmallestTable;
    while (slots < names * 2)
        slots *= 2;
    if (slots > slots_.size() && names > 0)
        Grow(slots);
}

bool NameTable::Insert(std::string_view name, std::int32_t index) {
    if ((used_ + 1) * 2 > slots_.size())
        Grow(slots_.empty() ? SmallestTable : slots_.size() * 2);
    const std::uint32_t hash = HashOf(name);
    Slot& slot = slots_[SlotOf(name, hash)];
    if (slot.index != Missing)
        return false;
    slot = {name, hash, index};
    ++used_;
    return true;
}

std::int32_t NameTable::Find(std::string_view name) const {
    return slots_.empty() ? Missing : slots_[SlotOf(name, HashOf(name))].index;
}

void NameTable::Grow(std::size_t slots) {
    std::vector<Slot> old(slots);
    old.swap(slots_);
    for (const Slot& slot : old)
        if (slot.index != Missing)
            slots_[SlotOf(slot.name, slot.hash)] = slot;
}

// The slot that holds the name, or the empty one where it belongs. At least half of the slots are empty.
std::size_t NameTable::SlotOf(std::string_view name, std::uint32_t hash) const {
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = hash & mask;
    while (slots_[at].index != Missing && (slots_[at].hash != hash || slots_[at].name != name))
        at = (at + 1) & mask;
    return at;
}

} // namespace Engine
} // namespace GenApi_3_2
