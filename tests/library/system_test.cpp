#include "library/Transports.h"
#include "vx3/library/System.h"

#include <gtest/gtest.h>

using namespace VX3;

TEST(System, NamesTransportFamilies) {
    EXPECT_EQ(System::SDKVersion(), "1.0");
    EXPECT_EQ(System::SDKBuildVersion(), "781");
    EXPECT_EQ(System::SupportedDevTypes(), 0U);
    EXPECT_EQ(System::IntfDevType2String(IntfDevType::GigEVision), "GigE Vision");
    EXPECT_EQ(System::IntfDevType2String(IntfDevType::Grabber), "JN Devices");
    EXPECT_EQ(System::IntfDevType2String(static_cast<IntfDevType>(512)), "others");
    EXPECT_EQ(System::String2IntfDevType("Virtual"), IntfDevType::All) << "not the inverse";
    EXPECT_EQ(System::String2IntfDevType("Vritual Interface"), IntfDevType::Virtual);
    EXPECT_EQ(System::String2IntfDevType("gige vision"), IntfDevType::All);
    EXPECT_EQ(System::DeviceType2IntfDevType(0x10010), IntfDevType::Uvc);
    for (const unsigned int other : {0x10008U, 0x10020U, 0x10000U, 0x30001U, 0x10003U, 0U})
        EXPECT_EQ(System::DeviceType2IntfDevType(other), IntfDevType::All) << std::hex << other;
}

TEST(System, DefaultsAreTheProcessWideObjects) {
    EXPECT_EQ(System::DefaultSimpleBufferPool()->Name(), "System Default SimpleBufferPool");
    EXPECT_EQ(System::DefaultRecycleBufferPool(), System::DefaultRecycleBufferPool());
    ASSERT_NE(System::DefaultSystemConfig(), nullptr);
    EXPECT_EQ(System::DefaultSystemConfigString("NoSuchKey", nullptr), "");
    EXPECT_EQ(System::DefaultSystemConfigInteger("NoSuchKey", "NoSuchSection"), 0);
    EXPECT_FALSE(System::DefaultSystemConfigBool("ForceNoFilter", nullptr));
    EXPECT_EQ(System::GetCurrentPath().back(), '/');
}

TEST(System, CreatesManagersOverTheTransportTable) {
    const auto manager = System::CreateManager(1);
    ASSERT_NE(manager, nullptr);
    EXPECT_EQ(manager->DeviceTypeSupported(), std::vector<IntfDevType>{IntfDevType::Virtual});
    EXPECT_EQ(manager->GetDevices(IntfDevType::All), 1) << "constructing enumerates";
    EXPECT_EQ(manager->DeviceName(0, IntfDevType::Virtual), "Virtual Interface 1");
    EXPECT_EQ(manager->TypeId(), 0x060000FFU);

    // The fixed order of families.
    const std::vector<unsigned int> order{1, 2, 32, 8, 128, 1024};
    std::size_t at = 0;
    for (const TransportEntry& transport : Transports()) {
        const auto family = static_cast<unsigned int>(transport.family);
        while (at < order.size() && order[at] != family)
            ++at;
        ASSERT_LT(at, order.size()) << "family " << family << " stands out of order";
        EXPECT_EQ(transport.create(transport.managerName)->Name(), transport.managerName);
        EXPECT_EQ(transport.create("x")->DeviceTypeSupported(), std::vector<IntfDevType>{transport.family});
    }
}
