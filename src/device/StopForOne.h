// Stops a stream for one of its two users so that the other's pictures go on. A stream of one user simply
// stops.
#pragma once

#include "vx3/core/Status.h"

namespace VX3 {

class IStream;

// The result is that of the stop; a stream that does not go on for the other user is logged.
StatusCode StopForLocalUser(IStream& stream);
StatusCode StopForRemoteUser(IStream& stream);

} // namespace VX3
