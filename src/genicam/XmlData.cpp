#include "genicam/XmlData.h"

#include "core/DefaultConfig.h"
#include "vx3/core/Logger.h"

#include <filesystem>
#include <fstream>
#include <utility>

namespace VX3 {

XmlData::XmlData(std::string name, std::unique_ptr<unsigned char[]> data, unsigned int size)
    : name_(std::move(name)), data_(std::move(data)), size_(data_ ? size : 0) {
    if (!ConfigBool(ConfigKeys::WriteXmlToFile))
        return;
    const std::string fileName = FileName();
    std::ofstream file(fileName, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(data_.get()), static_cast<std::streamsize>(size_));
    file.close();
    if (!file)
        VxLoggerLog(LogLevel::Warning, "SDK", "The description could not be written to %s.",
                    fileName.c_str());
}

std::string XmlData::FileName() const {
    return std::filesystem::path(name_).filename().string();
}

} // namespace VX3
