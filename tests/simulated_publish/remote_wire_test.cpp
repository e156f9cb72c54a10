// What a remote device says on the wire, and the features that its streams may have.
#include "remote/RemoteDevice.h"
#include "remote/RemoteStream.h"
#include "support/LogCapture.h"
#include "support/MemoryOwner.h"
#include "support/TestCamera.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace VX3::Test {
namespace {

using Gvcp::Command;
using Bytes = std::vector<std::uint8_t>;

// Over a camera that remembers what it was asked. It has nothing at a remote device's addresses, so that this
// one is connected without features.
class RemoteWireTest : public testing::Test {
protected:
    RemoteWireTest()
        : remote(std::make_shared<RemoteDevice>("remote", TestCamera::HostParam(), camera.DiscoveryAck(),
                                                nullptr, camera.GvcpPort(), true)) {}
    void SetUp() override {
        ASSERT_EQ(remote->Connect(), Status::Ok);
        camera.ClearSeen();
    }
    // The only command of its kind that was seen.
    Simulated::SeenCommand Seen(Command command) const {
        const auto all = camera.Seen();
        const auto is = [&](const auto& seen) { return seen.command == command && seen.address != 0x0A00; };
        EXPECT_EQ(std::count_if(all.begin(), all.end(), is), 1);
        const auto found = std::find_if(all.begin(), all.end(), is);
        return found != all.end() ? *found : Simulated::SeenCommand{};
    }

    LogCapture log;
    TestCamera camera;
    std::shared_ptr<RemoteDevice> remote;
};

TEST_F(RemoteWireTest, RegistersLieBehindABitAndTravelAsNumbers) {
    unsigned char bytes[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_EQ(remote->ReadPort(0x1000, bytes, 4), Status::FromGvcp(Gvcp::AckStatus::InvalidAddress));
    EXPECT_EQ(Seen(Command::ReadReg).address, 0x80001000U);
    EXPECT_TRUE(Failed(remote->WritePort(0x11000, bytes, 4)));
    std::uint32_t number = 0;
    std::memcpy(&number, bytes, 4);
    EXPECT_EQ(Seen(Command::WriteReg).address, 0x80011000U);
    EXPECT_EQ(Seen(Command::WriteReg).value, number);
    EXPECT_TRUE(Failed(remote->ReadPort(0x2001, bytes, 3)));
    EXPECT_EQ(Seen(Command::ReadMem).address, 0x80002001U);
    EXPECT_EQ(Seen(Command::ReadMem).value, 3U) << "no more than is wanted";
    camera.ClearSeen();
    EXPECT_TRUE(Failed(remote->WritePort(0xD04, bytes, 4)));
    EXPECT_EQ(Seen(Command::WriteReg).value, 0x01020304U) << "the server's own registers are as everywhere";
}

TEST_F(RemoteWireTest, PauseAndRestartAreTexts) {
    ASSERT_EQ(remote->StreamCnt(), 1U);
    (void)remote->ShareStream(0)->Pause(); // this camera has no such address
    Simulated::SeenCommand seen = Seen(Command::WriteMem);
    EXPECT_EQ(seen.address, 0x0FC0U);
    EXPECT_EQ(seen.data, (Bytes{'p', 'a', 'u', 's', 'e', ' ', '0', 0}));
    camera.ClearSeen();
    RemoteStream second("", remote.get(), 1, false, remote.get(), camera.GvcpPort());
    (void)second.Restart();
    seen = Seen(Command::WriteMem);
    EXPECT_EQ(seen.data, (Bytes{'r', 'e', 's', 't', 'a', 'r', 't', ' ', '1', 0, 0, 0}));
    RemoteStream orphan("", nullptr, 0, false, remote.get(), camera.GvcpPort());
    EXPECT_EQ(orphan.Pause(), Status::WrongState);
    EXPECT_EQ(orphan.Restart(), Status::WrongState);
}

TEST_F(RemoteWireTest, AStreamsFeaturesComeByTheExtendedCommands) {
    const auto stream = std::dynamic_pointer_cast<RemoteStream>(remote->ShareStream(0));
    ASSERT_NE(stream, nullptr);
    EXPECT_FALSE(stream->IsConfigurable());
    EXPECT_EQ(stream->GetXmlUrlAddr(), -1);
    EXPECT_EQ(stream->CreateConfigurer("no description"), Status::NotAvailable);
    EXPECT_FALSE(stream->IsConfigurable());
    std::string description = DescriptionOf(
        "<IntReg Name=\"Depth\"><Address>0x123456789C</Address><Length>4</Length><AccessMode>RW</AccessMode>"
        "<pPort>StreamPort</pPort></IntReg><IntReg Name=\"Here\"><Address>0xB000</Address><Length>4</Length>"
        "<AccessMode>RW</AccessMode><pPort>StreamPort</pPort><Endianess>BigEndian</Endianess></IntReg>"
        "<Port Name=\"StreamPort\"/>");
    ASSERT_EQ(stream->CreateConfigurer(description), Status::Ok);
    ASSERT_TRUE(stream->IsConfigurable());
    EXPECT_TRUE(stream->GetConfigurer()->GetNodeValue("Depth").IsEmpty());
    EXPECT_EQ(Seen(Command::ReadMemEx).address, 0x123456789CULL);
    EXPECT_EQ(stream->GetConfigurer()->SetNodeValue("Here", 77), Status::Ok);
    EXPECT_EQ(camera.Register(0xB000), 77U);
    EXPECT_EQ(stream->GetConfigurer()->GetNodeValue("Here").AsInteger(), 77);
}

} // namespace
} // namespace VX3::Test
