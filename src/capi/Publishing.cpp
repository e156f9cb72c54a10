// Cameras for other hosts.
#include "capi/Handles.h"
#include "capi/Results.h"
#include "vx3/simulated/Publish.h"

using namespace VX3;
using namespace VX3::CApi;

int SubDevice_Publish(SubDevice* camera, unsigned int port, bool standardPort) {
    return Guarded(BadHandle, [&] {
        const auto device = PinCamera(camera);
        if (!device)
            return BadHandle;
        if (port > 65534)
            return Status::NotFound;
        PublishOptions options;
        options.port = static_cast<std::uint16_t>(port);
        options.standardPort = standardPort;
        return Publish(device, options);
    });
}

int SubDevice_Withdraw(SubDevice* camera) {
    return Guarded(BadHandle, [&] {
        const auto device = PinCamera(camera);
        return device ? Withdraw(*device) : BadHandle;
    });
}

int SubDevice_GetPublishState(SubDevice* camera, PublishedCamera* state) {
    return Guarded(BadHandle, [&] {
        const auto device = PinCamera(camera);
        if (!device || state == nullptr)
            return BadHandle;
        PublishState now;
        const StatusCode code = GetPublishState(*device, now);
        *state = {};
        if (Failed(code))
            return code;
        state->port = now.port;
        state->standardPort = now.standardPort ? 1 : 0;
        state->cameraLost = now.cameraLost ? 1 : 0;
        state->streams = static_cast<std::uint16_t>(now.streams);
        state->controllerIp = now.controller.ip;
        state->controllerPort = now.controller.port;
        state->frames = now.frames;
        state->bytes = now.bytes;
        state->packetsResent = now.packetsResent;
        state->requestsNotServed = now.requestsNotServed;
        state->overLimit = now.overLimit;
        state->overrun = now.overrun;
        return Status::Ok;
    });
}
