#include "device/ManagerAll.h"
#include "support/FakeDevice.h"

#include <gtest/gtest.h>

using namespace VX3;
using Testing::FakeDevice;

namespace {

class FakeManager : public ManagerAbs {
public:
    FakeManager(IntfDevType type, const char* name, std::vector<std::string> interfaces,
                StatusCode status = 0)
        : ManagerAbs(type, name), interfaces_(std::move(interfaces)), status_(status) {}

    StatusCode EnumDevices() override {
        if (Failed(status_))
            return status_;
        std::vector<std::shared_ptr<IDevice>> devices;
        for (const auto& name : interfaces_)
            devices.push_back(std::make_shared<FakeDevice>(name.c_str()));
        return UpdateDevices(devices, IntfDevType::All);
    }
    using ManagerAbs::UpdateDevices;

private:
    std::vector<std::string> interfaces_;
    StatusCode status_;
};

TransportEntry Entry(IntfDevType family, std::vector<std::string> interfaces, StatusCode status = 0) {
    return {family, "Fake", [=](const char* name) {
                return std::make_unique<FakeManager>(family, name, interfaces, status);
            }};
}

TransportTable Table() {
    return {Entry(IntfDevType::Virtual, {"v0"}), Entry(IntfDevType::GigEVision, {"g0", "g1", "g2"}),
            Entry(IntfDevType::GenCP, {}, Status::NotAvailable), Entry(IntfDevType::Remote, {"r0", ""})};
}

constexpr unsigned int Bits(IntfDevType a, IntfDevType b) {
    return static_cast<unsigned int>(a) | static_cast<unsigned int>(b);
}

} // namespace

TEST(ManagerAll, BuildsTheRequestedFamiliesInTableOrderAndEnumeratesOnce) {
    ManagerAll manager(Bits(IntfDevType::Remote, IntfDevType::GigEVision), nullptr, Table());
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
    EXPECT_EQ(manager.GetDevice(0, IntfDevType::All)->Name(), "v0");
    EXPECT_EQ(manager.GetDevice(3, IntfDevType::All)->Name(), "g2");
    EXPECT_EQ(manager.DeviceName(4, IntfDevType::All), "r0");
    EXPECT_EQ(manager.GetDevice(6, IntfDevType::All), nullptr);
    EXPECT_EQ(manager.DeviceName(6, IntfDevType::All), "");
    EXPECT_EQ(manager.GetDevice(2, IntfDevType::GigEVision)->Name(), "g2");
    EXPECT_EQ(manager.GetDevice(3, IntfDevType::GigEVision), nullptr);
    EXPECT_EQ(manager.GetDevice(0, IntfDevType::Uvc), nullptr);
    EXPECT_EQ(manager.GetDevice("r0")->Name(), "r0");
    EXPECT_NE(manager.GetDevice(""), nullptr) << "one device has an empty name";
    EXPECT_EQ(manager.GetDevice("R0"), nullptr);
}

TEST(ManagerAbs, AnswersForItsOwnFamilyOnly) {
    FakeManager manager(IntfDevType::Usb3Vision, "usb", {"a", "b"});
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
