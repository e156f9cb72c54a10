// Typed key/value view of the configuration file.
#pragma once

#include "vx3/core/Export.h"
#include "vx3/core/Status.h"

#include <string>

namespace VX3 {

// A null section selects the default section. Codes: NotFound (no such section or key, or the text does not
// convert to a number), NotAvailable (no file was loaded, or a boolean is not one of the six spellings).
// Not locked: serialise SetValue against every other use. An empty key throws std::invalid_argument.
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
    virtual ~ISystemConfig() = default;
};

} // namespace VX3
