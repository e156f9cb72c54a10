#include "device/ManagerAll.h"
#include "support/FakeDevice.h"

#include <gtest/gtest.h>

namespace VX3::Test {
namespace {

using Names = std::vector<std::string>;

std::vector<std::shared_ptr<IDevice>> Devices(const Names& names) {
    std::vector<std::shared_ptr<IDevice>> devices;
    for (const std::string& name : names)
        devices.push_back(std::make_shared<FakeDevice>(name.c_str()));
    return devices;
}

TransportEntry Entry(IntfDevType family, const Names& interfaces, StatusCode status = Status::Ok) {
    return {family, "Fake", [=](const char* name) {
                return std::make_unique<FakeManager>(family, name, Devices(interfaces), status);
            }};
}

TransportTable Table() {
    return {Entry(IntfDevType::Virtual, {"v0"}), Entry(IntfDevType::GigEVision, {"g0", "g1", "g2"}),
            Entry(IntfDevType::GenCP, {}, Status::NotAvailable), Entry(IntfDevType::Remote, {"r0", ""})};
}

TEST(ManagerAll, BuildsTheRequestedFamiliesInTableOrderAndEnumeratesOnce) {
    ManagerAll manager(1024 | 2, nullptr, Table());
    EXPECT_EQ(manager.DeviceTypeSupported(),
              (std::vector<IntfDevType>{IntfDevType::GigEVision, IntfDevType::Remote}));
    EXPECT_EQ(manager.TypeId(), 0x060000FFU);
    EXPECT_EQ(manager.ObjType(), 0x06000000U);
    EXPECT_EQ(manager.Name(), "");
    EXPECT_EQ(manager.GetDevices(IntfDevType::All), 5);

    ManagerAll nothing(4 | 16 | 64 | 256, "none", Table());
    EXPECT_TRUE(nothing.DeviceTypeSupported().empty());
    EXPECT_EQ(nothing.GetDevice(0, IntfDevType::All), nullptr);
}

TEST(ManagerAll, CountsAndSelectsAcrossFamilies) {
    ManagerAll manager(65535, "all", Table());
    EXPECT_EQ(manager.EnumDevices(), 6) << "the family that fails counts as 0";
    EXPECT_EQ(manager.GetDevices(IntfDevType::GigEVision), 3);
    EXPECT_EQ(manager.GetDevices(IntfDevType::Usb3Vision), 0);
    const std::tuple<unsigned int, IntfDevType, const char*> selections[] = {
        {0, IntfDevType::All, "v0"},        {3, IntfDevType::All, "g2"},
        {4, IntfDevType::All, "r0"},        {6, IntfDevType::All, nullptr},
        {2, IntfDevType::GigEVision, "g2"}, {3, IntfDevType::GigEVision, nullptr},
        {0, IntfDevType::Uvc, nullptr}};
    for (const auto& [index, type, name] : selections) {
        const auto device = manager.GetDevice(index, type);
        EXPECT_EQ(device ? device->Name() : "none", name != nullptr ? name : "none") << index;
        EXPECT_EQ(manager.DeviceName(index, type), name != nullptr ? name : "") << index;
    }
    EXPECT_EQ(manager.GetDevice("r0")->Name(), "r0");
    EXPECT_NE(manager.GetDevice(""), nullptr) << "one device has an empty name";
    EXPECT_EQ(manager.GetDevice("R0"), nullptr);
}

TEST(ManagerAbs, AnswersForItsOwnFamilyOnly) {
    FakeManager manager(IntfDevType::Usb3Vision, "usb", Devices({"a", "b"}));
    EXPECT_EQ(manager.TypeId(), 0x06000003U);
    EXPECT_EQ(FakeManager(IntfDevType::GenCP, "cl", {}).TypeId(), 0x06000000U);
    EXPECT_EQ(manager.EnumDevices(), 2);
    EXPECT_EQ(manager.GetDevices(IntfDevType::GigEVision), 0);
    EXPECT_EQ(manager.GetDevice(0, IntfDevType::GigEVision), nullptr);
    const auto kept = manager.GetDevice(1, IntfDevType::Usb3Vision);
    ASSERT_NE(kept, nullptr);

    std::vector<std::shared_ptr<IDevice>> none;
    EXPECT_EQ(manager.UpdateDevices(none, IntfDevType::GigEVision), Status::WrongState);
    EXPECT_EQ(manager.GetDevices(IntfDevType::All), 2);
    EXPECT_EQ(manager.UpdateDevices(none, IntfDevType::Usb3Vision), 0);
    EXPECT_EQ(kept->Name(), "b") << "a device that is held outlives the list";
}

} // namespace
} // namespace VX3::Test
