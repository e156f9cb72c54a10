#include "base/Interrupt.h"

#include <csignal>

namespace VX3::Tool {

namespace {

volatile std::sig_atomic_t interrupted = 0;

void OnSignal(int /*signal*/) {
    interrupted = 1;
}

} // namespace

void CatchInterrupts() {
    struct sigaction action = {};
    action.sa_handler = OnSignal;
    action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    // A reader that goes away is an error of writing like any other: the camera must still be given back.
    std::signal(SIGPIPE, SIG_IGN);
}

bool Interrupted() {
    return interrupted != 0;
}

} // namespace VX3::Tool
