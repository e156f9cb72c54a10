#include "gentl/GenTLDescription.h"

#include "genicam/GenApiRI.h"
#include "genicam/XmlData.h"
#include "gentl/DescriptionUrl.h"
#include "gentl/GenTLInfo.h"
#include "gentl/GenTLPort.h"
#include "vx3/core/Logger.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace VX3 {

namespace {

constexpr std::uintmax_t MaxFileSize = 104857600; // bytes

using Bytes = std::unique_ptr<unsigned char[]>;

// Producers announce more than there is, and name zipped descriptions .xml: plain text ends at the first NUL,
// and what begins as an archive is one.
std::unique_ptr<IXmlData> Wrap(std::string name, Bytes bytes, unsigned int size) {
    const bool zipped = size >= 4 && std::memcmp(bytes.get(), "PK\x03\x04", 4) == 0;
    if (!zipped)
        size = static_cast<unsigned int>(std::find(bytes.get(), bytes.get() + size, 0) - bytes.get());
    const std::size_t dot = name.rfind('.');
    std::string extension = dot == std::string::npos ? "" : name.substr(dot);
    for (char& c : extension)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    if (zipped ? extension != ".zip" : extension != ".xml")
        name += zipped ? ".zip" : ".xml";
    return std::make_unique<XmlData>(std::move(name), std::move(bytes), size);
}

std::unique_ptr<IXmlData> ReadFile(const DescriptionUrl& url, std::string& failure) {
    for (const std::string& path : url.paths) {
        std::error_code error;
        // Opening a pipe would wait for a writer.
        if (!std::filesystem::is_regular_file(path, error))
            continue;
        const std::uintmax_t size = std::filesystem::file_size(path, error);
        if (error || size == 0 || size > MaxFileSize)
            continue;
        Bytes bytes(new unsigned char[size]);
        std::ifstream file(path, std::ios::binary);
        if (file.read(reinterpret_cast<char*>(bytes.get()), static_cast<std::streamsize>(size)))
            return Wrap(path, std::move(bytes), static_cast<unsigned int>(size));
    }
    failure = "its description file \"" + CleanText(url.paths.front()) + "\" cannot be read";
    return nullptr;
}

std::unique_ptr<IXmlData> ReadRegisters(const DescriptionUrl& url, IGenIObj& module, std::string& failure) {
    // Some modules are read in words: the last one may reach past the end.
    Bytes bytes(new unsigned char[url.length + 8]());
    const StatusCode status = module.ReadPort(url.address, bytes.get(), url.length);
    if (!Failed(status))
        return Wrap(url.name, std::move(bytes), url.length);
    failure = "its description cannot be read: " + StatusText(status);
    return nullptr;
}

} // namespace

std::unique_ptr<IXmlData> GenTLDescription::Fetch(const std::string& url, GenTLPort& port, IGenIObj& module,
                                                  std::string& failure) {
    const std::string& path = port.Producer()->path;
    const DescriptionUrl place = ParseDescriptionUrl(url, path.substr(0, path.rfind('/') + 1));
    switch (place.kind) {
    case DescriptionUrl::Kind::File:
        return ReadFile(place, failure);
    case DescriptionUrl::Kind::Local:
        return ReadRegisters(place, module, failure);
    case DescriptionUrl::Kind::Refused:
        break;
    }
    failure = CleanText(place.why);
    return nullptr;
}

GenTLDescription::Features GenTLDescription::Build(const std::vector<std::string>& urls, GenTLPort& port,
                                                   const std::shared_ptr<IGenIObj>& module,
                                                   const char* portName) {
    Features features;
    features.failure = "the producer names no description";
    for (const std::string& url : urls) {
        auto description = Fetch(url, port, *module, features.failure);
        if (description) {
            auto genApi = std::make_unique<GenApiRI>(std::move(description), module, portName);
            const auto map = genApi->GetNodeMap();
            if (map) {
                const std::string own = port.PortName();
                if (!own.empty() && own != (portName != nullptr ? portName : "Device"))
                    map->Connect(module, own);
                features.genApi = std::move(genApi);
                features.failure.clear();
                return features;
            }
            features.failure = genApi->Failure();
        }
        if (&url != &urls.back())
            VxLoggerLog(LogLevel::Warning, "SDK", "%s: %s; the next description is tried",
                        port.Producer()->Name().c_str(), features.failure.c_str());
    }
    return features;
}

} // namespace VX3
