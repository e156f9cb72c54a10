#include "vx3/library/System.h"

#include "core/ClientCall.h"
#include "core/DefaultConfig.h"
#include "device/ManagerAll.h"
#include "image/DefaultPools.h"
#include "library/Transports.h"
#include "vx3/core/Utilities.h"

namespace VX3 {

std::string System::SDKVersion() {
    return "1.0";
}

std::string System::SDKBuildVersion() {
    return "781";
}

unsigned int System::SupportedDevTypes() {
    return 0;
}

std::unique_ptr<IManager> System::CreateManager(unsigned int types) {
    ClientCall::CloseAtExit();
    return std::make_unique<ManagerAll>(types, nullptr, Transports());
}

std::string System::IntfDevType2String(IntfDevType type) {
    switch (type) {
    case IntfDevType::Virtual:
        return "Virtual";
    case IntfDevType::GigEVision:
        return "GigE Vision";
    case IntfDevType::Usb3Vision:
        return "USB3 Vision";
    case IntfDevType::GenCP:
        return "GenCP";
    case IntfDevType::Uvc:
        return "UVC Devices";
    case IntfDevType::Grabber:
        return "JN Devices";
    case IntfDevType::GenTL:
        return "GenTL";
    case IntfDevType::Misc:
        return "Misc";
    case IntfDevType::Pipelines:
        return "Pipelines";
    case IntfDevType::Remote:
        return "Remote";
    case IntfDevType::All:
        break;
    }
    return "others";
}

// The texts that clients have in their settings, misspelt one included; not the inverse of the above.
IntfDevType System::String2IntfDevType(const std::string& text) {
    static constexpr struct {
        const char* text;
        IntfDevType type;
    } Names[] = {
        {"Vritual Interface", IntfDevType::Virtual},
        {"GigE Vision", IntfDevType::GigEVision},
        {"UVC Devices", IntfDevType::Uvc},
        {"KD Devices", IntfDevType::Grabber},
        {"Misc", IntfDevType::Misc},
        {"Remote", IntfDevType::Remote},
    };
    for (const auto& name : Names)
        if (text == name.text)
            return name.type;
    return IntfDevType::All;
}

IntfDevType System::DeviceType2IntfDevType(unsigned int typeId) {
    switch (typeId) {
    case TypeIds::InterfaceDevice + static_cast<unsigned int>(IntfDevType::Virtual):
    case TypeIds::InterfaceDevice + static_cast<unsigned int>(IntfDevType::GigEVision):
    case TypeIds::InterfaceDevice + static_cast<unsigned int>(IntfDevType::Usb3Vision):
    case TypeIds::InterfaceDevice + static_cast<unsigned int>(IntfDevType::Uvc):
        return static_cast<IntfDevType>(typeId - TypeIds::InterfaceDevice);
    default:
        return IntfDevType::All;
    }
}

std::string System::GetCurrentPath() {
    return GetLibraryDirectory();
}

std::shared_ptr<IBufferPool> System::DefaultSimpleBufferPool() {
    return VX3::DefaultSimpleBufferPool();
}

std::shared_ptr<IBufferPool> System::DefaultRecycleBufferPool() {
    return VX3::DefaultRecycleBufferPool();
}

std::shared_ptr<ISystemConfig> System::DefaultSystemConfig() {
    return VX3::DefaultSystemConfig();
}

std::string System::DefaultSystemConfigString(const char* key, const char* section) {
    return ConfigString(key, section);
}

long long System::DefaultSystemConfigInteger(const char* key, const char* section) {
    return ConfigInteger(key, section);
}

double System::DefaultSystemConfigFloat(const char* key, const char* section) {
    return ConfigFloat(key, section);
}

bool System::DefaultSystemConfigBool(const char* key, const char* section) {
    return ConfigBool(key, section);
}

} // namespace VX3
