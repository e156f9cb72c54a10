#include "platform/clprotocol/GenCpSession.h"

#include <exception>

namespace CLProtocol {

using namespace GenCp;
using std::chrono::milliseconds;

namespace {

// The host's line needs a moment after a change of its rate.
constexpr milliseconds Settling{5};
// Three attempts of a confirmation fit into the time that the device waits for it.
constexpr milliseconds ConfirmAttempt{70};
// A device whose new rate nobody confirmed is back at the old one after this.
constexpr milliseconds FallBackPause{500};
constexpr unsigned FallBackAttempts = 3;
constexpr milliseconds CloseLimit{2000};
constexpr milliseconds NoLimit{0};

std::string Rate(std::uint32_t rate) {
    return std::to_string(rate) + " baud";
}

} // namespace

GenCpSession::GenCpSession(GenCpLink& link) : link_(link), foundRate_(link.Baud()) {}

void GenCpSession::Open() {
    link_.SetResponseTime(link_.Read32(Register::MaximumResponseTime));
    capability_ = link_.Read64(Register::Capability);
    if ((capability_ & HasHeartbeat) != 0)
        TakeControl();
    if ((capability_ & HasSbrm) == 0)
        return;
    try {
        RaiseRate();
    } catch (const PortError& error) {
        if (error.Kind() != Failure::Refused && error.Kind() != Failure::Malformed)
            throw;
        AddNote(std::string("does not tell its baud rates: ") + error.what());
    }
}

void GenCpSession::AddNote(const std::string& text) {
    note_ += (note_.empty() ? "" : "; ") + text;
}

// With the heartbeat on, the device goes back to its defaults by itself when this host dies.
void GenCpSession::TakeControl() {
    try {
        heartbeat_ = milliseconds(link_.Read32(Register::HeartbeatTimeout));
        const std::uint64_t configuration = link_.Read64(Register::Configuration);
        if ((configuration & HeartbeatEnable) == 0)
            link_.Write64(Register::Configuration, configuration | HeartbeatEnable);
    } catch (const PortError& error) {
        if (error.Kind() != Failure::Refused)
            throw;
        AddNote(std::string("has no heartbeat, although it says so: ") + error.what());
    }
    link_.Write32(Register::AccessPrivilege, OpenExclusive);
    exclusive_ = true;
}

std::uint32_t GenCpSession::HighestCommonRate(std::uint32_t supported) {
    for (std::size_t i = BaudRateCount; i-- > 0;)
        if ((supported & (1U << i)) != 0 && (BaudRates[i] == foundRate_ || link_.Supports(BaudRates[i])))
            return BaudRates[i];
    return foundRate_;
}

void GenCpSession::RaiseRate() {
    sbrm_ = link_.Read64(Register::Sbrm);
    const std::uint32_t best = HighestCommonRate(link_.Read32(sbrm_ + Register::SupportedBaudrates));
    if (best <= foundRate_)
        return;
    try {
        if (SwitchRate(best))
            return;
        AddNote("did not confirm " + Rate(best));
    } catch (const PortError& error) {
        if (error.Kind() == Failure::Abandoned || error.Kind() == Failure::HungUp)
            throw;
        AddNote("does not go to " + Rate(best) + ": " + error.what());
        if (!error.IsLoss()) { // refused: nothing has changed
            note_ += "; stays at " + Rate(foundRate_);
            return;
        }
    }
    FallBack(best);
}

// Throws when the device did not acknowledge the new rate; false when it did not confirm it.
bool GenCpSession::SwitchRate(std::uint32_t rate) {
    const std::uint32_t bit = BaudBit(rate);
    link_.Write32(sbrm_ + Register::CurrentBaudrate, bit); // acknowledged at the old rate
    const auto deadline = GenCpLink::Clock::now() + milliseconds(ConfirmMs) + link_.ResponseTime();
    if (!link_.SetBaud(rate))
        return false;
    link_.Pause(Settling);
    link_.LimitUntil(deadline);
    link_.HurryAttempts(ConfirmAttempt);
    bool confirmed = false;
    try {
        link_.Write32(sbrm_ + Register::CurrentBaudrate, bit);
        confirmed = true;
    } catch (const PortError& error) {
        if (error.Kind() == Failure::Abandoned || error.Kind() == Failure::HungUp)
            throw;
    }
    link_.LimitUntil({});
    link_.HurryAttempts(NoLimit);
    return confirmed;
}

void GenCpSession::FallBack(std::uint32_t rate) {
    link_.Pause(FallBackPause);
    for (unsigned attempt = 0; attempt < FallBackAttempts; ++attempt)
        for (const std::uint32_t candidate : {foundRate_, rate})
            if (link_.Ask(candidate)) {
                note_ += "; works at " + Rate(candidate);
                return;
            }
    throw PortError(Failure::Silent, link_.Path() + ": does not answer after its rate was to change from " +
                                         Rate(foundRate_) + " to " + Rate(rate));
}

// Control given back is what takes the device to its factory rate. One without that is told the rate.
void GenCpSession::GiveBack() {
    if (exclusive_)
        link_.Write32(Register::AccessPrivilege, Available);
    else if (sbrm_ != 0 && link_.Baud() != foundRate_)
        (void)SwitchRate(foundRate_); // not confirmed: it returns to a rate at which it is found again
}

// Under control it gives a silent host up by itself.
std::uint32_t GenCpSession::RateAfterwards(bool lost) const {
    if (exclusive_)
        return FactoryBaud;
    return lost ? link_.Baud() : foundRate_;
}

void GenCpSession::Close() noexcept {
    try {
        link_.HurryAttempts(NoLimit);
        link_.LimitUntil(GenCpLink::Clock::now() + CloseLimit);
        GiveBack();
    } catch (const std::exception&) {
        // Whoever does not answer has lost its host already, and acts accordingly.
    }
}

} // namespace CLProtocol
