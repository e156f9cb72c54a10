#include "simulated/camera/Resender.h"

#include "gev/protocol/Gvsp.h"
#include "simulated/camera/PacketTrain.h"

#include <algorithm>
#include <array>

namespace VX3 {
namespace Simulated {

namespace {

// Hosts may ask for absurd ranges, as often as they like.
constexpr std::uint32_t MostRefusalsPerRequest = 64;
constexpr std::size_t MostLateRequests = 10000;
constexpr std::size_t MostNoted = 1000000;
constexpr std::uint32_t PacketsPerTrain = 64;
constexpr std::uint32_t FirstMulticast = 0xE0000000;

} // namespace

void Resender::Begin(const NET_ENDPOINT& destination, const StreamScript& script, bool extendedIds) {
    MutexLock lock(mutex_);
    destination_ = destination;
    faults_ = script;
    segmentation_ = script.segmentation;
    rememberRequests_ = script.rememberRequests;
    omitTrailer_ = script.omitTrailer;
    extendedIds_ = extendedIds;
    memory_ = script.resendMemory;
    held_.clear();
    late_.clear();
    counts_ = {};
    requests_.clear();
    random_.seed(script.seed + 1);
}

void Resender::Hold(const SentBlock& block) {
    MutexLock lock(mutex_);
    held_.push_back(block);
    if (held_.size() > memory_)
        held_.pop_front();
}

void Resender::Ask(const Gvcp::ResendRequest& request, const NET_ENDPOINT& sender, TimePoint now) {
    MutexLock lock(mutex_);
    if (sender.ip != destination_.ip && destination_.ip < FirstMulticast)
        return;
    ++counts_.resendRequests;
    if (!faults_.serveResends)
        return;
    if (faults_.resendDelayMs == 0)
        Serve(request);
    else if (late_.size() < MostLateRequests)
        late_.push_back({request, now + std::chrono::milliseconds(faults_.resendDelayMs)});
}

void Resender::ServeDue(TimePoint now) {
    MutexLock lock(mutex_);
    for (; !late_.empty() && late_.front().due <= now; late_.pop_front())
        Serve(late_.front().request);
}

bool Resender::Waiting() const {
    MutexLock lock(mutex_);
    return !late_.empty();
}

const SentBlock* Resender::Find(const Gvcp::ResendRequest& request) const {
    if (request.extended != extendedIds_)
        return nullptr;
    const auto found = std::find_if(held_.rbegin(), held_.rend(), [&](const SentBlock& block) {
        return block.stamp.blockId == request.blockId;
    });
    return found != held_.rend() ? &*found : nullptr;
}

void Resender::Serve(const Gvcp::ResendRequest& request) {
    const SentBlock* const block = Find(request);
    if (block == nullptr) {
        ++counts_.requestsNotServed;
        if (faults_.resendNotHeldStatus != 0)
            Refuse(request, request.lastPacket, faults_.resendNotHeldStatus);
        return;
    }
    const std::uint32_t highest = block->maker->Layout().TrailerId() - (omitTrailer_ ? 1 : 0);
    const std::uint32_t last = std::min(request.lastPacket, highest);
    for (std::uint32_t id = request.firstPacket; id <= last; ++id)
        Note(request.blockId, id);
    if (faults_.resendErrorStatus != 0)
        Refuse(request, last, faults_.resendErrorStatus);
    else
        SendAgain(*block, request.firstPacket, last);
}

void Resender::Note(std::uint64_t blockId, std::uint32_t packetId) {
    ++counts_.packetsRequested;
    if (rememberRequests_ && requests_.size() < MostNoted)
        ++requests_[{blockId, packetId}];
}

// A header alone: how a camera says that it has the packet no longer.
void Resender::Refuse(const Gvcp::ResendRequest& request, std::uint32_t last, std::uint16_t status) {
    std::array<std::array<std::uint8_t, Gvsp::ExtendedHeaderSize>, MostRefusalsPerRequest> heads;
    PacketTrain train(socket_, segmentation_, nullptr);
    std::uint64_t id = request.firstPacket;
    for (auto head = heads.begin(); head != heads.end() && id <= last; ++head, ++id) {
        Gvsp::Header header{request.blockId, static_cast<std::uint32_t>(id), status,
                            static_cast<std::uint8_t>(Gvsp::Format::Payload), request.extended};
        train.Add({head->data(), Gvsp::EncodeHeader({head->data(), head->size()}, header)}, {});
    }
    train.Flush();
}

bool Resender::Chance(double probability) {
    return probability > 0 && std::uniform_real_distribution<double>(0, 1)(random_) < probability;
}

void Resender::SendAgain(const SentBlock& block, std::uint32_t first, std::uint32_t last) {
    const std::size_t room = block.maker->LargestHeadSize();
    std::vector<std::uint8_t> heads(room * PacketsPerTrain);
    PacketTrain train(socket_, segmentation_, nullptr);
    std::size_t used = 0;
    for (std::uint32_t id = first; id <= last; ++id) {
        if (Chance(faults_.resendDropProbability))
            continue;
        std::uint8_t* const head = heads.data() + used * room;
        const std::size_t size =
            block.maker->MakeHead(id, block.stamp, Gvcp::AckStatus::PacketResent, {head, room});
        train.Add({head, size}, block.maker->Data(id, block.stamp));
        ++counts_.packetsResent;
        if (++used == PacketsPerTrain) {
            train.Flush();
            used = 0;
        }
    }
    train.Flush();
}

StreamCounts Resender::Counts() const {
    MutexLock lock(mutex_);
    return counts_;
}

std::map<PacketAddress, unsigned> Resender::Requests() const {
    MutexLock lock(mutex_);
    return requests_;
}

} // namespace Simulated
} // namespace VX3
