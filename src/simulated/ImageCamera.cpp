#include "simulated/ImageCamera.h"

#include "vx3/core/LastFailure.h"
#include "vx3/core/Utilities.h"
#include "vx3/image/PixelFormat.h"

#include <cstring>
#include <utility>

namespace VX3 {

namespace {

constexpr std::uint64_t LargestFrame = std::uint64_t{256} << 20;

constexpr const char* Head = R"(<?xml version="1.0" encoding="utf-8"?>
<RegisterDescription ModelName="@MODEL@" VendorName="@VENDOR@" ToolTip="A camera made of images" StandardNameSpace="None"
  SchemaMajorVersion="1" SchemaMinorVersion="1" SchemaSubMinorVersion="0" MajorVersion="1" MinorVersion="0"
  SubMinorVersion="0" ProductGuid="6E1C5A52-2C0B-4C54-9F55-6F5B6E1D1A02"
  VersionGuid="B7E3F1C4-08D1-4B21-8C39-2B1C7A9E4D02" xmlns="http://www.genicam.org/GenApi/Version_1_1">
<Category Name="Root" NameSpace="Standard"><pFeature>DeviceControl</pFeature>
  <pFeature>ImageFormatControl</pFeature><pFeature>AcquisitionControl</pFeature>
  <pFeature>TransportLayerControl</pFeature>@MORE@</Category>
)";
constexpr const char* Body = R"(<Category Name="ImageFormatControl" NameSpace="Standard">
  <pFeature>Width</pFeature><pFeature>Height</pFeature><pFeature>PixelFormat</pFeature></Category>
<Category Name="AcquisitionControl" NameSpace="Standard"><pFeature>AcquisitionMode</pFeature>
  <pFeature>AcquisitionStart</pFeature><pFeature>AcquisitionStop</pFeature>
  <pFeature>AcquisitionFrameRate</pFeature></Category>
<Category Name="TransportLayerControl" NameSpace="Standard"><pFeature>PayloadSize</pFeature>
  <pFeature>TLParamsLocked</pFeature></Category>
<Integer Name="Width" NameSpace="Standard"><pValue>WidthReg</pValue></Integer>
<Integer Name="Height" NameSpace="Standard"><pValue>HeightReg</pValue></Integer>
<IntReg Name="WidthReg"><Address>0x1000</Address><Length>4</Length><AccessMode>RO</AccessMode>
  <pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>
<IntReg Name="HeightReg"><Address>0x1004</Address><Length>4</Length><AccessMode>RO</AccessMode>
  <pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>
<IntReg Name="PixelFormatReg"><Address>0x1008</Address><Length>4</Length><AccessMode>RO</AccessMode>
  <pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>LittleEndian</Endianess></IntReg>
<Float Name="AcquisitionFrameRate" NameSpace="Standard"><pValue>FrameRateReg</pValue><Min>0</Min>
  <Max>100000</Max><Unit>Hz</Unit></Float>
<FloatReg Name="FrameRateReg"><Address>0x100C</Address><Length>4</Length><AccessMode>RW</AccessMode>
  <pPort>Device</pPort><Endianess>LittleEndian</Endianess></FloatReg>
<Enumeration Name="AcquisitionMode" NameSpace="Standard">
  <EnumEntry Name="Continuous" NameSpace="Standard"><Value>0</Value></EnumEntry><Value>0</Value></Enumeration>
<Command Name="AcquisitionStart" NameSpace="Standard"><Value>0</Value><CommandValue>1</CommandValue></Command>
<Command Name="AcquisitionStop" NameSpace="Standard"><Value>0</Value><CommandValue>1</CommandValue></Command>
<Integer Name="TLParamsLocked" NameSpace="Standard"><Visibility>Invisible</Visibility><Value>0</Value>
  <Min>0</Min><Max>1</Max></Integer>
<Port Name="Device" NameSpace="Standard"/>
)";

// As the standard spells it.
std::string StandardName(std::uint32_t code) {
    switch (code) {
#define VX3_STANDARD_NAME(name, value, ...)                                                                  \
    case value:                                                                                              \
        return #name;
        VX3_PIXEL_FORMAT_TABLE(VX3_STANDARD_NAME)
#undef VX3_STANDARD_NAME
    default:
        return StringFormat("Format%08X", code);
    }
}

std::string Escaped(const std::string& text) {
    std::string safe;
    for (const char c : text)
        if (c == '<')
            safe += "&lt;";
        else if (c == '&')
            safe += "&amp;";
        else if (c == '"')
            safe += "&quot;";
        else if (static_cast<unsigned char>(c) >= ' ')
            safe += c;
    return safe;
}

void Fill(std::string& text, const std::string& place, const std::string& value) {
    text.replace(text.find(place), place.size(), value);
}

std::string TextNode(const std::string& name, const std::string& value) {
    return "<String Name=\"" + name + "\"><ImposedAccessMode>RO</ImposedAccessMode><Value>" + Escaped(value) +
           "</Value></String>\n";
}

// Names of nodes are letters, digits and underscores, and begin with a letter.
bool IsNodeName(const std::string& name) {
    constexpr const char* Letters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
    return !name.empty() && std::strchr(Letters, name.front()) != nullptr &&
           name.find_first_not_of(std::string(Letters) + "0123456789_") == std::string::npos;
}

// Null for a frame that can be played, else why not.
const char* Objection(const ImageInfo& header) {
    if (header.width == 0 || header.height == 0 || !header.SizesFit() || header.ImageDataSize() == 0)
        return "its frames are empty";
    return header.ImageDataSize() > LargestFrame ? "its frames are larger than 256 MiB" : nullptr;
}

bool IsAlike(const ImageInfo& a, const ImageInfo& b) {
    return a.width == b.width && a.height == b.height && a.pixelFormat == b.pixelFormat &&
           a.paddingX == b.paddingX;
}

} // namespace

std::string ImageCamera::Describe(const ImageCameraConfig& config, const ImageInfo& header) {
    std::string names;
    std::string nodes;
    // A feature of this camera's own is not one of the recording's.
    const std::string own = std::string(Body) + "\"PixelFormat\" \"PayloadSize\" \"RecordedSettings\"";
    for (const auto& [name, value] : config.settings) {
        if (!IsNodeName(name) || own.find("\"" + name + "\"") != std::string::npos ||
            nodes.find("\"" + name + "\"") != std::string::npos || name.compare(0, 6, "Device") == 0)
            continue;
        names += "<pFeature>" + name + "</pFeature>";
        nodes += TextNode(name, value);
    }
    if (!names.empty())
        nodes += "<Category Name=\"RecordedSettings\">" + names + "</Category>\n";
    std::string text = Head;
    Fill(text, "@MODEL@", Escaped(config.model));
    Fill(text, "@VENDOR@", Escaped(config.vendor));
    Fill(text, "@MORE@", names.empty() ? "" : "<pFeature>RecordedSettings</pFeature>");
    text += "<Category Name=\"DeviceControl\" NameSpace=\"Standard\"><pFeature>DeviceVendorName</pFeature>"
            "<pFeature>DeviceModelName</pFeature><pFeature>DeviceVersion</pFeature>"
            "<pFeature>DeviceSerialNumber</pFeature></Category>\n";
    text += TextNode("DeviceVendorName", config.vendor) + TextNode("DeviceModelName", config.model) +
            TextNode("DeviceVersion", config.version) + TextNode("DeviceSerialNumber", config.serial) + Body;
    text += "<Enumeration Name=\"PixelFormat\" NameSpace=\"Standard\"><EnumEntry Name=\"" +
            StandardName(header.pixelFormat) + "\"><Value>" + std::to_string(header.pixelFormat) +
            "</Value></EnumEntry><pValue>PixelFormatReg</pValue></Enumeration>\n"
            "<Integer Name=\"PayloadSize\" NameSpace=\"Standard\"><Value>" +
            std::to_string(header.ImageDataSize()) + "</Value></Integer>\n";
    return text + nodes + "</RegisterDescription>\n";
}

ImageCamera::ImageCamera(const ImageCameraConfig& config, const ImageInfo& header,
                         const std::string& description)
    : SoftDevice((config.model + "(" + config.serial + ")").c_str(), "ImageCamera.xml",
                 [&] {
                     std::unique_ptr<unsigned char[]> bytes(new unsigned char[description.size()]);
                     std::memcpy(bytes.get(), description.data(), description.size());
                     return bytes;
                 }(),
                 static_cast<unsigned int>(description.size()), nullptr),
      vendor_(config.vendor),
      model_(config.model),
      version_(config.version),
      serial_(config.serial) {
    const std::uint32_t words[] = {header.width, header.height, header.pixelFormat};
    const auto rate = static_cast<float>(config.framesPerSecond);
    std::memcpy(registers_.data(), words, sizeof(words));
    std::memcpy(registers_.data() + sizeof(words), &rate, sizeof(rate));
    auto generator = std::make_unique<ImageCameraGenerator>(header, config.frames, config.framesPerSecond);
    generator_ = generator.get();
    std::vector<StructRegDesc> regions{
        {registers_.data(), static_cast<std::uint32_t>(registers_.size()), Registers}};
    SetRegRwParams(regions, [this](unsigned int address, unsigned int) {
        float value = 0;
        unsigned char bytes[sizeof(value)]{};
        if (address != FrameRateAddress || Failed(ReadPort(address, bytes, sizeof(bytes))))
            return;
        std::memcpy(&value, bytes, sizeof(value));
        generator_->SetRate(static_cast<double>(value));
    });
    std::vector<std::unique_ptr<IImageGenerator>> generators;
    generators.push_back(std::move(generator));
    SetImageGenerator(generators);
}

ImageCamera::~ImageCamera() {
    Shutdown();
}

std::shared_ptr<IDevice> MakeImageCamera(const ImageCameraConfig& config) {
    ImageInfo header;
    header.imageType = ImageTypeImage;
    header.width = config.width;
    header.height = config.height;
    header.pixelFormat = config.pixelFormat;
    if (!config.frames.empty() && config.frames.front() != nullptr)
        header = *config.frames.front()->GetImageInfo();
    header.dataOffset = 0;
    header.extraInfoSize = 0;
    const char* objection = Objection(header);
    for (const auto& frame : config.frames)
        if (frame == nullptr || std::as_const(*frame).GetImageBuff() == nullptr ||
            !IsAlike(*frame->GetImageInfo(), header))
            objection = "its frames are not all of one size and pixel format";
    if (objection != nullptr) {
        SetLastFailure(Status::NotSupported, config.model + ": " + objection);
        return nullptr;
    }
    return std::make_shared<ImageCamera>(config, header, ImageCamera::Describe(config, header));
}

} // namespace VX3
