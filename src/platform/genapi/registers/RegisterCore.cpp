#include "platform/genapi/registers/RegisterCore.h"

#include "platform/genapi/base/NumberText.h"
#include "platform/genapi/registers/PortNode.h"

namespace GenApi_3_2 {
namespace Engine {

using GenICam_3_2::OutOfRangeException;

bool RegisterCore::Take(NodeBase& owner, const Element& element) {
    switch (element.id) {
    case ElementId::Length:
        if (const auto length = ParseInteger(element.text); length && *length > 0 && *length <= MaxLength)
            length_ = *length;
        else
            owner.SetBroken(&element, "Length '" + std::string(element.text) + "' is impossible");
        return true;
    case ElementId::pLength:
        lengthNode_ = owner.Require(element, Role::Index);
        return true;
    case ElementId::pPort:
        if (NodeBase* node = owner.Require(element, Role::Port)) {
            if (node->Record().kind == NodeKind::Port)
                port_ = static_cast<PortNode*>(node);
            if (!port_)
                owner.SetBroken(&element,
                                "pPort names '" + std::string(element.text) + "', which is not a port");
        }
        return true;
    case ElementId::Cachable:
        caching_ = element.text == "NoCache"       ? NoCache
                   : element.text == "WriteAround" ? WriteAround
                                                   : WriteThrough;
        return true;
    case ElementId::Endianess:
        isBigEndian_ = element.text == "BigEndian";
        return true;
    default:
        return TakePlace(owner, element);
    }
}

bool RegisterCore::TakePlace(NodeBase& owner, const Element& element) {
    switch (element.id) {
    case ElementId::Address:
        if (const auto address = ParseInteger(element.text)) {
            address_ += static_cast<std::uint64_t>(*address);
            hasAddress_ = true;
        } else {
            owner.SetBroken(&element, "Address '" + std::string(element.text) + "' is no number");
        }
        return true;
    case ElementId::pAddress:
    case ElementId::IntSwissKnife:
        if (NodeBase* node = owner.Require(element, Role::Index))
            addressNodes_.push_back(node);
        return true;
    case ElementId::pIndex:
        TakeIndex(owner, element);
        return true;
    default:
        return false;
    }
}

void RegisterCore::TakeIndex(NodeBase& owner, const Element& element) {
    NodeBase* index = owner.Require(element, Role::Index);
    if (!index)
        return;
    Indexed indexed{index, nullptr, 0, false};
    if (element.qualifier == Qualifier::Offset) {
        const auto offset = ParseInteger(element.qualifierText);
        if (!offset)
            return owner.SetBroken(&element,
                                   "Offset '" + std::string(element.qualifierText) + "' is no number");
        indexed.offset = *offset;
        indexed.hasOffset = true;
    } else if (element.qualifier == Qualifier::pOffset) {
        Element offset = element;
        offset.text = element.qualifierText;
        offset.target = element.qualifierTarget;
        indexed.offsetNode = owner.Require(offset, Role::Index);
    }
    indexed_.push_back(indexed);
}

void RegisterCore::Finish(NodeBase& owner) {
    if (!port_)
        owner.SetBroken(nullptr, "has no port");
    else if (!hasAddress_ && addressNodes_.empty() && indexed_.empty())
        owner.SetBroken(nullptr, "has no address");
    else if (length_ == 0 && !lengthNode_)
        owner.SetBroken(nullptr, "has no length");
}

std::int64_t RegisterCore::PlainLength() const {
    return lengthNode_ ? lengthNode_->GetInteger() : length_;
}

std::uint64_t RegisterCore::Stride(const Indexed& indexed) const {
    if (indexed.offsetNode)
        return static_cast<std::uint64_t>(indexed.offsetNode->GetInteger());
    return static_cast<std::uint64_t>(indexed.hasOffset ? indexed.offset : PlainLength());
}

std::uint64_t RegisterCore::Address() const {
    std::uint64_t address = address_;
    for (NodeBase* node : addressNodes_)
        address += static_cast<std::uint64_t>(node->GetInteger());
    for (const Indexed& indexed : indexed_)
        address += static_cast<std::uint64_t>(indexed.index->GetInteger()) * Stride(indexed);
    return address;
}

std::size_t RegisterCore::Length(const NodeBase& owner) const {
    const std::int64_t length = PlainLength();
    if (length < 0 || length > MaxLength)
        Fail<OutOfRangeException>(owner, "length " + std::to_string(length) + " is impossible");
    return static_cast<std::size_t>(length);
}

bool RegisterCore::IsBigEndian() const {
    return isBigEndian_ != (port_ && port_->SwapsBytes());
}

EAccessMode RegisterCore::Access() const {
    return port_ ? port_->AccessMode() : NA;
}

void RegisterCore::Read(const NodeBase& owner, std::uint8_t* to, std::size_t length) const {
    if (length != 0) // ports may be given no empty rooms
        port_->Read(owner, Address(), to, length);
}

void RegisterCore::Write(const NodeBase& owner, const std::uint8_t* from, std::size_t length) const {
    if (length != 0)
        port_->Write(owner, Address(), from, length);
}

std::uint64_t RegisterCore::PlaceHash() const {
    std::uint64_t hash = address_;
    const auto mix = [&hash](const void* pointer) {
        hash = (hash ^ reinterpret_cast<std::uintptr_t>(pointer)) * 0x9E3779B97F4A7C15u;
        hash ^= hash >> 29;
    };
    mix(port_);
    for (const NodeBase* node : addressNodes_)
        mix(node);
    for (const Indexed& indexed : indexed_) {
        mix(indexed.index);
        mix(indexed.offsetNode);
        hash += static_cast<std::uint64_t>(indexed.offset);
    }
    return hash;
}

} // namespace Engine
} // namespace GenApi_3_2
