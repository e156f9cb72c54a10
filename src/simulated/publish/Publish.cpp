#include "vx3/simulated/Publish.h"

#include "simulated/publish/GevSimuDeviceList.h"
#include "vx3/core/LastFailure.h"

namespace VX3 {

namespace {

StatusCode NotPublished(const IDevice& camera) {
    return SetLastFailure(Status::NotFound, camera.Name() + " is not published");
}

} // namespace

StatusCode Publish(const std::shared_ptr<IDevice>& camera, const PublishOptions& options) {
    unsigned slot = 0;
    return GevSimuDeviceList::Instance().Publish(camera, options, slot);
}

StatusCode Withdraw(const IDevice& camera) {
    return GevSimuDeviceList::Instance().FindAndDestroySimuDevice(camera.UniqueName()) ? Status::Ok
                                                                                       : NotPublished(camera);
}

StatusCode GetPublishState(const IDevice& camera, PublishState& state) {
    const auto published = GevSimuDeviceList::Instance().Find(camera.UniqueName());
    if (published == nullptr)
        return NotPublished(camera);
    state = published->State();
    return Status::Ok;
}

} // namespace VX3
