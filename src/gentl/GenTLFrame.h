// What a producer tells about a filled buffer, and the image header that becomes of it.
#pragma once

#include "gentl/GenTLAPI.h"
#include "vx3/image/ImageInfo.h"

#include <array>
#include <cstdint>

namespace VX3 {

// Frame geometry in pixels.
struct GenTLGeometry {
    std::uint64_t width = 0;
    std::uint64_t height = 0;
    std::uint64_t pixelFormat = 0;
};

struct GenTLFrame {
    std::uint64_t frameId = 0;
    std::uint64_t timestamp = 0; // device ticks
    bool incomplete = false;
    bool newData = true; // false: a buffer that was only flushed
    GenTLGeometry geometry;
    std::uint64_t xOffset = 0;
    std::uint64_t yOffset = 0;
    std::uint64_t xPadding = 0; // bytes
    std::uint64_t yPadding = 0;
    std::uint64_t imageOffset = 0; // bytes
    std::uint64_t deliveredHeight = 0;
    std::uint64_t payloadType = GenTL::PAYLOAD_TYPE_IMAGE;
    std::uint64_t filled = 0; // bytes; 0 unknown
    void* base = nullptr;     // only where asked for

    // The header of an image of `room` bytes. What the producer says that cannot be true, or is no image of
    // known layout, makes a raw block of what was filled.
    ImageInfo Header(std::uint32_t room) const;
};

// Asks for the frames of one running stream. Questions that the producer cannot answer at all are not
// repeated. Owned by the stream, used on its receiving thread.
class GenTLFrameReader {
public:
    // `fallback`: of the camera's features, for what the producer leaves to them.
    GenTLFrame Read(const GenTLAPI& producer, GenTL::DS_HANDLE stream, GenTL::BUFFER_HANDLE buffer,
                    const GenTLGeometry& fallback, bool withBase);
    // A new run may be set up otherwise.
    void Reset() { refused_.fill(false); }

private:
    struct Answer {
        bool given = false;
        std::uint64_t value = 0;
    };
    static constexpr std::size_t Commands = 32;
    using Answers = std::array<Answer, Commands>;

    void Ask(Answers& answers, const GenTLAPI& producer, GenTL::DS_HANDLE stream, GenTL::BUFFER_HANDLE buffer,
             std::int32_t command);
    bool AskAtOnce(Answers& answers, const GenTLAPI& producer, GenTL::DS_HANDLE stream,
                   GenTL::BUFFER_HANDLE buffer, bool withBase);
    void Refuse(std::int32_t command, GenTL::GC_ERROR code);
    static void ReadFirstPart(GenTLFrame& frame, const GenTLAPI& producer, GenTL::DS_HANDLE stream,
                              GenTL::BUFFER_HANDLE buffer);

    std::array<bool, Commands> refused_{};
};

} // namespace VX3
