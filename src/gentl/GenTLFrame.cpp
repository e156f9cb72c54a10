#include "gentl/GenTLFrame.h"

#include "gentl/GenTLInfo.h"
#include "vx3/image/PixelFormat.h"

#include <algorithm>
#include <cstring>

namespace VX3 {

namespace {

// In the order they are asked: the six that every frame needs, then what some producers add.
constexpr std::int32_t Questions[] = {
    GenTL::BUFFER_INFO_FRAMEID,       GenTL::BUFFER_INFO_TIMESTAMP,
    GenTL::BUFFER_INFO_IS_INCOMPLETE, GenTL::BUFFER_INFO_PIXELFORMAT,
    GenTL::BUFFER_INFO_WIDTH,         GenTL::BUFFER_INFO_HEIGHT,
    GenTL::BUFFER_INFO_NEW_DATA,      GenTL::BUFFER_INFO_PAYLOADTYPE,
    GenTL::BUFFER_INFO_XOFFSET,       GenTL::BUFFER_INFO_YOFFSET,
    GenTL::BUFFER_INFO_XPADDING,      GenTL::BUFFER_INFO_YPADDING,
    GenTL::BUFFER_INFO_IMAGEOFFSET,   GenTL::BUFFER_INFO_DELIVERED_IMAGEHEIGHT,
    GenTL::BUFFER_INFO_SIZE_FILLED,   GenTL::BUFFER_INFO_PIXELFORMAT_NAMESPACE,
    GenTL::BUFFER_INFO_BASE};

// GigE Vision's numbers, which image headers carry, of the standard's.
std::uint16_t ImageTypeOf(std::uint64_t payloadType) {
    switch (payloadType) {
    case GenTL::PAYLOAD_TYPE_RAW_DATA:
        return 2;
    case GenTL::PAYLOAD_TYPE_FILE:
        return 3;
    case GenTL::PAYLOAD_TYPE_CHUNK_DATA:
    case GenTL::PAYLOAD_TYPE_CHUNK_ONLY:
        return 4;
    case GenTL::PAYLOAD_TYPE_JPEG:
        return 6;
    case GenTL::PAYLOAD_TYPE_JPEG2000:
        return 7;
    case GenTL::PAYLOAD_TYPE_H264:
        return 8;
    case GenTL::PAYLOAD_TYPE_MULTI_PART:
        return 10;
    case GenTL::PAYLOAD_TYPE_GENDC:
        return 11;
    default:
        return ImageTypeImage;
    }
}

bool HasPixels(std::uint64_t payloadType) {
    switch (payloadType) {
    case GenTL::PAYLOAD_TYPE_IMAGE:
    case GenTL::PAYLOAD_TYPE_CHUNK_DATA:
    case GenTL::PAYLOAD_TYPE_MULTI_PART:
    case GenTL::PAYLOAD_TYPE_UNKNOWN:
        return true;
    default:
        return false;
    }
}

} // namespace

ImageInfo GenTLFrame::Header(std::uint32_t room) const {
    ImageInfo info;
    info.imageType = ImageTypeOf(payloadType);
    info.timestampHigh = static_cast<std::uint32_t>(timestamp >> 32);
    info.timestampLow = static_cast<std::uint32_t>(timestamp);
    info.blockId = static_cast<std::uint32_t>(frameId);
    const std::uint64_t limits[][2] = {{geometry.width, UINT32_MAX},
                                       {geometry.height, UINT32_MAX},
                                       {geometry.pixelFormat, UINT32_MAX},
                                       {xPadding, UINT16_MAX},
                                       {imageOffset, UINT16_MAX}};
    bool usable = HasPixels(payloadType) && geometry.width != 0 && geometry.height != 0;
    for (const auto& [value, limit] : limits)
        usable = usable && value <= limit;
    if (usable) {
        info.width = static_cast<std::uint32_t>(geometry.width);
        info.height = static_cast<std::uint32_t>(geometry.height);
        info.pixelFormat = static_cast<std::uint32_t>(geometry.pixelFormat);
        info.offsetX = static_cast<std::uint32_t>(std::min<std::uint64_t>(xOffset, UINT32_MAX));
        info.offsetY = static_cast<std::uint32_t>(std::min<std::uint64_t>(yOffset, UINT32_MAX));
        info.paddingX = static_cast<std::uint16_t>(xPadding);
        info.paddingY = static_cast<std::uint16_t>(std::min<std::uint64_t>(yPadding, UINT16_MAX));
        info.dataOffset = static_cast<std::uint16_t>(imageOffset);
        usable = PixelFormat(info.pixelFormat).IsValid() && info.SizesFit() &&
                 std::uint64_t{info.dataOffset} + info.ImageDataSize() <= room;
    }
    bool partial = incomplete;
    if (usable) {
        info.statusA = deliveredHeight != 0 && deliveredHeight <= info.height
                           ? static_cast<std::uint32_t>(deliveredHeight)
                           : info.height;
        partial = partial || (filled != 0 && filled < std::uint64_t{info.dataOffset} + info.ImageDataSize() &&
                              info.statusA == info.height);
    } else {
        info.width = info.offsetX = info.offsetY = 0;
        info.paddingX = info.paddingY = info.dataOffset = 0;
        info.pixelFormat = RawBlock;
        info.height = filled != 0 ? static_cast<std::uint32_t>(std::min<std::uint64_t>(filled, room)) : room;
        info.statusA = info.height;
    }
    info.lostPackets = partial ? 1 : 0; // a producer does not say how many
    return info;
}

// ---- questions ----

// What a producer does not know at all it will not know for the next frame either; "not available" may
// change.
void GenTLFrameReader::Refuse(std::int32_t command, GenTL::GC_ERROR code) {
    if (code == GenTL::GC_ERR_NOT_IMPLEMENTED || code == GenTL::GC_ERR_INVALID_PARAMETER)
        refused_[static_cast<std::size_t>(command)] = true;
}

void GenTLFrameReader::Ask(Answers& answers, const GenTLAPI& producer, GenTL::DS_HANDLE stream,
                           GenTL::BUFFER_HANDLE buffer, std::int32_t command) {
    if (refused_[static_cast<std::size_t>(command)])
        return;
    Answer& answer = answers[static_cast<std::size_t>(command)];
    const auto code = ReadNumber(answer.value, [&](std::int32_t* type, void* room, std::size_t* size) {
        return producer.CallQuietly<&GenTLAPI::pDSGetBufferInfo>(stream, buffer, command, type, room, size);
    });
    answer.given = code == GenTL::GC_ERR_SUCCESS;
    Refuse(command, code);
}

// All questions in one call, where the producer has it.
bool GenTLFrameReader::AskAtOnce(Answers& answers, const GenTLAPI& producer, GenTL::DS_HANDLE stream,
                                 GenTL::BUFFER_HANDLE buffer, bool withBase) {
    if (producer.pDSGetBufferInfoStacked == nullptr)
        return false;
    constexpr std::size_t Most = std::size(Questions);
    std::array<GenTL::DS_BUFFER_INFO_STACKED, Most> entries{};
    std::array<std::array<unsigned char, 16>, Most> values{};
    std::size_t count = 0;
    for (const std::int32_t command : Questions) {
        if (refused_[static_cast<std::size_t>(command)] || (command == GenTL::BUFFER_INFO_BASE && !withBase))
            continue;
        entries[count].iInfoCmd = command;
        entries[count].pBuffer = values[count].data();
        entries[count].iSize = 8;
        ++count;
    }
    if (producer.CallQuietly<&GenTLAPI::pDSGetBufferInfoStacked>(stream, buffer, entries.data(), count) !=
        GenTL::GC_ERR_SUCCESS)
        return false;
    for (std::size_t i = 0; i < count; ++i) {
        const std::int32_t command = entries[i].iInfoCmd;
        if (command < 0 || static_cast<std::size_t>(command) >= Commands)
            continue; // overwritten by the producer
        const GenTL::GC_ERROR code = entries[i].iResult;
        if (code == GenTL::GC_ERR_SUCCESS)
            answers[static_cast<std::size_t>(command)] = {
                true, NumberOf(entries[i].iType, values[i], entries[i].iSize)};
        Refuse(command, code);
    }
    return true;
}

GenTLFrame GenTLFrameReader::Read(const GenTLAPI& producer, GenTL::DS_HANDLE stream,
                                  GenTL::BUFFER_HANDLE buffer, const GenTLGeometry& fallback, bool withBase) {
    Answers answers{};
    if (!AskAtOnce(answers, producer, stream, buffer, withBase))
        for (const std::int32_t command : Questions)
            if (command != GenTL::BUFFER_INFO_BASE || withBase)
                Ask(answers, producer, stream, buffer, command);
    const auto value = [&](std::int32_t command, std::uint64_t otherwise) {
        const Answer& answer = answers[static_cast<std::size_t>(command)];
        return answer.given ? answer.value : otherwise;
    };
    GenTLFrame frame;
    frame.frameId = value(GenTL::BUFFER_INFO_FRAMEID, 0);
    frame.timestamp = value(GenTL::BUFFER_INFO_TIMESTAMP, 0);
    frame.incomplete = value(GenTL::BUFFER_INFO_IS_INCOMPLETE, 0) != 0;
    frame.newData = value(GenTL::BUFFER_INFO_NEW_DATA, 1) != 0;
    frame.geometry.width = value(GenTL::BUFFER_INFO_WIDTH, fallback.width);
    frame.geometry.height = value(GenTL::BUFFER_INFO_HEIGHT, fallback.height);
    frame.geometry.pixelFormat = value(GenTL::BUFFER_INFO_PIXELFORMAT, fallback.pixelFormat);
    const std::uint64_t numbers =
        value(GenTL::BUFFER_INFO_PIXELFORMAT_NAMESPACE, GenTL::PIXELFORMAT_NAMESPACE_UNKNOWN);
    if (numbers == GenTL::PIXELFORMAT_NAMESPACE_IIDC || numbers == GenTL::PIXELFORMAT_NAMESPACE_PFNC_16BIT)
        frame.geometry.pixelFormat = fallback.pixelFormat; // not the numbers that we know
    frame.payloadType = value(GenTL::BUFFER_INFO_PAYLOADTYPE, GenTL::PAYLOAD_TYPE_IMAGE);
    frame.xOffset = value(GenTL::BUFFER_INFO_XOFFSET, 0);
    frame.yOffset = value(GenTL::BUFFER_INFO_YOFFSET, 0);
    frame.xPadding = value(GenTL::BUFFER_INFO_XPADDING, 0);
    frame.yPadding = value(GenTL::BUFFER_INFO_YPADDING, 0);
    frame.imageOffset = value(GenTL::BUFFER_INFO_IMAGEOFFSET, 0);
    frame.deliveredHeight = value(GenTL::BUFFER_INFO_DELIVERED_IMAGEHEIGHT, 0);
    frame.filled = value(GenTL::BUFFER_INFO_SIZE_FILLED, 0);
    const auto base = static_cast<std::uintptr_t>(value(GenTL::BUFFER_INFO_BASE, 0));
    std::memcpy(&frame.base, &base, sizeof(frame.base));
    if (frame.payloadType == GenTL::PAYLOAD_TYPE_MULTI_PART)
        ReadFirstPart(frame, producer, stream, buffer);
    return frame;
}

// A buffer of several parts stands for its first; the whole of it is in the image's memory.
void GenTLFrameReader::ReadFirstPart(GenTLFrame& frame, const GenTLAPI& producer, GenTL::DS_HANDLE stream,
                                     GenTL::BUFFER_HANDLE buffer) {
    std::uint32_t parts = 0;
    if (producer.CallQuietly<&GenTLAPI::pDSGetNumBufferParts>(stream, buffer, &parts) !=
            GenTL::GC_ERR_SUCCESS ||
        parts == 0)
        return;
    const auto part = [&](std::int32_t command, std::uint64_t otherwise) {
        std::uint64_t value = 0;
        const auto code = ReadNumber(value, [&](std::int32_t* type, void* room, std::size_t* size) {
            return producer.CallQuietly<&GenTLAPI::pDSGetBufferPartInfo>(stream, buffer, std::uint32_t{0},
                                                                         command, type, room, size);
        });
        return code == GenTL::GC_ERR_SUCCESS ? value : otherwise;
    };
    frame.geometry.width = part(GenTL::BUFFER_PART_INFO_WIDTH, frame.geometry.width);
    frame.geometry.height = part(GenTL::BUFFER_PART_INFO_HEIGHT, frame.geometry.height);
    frame.geometry.pixelFormat = part(GenTL::BUFFER_PART_INFO_DATA_FORMAT, frame.geometry.pixelFormat);
    frame.xOffset = part(GenTL::BUFFER_PART_INFO_XOFFSET, 0);
    frame.yOffset = part(GenTL::BUFFER_PART_INFO_YOFFSET, 0);
    frame.deliveredHeight = part(GenTL::BUFFER_PART_INFO_DELIVERED_IMAGEHEIGHT, 0);
    // Of parts the standard counts the padding in pixels.
    const std::uint64_t padding = part(GenTL::BUFFER_PART_INFO_XPADDING, 0);
    const PixelFormat format(static_cast<unsigned int>(frame.geometry.pixelFormat));
    frame.xPadding = padding <= UINT16_MAX ? format.BuffNeeded(static_cast<unsigned int>(padding), 1) : 0;
}

} // namespace VX3
