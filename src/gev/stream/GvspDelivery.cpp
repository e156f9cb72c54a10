#include "gev/stream/GvspDelivery.h"

#include "vx3/core/Logger.h"

#include <utility>

namespace VX3 {

GvspDelivery::GvspDelivery(GvspImageCallback callback, LiveStatistics* statistics, bool resendSupported)
    : callback_(std::move(callback)),
      statistics_(statistics != nullptr ? statistics : &own_),
      resendSupported_(resendSupported) {}

void GvspDelivery::Finish(const GvspParserInfo& info, std::uint32_t missing, std::size_t inFlight,
                          TimePoint now) {
    info.image->UpdateImageInfoB(info.lines, missing, info.packetsResent);
    if (missing != 0 && info.packetsResent == 0 && warnings_.Allow(now))
        VxLoggerLog(LogLevel::Error, "SDK", "block 0x%x lost %u packets with %u parse items remained!: %s",
                    info.blockId, missing, static_cast<unsigned int>(inFlight),
                    resendSupported_ ? "there was no time to ask for them again"
                                     : "this camera cannot resend");
}

void GvspDelivery::Count(const GvspParserInfo& info, std::uint32_t missing, std::uint64_t lostBlocks) {
    if (missing != 0) {
        LiveStatistics::Add(statistics_->missingPackets, missing);
        LiveStatistics::Add(statistics_->incompleteBlocks);
    }
    LiveStatistics::Add(statistics_->resentPackets, info.packetsResent);
    LiveStatistics::Add(statistics_->blocks);
    statistics_->lostBlocks.store(lostBlocks, std::memory_order_relaxed);
}

void GvspDelivery::Hand(std::unique_ptr<IImage> image) const {
    if (callback_)
        callback_(std::move(image), 0);
}

} // namespace VX3
