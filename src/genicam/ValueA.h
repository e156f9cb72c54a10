// What every typed wrapper shares: the value interface over GenApi's, obtained once by a dynamic cast.
#pragma once

#include "genicam/NodeA.h"

#include <functional>
#include <string>

namespace VX3::GenICam {

// `Interface` is the library's typed interface, `Wrapped` GenApi's. Where the node does not implement
// `Wrapped`, value_ is null and every operation does nothing and gives a neutral value.
template <class Interface, class Wrapped>
class ValueA : public Interface, public NodeA {
public:
    ValueA(const INodeMap* map, GenApi_3_2::INode* node, const std::function<void(INode*)>& callback)
        : NodeA(map, node, callback), value_(dynamic_cast<Wrapped*>(node)) {}

    INode* GetNode() override { return this; }
    std::string ToString(bool verify, bool ignoreCache) override {
        return value_ ? std::string(value_->ToString(verify, ignoreCache).c_str()) : std::string();
    }
    void FromString(const std::string& text, bool verify) override {
        if (value_)
            value_->FromString(text.c_str(), verify);
    }
    bool IsValueCacheValid() const override { return value_ && value_->IsValueCacheValid(); }

protected:
    Wrapped* value_;
};

} // namespace VX3::GenICam
