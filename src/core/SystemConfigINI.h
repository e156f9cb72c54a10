// The configuration over one INI file; the default instance belongs to the composition root.
#pragma once

#include "core/IniFile.h"
#include "vx3/core/ISystemConfig.h"

#include <memory>
#include <string>

namespace VX3 {

class SystemConfigINI : public ISystemConfig {
public:
    // A relative name is looked for in the library's directory; a null name means no file. A missing file
    // is silent, a malformed one is logged and then treated as missing.
    SystemConfigINI(const char* fileName, const char* defaultSection);

    using ISystemConfig::GetValue;
    using ISystemConfig::SetValue;
    StatusCode GetValue(const char* key, std::string& value, const char* section) const override;
    // Every SetValue replaces the file. WrongState: the file could not be written (the value is kept in
    // memory).
    StatusCode SetValue(const char* key, const std::string& value, const char* section) override;
    StatusCode GetValue(const char* key, long long& value, const char* section) const override;
    StatusCode SetValue(const char* key, long long value, const char* section) override;
    StatusCode GetValue(const char* key, double& value, const char* section) const override;
    StatusCode SetValue(const char* key, double value, const char* section) override;
    StatusCode GetValue(const char* key, bool& value, const char* section) const override;
    StatusCode SetValue(const char* key, bool value, const char* section) override;

private:
    std::string GetSectionName(const char* section) const;

    std::unique_ptr<ini::File> file_;
    std::string path_;
    std::string defaultSection_;
};

} // namespace VX3
