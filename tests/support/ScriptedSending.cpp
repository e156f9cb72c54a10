#include "support/ScriptedSending.h"

#include <algorithm>

namespace VX3 {
namespace Test {

ScriptedSending::ScriptedSending(int socket, const NET_ENDPOINT& destination, const StreamScript& script)
    : script_(script),
      train_(socket, destination, script.segmentation, script.bytesPerSecond),
      random_(script.seed) {}

bool ScriptedSending::Chance(double probability) {
    return probability > 0 && std::uniform_real_distribution<double>(0, 1)(random_) < probability;
}

void ScriptedSending::Send(OutPacket packet) {
    ++counts_.packets;
    const PacketAddress address = packet.address;
    if (Chance(script_.dropProbability) || script_.drop.count(address) != 0 ||
        script_.dropBlocks.count(address.block) != 0) {
        ++counts_.dropped;
        return;
    }
    if (const auto status = script_.status.find(address); status != script_.status.end())
        Wire::Store<std::uint16_t>(packet.head.data(), status->second);
    const bool twice = Chance(script_.duplicateProbability) || script_.duplicate.count(address) != 0;
    counts_.duplicated += twice ? 1 : 0;
    ReleaseDue();
    if (const auto delay = script_.delay.find(address); delay != script_.delay.end())
        held_.push_back({packet, std::max(delay->second, 1U)});
    else
        Pass(packet);
    if (twice)
        Pass(packet);
}

// Counts one packet down for everything held back.
void ScriptedSending::ReleaseDue() {
    std::vector<OutPacket> due;
    const auto isDue = [&](Held& held) {
        if (--held.remaining != 0)
            return false;
        due.push_back(held.packet);
        return true;
    };
    held_.erase(std::remove_if(held_.begin(), held_.end(), isDue), held_.end());
    for (const OutPacket& packet : due)
        Pass(packet);
}

void ScriptedSending::Pass(const OutPacket& packet) {
    if (script_.reorderWindow < 2) {
        train_.Add(packet);
        return;
    }
    window_.push_back(packet);
    if (window_.size() == script_.reorderWindow)
        FlushWindow();
}

void ScriptedSending::FlushWindow() {
    std::shuffle(window_.begin(), window_.end(), random_);
    for (const OutPacket& packet : window_)
        train_.Add(packet);
    window_.clear();
}

void ScriptedSending::EndFrame() {
    ++counts_.frames;
    if (!script_.reorderAcrossFrames)
        FlushWindow();
    train_.Flush();
}

void ScriptedSending::EndStream() {
    for (const Held& held : held_)
        Pass(held.packet);
    held_.clear();
    FlushWindow();
    train_.Flush();
}

} // namespace Test
} // namespace VX3
