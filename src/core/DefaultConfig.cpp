#include "core/DefaultConfig.h"

#include "core/SystemConfigINI.h"

namespace VX3 {

namespace {

const std::shared_ptr<ISystemConfig> g_defaultSystemConfig =
    std::make_shared<SystemConfigINI>("Vx3Default.ini", "VxSDK3");

// The result keeps its preset where the key is missing or its text does not convert.
template <typename T>
T Configured(const char* key, const char* section, T value = {}) {
    if (g_defaultSystemConfig) // not yet, not any more: while the library is loaded and unloaded
        g_defaultSystemConfig->GetValue(key, value, section);
    return value;
}

} // namespace

std::shared_ptr<ISystemConfig> DefaultSystemConfig() {
    return g_defaultSystemConfig;
}

std::string ConfigString(const char* key, const char* section) {
    return Configured<std::string>(key, section);
}

long long ConfigInteger(const char* key, const char* section) {
    return Configured<long long>(key, section);
}

double ConfigFloat(const char* key, const char* section) {
    return Configured<double>(key, section);
}

bool ConfigBool(const char* key, const char* section, bool preset) {
    return Configured<bool>(key, section, preset);
}

} // namespace VX3
