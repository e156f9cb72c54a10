#include "platform/genapi/registers/IntRegNode.h"

#include "platform/genapi/base/NumberText.h"

namespace GenApi_3_2 {
namespace Engine {

using GenICam_3_2::AccessException;
using GenICam_3_2::OutOfRangeException;

bool IntRegNode::Take(const Element& element) {
    switch (element.id) {
    case ElementId::LSB:
    case ElementId::MSB:
    case ElementId::Bit: {
        const auto bit = ParseInteger(element.text);
        if (!bit || *bit < 0 || *bit > 63) {
            SetBroken(&element,
                      std::string(ToText(element.id)) + " '" + std::string(element.text) + "' is no bit");
            return true;
        }
        if (element.id != ElementId::MSB) {
            lsb_ = static_cast<std::uint64_t>(*bit);
            hasLsb_ = true;
        }
        if (element.id != ElementId::LSB) {
            msb_ = static_cast<std::uint64_t>(*bit);
            hasMsb_ = true;
        }
        return true;
    }
    case ElementId::Sign:
        isSigned_ = element.text == "Signed";
        return true;
    default:
        return RegisterFace::Take(element);
    }
}

void IntRegNode::Finish() {
    RegisterFace::Finish();
    if (IsBroken())
        return;
    if (hasLsb_ != hasMsb_) // one end alone means a single bit
        (hasLsb_ ? msb_ : lsb_) = hasLsb_ ? lsb_ : msb_;
    const std::int64_t length = core_.FixedLength();
    if (length == 0)
        return; // another node says the length
    if (length > 8)
        return SetBroken(nullptr, "integers have at most 8 bytes, not " + std::to_string(length));
    const auto bytes = static_cast<std::size_t>(length);
    BitField field;
    if ((hasLsb_ || hasMsb_) && !MakeBitField(bytes, false, lsb_, msb_, isSigned_, field))
        SetBroken(nullptr, "its bits lie outside its " + std::to_string(length) + " bytes");
}

std::size_t IntRegNode::CheckedLength() const {
    const std::size_t length = core_.Length(*this);
    if (length == 0 || length > 8)
        Fail<OutOfRangeException>(*this, "integers have 1 to 8 bytes, not " + std::to_string(length));
    return length;
}

BitField IntRegNode::FieldFor(std::size_t length) const {
    if (isFieldFixed_)
        return field_;
    BitField field{0, 8 * static_cast<unsigned>(length), isSigned_};
    if ((hasLsb_ || hasMsb_) && !MakeBitField(length, core_.IsBigEndian(), lsb_, msb_, isSigned_, field))
        Fail<OutOfRangeException>(*this, "its bits lie outside its " + std::to_string(length) + " bytes");
    field_ = field;
    isFieldFixed_ = core_.FixedLength() != 0;
    return field;
}

std::int64_t IntRegNode::ReadNumber(bool ignoreCache) {
    const std::size_t length = CheckedLength();
    std::uint8_t bytes[8] = {};
    ReadDevice(bytes, length);
    const std::int64_t value = FieldFor(length).Extract(LoadBytes(bytes, length, core_.IsBigEndian()));
    if (ignoreCache && HasValidCache() && value != GetInteger(false))
        Context().GetCache().Refreshed(*this);
    return value;
}

// What the other bits of the register are to be written with: what the device has now, never a cached value,
// since other nodes write other bits of the same register.
std::uint64_t IntRegNode::CurrentBits(std::size_t length) {
    if (!IsReadable(AccessMode()))
        return writtenBits_;
    std::uint8_t bytes[8] = {};
    ReadDevice(bytes, length);
    return LoadBytes(bytes, length, core_.IsBigEndian());
}

void IntRegNode::WriteNumber(std::int64_t value, bool) {
    const std::size_t length = CheckedLength();
    const BitField field = FieldFor(length);
    if (!field.Holds(value))
        Fail<OutOfRangeException>(*this, "value " + std::to_string(value) + " does not fit " +
                                             std::to_string(field.width) + " bits");
    const bool isWhole = field.width == 8 * length;
    const std::uint64_t bits = field.Insert(isWhole ? 0 : CurrentBits(length), value);
    std::uint8_t bytes[8] = {};
    StoreBytes(bytes, length, core_.IsBigEndian(), bits);
    WriteDevice(bytes, length);
    writtenBits_ = bits;
    if (KeepsWritten())
        value_.Keep(value);
}

IntegerRange IntRegNode::ReadRange() {
    const BitField field = FieldFor(CheckedLength());
    IntegerRange range;
    range.min = field.Min();
    range.max = field.Max();
    return range;
}

bool IntRegNode::SharesBitsWith(const NodeBase& other) const {
    const auto* integer = dynamic_cast<const IntRegNode*>(&other);
    if (!integer || integer->core_.FixedLength() != core_.FixedLength() ||
        integer->core_.IsBigEndian() != core_.IsBigEndian())
        return true;
    const auto length = static_cast<std::size_t>(core_.FixedLength());
    return length == 0 || (FieldFor(length).Mask() & integer->FieldFor(length).Mask()) != 0;
}

} // namespace Engine
} // namespace GenApi_3_2
