#include "grabber/KdFrameDevice.h"

#include "core/DataDirectories.h"
#include "grabber/KdStream.h"
#include "vx3/core/IntfDevType.h"
#include "vx3/core/Logger.h"
#include "vx3/core/Mutex.h"

#include <algorithm>
#include <cstring>
#include <set>

namespace VX3 {

namespace {

constexpr unsigned int KdFrameType = TypeIds::SubDevice + static_cast<unsigned int>(IntfDevType::Grabber);
constexpr char DescriptionUrl[] = "File:KdInterfaceDev.xml";

constexpr struct {
    const char* node;
    unsigned int value;
} FirstValues[] = {
    {"LbCaptureFrameRegroupEnable", 1},
    {"TriggerSourceLineReg", 2},
    {"TriggerModeLine", 1},
    {"LbLineMode0Frame", 1},
    {"LbLineSource0", 8},
    {"ClConfiguration", 0},
    {"ClTapNumber", 3},
    {"PixleFormat", 0x02180014}, // RGB8
    {"ImageWidth", 4096},
    {"ImageHigh", 8192},
    {"LbS2mmVsize", 8192},
    {"LbCaptureFrameRegroupSize", 8192},
    {"LbS2mmHsize", 12288},
    {"LbS2mmHstride", 12288},
};

// True for the first who asks about a card: another enumeration finds it set up, perhaps in use.
bool IsFirst(const std::string& devicePath) {
    static Mutex mutex;
    static std::set<std::string> cards;
    MutexLock lock(mutex);
    return cards.insert(devicePath).second;
}

} // namespace

KdFrameDevice::KdFrameDevice(const char* name, const std::string& devicePath, IDevice* parent)
    : GenIDevice(KdFrameType, name, parent),
      devicePath_(devicePath),
      window_(std::make_shared<Window>(devicePath)) {
    std::vector<std::shared_ptr<IStream>> streams{std::make_shared<KdStream>(this, devicePath, 0)};
    UpdateStreams(streams);
}

KdFrameDevice::~KdFrameDevice() {
    Shutdown();
}

std::vector<std::string> KdFrameDevice::DescriptionDirectories() const {
    return DataDirectories();
}

StatusCode KdFrameDevice::PostConnect() {
    InitDeviceReg();
    return Status::Ok;
}

void KdFrameDevice::InitDeviceReg() {
    const auto configurer = ShareConfigurer();
    if (!configurer || !window_->device.IsOpen() || !IsWritable() || !IsFirst(devicePath_))
        return;
    std::string refused;
    for (const auto& [node, value] : FirstValues)
        if (Failed(configurer->SetNodeValue(node, value)))
            refused += refused.empty() ? node : std::string(", ") + node;
    if (!refused.empty())
        VxLoggerLog(LogLevel::Warning, "SDK", "%s: the card was not set up: %s", Name().c_str(),
                    refused.c_str());
}

StatusCode KdFrameDevice::ReadPort(unsigned long long address, unsigned char* buffer, unsigned int length) {
    if (address == 0) {
        const auto size = std::min<unsigned int>(sizeof(DescriptionUrl), length);
        std::memcpy(buffer, DescriptionUrl, size);
        return static_cast<StatusCode>(size);
    }
    InitDeviceReg();
    return window_->device.Read(buffer, length, address);
}

StatusCode KdFrameDevice::WritePort(unsigned long long address, const unsigned char* buffer,
                                    unsigned int length) {
    if (!IsWritable())
        return Status::NotAvailable;
    return window_->device.Write(buffer, length, address);
}

} // namespace VX3
