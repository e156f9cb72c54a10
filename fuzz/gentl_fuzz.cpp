// What a GenTL producer says: URLs of descriptions, first bytes of its file, texts, and the geometry of
// frames. A URL that is taken can be fetched, and whatever a frame is said to be, its header stays inside its
// memory.
#include "FuzzInput.h"
#include "gentl/DescriptionUrl.h"
#include "gentl/GenTLFrame.h"
#include "gentl/GenTLInfo.h"
#include "gentl/ProducerFile.h"

using namespace VX3;

namespace {

void CheckUrl(const std::string& text) {
    const DescriptionUrl url = ParseDescriptionUrl(text, "/folder/");
    if (url.kind == DescriptionUrl::Kind::Local)
        Fuzz::Require(!url.name.empty() && url.address != 0 && url.length >= 1 && url.length <= 104857600);
    if (url.kind == DescriptionUrl::Kind::File)
        for (const std::string& path : url.paths)
            Fuzz::Require(!path.empty() && path.find('\0') == std::string::npos);
    for (const char c : CleanText(text))
        Fuzz::Require(static_cast<unsigned char>(c) >= 0x20);
}

void CheckFrame(Fuzz::FuzzInput& input) {
    GenTLFrame frame;
    const auto room = input.Take<std::uint32_t>();
    for (std::uint64_t* value :
         {&frame.frameId, &frame.timestamp, &frame.geometry.width, &frame.geometry.height,
          &frame.geometry.pixelFormat, &frame.xOffset, &frame.yOffset, &frame.xPadding, &frame.yPadding,
          &frame.imageOffset, &frame.deliveredHeight, &frame.payloadType, &frame.filled}) {
        const auto bytes = input.Take<std::uint8_t>() % 9U; // small numbers as often as large ones
        *value = bytes == 0 ? 0 : input.Take<std::uint64_t>() >> (64 - 8 * bytes);
    }
    const ImageInfo info = frame.Header(room);
    Fuzz::Require(info.headerVersion == 1);
    Fuzz::Require(std::uint64_t{info.dataOffset} + info.ImageDataSize() <= room);
    Fuzz::Require(info.pixelFormat == RawBlock || info.SizesFit());
    Fuzz::Require(info.statusA <= info.height);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Fuzz::FuzzInput input(data, size);
    if (input.Take<std::uint8_t>() % 2 == 0) {
        CheckFrame(input);
        return 0;
    }
    const std::string rest = input.Rest();
    CheckUrl(rest);
    static_cast<void>(WhyNoLibrary(reinterpret_cast<const unsigned char*>(rest.data()), rest.size()));
    return 0;
}
