// A CameraLink camera on a pseudo terminal and a frame grabber card made of files, for whole programs to work
// with:
//   camera_and_card DIRECTORY
// makes the card in the directory, prints the camera's port, and plays frames of three segments while the
// card runs, until its input ends.
#include "support/GenCpCamera.h"
#include "support/GrabberCard.h"

#include <cstdio>
#include <poll.h>
#include <unistd.h>

namespace {

using VX3::Test::GrabberCard;

constexpr std::uint32_t ImageWidth = 0x201000;
constexpr std::uint32_t ImageHigh = 0x201004;
constexpr std::uint32_t Run = 0x201040;
constexpr std::size_t Memory = 4U << 20;

std::string Description() {
    const auto reg = [](const char* name, const char* address, const char* most) {
        const std::string word = std::string(name) + "Word";
        return std::string("<Integer Name=\"") + name + "\"><pValue>" + word + "</pValue><Min>0</Min><Max>" +
               most + "</Max></Integer><IntReg Name=\"" + word + "\"><Address>" + address +
               "</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>"
               "<Cachable>NoCache</Cachable><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>";
    };
    const auto text = [](const char* name, const char* address) {
        return std::string("<StringReg Name=\"") + name + "\"><Address>" + address +
               "</Address><Length>64</Length><AccessMode>RO</AccessMode><pPort>Device</pPort></StringReg>";
    };
    const auto command = [](const char* name, const char* value) {
        return std::string("<Command Name=\"") + name + "\"><pValue>RunWord</pValue><CommandValue>" + value +
               "</CommandValue></Command>";
    };
    return R"(<?xml version="1.0"?><RegisterDescription ModelName="M" VendorName="V" StandardNameSpace="None"
        SchemaMajorVersion="1" SchemaMinorVersion="1" SchemaSubMinorVersion="0" MajorVersion="1" MinorVersion="0"
        SubMinorVersion="0" ProductGuid="1" VersionGuid="2" ToolTip="t"
        xmlns="http://www.genicam.org/GenApi/Version_1_1"><Category Name="Root"><pFeature>Gain</pFeature>
        <pFeature>Width</pFeature><pFeature>Height</pFeature><pFeature>AcquisitionStart</pFeature>
        <pFeature>AcquisitionStop</pFeature><pFeature>DeviceVendorName</pFeature>
        <pFeature>DeviceModelName</pFeature></Category>)" +
           text("DeviceVendorName", "0x4") + text("DeviceModelName", "0x44") + reg("Gain", "0x40000", "100") +
           reg("Width", "0x40004", "4096") + reg("Height", "0x40008", "4096") + reg("Run", "0x4000C", "1") +
           command("AcquisitionStart", "1") + command("AcquisitionStop", "0") +
           "<Port Name=\"Device\"/></RegisterDescription>";
}

bool InputEnds(int ms) {
    pollfd wait{STDIN_FILENO, POLLIN, 0};
    char byte = 0;
    return poll(&wait, 1, ms) > 0 && read(STDIN_FILENO, &byte, 1) <= 0;
}

void PlayFrame(GrabberCard& card, std::uint32_t id) {
    const std::uint32_t size = card.Get(ImageWidth) * card.Get(ImageHigh);
    const std::uint32_t third = size / 3;
    if (size > Memory / 2)
        return;
    for (std::uint16_t n = 0; n < 3; ++n) {
        VX3::Test::CardSegment segment;
        segment.blockId = id;
        segment.number = n;
        segment.count = 3;
        segment.offset = n * third + id;
        segment.length = n < 2 ? third : size - 2 * third;
        if (!card.Tell(segment, std::chrono::milliseconds(200)))
            return;
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2)
        return 2;
    VX3::Test::GenCpCameraData data;
    data.description = Description();
    VX3::Test::GenCpCamera camera(data);
    GrabberCard card(argv[1], 0, Memory);
    std::printf("%s\n", camera.Port().c_str());
    std::fflush(stdout);
    for (std::uint32_t id = 1; !InputEnds(10);)
        if (card.Get(Run) == 1)
            PlayFrame(card, id++);
        else
            id = 1;
    return 0;
}
