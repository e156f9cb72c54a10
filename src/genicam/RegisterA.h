// Wrapper of a register node: raw bytes. Owned by the node map's wrapper.
#pragma once

#include "genicam/ValueA.h"

namespace VX3::GenICam {

class RegisterA : public ValueA<IRegister, GenApi_3_2::IRegister> {
public:
    using ValueA::ValueA;

    // An unsigned integer of the register's size, its bytes in host order; for lengths other than 2, 4 and 8
    // the register's text.
    std::shared_ptr<IVariant> GetVariant() override;
    void Set(const unsigned char* data, long length, bool verify) override;
    void Get(unsigned char* data, long length, bool verify, bool ignoreCache) override;
    long GetLength() override;
    long GetAddress() override;
};

} // namespace VX3::GenICam
