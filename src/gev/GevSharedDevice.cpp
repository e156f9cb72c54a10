#include "gev/GevSharedDevice.h"

namespace VX3 {

GevSharedStream::~GevSharedStream() {
    Shutdown();
}

GevSharedDevice::~GevSharedDevice() {
    Shutdown();
}

std::shared_ptr<IStream> GevSharedDevice::CreateStream(const char* name, unsigned int index, bool useFilter) {
    return std::make_shared<GevSharedStream>(name, this, index, useFilter, this, ControlPort());
}

} // namespace VX3
