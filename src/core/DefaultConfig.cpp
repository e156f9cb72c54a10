#include "core/DefaultConfig.h"

namespace VX3 {

namespace {

// The result keeps its preset where the key is missing or its text does not convert.
template <typename T>
T Configured(const char* key, const char* section) {
    T value{};
    if (const auto config = DefaultSystemConfig())
        config->GetValue(key, value, section);
    return value;
}

} // namespace

std::string ConfigString(const char* key, const char* section) {
    return Configured<std::string>(key, section);
}

long long ConfigInteger(const char* key, const char* section) {
    return Configured<long long>(key, section);
}

double ConfigFloat(const char* key, const char* section) {
    return Configured<double>(key, section);
}

bool ConfigBool(const char* key, const char* section) {
    return Configured<bool>(key, section);
}

} // namespace VX3
