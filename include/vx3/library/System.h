// The library's front door: versions, the manager factory, family names and the process-wide defaults.
#pragma once

#include "vx3/core/ISystemConfig.h"
#include "vx3/device/IManager.h"
#include "vx3/image/IBufferPool.h"

#include <memory>
#include <string>

namespace VX3 {

class VX3_API System {
public:
    static std::string SDKVersion();
    static std::string SDKBuildVersion();
    static unsigned int SupportedDevTypes();
    // A manager over the families whose bits are set (IntfDevType); constructing it enumerates once.
    [[nodiscard]] static std::unique_ptr<IManager> CreateManager(unsigned int types);
    [[nodiscard]] static std::unique_ptr<IManager> CreateManager(IntfDevType types) {
        return CreateManager(static_cast<unsigned int>(types));
    }

    static std::string IntfDevType2String(IntfDevType type);
    static IntfDevType String2IntfDevType(const std::string& text);
    static IntfDevType DeviceType2IntfDevType(unsigned int typeId);

    // Directory of the library file with a trailing "/".
    static std::string GetCurrentPath();

    static std::shared_ptr<IBufferPool> DefaultSimpleBufferPool();
    static std::shared_ptr<IBufferPool> DefaultRecycleBufferPool();
    static std::shared_ptr<ISystemConfig> DefaultSystemConfig();
    // Values of the default configuration; empty, zero or false when the key is absent. A null section is the
    // default one.
    static std::string DefaultSystemConfigString(const char* key, const char* section);
    static long long DefaultSystemConfigInteger(const char* key, const char* section);
    static double DefaultSystemConfigFloat(const char* key, const char* section);
    static bool DefaultSystemConfigBool(const char* key, const char* section);
};

} // namespace VX3
