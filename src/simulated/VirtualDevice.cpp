#include "simulated/VirtualDevice.h"

#include "simulated/ImageGeneratorSimple.h"
#include "simulated/SoftStream.h"

#include <algorithm>
#include <cstring>

namespace VX3 {

VirtualDevice::VirtualDevice(const char* name, const char* xmlPath, IDevice* parent)
    : SoftDevice(name, xmlPath, parent) {
    auto generator = std::make_unique<ImageGeneratorSimple>();
    SetText(0, "Vendor unknown");
    SetText(1, "Test Device");
    SetText(2, "Version 1.00");
    SetText(3, "123456789013456");
    const ImageInfo header = generator->GetImgInfo();
    const std::uint32_t controls[] = {header.width, header.height, generator->GetFrameTime()};
    static_assert(sizeof(controls) == sizeof(controls_));
    std::memcpy(controls_.data(), controls, sizeof(controls));

    std::vector<StructRegDesc> regions{
        {texts_.data(), static_cast<std::uint32_t>(texts_.size()), TextAddress},
        {controls_.data(), static_cast<std::uint32_t>(controls_.size()), WidthAddress}};
    SetRegRwParams(regions,
                   [this](unsigned int address, unsigned int unused) { RwRegCallbackFunc(address, unused); });
    std::vector<std::unique_ptr<IImageGenerator>> generators;
    generators.push_back(std::move(generator));
    SetImageGenerator(generators);
}

VirtualDevice::~VirtualDevice() {
    Shutdown();
}

void VirtualDevice::SetText(std::size_t index, const char* text) {
    std::memcpy(texts_.data() + index * TextSize, text, std::min(std::strlen(text), TextSize));
}

std::uint32_t VirtualDevice::Register(unsigned int address) {
    std::uint32_t value = 0;
    unsigned char bytes[sizeof(value)]{};
    ReadPort(address, bytes, sizeof(bytes));
    std::memcpy(&value, bytes, sizeof(value));
    return value;
}

void VirtualDevice::RwRegCallbackFunc(unsigned int address, unsigned int) {
    if (address != WidthAddress && address != HeightAddress && address != FrameTimeAddress)
        return;
    const std::uint32_t value = Register(address);
    for (const auto& shared : Streams()) {
        auto* stream = dynamic_cast<SoftStream*>(shared.get());
        if (stream == nullptr)
            continue;
        if (address == FrameTimeAddress) {
            stream->SetFrameTime(value);
            continue;
        }
        ImageInfo header = stream->GetImageInfo();
        (address == WidthAddress ? header.width : header.height) = value;
        stream->SetImageInfo(&header);
    }
}

} // namespace VX3
