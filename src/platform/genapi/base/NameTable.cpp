#include "platform/genapi/base/NameTable.h"

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

template <typename Word>
Word Load(const char* at) {
    Word word;
    std::memcpy(&word, at, sizeof(word));
    return word;
}

// The last one to eight characters; longer names have been read up to there.
std::uint64_t LoadTail(std::string_view name) {
    const char* const end = name.data() + name.size();
    if (name.size() >= sizeof(std::uint64_t))
        return Load<std::uint64_t>(end - sizeof(std::uint64_t));
    if (name.size() >= sizeof(std::uint32_t))
        return (std::uint64_t{Load<std::uint32_t>(name.data())} << 32) |
               Load<std::uint32_t>(end - sizeof(std::uint32_t));
    std::uint64_t tail = 0;
    for (char c : name)
        tail = (tail << 8) | static_cast<unsigned char>(c);
    return tail;
}

// Names are short: eight characters at a time, well mixed.
std::uint32_t HashOf(std::string_view name) {
    constexpr std::uint64_t Factor = 0x9E3779B97F4A7C15u;
    std::uint64_t hash = Seed() ^ name.size();
    for (std::size_t i = 0; i + sizeof(hash) < name.size(); i += sizeof(hash)) {
        hash = (hash ^ Load<std::uint64_t>(name.data() + i)) * Factor;
        hash ^= hash >> 32;
    }
    hash = (hash ^ LoadTail(name)) * Factor;
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
