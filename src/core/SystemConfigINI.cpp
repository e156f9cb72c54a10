#include "core/SystemConfigINI.h"

#include "core/NumberText.h"
#include "vx3/core/LastFailure.h"
#include "vx3/core/Logger.h"
#include "vx3/core/Utilities.h"

#include <fstream>
#include <stdexcept>

namespace VX3 {

namespace {

// Null without a usable file.
std::unique_ptr<ini::File> Load(const std::string& path) {
    std::ifstream stream(path);
    if (!stream)
        return nullptr;
    auto file = std::make_unique<ini::File>();
    try {
        file->read(stream);
    } catch (const std::exception& error) {
        VxLoggerLog(LogLevel::Error, "SDK", "Configuration file %s is ignored: %s", path.c_str(),
                    error.what());
        return nullptr;
    }
    return file;
}

std::string CheckedKey(const char* key) {
    if (key == nullptr || key[0] == '\0')
        throw std::invalid_argument("keys cannot be empty");
    return key;
}

} // namespace

SystemConfigINI::SystemConfigINI(const char* fileName, const char* defaultSection)
    : path_(fileName != nullptr ? fileName : ""),
      defaultSection_(defaultSection != nullptr ? defaultSection : "") {
    if (fileName == nullptr)
        return;
    path_ = GetModuleFilePath(path_);
    file_ = Load(path_);
}

std::string SystemConfigINI::GetSectionName(const char* section) const {
    if (file_ == nullptr)
        return {};
    if (section != nullptr)
        return section;
    return defaultSection_.empty() ? "System" : defaultSection_;
}

StatusCode SystemConfigINI::GetValue(const char* key, std::string& value, const char* section) const {
    if (file_ == nullptr)
        return Status::NotAvailable;
    const std::string name = CheckedKey(key);
    const ini::Section* found = file_->Find(GetSectionName(section));
    const std::string* text = found != nullptr ? found->Find(name) : nullptr;
    if (text == nullptr)
        return Status::NotFound;
    value = *text;
    return Status::Ok;
}

StatusCode SystemConfigINI::GetValue(const char* key, long long& value, const char* section) const {
    std::string text;
    const StatusCode status = GetValue(key, text, section);
    if (Failed(status))
        return status;
    try {
        value = std::stoll(text);
        return Status::Ok;
    } catch (const std::logic_error&) {
        value = 0;
        return Status::NotFound;
    }
}

StatusCode SystemConfigINI::GetValue(const char* key, double& value, const char* section) const {
    std::string text;
    const StatusCode status = GetValue(key, text, section);
    if (Failed(status))
        return status;
    if (ParseLeadingReal(text, value))
        return Status::Ok;
    value = 0;
    return Status::NotFound;
}

StatusCode SystemConfigINI::GetValue(const char* key, bool& value, const char* section) const {
    std::string text;
    const StatusCode status = GetValue(key, text, section);
    if (Failed(status))
        return status;
    if (text == "true" || text == "True" || text == "TRUE")
        value = true;
    else if (text == "false" || text == "False" || text == "FALSE")
        value = false;
    else
        return Status::NotAvailable;
    return Status::Ok;
}

StatusCode SystemConfigINI::SetValue(const char* key, const std::string& value, const char* section) {
    if (file_ == nullptr)
        return Status::NotAvailable;
    const std::string name = CheckedKey(key);
    const std::string sectionName = GetSectionName(section);
    try {
        ini::CheckEntry(sectionName, name, value);
    } catch (const std::invalid_argument& error) {
        return SetLastFailure(Status::NotFound,
                              StringFormat("[%s] %s: %s", sectionName.c_str(), name.c_str(), error.what()));
    }
    (*file_)[sectionName][name] = value;
    try {
        file_->write(path_);
    } catch (const std::invalid_argument& error) {
        VxLoggerLog(LogLevel::Error, "SDK", "Configuration file %s: %s", path_.c_str(), error.what());
        return SetLastFailure(Status::WrongState, path_ + ": " + error.what());
    }
    return Status::Ok;
}

StatusCode SystemConfigINI::SetValue(const char* key, long long value, const char* section) {
    return SetValue(key, std::to_string(value), section);
}

StatusCode SystemConfigINI::SetValue(const char* key, double value, const char* section) {
    return SetValue(key, FixedText(value), section);
}

StatusCode SystemConfigINI::SetValue(const char* key, bool value, const char* section) {
    return SetValue(key, std::string(value ? "true" : "false"), section);
}

} // namespace VX3
