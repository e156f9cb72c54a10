#include "gev/protocol/Bootstrap.h"

namespace VX3 {
namespace Bootstrap {

namespace {

struct Entry {
    std::uint32_t address;
    std::uint32_t width;
    const char* text;
};

constexpr Entry Entries[] = {
#define VX3_BOOTSTRAP_ENTRY(name, address, width, text) {address, width, text},
    VX3_BOOTSTRAP_TABLE(VX3_BOOTSTRAP_ENTRY)
#undef VX3_BOOTSTRAP_ENTRY
};

constexpr std::uint64_t StreamChannelsEnd = StreamPort + 512 * StreamChannelStride;

} // namespace

const char* RegisterName(std::uint64_t address) {
    if (address >= ManufacturerSpace)
        return "manufacturer register";
    if (address >= StreamPort && address < StreamChannelsEnd)
        address = StreamPort + (address - StreamPort) % StreamChannelStride;
    for (const Entry& entry : Entries)
        if (address >= entry.address && address - entry.address < entry.width)
            return entry.text;
    return "reserved register";
}

} // namespace Bootstrap
} // namespace VX3
