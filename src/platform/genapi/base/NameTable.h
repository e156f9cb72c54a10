// Names to small indexes, built once and read often: open addressing over views that somebody else keeps
// alive.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace GenApi_3_2 {
namespace Engine {

class NameTable {
public:
    static constexpr std::int32_t Missing = -1;

    // Room for this many names without growing.
    void Reserve(std::size_t names);
    // False, and nothing is changed, when the name is there already.
    bool Insert(std::string_view name, std::int32_t index);
    // The index given with the name, Missing when it was never inserted.
    std::int32_t Find(std::string_view name) const;

private:
    struct Slot {
        std::string_view name;
        std::uint32_t hash = 0;
        std::int32_t index = Missing;
    };
    void Grow(std::size_t slots);
    std::size_t SlotOf(std::string_view name, std::uint32_t hash) const;

    std::vector<Slot> slots_;
    std::size_t used_ = 0;
};

} // namespace Engine
} // namespace GenApi_3_2
