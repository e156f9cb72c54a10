// What a published camera answers: its identity, who controls it, and which register is whose.
#include "PublishedLab.h"
#include "device/RemotableDevice.h"
#include "gev/protocol/DiscoveryInfo.h"
#include "support/FakeDevice.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

namespace VX3::Test {
namespace {

namespace AckStatus = Gvcp::AckStatus;
using namespace std::chrono_literals;
using Bytes = PublishedLab::Bytes;

// Registers in memory, from address 0; no texts of its own.
class SharedDevice final : public RemotableDevice<FakeDevice> {
public:
    using RemotableDevice::RemotableDevice;
    ~SharedDevice() override { Shutdown(); }
};

std::shared_ptr<SharedDevice> MemoryCamera() {
    auto device = std::make_shared<SharedDevice>("memory");
    device->memory.resize(0x4000);
    for (std::size_t i = 0; i < device->memory.size(); ++i)
        device->memory[i] = static_cast<unsigned char>(i * 7 + i / 256);
    return device;
}

TEST(PublishedRegisters, AFreshCameraTellsItsIdentity) {
    for (const unsigned slot : {0U, 3U}) {
        PublishedLab lab(MemoryCamera(), {}, slot);
        const std::pair<std::uint32_t, std::uint32_t> constants[] = {
            {0x0000, 0x00020001}, {0x0004, 0x01000003}, {0x0008, 0x00001234}, {0x000C, 0x567890AB + slot},
            {0x0010, 0xC0000000}, {0x0014, 0x20000000}, {0x0024, 0xC0A80064}, {0x0034, 0xFFFFFF00},
            {0x0044, 0xC0A80001}, {0x0600, 1},          {0x064C, 0xC0A80064}, {0x065C, 0xFFFFFF00},
            {0x066C, 0xC0A80001}, {0x0670, 1000},       {0x0900, 1},          {0x0904, 1},
            {0x0938, 3000},       {0x0958, 3500},       {0x0D04, 1500},       {0x80000D04, 1500}};
        for (const auto& [address, value] : constants)
            EXPECT_EQ(lab.Read(address), value) << std::hex << address;
        GevDiscoveryInfo info;
        const Bytes ack = lab.Ask(PublishedLab::Command(0x0002, {}));
        ASSERT_EQ(ack.size(), 256U);
        ASSERT_TRUE(DecodeDiscoveryPayload({ack.data() + 8, 248}, info));
        EXPECT_EQ(info.manufacturerName, "Test");
        EXPECT_EQ(info.modelName, "test-100");
        EXPECT_EQ(info.deviceVersion, "0.0.0");
        EXPECT_EQ(info.manufacturerInfo, "Test");
        EXPECT_EQ(info.serialNumber, slot == 0 ? "1234567890" : "1234567893");
        EXPECT_EQ(info.currentIp, 0x7F000001U) << "where the asker reaches it, whatever its registers say";
        EXPECT_EQ(info.subnetMask, 0xFF000000U);
    }
    GevDiscoveryInfo info;
    PublishedLab lab(SmallCamera());
    const Bytes ack = lab.Ask(PublishedLab::Command(0x0002, {}));
    ASSERT_TRUE(DecodeDiscoveryPayload({ack.data() + 8, ack.size() - 8}, info));
    EXPECT_EQ(info.modelName, "Pattern") << "the camera's own texts, where it has them";
    EXPECT_EQ(info.serialNumber, "000001");
}

TEST(PublishedRegisters, OneHostControlsAndIsWrittenDown) {
    PublishedLab lab(MemoryCamera());
    EXPECT_EQ(lab.Write(0x11000, 1), AckStatus::AccessDenied) << "nobody may yet";
    ASSERT_EQ(lab.Write(0x0A00, 2), AckStatus::Success);
    EXPECT_TRUE(dynamic_cast<SharedDevice&>(*lab.device).IsConnectedRemotely());
    EXPECT_EQ(lab.Read(0x0024), 0x7F000001U);
    EXPECT_EQ(lab.Read(0x0034), 0xFF000000U);
    EXPECT_EQ(lab.published->State().controller.port, Host.port);
    EXPECT_EQ(lab.Write(0x0A00, 2), AckStatus::Success) << "the controller says again that it lives";
    for (const std::uint32_t value : {2U, 0U})
        EXPECT_EQ(lab.Write(0x0A00, value, Other), AckStatus::AccessDenied);
    EXPECT_EQ(lab.Read(0x0A00, Other), 2U) << "monitors may read";
    EXPECT_EQ(lab.Write(0x0938, 100), AckStatus::Success);
    EXPECT_EQ(lab.Read(0x0938), 500U) << "no shorter heartbeat than this";
    ASSERT_EQ(lab.Write(0x0938, 9000), AckStatus::Success);
    lab.Pass(8999ms);
    EXPECT_EQ(lab.Read(0x0A00, Other), 2U);
    lab.Pass(1ms);
    EXPECT_EQ(lab.Read(0x0A00, Other), 0U) << "silent for as long as it said";
    for (const std::uint32_t address : {0x0024U, 0x0034U, 0x0044U, 0x0A04U, 0x0A14U})
        EXPECT_EQ(lab.Read(address), 0U) << std::hex << address;
    EXPECT_FALSE(dynamic_cast<SharedDevice&>(*lab.device).IsConnectedRemotely());
    EXPECT_EQ(lab.Write(0x0A00, 2, Other), AckStatus::Success);
}

TEST(PublishedRegisters, ACameraThatCannotBeHadIsNotControlled) {
    const auto camera = MemoryCamera();
    camera->connectStatus = Status::TimeOut;
    PublishedLab lab(camera);
    EXPECT_EQ(lab.Write(0x0A00, 2), AckStatus::Error);
    EXPECT_EQ(lab.Read(0x0A00), 0U);
    camera->connectStatus = Status::Ok;
    EXPECT_EQ(lab.Write(0x0A00, 2, Other), AckStatus::Success) << "the other one did not get stuck with it";
}

TEST(PublishedRegisters, AddressesLeadToTheCamera) {
    const auto camera = MemoryCamera();
    PublishedLab lab(camera);
    const unsigned char* const bytes = camera->memory.data();
    ASSERT_EQ(lab.Write(0x0A00, 2), AckStatus::Success);
    // Without the remote bit READREG and READMEM give the same bytes; with it the number travels.
    for (const std::uint32_t window : {0x10000U, 0U})
        for (const std::uint32_t home : {0x1000U, 0x2004U}) {
            std::uint32_t number = 0;
            std::memcpy(&number, bytes + home, 4);
            EXPECT_EQ(lab.Read(window + home), Wire::Load<std::uint32_t>(bytes + home));
            EXPECT_EQ(lab.ReadMemory(window + home, 4), Bytes(bytes + home, bytes + home + 4));
            EXPECT_EQ(lab.Read(0x80000000 + window + home), number);
            EXPECT_EQ(lab.ReadMemory(0x80000000 + window + home, 8), Bytes(bytes + home, bytes + home + 8));
        }
    EXPECT_EQ(lab.Read(0x10000 + 0xD00), Wire::Load<std::uint32_t>(bytes + 0xD00)) << "not the server's";
    EXPECT_EQ(lab.ReadMemory(0x11000, 6), (Bytes{bytes[0x1000], bytes[0x1001], bytes[0x1002], bytes[0x1003],
                                                 bytes[0x1004], bytes[0x1005], 0, 0}));
    ASSERT_EQ(lab.Write(0x11000, 0x01020304), AckStatus::Success);
    EXPECT_EQ(Bytes(bytes + 0x1000, bytes + 0x1004), (Bytes{1, 2, 3, 4}));
    ASSERT_EQ(lab.Write(0x80011000, 0x01020304), AckStatus::Success);
    EXPECT_EQ(Bytes(bytes + 0x1000, bytes + 0x1004), (Bytes{4, 3, 2, 1}));
    ASSERT_EQ(lab.WriteText("abcdefg", 0x11010), AckStatus::Success);
    EXPECT_EQ(std::string(bytes + 0x1010, bytes + 0x1018), std::string("abcdefg\0", 8));
    // Extended commands take the camera's addresses as they are.
    const Bytes ack = lab.Ask(PublishedLab::Command(0x8084, {0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 4}));
    EXPECT_EQ(PublishedLab::StatusOf(ack), AckStatus::InvalidAddress) << "4 GiB is outside this camera";
}

TEST(PublishedRegisters, EveryWrongAccessIsAnsweredWithItsStatus) {
    const auto camera = MemoryCamera();
    PublishedLab lab(camera);
    ASSERT_EQ(lab.Write(0x0A00, 2), AckStatus::Success);
    const auto read = [&](std::uint32_t address) {
        return PublishedLab::StatusOf(lab.Ask(PublishedLab::Command(0x0080, PublishedLab::Words({address}))));
    };
    EXPECT_EQ(read(0x0002), AckStatus::BadAlignment);
    EXPECT_EQ(read(0x14000), AckStatus::InvalidAddress) << "behind the camera's last register";
    EXPECT_EQ(read(0x48000000), AckStatus::InvalidAddress) << "no description";
    EXPECT_EQ(read(0x7FFFFFFC), AckStatus::InvalidAddress);
    EXPECT_EQ(lab.Write(0x000C, 1), AckStatus::WriteProtect) << "what it is, is not written";
    EXPECT_EQ(lab.Write(0x064C, 1), AckStatus::WriteProtect) << "nor is this host's address";
    Bytes force(56);
    Wire::Store<std::uint16_t>(force.data() + 2, 0x1234);
    Wire::Store<std::uint32_t>(force.data() + 4, 0x567890AB);
    EXPECT_EQ(PublishedLab::StatusOf(lab.Ask(PublishedLab::Command(0x0004, force))),
              AckStatus::NotImplemented);
    EXPECT_EQ(lab.Write(0x48000000, 1), AckStatus::WriteProtect);
    EXPECT_EQ(lab.Write(0x14000, 1), AckStatus::Error);
    camera->failingWrite = 0x1000;
    EXPECT_EQ(lab.Write(0x11000, 1), AckStatus::Error);
    const Bytes refused = lab.Ask(PublishedLab::Command(0x0082, PublishedLab::Words({0x11000, 1})));
    ASSERT_EQ(refused.size(), 12U);
    EXPECT_EQ(PublishedLab::WordOf(refused), 1U) << "the index, always";
    EXPECT_EQ(
        PublishedLab::StatusOf(lab.Ask(PublishedLab::Command(0x0086, Bytes{0, 0, 0x0A, 0, 0, 0, 0, 2}))),
        AckStatus::WriteProtect)
        << "control is not a matter of memory";

    StatusCode status = Status::Ok;
    std::uint32_t value = 0;
    GevBootStrapRegs registers({}, 56001, {});
    for (const std::uint32_t address : {4093U, 5000U}) {
        status = registers.WriteReg32(address, 1);
        EXPECT_EQ(status, Status::NotFound);
        status = registers.ReadReg32(address, value);
        EXPECT_EQ(status, Status::NotFound);
    }
    EXPECT_EQ(registers.Value(Bootstrap::StreamSourcePort), 56001U);
}

TEST(PublishedRegisters, ALostCameraIsReportedAsSuch) {
    PublishedLab lab(MemoryCamera());
    ASSERT_EQ(lab.Write(0x0A00, 2), AckStatus::Success);
    dynamic_cast<SharedDevice&>(*lab.device).ReportLost();
    lab.Pass(10ms);
    const auto read = [&](std::uint32_t address) {
        return PublishedLab::StatusOf(lab.Ask(PublishedLab::Command(0x0080, PublishedLab::Words({address}))));
    };
    EXPECT_EQ(read(0x11000), AckStatus::LocalProblem);
    EXPECT_EQ(read(0x0938), AckStatus::Success) << "the server is still there";
    EXPECT_TRUE(lab.published->State().cameraLost);
    lab.device.reset();
    EXPECT_EQ(read(0x11000), AckStatus::LocalProblem);
    EXPECT_EQ(lab.Write(0x11000, 1), AckStatus::LocalProblem);
    LogCapture log;
    EXPECT_EQ(lab.Write(0x0A00, 0), AckStatus::Success);
    EXPECT_TRUE(log.Has("GevSimuDevie trying to close a invalid local device."));
}

TEST(PublishedRegisters, TheDescriptionIsFetchedByItsUrl) {
    PublishedLab lab(SmallCamera());
    EXPECT_EQ(lab.ReadMemory(0x0200, 8), Bytes(8)) << "not while nobody has connected it";
    ASSERT_EQ(lab.Write(0x0A00, 2), AckStatus::Success);
    const Bytes text = lab.ReadMemory(0x80000200, 512);
    const std::string url(text.begin(), std::find(text.begin(), text.end(), 0));
    unsigned address = 0;
    unsigned size = 0;
    ASSERT_EQ(std::sscanf(url.c_str(), "Local:Pattern.zip;%X;%X", &address, &size), 2) << url;
    std::string archive;
    for (unsigned at = 0; at < size; at += 512) {
        const Bytes piece = lab.ReadMemory(address + at, std::min(512U, size - at));
        archive.append(piece.begin(), piece.end());
    }
    EXPECT_EQ(archive.substr(0, 4), "PK\x03\x04");
    EXPECT_GE(archive.size(), size);
    EXPECT_EQ(lab.Read(0x0940), 976563U) << "ticks of its images' time stamps";
    ASSERT_EQ(lab.Write(0x0944, 2), AckStatus::Success);
    EXPECT_NE(lab.Read(0x0948), 0U) << "a time stamp";
}

} // namespace
} // namespace VX3::Test
