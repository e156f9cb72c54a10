#include "grabber/KdSegment.h"

#include <array>

namespace VX3 {

namespace {

constexpr unsigned int First = 0x202010;
constexpr unsigned int Last = 0x202044;
constexpr unsigned int ReadBefore = 0x20206C; // must be read first, whatever it holds

} // namespace

StatusCode ReadSegment(const KdGrabberCmdHelper& card, KdSegment& segment) {
    unsigned int unused = 0;
    StatusCode status = card.ReadRegister(ReadBefore, unused);
    std::array<unsigned int, (Last - First) / 4 + 1> words{};
    for (unsigned int i = 0; i < words.size() && !Failed(status); ++i)
        status = card.ReadRegister(First + 4 * i, words[i]);
    if (Failed(status))
        return status;
    const auto at = [&](unsigned int address) { return words[(address - First) / 4]; };
    segment.offset = (std::uint64_t{at(0x202014)} << 32) | at(0x202010);
    segment.length = at(0x202018);
    segment.number = static_cast<std::uint16_t>(at(0x20201C));
    segment.count = static_cast<std::uint16_t>(at(0x20201C) >> 16);
    segment.blockId = at(0x202030);
    segment.timestampLow = at(0x202038);
    segment.timestampHigh = at(0x20203C);
    segment.status = at(0x202044);
    return Status::Ok;
}

} // namespace VX3
