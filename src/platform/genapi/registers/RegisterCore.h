// Where a register lies and how it is reached: address arithmetic, length, byte order, caching mode, port.
// Part of every node that is a register.
#pragma once

#include "platform/genapi/nodes/NodeBase.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace GenApi_3_2 {
namespace Engine {

class PortNode;

class RegisterCore {
public:
    // No register is longer; a description or a device that claims more is refused.
    static constexpr std::int64_t MaxLength = 16 * 1024 * 1024;

    bool Take(NodeBase& owner, const Element& element);
    // Switches the owner off when address, length or port are missing.
    void Finish(NodeBase& owner);

    // The sum of all parts, modulo 2^64.
    std::uint64_t Address() const;
    std::size_t Length(const NodeBase& owner) const;
    // 0 when another node says the length.
    std::int64_t FixedLength() const { return lengthNode_ ? 0 : length_; }
    bool IsBigEndian() const;
    ECachingMode Caching() const { return caching_; }
    EAccessMode Access() const;

    // One access of the port each.
    void Read(const NodeBase& owner, std::uint8_t* to, std::size_t length) const;
    void Write(const NodeBase& owner, const std::uint8_t* from, std::size_t length) const;

    // Equal for registers that the description puts at the same place (and, rarely, for others).
    std::uint64_t PlaceHash() const;

private:
    struct Indexed {
        NodeBase* index;
        NodeBase* offsetNode; // null: `offset` counts, or the length where none was given
        std::int64_t offset;
        bool hasOffset;
    };
    bool TakePlace(NodeBase& owner, const Element& element);
    void TakeIndex(NodeBase& owner, const Element& element);
    std::uint64_t Stride(const Indexed& indexed) const;
    std::int64_t PlainLength() const;

    std::uint64_t address_ = 0;
    bool hasAddress_ = false;
    bool isBigEndian_ = false;
    ECachingMode caching_ = WriteThrough;
    std::int64_t length_ = 0;
    NodeBase* lengthNode_ = nullptr;
    PortNode* port_ = nullptr;
    std::vector<NodeBase*> addressNodes_;
    std::vector<Indexed> indexed_;
};

} // namespace Engine
} // namespace GenApi_3_2
