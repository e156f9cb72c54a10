#include "capi/Features.h"

#include "capi/Results.h"
#include "vx3/core/LastFailure.h"

#include <algorithm>

namespace VX3::CApi {

using GenICam::NodeValue;

Target Target::Camera(const SubDevice* handle) {
    return Camera(PinCamera(handle));
}

Target Target::Camera(std::shared_ptr<IDevice> camera) {
    auto configurer = camera ? camera->ShareConfigurer() : nullptr;
    if (camera && !configurer)
        SetLastFailure(BadHandle, camera->Name() + (camera->IsConnected()
                                                        ? " has no features: " + camera->FeaturesFailure()
                                                        : ": its features are there when it is connected"));
    return Target(std::move(camera), std::move(configurer));
}

Target Target::Stream(const SubDevice* handle, unsigned int streamIndex) {
    return Stream(PinCamera(handle), streamIndex);
}

Target Target::Stream(std::shared_ptr<IDevice> camera, unsigned int streamIndex) {
    const auto stream = camera ? camera->ShareStream(streamIndex) : nullptr;
    // A stream's configurer lives as long as the stream.
    IConfigurer* configurer = stream ? stream->GetConfigurer() : nullptr;
    return Target(std::move(camera), std::shared_ptr<IConfigurer>(stream, configurer));
}

GenICam::INode* Target::Node(const char* name) const {
    if (!configurer_ || name == nullptr)
        return nullptr;
    const auto map = configurer_->GetNodeMap();
    return map ? map->GetNode(name) : nullptr;
}

namespace {

// Reads by name and hands the value on when it is of the wanted kind. A value of another kind counts as none:
// its bytes would mean something else.
template <typename Store>
int Get(const Target& target, const char* name, NodeValue::Type wanted, Store&& store) {
    if (target.Configurer() == nullptr || name == nullptr)
        return BadHandle;
    const NodeValue value = target.Configurer()->GetNodeValue(name);
    return value.GetType() == wanted ? store(value) : NoValue;
}

template <typename T>
int StoreTo(T* output, T value) {
    if (output == nullptr)
        return BadHandle;
    *output = value;
    return 0;
}

IXmlData* DescriptionOf(const Target& target) {
    return target.Configurer() != nullptr ? target.Configurer()->GetXmlData() : nullptr;
}

} // namespace

int GetInt(const Target& target, const char* name, int64_t* value) {
    return Get(target, name, NodeValue::Type::Integer,
               [&](const NodeValue& v) { return StoreTo(value, static_cast<int64_t>(v.AsInteger())); });
}

int GetDouble(const Target& target, const char* name, double* value) {
    return Get(target, name, NodeValue::Type::Float,
               [&](const NodeValue& v) { return StoreTo(value, v.AsFloat()); });
}

int GetBool(const Target& target, const char* name, bool* value) {
    return Get(target, name, NodeValue::Type::Boolean,
               [&](const NodeValue& v) { return StoreTo(value, v.AsBoolean()); });
}

int GetChars(const Target& target, const char* name, char* buf, size_t size) {
    return Get(target, name, NodeValue::Type::String,
               [&](const NodeValue& v) { return CopyText(v.AsString(), buf, size, CopyTooSmall); });
}

int GetBytes(const Target& target, const char* name, uint8_t* buf, unsigned int size, unsigned int* length) {
    return Get(target, name, NodeValue::Type::Buffer, [&](const NodeValue& v) {
        if (buf == nullptr || length == nullptr)
            return BadHandle;
        if (size < v.BufferLength())
            return CopyTooSmall;
        std::copy_n(v.Buffer(), v.BufferLength(), buf);
        *length = v.BufferLength();
        return 0;
    });
}

int Set(const Target& target, const char* name, NodeValue value) {
    if (target.Configurer() == nullptr || name == nullptr)
        return BadHandle;
    return target.Configurer()->SetNodeValue(name, value);
}

int SetChars(const Target& target, const char* name, const char* value) {
    return value != nullptr ? Set(target, name, NodeValue(std::string(value))) : BadHandle;
}

int SetBytes(const Target& target, const char* name, const uint8_t* data, unsigned int length) {
    return data != nullptr ? Set(target, name, NodeValue(data, length)) : BadHandle;
}

int XmlName(const Target& target, char* buf, unsigned int size, unsigned int* length) {
    const IXmlData* description = DescriptionOf(target);
    if (description == nullptr || buf == nullptr)
        return BadHandle;
    const std::string name = description->GetXmlName();
    const int result = CopyText(name, buf, size, CopyTooSmall);
    if (result == 0 && length != nullptr)
        *length = static_cast<unsigned int>(name.size());
    return result;
}

int XmlDataSize(const Target& target, unsigned int* size) {
    const IXmlData* description = DescriptionOf(target);
    return description != nullptr ? StoreTo(size, description->GetXmlDataSize()) : BadHandle;
}

int XmlData(const Target& target, uint8_t* buf, unsigned int size) {
    const IXmlData* description = DescriptionOf(target);
    if (description == nullptr || buf == nullptr)
        return BadHandle;
    const unsigned int bytes = description->GetXmlDataSize();
    if (size < bytes)
        return CopyTooSmall;
    if (bytes == 0 || description->GetXmlData() == nullptr)
        return NoValue;
    std::copy_n(description->GetXmlData(), bytes, buf);
    return 0;
}

} // namespace VX3::CApi
