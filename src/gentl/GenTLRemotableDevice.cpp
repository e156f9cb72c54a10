#include "gentl/GenTLRemotableDevice.h"

#include "gentl/GenTLRemotableStream.h"

namespace VX3 {

GenTLRemotableDevice::~GenTLRemotableDevice() {
    Shutdown();
}

std::shared_ptr<IStream> GenTLRemotableDevice::CreateStream(std::shared_ptr<GenTLAPI> producer,
                                                            const char* streamId, unsigned int index) {
    return std::make_shared<GenTLRemotableStream>(std::move(producer), streamId, this, index);
}

} // namespace VX3
