// Typed key/value view of the configuration file.
#pragma once

#include "vx3/core/Export.h"
#include "vx3/core/Status.h"

#include <string>
#include <type_traits>

namespace VX3 {

// A null section selects the default section. Numbers are written in the C locale, whatever the process's is.
// Codes: NotFound (no such section or key, the text does not convert to a number, or the key or value holds
// what the file cannot, a line end first of all), NotAvailable (no file was loaded, or a boolean is not one
// of the six spellings). Not locked: serialise SetValue against every other use. An empty key throws
// std::invalid_argument.
class VX3_API ISystemConfig {
public:
    virtual StatusCode GetValue(const char* key, std::string& value, const char* section) const = 0;
    [[nodiscard]] virtual StatusCode SetValue(const char* key, const std::string& value,
                                              const char* section) = 0;
    virtual StatusCode GetValue(const char* key, long long& value, const char* section) const = 0;
    [[nodiscard]] virtual StatusCode SetValue(const char* key, long long value, const char* section) = 0;
    virtual StatusCode GetValue(const char* key, double& value, const char* section) const = 0;
    [[nodiscard]] virtual StatusCode SetValue(const char* key, double value, const char* section) = 0;
    virtual StatusCode GetValue(const char* key, bool& value, const char* section) const = 0;
    [[nodiscard]] virtual StatusCode SetValue(const char* key, bool value, const char* section) = 0;
    // A text literal would otherwise become a boolean, and a plain integer any of the three.
    [[nodiscard]] StatusCode SetValue(const char* key, const char* value, const char* section) {
        return SetValue(key, std::string(value != nullptr ? value : ""), section);
    }
    template <typename T, std::enable_if_t<std::is_integral_v<T> && !std::is_same_v<T, bool>, int> = 0>
    [[nodiscard]] StatusCode SetValue(const char* key, T value, const char* section) {
        if (static_cast<T>(static_cast<long long>(value)) != value ||
            (value > T{0}) != (static_cast<long long>(value) > 0))
            return Status::NotFound; // above the largest signed integer
        return SetValue(key, static_cast<long long>(value), section);
    }
    virtual ~ISystemConfig() = default;
};

} // namespace VX3
