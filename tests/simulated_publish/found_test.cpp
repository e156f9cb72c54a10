// Cameras that are published for as long as they are there.
#include "PublishedLab.h"
#include "library/PublishFound.h"

#include <gtest/gtest.h>

namespace VX3::Test {
namespace {

TEST(PublishFound, ACameraIsPublishedUntilItIsLost) {
    const auto camera = SmallCamera();
    PublishState state;
    PublishFound(SUB_DEVICE_EVENT::Found, camera);
    StatusCode status = GetPublishState(*camera, state);
    if (status == Status::NotFound)
        GTEST_SKIP() << "another program of this machine publishes";
    EXPECT_EQ(status, Status::Ok);
    EXPECT_EQ(state.port % 2, 0) << "one of the four, where remote devices are looked for";
    PublishFound(SUB_DEVICE_EVENT::StateChanged, camera);
    status = GetPublishState(*camera, state);
    EXPECT_EQ(status, Status::Ok);
    PublishFound(SUB_DEVICE_EVENT::Lost, camera);
    status = GetPublishState(*camera, state);
    EXPECT_EQ(status, Status::NotFound);
    PublishFound(SUB_DEVICE_EVENT::Lost, camera); // told twice
    PublishFound(SUB_DEVICE_EVENT::Found, nullptr);
}

} // namespace
} // namespace VX3::Test
