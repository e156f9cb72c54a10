// Manager of the cameras behind GenTL producers: loads every producer of the folder "extend" beside the
// library and of the environment's search path, and makes an interface device of each interface that they
// report.
//
// All producers are loaded, and asked, at once, from the constructor on: the first enumeration ends at most
// 5 s after it and later ones take 2 s, whatever their number. One that takes longer has its interfaces
// listed by a later enumeration.
#pragma once

#include "device/ManagerAbs.h"

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace VX3 {

class GenTLAPI;

class MiscDeviceManager final : public ManagerAbs {
public:
    explicit MiscDeviceManager(const char* name);
    // Of these files instead.
    MiscDeviceManager(const char* name, const std::vector<std::string>& producerFiles);
    ~MiscDeviceManager() override;

    // An interface that is known stays the same object. Nothing changes when none is reported.
    StatusCode EnumDevices() override;

    // The producer files of one directory, whose extension is exactly ".cti".
    static std::vector<std::string> GetAllEsoFiles(const char* directory);

private:
    struct Producer;
    struct Round;

    static std::vector<std::string> DefaultFiles();
    void Load(const std::vector<std::string>& files);
    void DropRefused();

    const std::chrono::steady_clock::time_point firstRoundEnd_;
    bool firstRound_ = true;
    std::vector<std::shared_ptr<Producer>> producers_;
};

} // namespace VX3
