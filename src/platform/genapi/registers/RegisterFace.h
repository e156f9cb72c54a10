// The register interface over a RegisterCore, mixed into the node types that lie in registers. `Face` is the
// class for the value that the register holds.
#pragma once

#include "platform/genapi/base/AccessModes.h"
#include "platform/genapi/registers/RegisterCore.h"

#include <cstdint>

namespace GenApi_3_2 {
namespace Engine {

// What registers can tell each other of their place, whatever they hold.
class RegisterPlace {
public:
    const RegisterCore& Core() const { return core_; }

protected:
    ~RegisterPlace() = default;
    RegisterCore core_;
};

template <class Face>
class RegisterFace : public Face, public RegisterPlace, public IRegister {
public:
    using Face::Face;

    void Set(const std::uint8_t* pBuffer, std::int64_t Length, bool Verify = true) override {
        this->Write(Verify, [&] {
            this->Enter();
            CheckBuffer(pBuffer, Length);
            SetBytes(pBuffer, static_cast<std::size_t>(Length));
        });
    }

    void Get(std::uint8_t* pBuffer, std::int64_t Length, bool Verify = false,
             bool IgnoreCache = false) override {
        this->Locked([&] {
            this->Enter();
            if (Verify)
                this->RequireReadable();
            CheckBuffer(pBuffer, Length);
            GetBytes(pBuffer, static_cast<std::size_t>(Length), IgnoreCache);
        });
    }

    std::int64_t GetLength() override {
        return this->Locked([&] {
            this->Enter();
            return static_cast<std::int64_t>(this->core_.Length(*this));
        });
    }

    std::int64_t GetAddress() override {
        return this->Locked([&] {
            this->Enter();
            return static_cast<std::int64_t>(this->core_.Address());
        });
    }

    ECachingMode OwnCaching() const override { return core_.Caching(); }

protected:
    bool Take(const Element& element) override {
        return this->core_.Take(*this, element) || Face::Take(element);
    }
    void Finish() override { this->core_.Finish(*this); }
    EAccessMode InnerAccess() const override { return core_.Access(); }
    EAccessMode DefaultAccess() const override { return RO; }

    virtual void GetBytes(std::uint8_t* to, std::size_t length, bool) { ReadDevice(to, length); }
    virtual void SetBytes(const std::uint8_t* from, std::size_t length) { WriteDevice(from, length); }

    void ReadDevice(std::uint8_t* to, std::size_t length) { core_.Read(*this, to, length); }

    // Whether it succeeds or not, what was known of the register and its dependents is void afterwards.
    void WriteDevice(const std::uint8_t* from, std::size_t length) {
        try {
            core_.Write(*this, from, length);
        } catch (...) {
            this->DropValue();
            this->Changed();
            throw;
        }
        this->DropValue();
        this->Changed();
    }

    bool KeepsWritten() const { return core_.Caching() == WriteThrough; }

private:
    void CheckBuffer(const std::uint8_t* buffer, std::int64_t length) {
        if (length < 0 || static_cast<std::uint64_t>(length) > this->core_.Length(*this))
            Fail<GenICam_3_2::OutOfRangeException>(*this, "length " + std::to_string(length) +
                                                              " is beyond the register's " +
                                                              std::to_string(core_.Length(*this)));
        if (!buffer && length > 0)
            Fail<GenICam_3_2::InvalidArgumentException>(*this, "no buffer");
    }
};

} // namespace Engine
} // namespace GenApi_3_2
