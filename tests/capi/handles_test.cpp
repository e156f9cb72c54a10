// Handles, codes and life cycles of the C interface over the virtual cameras.
#include "vx3/vx3.h"

#include "support/VirtualCamera.h"

#include <atomic>
#include <chrono>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

namespace {

TEST(CApi, VersionsNeedRoomForTheirNul) {
    char buf[8] = "xxxxxxx";
    EXPECT_EQ(SDKVersion(buf, 3), -2);
    EXPECT_STREQ(buf, "xxxxxxx");
    EXPECT_EQ(SDKVersion(buf, 4), 0);
    EXPECT_STREQ(buf, "1.0");
    EXPECT_EQ(SDKVersion(nullptr, 100), -1);
    EXPECT_EQ(SDKBuildVersion(buf, 4), 0);
    EXPECT_STREQ(buf, "781");
}

TEST(CApi, NullAndForeignHandlesAreAnsweredWithCodes) {
    int onTheStack = 0;
    unsigned int type = 77;
    char buf[16];
    for (void* bad : {static_cast<void*>(nullptr), static_cast<void*>(&onTheStack)}) {
        auto* manager = static_cast<Manager*>(bad);
        auto* device = static_cast<Device*>(bad);
        auto* camera = static_cast<SubDevice*>(bad);
        auto* image = static_cast<Image*>(bad);
        EXPECT_EQ(Manager_DeviceTypeSupportedCount(manager), -1);
        EXPECT_EQ(Manager_DeviceTypeSupportedByIndex(manager, 0, &type), -1);
        EXPECT_EQ(Manager_EnumDevices(manager), -1);
        EXPECT_EQ(Manager_GetDevices(manager, 65535), -1);
        EXPECT_EQ(Manager_GetDeviceByIndex(manager, 0, 65535), nullptr);
        EXPECT_EQ(Manager_DeviceName(manager, 0, 65535, buf, sizeof buf), -1);
        EXPECT_EQ(Device_Connect(device), -1);
        EXPECT_EQ(Device_GetSubDeviceCount(device), -1);
        EXPECT_EQ(Device_GetSubDeviceByIndex(device, 0), nullptr);
        EXPECT_EQ(SubDevice_Connect(camera), -1);
        EXPECT_EQ(SubDevice_OpenStreamByIndex(camera, 0, 1), -1);
        EXPECT_EQ(SubDevice_SnapA(camera, 0, 1), nullptr);
        EXPECT_EQ(SubDevice_GetStreamStatisticsByIndex(camera, 0).blocks, 0u);
        EXPECT_EQ(GetNodeValue_Int(camera, "Width", nullptr), -1);
        EXPECT_EQ(Image_GetImageInfo(image).width, 0u);
        EXPECT_EQ(Image_GetImageBuff(image), nullptr);
        EXPECT_EQ(Save2File(image, "/tmp/never.png", 0), -1);
        Image_Recycle(image);
        SubDevice_Destory(camera);
        Device_Destory(device);
        Manager_Destory(manager);
    }
    EXPECT_EQ(type, 77u);
}

TEST(CApi, ManagerTellsItsFamilies) {
    Manager* manager = Manager_Create(VX3_FAMILY_VIRTUAL);
    ASSERT_NE(manager, nullptr);
    unsigned int type = 0;
    EXPECT_EQ(Manager_DeviceTypeSupportedCount(manager), 1);
    EXPECT_EQ(Manager_DeviceTypeSupportedByIndex(manager, 0, &type), 0);
    EXPECT_EQ(type, 1u);
    EXPECT_EQ(Manager_DeviceTypeSupportedByIndex(manager, 1, &type), -1);
    EXPECT_EQ(Manager_GetDevices(manager, VX3_FAMILY_GIGE_VISION), 0);
    char name[64];
    EXPECT_EQ(Manager_DeviceName(manager, 0, 65535, name, sizeof name), 0);
    EXPECT_STREQ(name, "Virtual Interface 1");
    EXPECT_EQ(Manager_GetDeviceByName(manager, "no such interface"), nullptr);
    EXPECT_EQ(Manager_GetDeviceByName(manager, nullptr), nullptr);
    Manager_Destory(manager);
    EXPECT_EQ(Manager_GetDevices(manager, 65535), -1) << "a destroyed handle is no longer alive";
}

TEST(CApi, StreamCodesComeThrough) {
    support::VirtualCamera camera(0);
    char tiny[4];
    EXPECT_EQ(SubDevice_GetSubDeviceName(camera.Get(), tiny, sizeof tiny), -2);
    EXPECT_EQ(SubDevice_StopStreamByIndex(camera.Get(), 0), -2) << "no streams before connecting";
    ASSERT_EQ(SubDevice_Connect(camera.Get()), 0);
    EXPECT_EQ(SubDevice_StopStreamByIndex(camera.Get(), 7), -2);
    EXPECT_EQ(static_cast<uint32_t>(SubDevice_StartStreamByIndex(camera.Get(), 0, nullptr, nullptr, 0)),
              0x8000000Eu);
    EXPECT_EQ(SubDevice_OpenStreamByIndex(camera.Get(), 0, 4), 0);
    EXPECT_EQ(static_cast<uint32_t>(SubDevice_OpenStreamByIndex(camera.Get(), 0, 4)), 0x8000000Du);
    EXPECT_EQ(SubDevice_StartStreamByIndex(camera.Get(), 0, nullptr, nullptr, 0), 0);
    EXPECT_EQ(static_cast<uint32_t>(SubDevice_CloseStreamByIndex(camera.Get(), 0)), 0x8000000Fu);
    EXPECT_EQ(static_cast<uint32_t>(Remote_StopLocalStream(camera.Get(), 0)), 0x80000006u);
    Image* image = SubDevice_SnapA(camera.Get(), 0, 5000);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(Image_GetImageInfo(image).dataSize, 400u * 400u);
    Image_Recycle(image);
    EXPECT_EQ(Image_GetImageInfo(image).dataSize, 0u) << "a recycled handle is no longer alive";
    EXPECT_EQ(SubDevice_StopStreamByIndex(camera.Get(), 0), 0);
    EXPECT_EQ(SubDevice_CloseStreamByIndex(camera.Get(), 0), 0);
    EXPECT_EQ(SubDevice_DisConnect(camera.Get()), 0);
}

TEST(CApi, LaterHandleOnTheSameCameraGetsTheFrames) {
    support::VirtualCamera camera(0);
    ASSERT_EQ(SubDevice_Connect(camera.Get()), 0);
    ASSERT_EQ(SetNodeValue_Int(camera.Get(), support::FrameTimeFeature, 1), 0);
    struct Seen {
        std::atomic<SubDevice*> camera{nullptr};
        std::atomic<int> frames{0};
    } seen;
    const auto onImage = [](Image* image, SubDevice* handle, unsigned int, unsigned int, void* user) {
        auto* s = static_cast<Seen*>(user);
        s->camera = handle;
        ++s->frames;
        Image_Recycle(image);
    };
    ASSERT_EQ(SubDevice_OpenStreamByIndex(camera.Get(), 0, 4), 0);
    ASSERT_EQ(SubDevice_StartStreamByIndex(camera.Get(), 0, onImage, &seen, 0), 0);
    // A second handle takes the camera's entry but never started a stream: frames still reach the starter.
    SubDevice* second = Device_GetSubDeviceByIndex(camera.Interface(), 0);
    const int before = seen.frames;
    EXPECT_TRUE(support::WaitFor([&] { return seen.frames > before + 3; }));
    EXPECT_EQ(seen.camera, camera.Get());
    SubDevice_Destory(second);
    const int after = seen.frames;
    EXPECT_TRUE(support::WaitFor([&] { return seen.frames > after + 3; }));
    // The starting handle goes while frames flow: no crash, and no further call.
    camera.DestroyHandle();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    const int final = seen.frames;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(seen.frames, final);
}

TEST(CApi, HandlesComeAndGoOnSeveralThreads) {
    support::VirtualCamera camera(0);
    std::vector<std::thread> threads;
    std::atomic<int> wrong{0};
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 200; ++i) {
                SubDevice* handle =
                    Device_GetSubDeviceByIndex(camera.Interface(), static_cast<unsigned int>(i % 2));
                char name[64];
                if (SubDevice_GetSubDeviceName(handle, name, sizeof name) != 0 ||
                    std::strncmp(name, "Virtual Device #", 16) != 0)
                    ++wrong;
                SubDevice_Destory(handle);
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}

} // namespace
