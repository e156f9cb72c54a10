// Feature access of the C interface over the virtual cameras.
#include "vx3/vx3.h"

#include "support/VirtualCamera.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

class CApiFeatures : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(SubDevice_Connect(camera_.Get()), 0); }
    void TearDown() override { SubDevice_DisConnect(camera_.Get()); }

    support::VirtualCamera camera_{0};
};

TEST_F(CApiFeatures, SettingIsClampedAndReadBack) {
    int64_t value = 0, max = 0, min = 0, inc = 0;
    ASSERT_EQ(GetNodeMaxValue_Int(camera_.Get(), "Width", &max), 0);
    ASSERT_EQ(GetNodeMinValue_Int(camera_.Get(), "Width", &min), 0);
    ASSERT_EQ(GetNodeIncValue_Int(camera_.Get(), "Width", &inc), 0);
    ASSERT_GT(inc, 0);
    EXPECT_EQ(SetNodeValue_Int(camera_.Get(), "Width", max + 1000), 0);
    EXPECT_EQ(GetNodeValue_Int(camera_.Get(), "Width", &value), 0);
    EXPECT_EQ(value, max);
    EXPECT_EQ(SetNodeValue_Int(camera_.Get(), "Width", -5), 0);
    EXPECT_EQ(GetNodeValue_Int(camera_.Get(), "Width", &value), 0);
    EXPECT_EQ(value, min);
    EXPECT_EQ(static_cast<uint32_t>(SetNodeValue_Int(camera_.Get(), "SensorWidth", 1)), 0x80000021u);
    EXPECT_EQ(static_cast<uint32_t>(SetNodeValue_Int(camera_.Get(), "NoSuchFeature", 1)), 0x80000004u);
    EXPECT_EQ(GetNodeMaxValue_Double(camera_.Get(), "Width", nullptr), -1);
}

TEST_F(CApiFeatures, GettersCheckNameKindAndRoom) {
    int64_t integer = 0;
    char buf[64];
    EXPECT_EQ(GetNodeValue_Int(camera_.Get(), "NoSuchFeature", &integer), -2);
    EXPECT_EQ(GetNodeValue_Int(camera_.Get(), "Width", nullptr), -1);
    EXPECT_EQ(GetNodeValue_Int(camera_.Get(), nullptr, &integer), -1);
    ASSERT_EQ(GetNodeValue_Chars(camera_.Get(), "DeviceVendorName", buf, sizeof buf), 0);
    EXPECT_STREQ(buf, "Vendor unknown");
    const size_t length = std::strlen(buf);
    EXPECT_EQ(GetNodeValue_Chars(camera_.Get(), "DeviceVendorName", buf, length), -3);
    EXPECT_EQ(GetNodeValue_Chars(camera_.Get(), "DeviceVendorName", buf, length + 1), 0);
    int type = -1, mode = -1;
    EXPECT_EQ(GetNodeType(camera_.Get(), "Root", &type), 0);
    EXPECT_EQ(type, VX3_NODE_OTHER);
    EXPECT_EQ(GetNodeType(camera_.Get(), "AcquisitionStart", &type), 0);
    EXPECT_EQ(type, VX3_NODE_COMMAND);
    EXPECT_EQ(GetNodeType(camera_.Get(), "NoSuchFeature", &type), -1);
    EXPECT_EQ(GetNodeAccessMode(camera_.Get(), "SensorWidth", &mode), 0);
    EXPECT_EQ(mode, VX3_ACCESS_READ_ONLY);
    EXPECT_EQ(SetNodeValue_Command(camera_.Get(), "AcquisitionStop"), 0);
    EXPECT_EQ(Stream_GetNodeValue_Int(camera_.Get(), 0, "Width", &integer), -1)
        << "a soft stream has no features";
}

TEST_F(CApiFeatures, NodesAreListedWithTheirValues) {
    unsigned int count = 0;
    EXPECT_EQ(GetNodes(camera_.Get(), nullptr, 0, nullptr), -1);
    ASSERT_EQ(GetNodes(camera_.Get(), nullptr, 0, &count), -2);
    ASSERT_GT(count, 2u);
    EXPECT_EQ(GetNodes(camera_.Get(), nullptr, count, &count), -1);
    std::vector<NodeRecord> nodes(count);
    ASSERT_EQ(GetNodes(camera_.Get(), nodes.data(), count, &count), 0);
    const auto width = std::find_if(nodes.begin(), nodes.end(), [](const NodeRecord& node) {
        return std::strcmp(node.name, "Width") == 0;
    });
    ASSERT_NE(width, nodes.end());
    EXPECT_STREQ(width->value, "400");
    EXPECT_EQ(width->nameSize, 6u);
    EXPECT_EQ(width->valueSize, 4u);
    for (const NodeRecord& node : nodes) {
        bool streamable = false;
        EXPECT_EQ(GetNodeIsStreamable(camera_.Get(), node.name, &streamable), 0);
        EXPECT_TRUE(streamable) << node.name;
    }
    FreeNodes(nodes.data(), count);
    FreeNodes(nullptr, 3);
}

TEST_F(CApiFeatures, DescriptionIsHandedOut) {
    unsigned int size = 0, length = 0;
    char name[64];
    ASSERT_EQ(SubDevice_GetXmlDataSize(camera_.Get(), &size), 0);
    ASSERT_GT(size, 1000u);
    std::vector<uint8_t> bytes(size);
    EXPECT_EQ(SubDevice_GetXmlData(camera_.Get(), bytes.data(), size - 1), -3);
    EXPECT_EQ(SubDevice_GetXmlData(camera_.Get(), bytes.data(), size), 0);
    EXPECT_NE(std::string(bytes.begin(), bytes.end()).find("RegisterDescription"), std::string::npos);
    EXPECT_EQ(SubDevice_GetXmlName(camera_.Get(), name, sizeof name, &length), 0);
    EXPECT_EQ(length, std::strlen(name));
    EXPECT_EQ(SubDevice_GetXmlName(camera_.Get(), name, length, &length), -3);
    EXPECT_EQ(Stream_GetXmlDataSize(camera_.Get(), 0, &size), -1);
}

TEST_F(CApiFeatures, AllConnectedCamerasAreSet) {
    SubDevice* second = Device_GetSubDeviceByIndex(camera_.Interface(), 1);
    DeviceParamSetResult results[4];
    unsigned int count = 99;
    ASSERT_EQ(SetNodeValueAllDev_Int("Width", 200, results, 4, &count), 0);
    EXPECT_EQ(count, 1u) << "only connected cameras are set";
    ASSERT_EQ(SubDevice_Connect(second), 0);
    ASSERT_EQ(SetNodeValueAllDev_Int("Width", 240, results, 4, &count), 0);
    ASSERT_EQ(count, 2u);
    EXPECT_STREQ(results[0].name, "Virtual Device #1");
    EXPECT_STREQ(results[1].name, "Virtual Device #2");
    EXPECT_EQ(results[0].status, 0);
    int64_t width = 0;
    EXPECT_EQ(GetNodeValue_Int(second, "Width", &width), 0);
    EXPECT_EQ(width, 240);
    ASSERT_EQ(SetNodeValueAllDev_Int("Width", 280, results, 1, &count), 0);
    EXPECT_EQ(count, 1u);
    EXPECT_EQ(GetNodeValue_Int(second, "Width", &width), 0);
    EXPECT_EQ(width, 240) << "beyond the capacity nothing is set";
    EXPECT_EQ(SetNodeValueAllDev_Int("Width", 1, nullptr, 1, &count), -1);

    count = 77;
    EXPECT_EQ(AutoSetNodeValue_Int(second, "Width", 320, results, 4, &count), 0);
    EXPECT_EQ(count, 77u) << "one camera leaves the results alone";
    SetParamSyncEnabled(true);
    EXPECT_EQ(AutoSetNodeValue_Int(second, "Width", 360, results, 4, &count), 0);
    SetParamSyncEnabled(false);
    EXPECT_EQ(count, 2u);
    EXPECT_EQ(GetNodeValue_Int(camera_.Get(), "Width", &width), 0);
    EXPECT_EQ(width, 360);
    EXPECT_EQ(Stream_SetNodeValueAllDev_Int("Width", 1, results, 4, &count), 0);
    EXPECT_EQ(results[0].status, -1) << "soft streams have no features";
    SubDevice_DisConnect(second);
    SubDevice_Destory(second);
}

TEST_F(CApiFeatures, SizeChangesTheNextFrames) {
    ASSERT_EQ(SetNodeValue_Int(camera_.Get(), support::FrameTimeFeature, 1), 0);
    ASSERT_EQ(SetNodeValue_Int(camera_.Get(), "Width", 320), 0);
    ASSERT_EQ(SetNodeValue_Int(camera_.Get(), "Height", 240), 0);
    ASSERT_EQ(SubDevice_OpenStreamByIndex(camera_.Get(), 0, 4), 0);
    ASSERT_EQ(SubDevice_StartStreamByIndex(camera_.Get(), 0, nullptr, nullptr, 0), 0);
    Image* image = SubDevice_SnapA(camera_.Get(), 0, 5000);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(Image_GetImageInfo(image).width, 320u);
    EXPECT_EQ(Image_GetImageInfo(image).height, 240u);
    Image_Recycle(image);
    SubDevice_StopStreamByIndex(camera_.Get(), 0);
    SubDevice_CloseStreamByIndex(camera_.Get(), 0);
}

} // namespace
