// Feature access of the C interface, written once for cameras and streams: a Target says whose features, the
// functions here say what is done with them.
#pragma once

#include "capi/Handles.h"
#include "vx3/genicam/IConfigurer.h"

namespace VX3::CApi {

// Whose features: a camera's or one of its streams'. Keeps them alive while it is used.
class Target {
public:
    static Target Camera(const SubDevice* handle);
    static Target Camera(std::shared_ptr<IDevice> camera);
    static Target Stream(const SubDevice* handle, unsigned int streamIndex);
    static Target Stream(std::shared_ptr<IDevice> camera, unsigned int streamIndex);

    // Null when the handle is bad, the camera is gone or has no features.
    IConfigurer* Configurer() const { return configurer_.get(); }
    // The feature of that name; null when there is none.
    GenICam::INode* Node(const char* name) const;

private:
    Target(std::shared_ptr<IDevice> camera, std::shared_ptr<IConfigurer> configurer)
        : camera_(std::move(camera)), configurer_(std::move(configurer)) {}

    std::shared_ptr<IDevice> camera_;
    std::shared_ptr<IConfigurer> configurer_;
};

int GetInt(const Target& target, const char* name, int64_t* value);
int GetDouble(const Target& target, const char* name, double* value);
int GetBool(const Target& target, const char* name, bool* value);
int GetChars(const Target& target, const char* name, char* buf, size_t size);
int GetBytes(const Target& target, const char* name, uint8_t* buf, unsigned int size, unsigned int* length);

// The one setter; typed setters wrap their argument in a NodeValue.
int Set(const Target& target, const char* name, GenICam::NodeValue value);
int SetChars(const Target& target, const char* name, const char* value);
int SetBytes(const Target& target, const char* name, const uint8_t* data, unsigned int length);

int XmlName(const Target& target, char* buf, unsigned int size, unsigned int* length);
int XmlDataSize(const Target& target, unsigned int* size);
int XmlData(const Target& target, uint8_t* buf, unsigned int size);

} // namespace VX3::CApi
