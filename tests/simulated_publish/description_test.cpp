// The description that hosts get, and where its addresses lead.
#include "genicam/GenApiRI.h"
#include "gev/protocol/RemoteAddresses.h"
#include "platform/archive/ZipArchive.h"
#include "simulated/publish/PublishedDescription.h"
#include "support/MemoryOwner.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>

namespace VX3::Test {
namespace {

using Place = AddressWindow::Place;

std::string Unzipped(const PublishedDescription& description) {
    return UnzipOnly(description.archive, ".xml").bytes;
}

// A port that notes which addresses a node map asks for, and answers with zeros.
class NotingOwner : public IGenIObj {
public:
    StatusCode ReadPort(unsigned long long address, unsigned char* buffer, unsigned int length) override {
        std::memset(buffer, 0, length);
        last = address;
        return static_cast<StatusCode>(length);
    }
    StatusCode WritePort(unsigned long long address, const unsigned char*, unsigned int length) override {
        last = address;
        return static_cast<StatusCode>(length);
    }
    std::int64_t GetXmlUrlAddr() override { return -1; }
    bool IsManifestSupported() override { return false; }

    unsigned long long last = ~0ULL;
};

std::string Reg(const char* name, const std::string& address, const char* more = "") {
    return std::string("<IntReg Name=\"") + name + "\">" + address +
           "<Length>4</Length><AccessMode>RW</AccessMode>" + more +
           "<pPort>Device</pPort><Cachable>NoCache</Cachable></IntReg>";
}

// Cameras of every habit: far addresses, addresses behind links and formulas, other ports, features of the
// server's names.
const std::string Camera = DescriptionOf(
    "<Category Name=\"Root\"><pFeature>Near</pFeature></Category>" + Reg("Near", "<Address>0x40</Address>") +
    Reg("Far", "<Address>0xF0F00614</Address>") + Reg("Highest", "<Address>0xFFFFFFFFFFFFFFF0</Address>") +
    "<Integer Name=\"Base\"><Value>0x30000000</Value></Integer>" +
    Reg("Linked", "<pAddress>Base</pAddress><Address>0x10</Address>") +
    Reg("Calculated", "<IntSwissKnife Name=\"K\"><Formula>0x100 + 0x20</Formula></IntSwissKnife>") +
    Reg("StartReg", "<Address>0x700</Address>") + Reg("StopReg", "<Address>0x704</Address>") +
    "<Command Name=\"AcquisitionStart\"><pValue>Start</pValue><CommandValue>1</CommandValue></Command>"
    "<Integer Name=\"Start\"><pValue>StartReg</pValue></Integer>"
    "<Command Name=\"AcquisitionStop\"><pValue>StopReg</pValue><CommandValue>0</CommandValue></Command>" +
    Reg("GevSCPSPacketSize", "<Address>0x12340</Address>") +
    "<Integer Name=\"TLParamsLocked\"><Value>0</Value></Integer>"
    "<StructReg Comment=\"s\"><Address>0x800</Address><Length>4</Length><AccessMode>RW</AccessMode>"
    "<pPort>Device</pPort><Endianess>BigEndian</Endianess><StructEntry "
    "Name=\"Bit\"><Bit>3</Bit></StructEntry></StructReg>"
    "<Register Name=\"Chunk\"><Address>0x20</Address><Length>4</Length><AccessMode>RO</AccessMode>"
    "<pPort>ChunkPort</pPort></Register><Port Name=\"ChunkPort\"><ChunkID>1</ChunkID></Port>");

TEST(PublishedDescription, MovesEveryRegisterIntoTheWindowAndBack) {
    const auto published = PublishedDescription::Make("A <camera>", Camera, false);
    ASSERT_EQ(published.failure, "");
    EXPECT_EQ(published.url.substr(0, 28), "Local:A__camera_.zip;4800000");
    EXPECT_EQ(published.ignoredRegisters, (std::vector<std::uint64_t>{0x700, 0x704}));

    const auto owner = std::make_shared<NotingOwner>();
    const GenApiRI nodes(Xml("camera.xml", Unzipped(published)), owner, nullptr);
    const auto map = const_cast<GenApiRI&>(nodes).GetNodeMap();
    ASSERT_NE(map, nullptr) << nodes.Failure();
    const std::map<std::string, std::uint64_t> homes = {
        {"Near", 0x40},         {"Far", 0xF0F00614},   {"Highest", 0xFFFFFFFFFFFFFFF0},
        {"Linked", 0x30000010}, {"Calculated", 0x120}, {"StartReg", 0x700},
        {"Bit", 0x800}};
    for (const auto& [name, home] : homes) {
        GenICam::INode* const node = map->GetNode(name);
        ASSERT_NE(node, nullptr) << name;
        (void)dynamic_cast<GenICam::IInteger&>(*node).GetValue(false, true);
        ASSERT_GE(owner->last, AddressWindow::ServerEnd) << name;
        ASSERT_LT(owner->last, RemoteAddresses::RemoteBit) << name << ": the remote bit must stay free";
        const auto route = published.window.Find(static_cast<std::uint32_t>(owner->last), 4);
        EXPECT_EQ(route.place, Place::Camera) << name;
        EXPECT_EQ(route.address, home) << name;
    }
    const std::map<std::string, std::uint64_t> servers = {{"GevSCPSPacketSize", 0xD04},
                                                          {"GevHeartbeatTimeout", 0x938},
                                                          {"GevTimestampValue", 0x948},
                                                          {"GevTimestampTickFrequency", 0x93C}};
    for (const auto& [name, address] : servers) {
        GenICam::INode* const node = map->GetNode(name);
        ASSERT_NE(node, nullptr) << name;
        (void)dynamic_cast<GenICam::IInteger&>(*node).GetValue(false, true);
        EXPECT_EQ(owner->last, address) << name;
    }
    EXPECT_NE(map->GetNode("TransportLayerControl"), nullptr);
    EXPECT_NE(Unzipped(published).find("<Address>0x20</Address>"), std::string::npos)
        << "another port's stay";
}

TEST(PublishedDescription, AGigEVisionCamerasBootstrapRegistersAreTheServers) {
    const std::string camera =
        DescriptionOf("<Category Name=\"Root\"/>" + Reg("GevSCDA", "<Address>0xD18</Address>") +
                      Reg("Own", "<Address>0x100</Address>") + Reg("Width", "<Address>0xA000</Address>"));
    for (const bool gigE : {true, false}) {
        const auto published = PublishedDescription::Make("c", camera, gigE);
        const auto owner = std::make_shared<NotingOwner>();
        GenApiRI nodes(Xml("camera.xml", Unzipped(published)), owner, nullptr);
        ASSERT_NE(nodes.GetNodeMap(), nullptr);
        (void)nodes.GetNodeValue("GevSCDA");
        EXPECT_EQ(owner->last, gigE ? 0xD18U : 0x10D18U);
        (void)nodes.GetNodeValue("Own");
        EXPECT_EQ(owner->last, 0x10100U) << "no register of the standard's";
        (void)nodes.GetNodeValue("Width");
        EXPECT_EQ(owner->last, 0x1A000U);
    }
}

TEST(PublishedDescription, ACommandWhoseRegisterIsUnknownIsTakenByTheServer) {
    const std::string camera =
        DescriptionOf("<Category Name=\"Root\"/><Command "
                      "Name=\"AcquisitionStart\"><pValue>R</pValue><CommandValue>1</CommandValue>"
                      "</Command>" +
                      Reg("R", "<IntSwissKnife Name=\"K\"><Formula>0x700</Formula></IntSwissKnife>"));
    const auto published = PublishedDescription::Make("c", camera, false);
    EXPECT_TRUE(published.ignoredRegisters.empty());
    const auto owner = std::make_shared<NotingOwner>();
    GenApiRI nodes(Xml("camera.xml", Unzipped(published)), owner, nullptr);
    GenICam::NodeValue execute(GenICam::CommandValue::Execute);
    ASSERT_EQ(nodes.SetNodeValue("AcquisitionStart", execute), Status::Ok);
    EXPECT_EQ(owner->last, 0xFB0U);
}

TEST(PublishedDescription, WhatIsNoDescriptionHasNone) {
    for (const char* text : {"", "no XML", "<a/>", "<RegisterDescription", "PK\x03\x04 torn"}) {
        const auto published = PublishedDescription::Make("c", text, false);
        EXPECT_NE(published.failure, "") << text;
        EXPECT_EQ(published.url, "") << text;
    }
    // A zip archive is opened.
    const auto published = PublishedDescription::Make("c", ZipOne("c.xml", Camera), false);
    EXPECT_EQ(published.failure, "");
    EXPECT_EQ(published.ignoredRegisters.size(), 2U);
}

TEST(AddressWindow, EdgesBelongToOnePlaceOnly) {
    AddressWindow window;
    const auto place = [&](std::uint32_t address, std::size_t size) {
        return window.Find(address, size).place;
    };
    EXPECT_EQ(place(0xFFC, 4), Place::Server);
    EXPECT_EQ(place(0xFFC, 8), Place::Nowhere);
    EXPECT_EQ(place(0x1000, 4), Place::Camera);
    EXPECT_EQ(place(0xFFFC, 8), Place::Nowhere);
    EXPECT_EQ(window.Find(0x10000, 4).address, 0U);
    EXPECT_EQ(place(0x4000FFFC, 4), Place::Camera);
    EXPECT_EQ(place(0x40010000, 4), Place::Nowhere);
    EXPECT_EQ(place(0x47FFFFFC, 8), Place::Nowhere);
    EXPECT_EQ(place(0x48000000, 512), Place::Description);
    EXPECT_EQ(place(0x50000000, 4), Place::Nowhere) << "no page yet";
    for (std::uint64_t page = 0; page < AddressWindow::MostPages; ++page)
        ASSERT_TRUE(window.ShiftOf(0x80000000 + page * AddressWindow::PageSize));
    EXPECT_FALSE(window.ShiftOf(0x7F000000)) << "all are taken";
    EXPECT_TRUE(window.ShiftOf(0x80000004)) << "by others than this one";
    EXPECT_EQ(window.Find(0x7FFFFFFC, 4).address, 0xAFFFFFFCU);
    EXPECT_EQ(place(0x7FFFFFFC, 8), Place::Nowhere);
    EXPECT_EQ(place(0x50FFFFFC, 8), Place::Nowhere) << "over the edge of a page";
}

} // namespace
} // namespace VX3::Test
