#include "grabber/KdDeviceSys.h"

#include "vx3/core/Utilities.h"

#include <array>
#include <bitset>
#include <filesystem>
#include <system_error>

namespace VX3 {

namespace {

constexpr const char* Prefix = "xdma";
constexpr std::size_t DigitAt = 4;
constexpr std::size_t SuffixAt = 6; // behind the digit and an underscore
constexpr const char* HardwareId = "1234&&5678";
constexpr std::array<const char*, 8> Suffixes{"user",     "control",  "h2c_0",    "c2h_0",
                                              "events_0", "events_1", "events_2", "events_3"};
using Nodes = std::bitset<Suffixes.size()>;

void Note(const std::string& name, std::array<Nodes, KdDeviceSys::MostCards>& cards) {
    if (name.size() < SuffixAt || name.compare(0, DigitAt, Prefix) != 0 || name[SuffixAt - 1] != '_')
        return;
    const auto card = static_cast<std::size_t>(name[DigitAt] - '0');
    if (name[DigitAt] < '0' || card >= cards.size())
        return;
    for (std::size_t i = 0; i < Suffixes.size(); ++i)
        if (name.compare(SuffixAt, std::string::npos, Suffixes[i]) == 0)
            cards[card].set(i);
}

} // namespace

std::vector<KdDeviceInfo> KdDeviceSys::GetDevicePaths(const std::string& root) {
    namespace fs = std::filesystem;
    std::array<Nodes, MostCards> cards;
    std::error_code error;
    fs::directory_iterator entry(root, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error))
        Note(entry->path().filename().string(), cards);
    std::vector<KdDeviceInfo> found;
    for (unsigned int card = 0; card < MostCards; ++card)
        if (cards[card].all())
            found.push_back({StringFormat("CameraLink-TRX(xilinx)#%u", card), HardwareId,
                             root + "/" + Prefix + std::to_string(card)});
    return found;
}

} // namespace VX3
