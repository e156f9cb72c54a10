// IntReg and MaskedIntReg: an integer in a register of up to 8 bytes, or in some of its bits.
#pragma once

#include "platform/genapi/nodes/IntegerFace.h"
#include "platform/genapi/registers/RegisterBits.h"
#include "platform/genapi/registers/RegisterFace.h"

namespace GenApi_3_2 {
namespace Engine {

class IntRegNode final : public RegisterFace<IntegerFace> {
public:
    using RegisterFace::RegisterFace;
    using IntegerFace::operator=;
    bool SharesBitsWith(const NodeBase& other) const override;

protected:
    bool Take(const Element& element) override;
    void Finish() override;
    std::int64_t ReadNumber(bool ignoreCache) override;
    void WriteNumber(std::int64_t value, bool verify) override;
    IntegerRange ReadRange() override;

private:
    // The field in a register of `length` bytes; throws when the bits lie outside.
    BitField FieldFor(std::size_t length) const;
    std::size_t CheckedLength() const;
    std::uint64_t CurrentBits(std::size_t length);

    std::uint64_t lsb_ = 0;
    std::uint64_t msb_ = 0;
    bool hasLsb_ = false;
    bool hasMsb_ = false;
    bool isSigned_ = false;
    // Made at the first use: the port's byte order is known only when all elements were read.
    mutable bool isFieldFixed_ = false;
    mutable BitField field_;
    std::uint64_t writtenBits_ = 0; // last written to a register that cannot be read
};

} // namespace Engine
} // namespace GenApi_3_2
