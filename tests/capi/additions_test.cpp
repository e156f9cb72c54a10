// What the C interface has beyond what it always had: words for failures, the log, finding cameras, frames,
// colours and conversions into the caller's memory.
#include "support/Threads.h"
#include "support/VirtualCamera.h"
#include "vx3/core/Logger.h"
#include "vx3/core/Status.h"
#include "vx3/vx3.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace VX3::Test {
namespace {

std::pair<int, std::string> WhatFailed() {
    char text[512] = "";
    int status = 77;
    EXPECT_EQ(SDKLastFailure(&status, text, sizeof text), 0);
    return {status, text};
}

std::string Words(int status) {
    char text[512] = "";
    EXPECT_EQ(SDKStatusText(status, text, sizeof text), 0);
    return text;
}

TEST(CApiPublishing, ACameraIsPublishedOnceAndWithdrawn) {
    VirtualCamera owner(0);
    SubDevice* camera = owner.Get();
    PublishedCamera state{};
    EXPECT_EQ(SubDevice_Publish(nullptr, 0, false), -1);
    EXPECT_EQ(SubDevice_Publish(camera, 70000, false), VX3_STATUS_NOT_FOUND);
    EXPECT_EQ(SubDevice_GetPublishState(camera, &state), VX3_STATUS_NOT_FOUND);
    ASSERT_EQ(SubDevice_Publish(camera, 57600, false), 0);
    EXPECT_EQ(SubDevice_Publish(camera, 57602, false), VX3_STATUS_WRONG_STATE);
    EXPECT_EQ(SubDevice_GetPublishState(camera, nullptr), -1);
    ASSERT_EQ(SubDevice_GetPublishState(camera, &state), 0);
    EXPECT_EQ(std::tuple(state.port, state.standardPort, state.cameraLost, state.controllerPort),
              std::tuple(57600, 0, 0, 0U));
    VirtualCamera second(1);
    EXPECT_EQ(SubDevice_Publish(second.Get(), 57600, false), VX3_STATUS_OPEN_FAILED);
    EXPECT_NE(WhatFailed().second.find("57600"), std::string::npos) << "which port is taken";
    EXPECT_EQ(SubDevice_Withdraw(camera), 0);
    EXPECT_EQ(SubDevice_Withdraw(camera), VX3_STATUS_NOT_FOUND);
}

TEST(CApiFailures, EveryNamedCodeIsTheLibrarysOwn) {
    const std::tuple codes(VX3_OK, VX3_STATUS_QUEUE_FULL, VX3_STATUS_NO_BUFFER, VX3_STATUS_NOT_FOUND,
                           VX3_STATUS_NOT_SUPPORTED, VX3_STATUS_NO_IP_ADDRESS, VX3_STATUS_NOT_CONNECTED,
                           VX3_STATUS_ALREADY_CONNECTED, VX3_STATUS_ALREADY_STREAMING,
                           VX3_STATUS_ALREADY_OPEN, VX3_STATUS_NOT_OPEN, VX3_STATUS_STILL_STREAMING,
                           VX3_STATUS_MALFORMED, VX3_STATUS_INCOMPLETE_WRITE, VX3_STATUS_TIME_OUT,
                           VX3_STATUS_PORT_NOT_OPEN, VX3_STATUS_NODE_FAILED, VX3_STATUS_NOT_AVAILABLE,
                           VX3_STATUS_WRONG_STATE, VX3_STATUS_OPEN_FAILED, VX3_STATUS_DEVICE_LOST, -1);
    EXPECT_EQ(codes,
              std::tuple(Status::Ok, Status::QueueFull, Status::NoBuffer, Status::NotFound,
                         Status::NotSupported, Status::NoIpAddress, Status::NotConnected,
                         Status::AlreadyConnected, Status::AlreadyStreaming, Status::AlreadyOpen,
                         Status::NotOpen, Status::StillStreaming, Status::Malformed, Status::IncompleteWrite,
                         Status::TimeOut, Status::PortNotOpen, Status::NodeFailed, Status::NotAvailable,
                         Status::WrongState, Status::OpenFailed, Status::DeviceLost, Status::Generic));
#define VX3_COUNT_ONE(name, value, text) +1
    EXPECT_EQ(std::tuple_size_v<decltype(codes)>, std::size_t(VX3_STATUS_TABLE(VX3_COUNT_ONE)));
#undef VX3_COUNT_ONE
    const auto words = std::apply([](auto... code) { return std::vector{Words(code)...}; }, codes);
    EXPECT_EQ(std::count(words.begin(), words.end(), ""), 0);
    EXPECT_EQ(VX3_STATUS_GVCP_ACCESS_DENIED, Status::FromGvcp(0x8006));
    EXPECT_EQ(Words(VX3_STATUS_TIME_OUT), "time-out");
    EXPECT_NE(Words(-1), StatusText(Status::Generic)) << "a bad handle has words of its own";
    char tiny[4] = "";
    EXPECT_EQ(SDKStatusText(VX3_STATUS_TIME_OUT, tiny, sizeof tiny), -2);
}

TEST(CApiFailures, SayWhatFailedAndWhatWasSetInstead) {
    VirtualCamera camera(0);
    EXPECT_EQ(SetNodeValue_Int(camera.Get(), "Width", 8), -1) << "not connected";
    ASSERT_EQ(SubDevice_Connect(camera.Get()), 0);
    EXPECT_EQ(SetNodeValue_Int(camera.Get(), "NoSuch", 8), VX3_STATUS_NOT_FOUND);
    EXPECT_EQ(WhatFailed(),
              std::pair(int(VX3_STATUS_NOT_FOUND), std::string("there is no feature \"NoSuch\"")));
    OnThreads(1, [](unsigned int) { EXPECT_EQ(WhatFailed().second, ""); });
    EXPECT_EQ(SubDevice_StopStreamByIndex(camera.Get(), 9), -2);
    EXPECT_EQ(WhatFailed().first, -2);
    EXPECT_EQ(SetNodeValue_Double(camera.Get(), "Width", 3000.5), VX3_STATUS_NOT_FOUND);
    EXPECT_EQ(WhatFailed().second, "Width: 3000.5 is no integer");
    EXPECT_EQ(SetNodeValue_Chars(camera.Get(), "Width", "320"), 0);
    EXPECT_EQ(WhatFailed().second, "");
    EXPECT_EQ(SetNodeValue_Double(camera.Get(), "Width", 1e6), 0);
    EXPECT_NE(WhatFailed().second.find("Width: 1000000 was asked for, "), std::string::npos)
        << WhatFailed().second;
    EXPECT_EQ(WhatFailed().first, 0);
    camera.DestroyHandle();
    EXPECT_EQ(SubDevice_Connect(reinterpret_cast<SubDevice*>(&camera)), -1);
    EXPECT_EQ(WhatFailed().second, "not alive (any more): the handle of a SubDevice");
    EXPECT_EQ(SubDevice_Connect(nullptr), -1);
    EXPECT_EQ(WhatFailed().second, "the handle of a SubDevice is null");
}

TEST(CApiLog, HandsOverLinesByTheirLevel) {
    using Lines = std::vector<std::pair<int, std::string>>;
    Lines lines;
    const LogCallback callback = [](int level, const char* time, const char* text, void* user) {
        EXPECT_EQ(std::string(time).size(), 23U);
        static_cast<Lines*>(user)->emplace_back(level, text);
    };
    EXPECT_EQ(SDKSetLogLevel(VX3_LOG_NONE), 0);
    EXPECT_EQ(SDKSetLogCallback(callback, VX3_LOG_WARNING, &lines), 0);
    for (const LogLevel level : {LogLevel::Info, LogLevel::Warning, LogLevel::Error})
        VxLoggerLog(level, "SDK", "%d", static_cast<int>(level));
    EXPECT_EQ(SDKSetLogCallback(callback, VX3_LOG_DEBUG, &lines), 0);
    VxLoggerLog(LogLevel::Info, "SDK", "more");
    EXPECT_EQ(SDKSetLogCallback(nullptr, VX3_LOG_DEBUG, nullptr), 0);
    VxLoggerLog(LogLevel::Error, "SDK", "nobody listens");
    EXPECT_EQ(SDKSetLogLevel(VX3_LOG_WARNING), 0);
    EXPECT_EQ(lines, (Lines{{VX3_LOG_WARNING, "400"}, {VX3_LOG_ERROR, "300"}, {VX3_LOG_INFO, "more"}}));
    EXPECT_EQ(SDKSetLogLevel(5), VX3_STATUS_NOT_FOUND);
    EXPECT_EQ(SDKSetLogCallback(callback, 5, nullptr), VX3_STATUS_NOT_FOUND);
}

TEST(CApiSearch, FindsACameraByWhatItIsCalled) {
    Manager* manager = Manager_Create(VX3_FAMILY_VIRTUAL);
    for (const char* text :
         {static_cast<const char*>(nullptr), "", "Virtual Device #1", "Virtual Device #2"}) {
        SubDevice* camera = Manager_FindSubDevice(manager, text, 5000);
        char name[64] = "";
        EXPECT_EQ(SubDevice_GetSubDeviceName(camera, name, sizeof name), 0);
        EXPECT_EQ(std::string(name), text == nullptr || text[0] == '\0' ? "Virtual Device #1" : text);
        EXPECT_EQ(SubDevice_Connect(camera), 0);
        EXPECT_EQ(SubDevice_DisConnect(camera), 0);
        SubDevice_Destory(camera);
    }
    EXPECT_EQ(Manager_FindSubDevice(manager, "Virtual Device #3", 5000), nullptr);
    EXPECT_NE(WhatFailed().second.find("Virtual Device #2"), std::string::npos) << WhatFailed().second;
    EXPECT_EQ(Manager_FindSubDevice(nullptr, nullptr, 10), nullptr);
    Manager_Destory(manager);
}

TEST(CApiSearch, WaitsForALookToBeComplete) {
    VirtualCamera camera(0);
    Device* device = camera.Interface();
    EXPECT_EQ(Device_WaitForRound(device, 1, 5000), 2);
    const int before = Device_FinishedRounds(device);
    EXPECT_EQ(Device_UpdateSubDevices(device), 0);
    EXPECT_EQ(Device_WaitForRound(device, static_cast<unsigned int>(before) + 1, 5000), 2);
    EXPECT_GT(Device_FinishedRounds(device), before);
    EXPECT_EQ(Device_WaitForRound(device, 1000000, 20), VX3_STATUS_TIME_OUT);
    EXPECT_EQ(Device_WaitForRound(nullptr, 1, 20), -1);
    EXPECT_EQ(Device_FinishedRounds(nullptr), -1);
    EXPECT_EQ(Device_UpdateSubDevices(nullptr), -1);
}

TEST(CApiMonitor, ReadsWithoutControl) {
    VirtualCamera camera(0);
    std::int64_t width = 0;
    EXPECT_EQ(SubDevice_ConnectMonitor(nullptr), -1);
    ASSERT_EQ(SubDevice_ConnectMonitor(camera.Get()), 0) << WhatFailed().second;
    EXPECT_EQ(GetNodeValue_Int(camera.Get(), "Width", &width), 0);
    EXPECT_EQ(width, 400);
    EXPECT_EQ(SetNodeValue_Int(camera.Get(), "Width", 320), VX3_STATUS_NODE_FAILED);
    EXPECT_NE(WhatFailed().second, "");
    EXPECT_EQ(SubDevice_Connect(camera.Get()), VX3_STATUS_WRONG_STATE);
    EXPECT_EQ(SubDevice_OpenStreamByIndex(camera.Get(), 0, 4), 0);
    EXPECT_EQ(SubDevice_StartStreamByIndex(camera.Get(), 0, nullptr, nullptr, 0), VX3_STATUS_NOT_AVAILABLE);
    EXPECT_NE(WhatFailed().second.find("to be read only"), std::string::npos) << WhatFailed().second;
    EXPECT_EQ(SubDevice_DisConnect(camera.Get()), 0);
    EXPECT_EQ(GetNodeValue_Int(camera.Get(), "Width", &width), -1);
    EXPECT_EQ(WhatFailed().second, "Virtual Device #1: its features are there when it is connected");
    EXPECT_EQ(SubDevice_Connect(camera.Get()), 0);
    EXPECT_EQ(SetNodeValue_Int(camera.Get(), "Width", 400), 0);
}

TEST(CApiFrames, TellOfThemselvesAndComeInTheFormatWanted) {
    VirtualCamera camera(0);
    ASSERT_EQ(SubDevice_Connect(camera.Get()), 0);
    ASSERT_EQ(SetNodeValue_Int(camera.Get(), "Width", 320), 0);
    ASSERT_EQ(SubDevice_OpenStreamByIndex(camera.Get(), 0, 4), 0);
    EXPECT_EQ(SubDevice_SnapA(camera.Get(), 0, 10), nullptr);
    EXPECT_EQ(WhatFailed().second, "the stream does not run");
    ASSERT_EQ(SubDevice_StartStreamByIndex(camera.Get(), 0, nullptr, nullptr, 0), 0);
    Image* image = SubDevice_SnapA(camera.Get(), 0, 5000);
    ASSERT_NE(image, nullptr);
    FrameInformation frame;
    ASSERT_EQ(Image_GetFrameInformation(image, &frame), 0);
    EXPECT_EQ(std::tuple(frame.blockId, frame.isComplete, frame.lostPackets, frame.stride, frame.paddingX,
                         frame.lines),
              std::tuple(Image_GetImageInfo(image).blockId, 1U, 0U, 320U, 0U, 400U));
    EXPECT_NE(frame.timestamp, 0U);
    size_t length = 0;
    EXPECT_EQ(Image_ConvertToBuffer(image, 0x02180015, nullptr, 0, &length), -2);
    EXPECT_EQ(length, 3U * 320 * 400);
    std::vector<unsigned char> colour(length + 1, 0xEE);
    EXPECT_EQ(Image_ConvertToBuffer(image, 0x02180015, colour.data(), length, nullptr), 0);
    EXPECT_EQ(colour.back(), 0xEE);
    std::vector<unsigned char> grey(320 * 400);
    EXPECT_EQ(Image_ConvertToBuffer(image, 0x01080001, grey.data(), grey.size(), &length), 0);
    EXPECT_EQ(length, grey.size());
    const unsigned char* pixels = Image_GetImageBuff(image);
    for (size_t i = 0; i < grey.size(); ++i)
        ASSERT_TRUE(grey[i] == pixels[i] && colour[3 * i] == pixels[i] && colour[3 * i + 2] == pixels[i])
            << i;
    EXPECT_EQ(Image_ConvertToBuffer(image, 0x01100007, grey.data(), grey.size(), nullptr),
              VX3_STATUS_NOT_SUPPORTED);
    EXPECT_EQ(Image_ConvertToBuffer(nullptr, 0x01080001, grey.data(), grey.size(), nullptr), -1);
    EXPECT_EQ(Image_GetFrameInformation(image, nullptr), -1);
    Image_Recycle(image);
    EXPECT_EQ(SubDevice_StopStreamByIndex(camera.Get(), 0), 0);
    EXPECT_EQ(SubDevice_CloseStreamByIndex(camera.Get(), 0), 0);
}

constexpr uint32_t Rgb8 = 0x02180014;
constexpr uint32_t Rgba8 = 0x02200016;
constexpr auto NotSupported = static_cast<int>(0x80000006U);

TEST(CApiColors, ImagesConvertAndShowInFalseColour) {
    VirtualCamera camera(0);
    ASSERT_EQ(SubDevice_Connect(camera.Get()), 0);
    ASSERT_EQ(SubDevice_OpenStreamByIndex(camera.Get(), 0, 4), 0);
    ASSERT_EQ(SubDevice_StartStreamByIndex(camera.Get(), 0, nullptr, nullptr, 0), 0);
    Image* grey = SubDevice_SnapA(camera.Get(), 0, 5000);
    ASSERT_NE(grey, nullptr);
    const unsigned char level = Image_GetImageBuff(grey)[0];
    Image* made = nullptr;
    ASSERT_EQ(Image_ConvertTo(grey, Rgb8, &made), 0);
    EXPECT_EQ(Image_GetImageInfo(made).pixelFormat, Rgb8);
    EXPECT_EQ(Image_GetImageInfo(made).dataSize, 3 * Image_GetImageInfo(grey).dataSize);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(Image_GetImageBuff(made)), 3),
              std::string(3, static_cast<char>(level)));
    Image* mapped = made;
    EXPECT_EQ(Image_Map2RGB8(made, 0, 0, 255, &mapped), NotSupported) << "no false colour of colours";
    EXPECT_EQ(mapped, nullptr);
    Image_Recycle(made);
    EXPECT_EQ(Image_ConvertTo(grey, Rgba8, &made), NotSupported);
    EXPECT_EQ(Image_ConvertTo(grey, Rgb8, nullptr), -1);
    const int jet = ColorMap_Find("JET");
    ASSERT_GE(jet, 0);
    ASSERT_EQ(Image_Map2RGB8(grey, static_cast<unsigned int>(jet), 255, 0, &mapped), 0);
    EXPECT_EQ(Image_GetImageInfo(mapped).pixelFormat, Rgba8);
    const unsigned char coldest[] = {0, 0, 128, 255}; // all but the brightest lie below the window
    EXPECT_EQ(std::memcmp(Image_GetImageBuff(mapped), coldest, 4), 0) << "level " << int{level};
    Image_Recycle(mapped);
    Image_Recycle(grey);
    EXPECT_EQ(Image_ConvertTo(grey, Rgb8, &made), -1) << "no longer alive";
    EXPECT_EQ(made, nullptr);
}

TEST(CApiColors, MapsHaveNames) {
    char name[32];
    ASSERT_EQ(ColorMap_Count(), 12);
    for (int map = 0; map < ColorMap_Count(); ++map) {
        ASSERT_EQ(ColorMap_Name(static_cast<unsigned int>(map), name, sizeof name), 0);
        EXPECT_EQ(ColorMap_Find(name), map) << name;
    }
    EXPECT_STREQ(name, "Mono");
    EXPECT_EQ(ColorMap_Name(11, name, 4), -2);
    EXPECT_EQ(ColorMap_Name(12, name, sizeof name), -1);
    EXPECT_EQ(ColorMap_Find("sepia"), -1);
    EXPECT_EQ(ColorMap_Find(nullptr), -1);
}

} // namespace
} // namespace VX3::Test
