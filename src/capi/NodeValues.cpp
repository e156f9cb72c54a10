// Get/SetNodeValue_*, the description files, and their Stream_ twins.
#include "capi/Features.h"
#include "capi/Results.h"

using namespace VX3::CApi;
using VX3::GenICam::CommandValue;
using VX3::GenICam::NodeValue;

// ---- Camera ----

int GetNodeValue_Int(SubDevice* camera, const char* name, int64_t* value) {
    return Guarded([&] { return GetInt(Target::Camera(camera), name, value); });
}
int GetNodeValue_Double(SubDevice* camera, const char* name, double* value) {
    return Guarded([&] { return GetDouble(Target::Camera(camera), name, value); });
}
int GetNodeValue_Bool(SubDevice* camera, const char* name, bool* value) {
    return Guarded([&] { return GetBool(Target::Camera(camera), name, value); });
}
int GetNodeValue_Chars(SubDevice* camera, const char* name, char* buf, size_t size) {
    return Guarded([&] { return GetChars(Target::Camera(camera), name, buf, size); });
}
int GetNodeValue_Buffer(SubDevice* camera, const char* name, uint8_t* buf, unsigned int size,
                        unsigned int* length) {
    return Guarded([&] { return GetBytes(Target::Camera(camera), name, buf, size, length); });
}
int SetNodeValue_Int(SubDevice* camera, const char* name, int64_t value) {
    return Guarded([&] { return Set(Target::Camera(camera), name, NodeValue(static_cast<long>(value))); });
}
int SetNodeValue_Double(SubDevice* camera, const char* name, double value) {
    return Guarded([&] { return Set(Target::Camera(camera), name, NodeValue(value)); });
}
int SetNodeValue_Bool(SubDevice* camera, const char* name, bool value) {
    return Guarded([&] { return Set(Target::Camera(camera), name, NodeValue(value)); });
}
int SetNodeValue_Chars(SubDevice* camera, const char* name, const char* value) {
    return Guarded([&] { return SetChars(Target::Camera(camera), name, value); });
}
int SetNodeValue_Command(SubDevice* camera, const char* name) {
    return Guarded([&] { return Set(Target::Camera(camera), name, NodeValue(CommandValue::Execute)); });
}
int SetNodeValue_Buffer(SubDevice* camera, const char* name, const uint8_t* data, unsigned int length) {
    return Guarded([&] { return SetBytes(Target::Camera(camera), name, data, length); });
}
int SubDevice_GetXmlName(SubDevice* camera, char* buf, unsigned int size, unsigned int* length) {
    return Guarded([&] { return XmlName(Target::Camera(camera), buf, size, length); });
}
int SubDevice_GetXmlDataSize(SubDevice* camera, unsigned int* size) {
    return Guarded([&] { return XmlDataSize(Target::Camera(camera), size); });
}
int SubDevice_GetXmlData(SubDevice* camera, uint8_t* buf, unsigned int size) {
    return Guarded([&] { return XmlData(Target::Camera(camera), buf, size); });
}

// ---- Stream ----

int Stream_GetNodeValue_Int(SubDevice* camera, unsigned int streamIndex, const char* name, int64_t* value) {
    return Guarded([&] { return GetInt(Target::Stream(camera, streamIndex), name, value); });
}
int Stream_GetNodeValue_Double(SubDevice* camera, unsigned int streamIndex, const char* name, double* value) {
    return Guarded([&] { return GetDouble(Target::Stream(camera, streamIndex), name, value); });
}
int Stream_GetNodeValue_Bool(SubDevice* camera, unsigned int streamIndex, const char* name, bool* value) {
    return Guarded([&] { return GetBool(Target::Stream(camera, streamIndex), name, value); });
}
int Stream_GetNodeValue_Chars(SubDevice* camera, unsigned int streamIndex, const char* name, char* buf,
                              size_t size) {
    return Guarded([&] { return GetChars(Target::Stream(camera, streamIndex), name, buf, size); });
}
int Stream_GetNodeValue_Buffer(SubDevice* camera, unsigned int streamIndex, const char* name, uint8_t* buf,
                               unsigned int size, unsigned int* length) {
    return Guarded([&] { return GetBytes(Target::Stream(camera, streamIndex), name, buf, size, length); });
}
int Stream_SetNodeValue_Int(SubDevice* camera, unsigned int streamIndex, const char* name, int64_t value) {
    return Guarded(
        [&] { return Set(Target::Stream(camera, streamIndex), name, NodeValue(static_cast<long>(value))); });
}
int Stream_SetNodeValue_Double(SubDevice* camera, unsigned int streamIndex, const char* name, double value) {
    return Guarded([&] { return Set(Target::Stream(camera, streamIndex), name, NodeValue(value)); });
}
int Stream_SetNodeValue_Bool(SubDevice* camera, unsigned int streamIndex, const char* name, bool value) {
    return Guarded([&] { return Set(Target::Stream(camera, streamIndex), name, NodeValue(value)); });
}
int Stream_SetNodeValue_Chars(SubDevice* camera, unsigned int streamIndex, const char* name,
                              const char* value) {
    return Guarded([&] { return SetChars(Target::Stream(camera, streamIndex), name, value); });
}
int Stream_SetNodeValue_Command(SubDevice* camera, unsigned int streamIndex, const char* name) {
    return Guarded(
        [&] { return Set(Target::Stream(camera, streamIndex), name, NodeValue(CommandValue::Execute)); });
}
int Stream_SetNodeValue_Buffer(SubDevice* camera, unsigned int streamIndex, const char* name,
                               const uint8_t* data, unsigned int length) {
    return Guarded([&] { return SetBytes(Target::Stream(camera, streamIndex), name, data, length); });
}
int Stream_GetXmlName(SubDevice* camera, unsigned int streamIndex, char* buf, unsigned int size,
                      unsigned int* length) {
    return Guarded([&] { return XmlName(Target::Stream(camera, streamIndex), buf, size, length); });
}
int Stream_GetXmlDataSize(SubDevice* camera, unsigned int streamIndex, unsigned int* size) {
    return Guarded([&] { return XmlDataSize(Target::Stream(camera, streamIndex), size); });
}
int Stream_GetXmlData(SubDevice* camera, unsigned int streamIndex, uint8_t* buf, unsigned int size) {
    return Guarded([&] { return XmlData(Target::Stream(camera, streamIndex), buf, size); });
}
