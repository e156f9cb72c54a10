#include "genicam/AbsConfigurer.h"

namespace VX3 {

using GenICam::NodeValue;

IObject* AbsConfigurer::ConfiguredObject() const {
    IObject* object = owner_;
    while (auto* configurer = dynamic_cast<AbsConfigurer*>(object))
        object = configurer->owner_;
    return object;
}

std::string AbsConfigurer::Name() const {
    const IObject* object = ConfiguredObject();
    return object ? object->Name() : std::string();
}

std::uint64_t AbsConfigurer::ObjID() const {
    const IObject* object = ConfiguredObject();
    return object ? object->ObjID() : 0;
}

unsigned int AbsConfigurer::ObjType() const {
    const IObject* object = ConfiguredObject();
    return object ? object->ObjType() : 0;
}

std::list<std::pair<std::string, std::string>> AbsConfigurer::GetInfo() const {
    const IObject* object = ConfiguredObject();
    return object ? object->GetInfo() : std::list<std::pair<std::string, std::string>>();
}

unsigned int AbsConfigurer::TypeId() const {
    const IObject* object = ConfiguredObject();
    return object ? object->TypeId() : 0;
}

StatusCode AbsConfigurer::SetNodeValue(const std::string& name, unsigned int value) {
    NodeValue nodeValue(static_cast<long>(value));
    return SetNodeValue(name, nodeValue);
}

StatusCode AbsConfigurer::SetNodeValue(const std::string& name, unsigned long long value) {
    NodeValue nodeValue(static_cast<long>(value));
    return SetNodeValue(name, nodeValue);
}

StatusCode AbsConfigurer::SetNodeValue(const std::string& name, double value) {
    NodeValue nodeValue(value);
    return SetNodeValue(name, nodeValue);
}

StatusCode AbsConfigurer::SetNodeValue(const std::string& name, const std::string& value) {
    NodeValue nodeValue(value);
    return SetNodeValue(name, nodeValue);
}

StatusCode AbsConfigurer::SetNodeValue(const std::string& name, bool value) {
    NodeValue nodeValue(value);
    return SetNodeValue(name, nodeValue);
}

StatusCode AbsConfigurer::SetNodeValue(const std::string& name, const unsigned char* data,
                                       unsigned int size) {
    NodeValue nodeValue(data, size);
    return SetNodeValue(name, nodeValue);
}

} // namespace VX3
