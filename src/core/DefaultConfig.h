// The process-wide configuration: the file beside the library, read when the library is loaded, before any
// manager, logger or device asks for a key.
#pragma once

#include "vx3/core/ISystemConfig.h"

#include <memory>
#include <string>

namespace VX3 {

std::shared_ptr<ISystemConfig> DefaultSystemConfig();

namespace ConfigKeys {
constexpr const char* ReadXmlFromFile = "ReadXmlFromFile";
constexpr const char* WriteXmlToFile = "WriteXmlToFile";
constexpr const char* ForceNoFilter = "ForceNoFilter";
constexpr const char* CreateRemoteDevice = "CreateRemoteDevice";
constexpr const char* RemoteStreamXml = "RemoteStreamXml";
constexpr const char* GenTLEnvironmentPath = "GenTLEnvironmentPath";
constexpr const char* SimuBandwidthLimit = "SimuBandwidthLimit"; // bit/s of a published camera's stream
constexpr const char* SimuResendFrames = "SimuResendFrames";     // how many of its frames can be sent again
} // namespace ConfigKeys

// The value of `key` in the default configuration, or the type's zero (a boolean's preset) when it is absent
// or malformed.
std::string ConfigString(const char* key, const char* section = nullptr);
long long ConfigInteger(const char* key, const char* section = nullptr);
double ConfigFloat(const char* key, const char* section = nullptr);
bool ConfigBool(const char* key, const char* section = nullptr, bool preset = false);

} // namespace VX3
