// FloatReg: an IEEE 754 number in a register of 4 or 8 bytes.
#pragma once

#include "platform/genapi/nodes/FloatFace.h"
#include "platform/genapi/registers/RegisterFace.h"

namespace GenApi_3_2 {
namespace Engine {

class FloatRegNode final : public RegisterFace<FloatFace> {
public:
    using RegisterFace::RegisterFace;
    using FloatFace::operator=;

protected:
    double ReadNumber(bool ignoreCache) override;
    void WriteNumber(double value, bool verify) override;
    FloatRange ReadRange() override;

private:
    std::size_t CheckedLength() const;
};

} // namespace Engine
} // namespace GenApi_3_2
