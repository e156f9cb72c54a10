#include "library/PublishFound.h"

#include "simulated/publish/GevSimuDeviceList.h"

namespace VX3 {

void PublishFound(SUB_DEVICE_EVENT event, const std::shared_ptr<IDevice>& camera) {
    if (camera == nullptr)
        return;
    GevSimuDeviceList& published = GevSimuDeviceList::Instance();
    if (event == SUB_DEVICE_EVENT::Found)
        (void)published.FindEmptyAndinsertSimuDevice(camera); // logged
    else if (event == SUB_DEVICE_EVENT::Lost)
        (void)published.FindAndDestroySimuDevice(camera->UniqueName()); // false: it was not published
}

} // namespace VX3
