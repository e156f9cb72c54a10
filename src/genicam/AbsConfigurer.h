// Typed setters over the value-based one, and the identity of the configured object.
#pragma once

#include "vx3/genicam/IConfigurer.h"

#include <list>
#include <string>
#include <utility>

namespace VX3 {

// Name, id, type and info are those of the owner; where the owner is itself a configurer, of that one's
// owner, and so on.
class AbsConfigurer : public IConfigurer {
public:
    // `owner` (the device or stream that hands this configurer out) must outlive it; null gives neutral
    // answers.
    explicit AbsConfigurer(IObject* owner) : owner_(owner) {}

    std::string Name() const override;
    std::uint64_t ObjID() const override;
    bool IsConfigurable() const override { return false; }
    IConfigurer* GetConfigurer() override { return nullptr; }
    unsigned int ObjType() const override;
    std::list<std::pair<std::string, std::string>> GetInfo() const override;
    unsigned int TypeId() const override;

    using IConfigurer::SetNodeValue;
    StatusCode SetNodeValue(const std::string& name, unsigned int value) override;
    StatusCode SetNodeValue(const std::string& name, unsigned long long value) override;
    StatusCode SetNodeValue(const std::string& name, double value) override;
    StatusCode SetNodeValue(const std::string& name, const std::string& value) override;
    StatusCode SetNodeValue(const std::string& name, bool value) override;
    StatusCode SetNodeValue(const std::string& name, const unsigned char* data, unsigned int size) override;

private:
    IObject* ConfiguredObject() const;

    IObject* owner_;
};

} // namespace VX3
