#include "genicam/RegisterA.h"

#include <cstring>

namespace VX3::GenICam {

namespace {

template <typename T>
std::shared_ptr<IVariant> RawVariant(RegisterA& source) {
    unsigned char bytes[sizeof(T)] = {};
    source.Get(bytes, sizeof(T), false, false);
    T value = 0;
    std::memcpy(&value, bytes, sizeof(T));
    return std::make_shared<Variant<T>>(value);
}

} // namespace

std::shared_ptr<IVariant> RegisterA::GetVariant() {
    switch (GetLength()) {
    case 2:
        return RawVariant<unsigned short>(*this);
    case 4:
        return RawVariant<unsigned int>(*this);
    case 8:
        return RawVariant<unsigned long>(*this);
    default:
        return std::make_shared<Variant<std::string>>(ToString(false, false));
    }
}

void RegisterA::Set(const unsigned char* data, long length, bool verify) {
    if (value_)
        value_->Set(data, length, verify);
}

void RegisterA::Get(unsigned char* data, long length, bool verify, bool ignoreCache) {
    if (value_)
        value_->Get(data, length, verify, ignoreCache);
}

long RegisterA::GetLength() {
    return value_ ? value_->GetLength() : 0;
}

long RegisterA::GetAddress() {
    return value_ ? value_->GetAddress() : 0;
}

} // namespace VX3::GenICam
