// Handles, codes and life cycles of the C interface over the virtual cameras.
#include "device/SyncQueue.h"
#include "support/TempDir.h"
#include "support/Threads.h"
#include "support/VirtualCamera.h"
#include "vx3/core/Status.h"

#include <atomic>
#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace VX3::Test {
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
        for (const int code :
             {Manager_DeviceTypeSupportedCount(manager),
              Manager_DeviceTypeSupportedByIndex(manager, 0, &type), Manager_EnumDevices(manager),
              Manager_GetDevices(manager, 65535), Manager_DeviceName(manager, 0, 65535, buf, sizeof buf),
              Device_GetDeviceName(device, buf, sizeof buf), Device_Connect(device),
              Device_DisConnect(device), Device_GetSubDeviceCount(device), SubDevice_Connect(camera),
              SubDevice_OpenStreamByIndex(camera, 0, 1), GetNodeValue_Int(camera, "Width", nullptr),
              Save2File(image, "/tmp/never.png", 0)})
            EXPECT_EQ(code, -1);
        for (const void* nothing : {static_cast<void*>(Manager_GetDeviceByIndex(manager, 0, 65535)),
                                    static_cast<void*>(Device_GetSubDeviceByIndex(device, 0)),
                                    static_cast<void*>(SubDevice_SnapA(camera, 0, 1)),
                                    static_cast<void*>(Image_GetImageBuff(image))})
            EXPECT_EQ(nothing, nullptr);
        EXPECT_EQ(SubDevice_GetStreamStatisticsByIndex(camera, 0).blocks, 0u);
        EXPECT_EQ(Image_GetImageInfo(image).width, 0u);
        Image_Recycle(image);
        SubDevice_Destory(camera);
        Device_Destory(device);
        Manager_Destory(manager);
    }
    EXPECT_EQ(type, 77u);
}

TEST(CApi, ManagersAndInterfacesTellWhatTheyHave) {
    VirtualCamera camera(0);
    Manager* manager = camera.Owner();
    unsigned int type = 0;
    EXPECT_EQ(Manager_DeviceTypeSupportedCount(manager), 1);
    EXPECT_EQ(Manager_DeviceTypeSupportedByIndex(manager, 0, &type), 0);
    EXPECT_EQ(type, 1u);
    EXPECT_EQ(Manager_DeviceTypeSupportedByIndex(manager, 1, &type), -1);
    EXPECT_EQ(Manager_GetDevices(manager, VX3_FAMILY_GIGE_VISION), 0);
    EXPECT_EQ(Manager_GetDevices(manager, VX3_FAMILY_ALL), 1);
    char name[64];
    EXPECT_EQ(Manager_DeviceName(manager, 0, 65535, name, sizeof name), 0);
    EXPECT_STREQ(name, "Virtual Interface 1");
    EXPECT_EQ(Manager_GetDeviceByName(manager, "no such interface"), nullptr);
    EXPECT_EQ(Manager_GetDeviceByName(manager, nullptr), nullptr);
    EXPECT_EQ(Device_GetDeviceName(camera.Interface(), name, 19), -2);
    EXPECT_EQ(Device_GetDeviceName(camera.Interface(), std::strcpy(name, ""), 20), 0);
    EXPECT_STREQ(name, "Virtual Interface 1");
    EXPECT_EQ(Device_GetSubDeviceCount(camera.Interface()), 2);
    EXPECT_EQ(Device_GetSubDeviceByIndex(camera.Interface(), 2), nullptr);
    EXPECT_EQ(Device_Connect(camera.Interface()), 0);
    EXPECT_EQ(Device_DisConnect(camera.Interface()), 0);
    EXPECT_EQ(Manager_EnumDevices(manager), 1);
    Manager* other = Manager_Create(VX3_FAMILY_VIRTUAL);
    Manager_Destory(other);
    EXPECT_EQ(Manager_GetDevices(other, 65535), -1) << "a destroyed handle is no longer alive";
}

TEST(CApi, StreamCodesComeThrough) {
    VirtualCamera owner(0);
    SubDevice* camera = owner.Get();
    char tiny[4];
    EXPECT_EQ(SubDevice_GetSubDeviceName(camera, tiny, sizeof tiny), -2);
    EXPECT_EQ(SubDevice_StopStreamByIndex(camera, 0), -2) << "no streams before connecting";
    ASSERT_EQ(SubDevice_Connect(camera), 0);
    EXPECT_EQ(SubDevice_StopStreamByIndex(camera, 7), -2);
    EXPECT_EQ(SetNodeValue_Int(camera, "Width", 320), 0);
    EXPECT_EQ(SubDevice_StartStreamByIndex(camera, 0, nullptr, nullptr, 0), Status::NotOpen);
    EXPECT_EQ(SubDevice_OpenStreamByIndex(camera, 0, 4), 0);
    EXPECT_EQ(SubDevice_OpenStreamByIndex(camera, 0, 4), Status::AlreadyOpen);
    EXPECT_EQ(SubDevice_StartStreamByIndex(camera, 0, nullptr, nullptr, 0), 0);
    EXPECT_EQ(SubDevice_CloseStreamByIndex(camera, 0), Status::StillStreaming);
    EXPECT_EQ(Remote_StopLocalStream(camera, 0), Status::Ok);
    EXPECT_EQ(Remote_StartLocalStream(camera, 0), Status::Ok);
    Image* image = SubDevice_SnapA(camera, 0, 5000);
    ASSERT_NE(image, nullptr);
    const ImageDescription info = Image_GetImageInfo(image);
    EXPECT_EQ(std::tuple(info.pixelFormat, info.width, info.height, info.dataSize),
              std::tuple(0x01080001u, 320u, 400u, 320u * 400u));
    EXPECT_GE(SubDevice_GetStreamStatisticsByIndex(camera, 0).blocks, info.blockId);
    const TempDir directory;
    EXPECT_EQ(Save2File(image, (directory / "frame.raw").c_str(), 0), 0);
    EXPECT_EQ(std::filesystem::file_size(directory / "frame.raw"), info.dataSize);
    EXPECT_EQ(Save2File(image, (directory / "no/frame.raw").c_str(), 0), Status::WrongState);
    Image_Recycle(image);
    EXPECT_EQ(Image_GetImageInfo(image).dataSize, 0u) << "a recycled handle is no longer alive";
    EXPECT_EQ(SubDevice_StopStreamByIndex(camera, 0), 0);
    EXPECT_EQ(SubDevice_CloseStreamByIndex(camera, 0), 0);
    EXPECT_EQ(SubDevice_DisConnect(camera), 0);
}

TEST(CApi, LaterHandleOnTheSameCameraGetsTheFrames) {
    VirtualCamera camera(0);
    ASSERT_EQ(SubDevice_Connect(camera.Get()), 0);
    ASSERT_EQ(SetNodeValue_Int(camera.Get(), FrameTimeFeature, 1), 0);
    struct Seen {
        std::atomic<SubDevice*> camera{nullptr};
        std::atomic<int> frames{0};
        bool Go(int more = 4) {
            return Eventually([this, enough = frames + more] { return frames >= enough; });
        }
    } seen;
    const auto onImage = [](Image* image, SubDevice* handle, unsigned int, unsigned int, void* user) {
        static_cast<Seen*>(user)->camera = handle;
        ++static_cast<Seen*>(user)->frames;
        Image_Recycle(image);
    };
    ASSERT_EQ(SubDevice_OpenStreamByIndex(camera.Get(), 0, 4), 0);
    ASSERT_EQ(SubDevice_StartStreamByIndex(camera.Get(), 0, onImage, &seen, 0), 0);
    // A second handle takes the camera's entry but never started a stream: frames still reach the starter.
    SubDevice* second = Device_GetSubDeviceByIndex(camera.Interface(), 0);
    EXPECT_TRUE(seen.Go());
    EXPECT_EQ(seen.camera, camera.Get());
    SubDevice_Destory(second);
    EXPECT_TRUE(seen.Go());
    // The starting handle goes while frames flow: no crash, and no further call.
    camera.DestroyHandle();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    const int final = seen.frames;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(seen.frames, final);
}

TEST(CApi, StaleHandlesStayStaleWhateverComesAfterThem) {
    VirtualCamera camera(0);
    ASSERT_EQ(SubDevice_Connect(camera.Get()), 0);
    ASSERT_EQ(SetNodeValue_Int(camera.Get(), FrameTimeFeature, 1), 0);
    ASSERT_EQ(SubDevice_OpenStreamByIndex(camera.Get(), 0, 4), 0);
    ASSERT_EQ(SubDevice_StartStreamByIndex(camera.Get(), 0, nullptr, nullptr, 0), 0);
    std::vector<Image*> stale;
    for (int i = 0; i < 20; ++i) {
        Image* image = SubDevice_SnapA(camera.Get(), 0, 5000);
        ASSERT_NE(image, nullptr);
        for (Image* old : stale) {
            EXPECT_EQ(Image_GetImageInfo(old).dataSize, 0u);
            Image_Recycle(old); // again: nothing of the next caller's
        }
        EXPECT_EQ(Image_GetImageInfo(image).width, 400u) << "snap " << i;
        EXPECT_EQ(SubDevice_Connect(reinterpret_cast<SubDevice*>(image)), -1) << "a handle of another kind";
        Image_Recycle(image);
        stale.push_back(image);
    }
    SubDevice* destroyed = Device_GetSubDeviceByIndex(camera.Interface(), 1);
    SubDevice_Destory(destroyed);
    for (int i = 0; i < 20; ++i) {
        SubDevice* other = Device_GetSubDeviceByIndex(camera.Interface(), 1);
        EXPECT_EQ(SubDevice_Connect(destroyed), -1);
        SubDevice_Destory(other);
    }
}

TEST(CApi, ImagesOfTwoCamerasAreRecycledByAnotherThread) {
    VirtualCamera owner(0);
    SubDevice* const cameras[] = {owner.Get(), Device_GetSubDeviceByIndex(owner.Interface(), 1)};
    using Images = SyncQueue<Image*, 64>;
    Images images;
    const auto onImage = [](Image* image, SubDevice*, unsigned int, unsigned int, void* user) {
        if (!static_cast<Images*>(user)->Push(std::move(image)))
            Image_Recycle(image);
    };
    for (SubDevice* camera : cameras) {
        ASSERT_EQ(SubDevice_Connect(camera), 0);
        ASSERT_EQ(SetNodeValue_Int(camera, FrameTimeFeature, 2), 0);
        ASSERT_EQ(SubDevice_OpenStreamByIndex(camera, 0, 8), 0);
        ASSERT_EQ(SubDevice_StartStreamByIndex(camera, 0, onImage, &images, 0), 0);
    }
    Image* image = nullptr;
    for (int recycled = 0; recycled < 200; ++recycled, Image_Recycle(image)) {
        ASSERT_TRUE(images.Pop(image, std::chrono::seconds(5)));
        EXPECT_EQ(Image_GetImageInfo(image).width, 400u);
        EXPECT_NE(Image_GetImageBuff(image), nullptr);
    }
    for (SubDevice* camera : cameras) {
        EXPECT_EQ(SubDevice_StopStreamByIndex(camera, 0), 0);
        EXPECT_EQ(SubDevice_CloseStreamByIndex(camera, 0), 0);
        EXPECT_GT(SubDevice_GetStreamStatisticsByIndex(camera, 0).blocks, 50u);
        EXPECT_EQ(SubDevice_DisConnect(camera), 0);
    }
    while (images.Pop(image, std::chrono::milliseconds(0)))
        Image_Recycle(image);
    SubDevice_Destory(cameras[1]);
}

TEST(CApi, HandlesComeAndGoOnSeveralThreads) {
    VirtualCamera camera(0);
    std::atomic<int> right{0};
    OnThreads(4, [&](unsigned int) {
        for (unsigned int i = 0; i < 200; ++i) {
            SubDevice* handle = Device_GetSubDeviceByIndex(camera.Interface(), i % 2);
            char name[64] = "";
            right += SubDevice_GetSubDeviceName(handle, name, sizeof name) == 0 &&
                     std::string(name) == (i % 2 == 0 ? "Virtual Device #1" : "Virtual Device #2");
            SubDevice_Destory(handle);
        }
    });
    EXPECT_EQ(right, 800);
}

} // namespace
} // namespace VX3::Test
