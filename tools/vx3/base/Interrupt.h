// Ctrl-C (and a termination request) as a flag that long verbs look at. A second Ctrl-C ends the program the
// hard way.
#pragma once

namespace VX3::Tool {

void CatchInterrupts();
bool Interrupted();

} // namespace VX3::Tool
