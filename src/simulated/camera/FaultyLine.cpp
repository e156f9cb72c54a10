#include "simulated/camera/FaultyLine.h"

#include <algorithm>

namespace VX3 {
namespace Simulated {

namespace {

constexpr std::size_t MostCopiesInTrain = 64;

bool Copies(const StreamFaults& faults) {
    return faults.reorderWindow >= 2 || !faults.delay.empty() || !faults.status.empty();
}

bool Faultless(const StreamFaults& faults) {
    return !Copies(faults) && faults.dropProbability <= 0 && faults.dropLeaderProbability <= 0 &&
           faults.dropTrailerProbability <= 0 && faults.burstProbability <= 0 && faults.drop.empty() &&
           faults.dropBlocks.empty() && faults.duplicateProbability <= 0 && faults.duplicate.empty();
}

} // namespace

FaultyLine::FaultyLine(PacketTrain& train, const StreamFaults& faults)
    : train_(train),
      faults_(faults),
      faultless_(Faultless(faults)),
      copies_(Copies(faults)),
      random_(faults.seed) {}

bool FaultyLine::Chance(double probability) {
    return probability > 0 && std::uniform_real_distribution<double>(0, 1)(random_) < probability;
}

bool FaultyLine::IsLost(const OutPacket& packet) {
    if (burstLeft_ == 0 && faults_.burstPackets != 0 && Chance(faults_.burstProbability))
        burstLeft_ = faults_.burstPackets;
    const bool burst = burstLeft_ != 0;
    burstLeft_ -= burst ? 1 : 0;
    return burst || Chance(faults_.dropProbability) ||
           (packet.address.packet == 0 && Chance(faults_.dropLeaderProbability)) ||
           (packet.trailer && Chance(faults_.dropTrailerProbability)) ||
           faults_.drop.count(packet.address) != 0 || faults_.dropBlocks.count(packet.address.block) != 0;
}

void FaultyLine::SendFaulty(const OutPacket& packet) {
    if (IsLost(packet)) {
        ++dropped_;
        return;
    }
    const bool twice = Chance(faults_.duplicateProbability) || faults_.duplicate.count(packet.address) != 0;
    duplicated_ += twice ? 1 : 0;
    if (copies_) {
        SendCopy(packet, twice);
        return;
    }
    train_.Add(packet.head, packet.data);
    if (twice)
        train_.Add(packet.head, packet.data);
}

void FaultyLine::SendCopy(const OutPacket& packet, bool twice) {
    Bytes bytes(packet.head.size + packet.data.size);
    WireWriter writer(bytes.data(), bytes.size());
    if (!writer.Copy(packet.head) || !writer.Copy(packet.data))
        return;
    if (const auto status = faults_.status.find(packet.address); status != faults_.status.end())
        Wire::Store<std::uint16_t>(bytes.data(), status->second);
    ReleaseDue();
    if (twice)
        Pass(bytes);
    if (const auto delay = faults_.delay.find(packet.address); delay != faults_.delay.end())
        held_.push_back({std::move(bytes), std::max(delay->second, 1U)});
    else
        Pass(std::move(bytes));
}

// Counts one packet down for everything held back.
void FaultyLine::ReleaseDue() {
    const auto due =
        std::stable_partition(held_.begin(), held_.end(), [](Held& held) { return --held.remaining != 0; });
    std::vector<Held> released(std::make_move_iterator(due), std::make_move_iterator(held_.end()));
    held_.erase(due, held_.end());
    for (Held& held : released)
        Pass(std::move(held.packet));
}

void FaultyLine::Pass(Bytes packet) {
    if (faults_.reorderWindow < 2) {
        Depart(std::move(packet));
        return;
    }
    window_.push_back(std::move(packet));
    if (window_.size() >= faults_.reorderWindow)
        FlushWindow();
}

void FaultyLine::FlushWindow() {
    std::shuffle(window_.begin(), window_.end(), random_);
    for (Bytes& packet : window_)
        Depart(std::move(packet));
    window_.clear();
}

void FaultyLine::Depart(Bytes packet) {
    inTrain_.push_back(std::move(packet));
    train_.Add({inTrain_.back().data(), inTrain_.back().size()}, {});
    if (inTrain_.size() == MostCopiesInTrain)
        Flush();
}

void FaultyLine::Flush() {
    train_.Flush();
    inTrain_.clear();
}

void FaultyLine::EndFrame() {
    if (!faults_.reorderAcrossFrames)
        FlushWindow();
    Flush();
}

void FaultyLine::EndStream() {
    std::vector<Held> held;
    held.swap(held_);
    for (Held& last : held)
        Pass(std::move(last.packet));
    FlushWindow();
    Flush();
}

} // namespace Simulated
} // namespace VX3
