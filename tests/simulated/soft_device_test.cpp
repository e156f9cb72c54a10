#include "simulated/SoftDevice.h"
#include "simulated/VirtualDevice.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

using namespace VX3;

namespace {

std::string Url(SoftDevice& device) {
    unsigned char text[SoftDevice::UrlSize];
    EXPECT_EQ(device.ReadPort(0x80000000, text, sizeof(text)), 512);
    EXPECT_EQ(text[511], 0);
    return reinterpret_cast<const char*>(text);
}

std::uint32_t Read(IGenIObj& device, unsigned long long address) {
    unsigned char bytes[4]{};
    EXPECT_EQ(device.ReadPort(address, bytes, 4), 4);
    std::uint32_t value = 0;
    std::memcpy(&value, bytes, 4);
    return value;
}

StatusCode Write(IGenIObj& device, unsigned long long address, std::uint32_t value) {
    unsigned char bytes[4];
    std::memcpy(bytes, &value, 4);
    return device.WritePort(address, bytes, 4);
}

} // namespace

TEST(SoftDevice, PublishesWhereItsDescriptionIs) {
    EXPECT_EQ(Url(*std::make_shared<SoftDevice>("d", "/a/b/cam.xml", nullptr)), "File:cam.xml");
    EXPECT_EQ(Url(*std::make_shared<SoftDevice>("d", "C:\\dir\\cam.xml", nullptr)), "File:cam.xml");
    EXPECT_EQ(Url(*std::make_shared<SoftDevice>("d", "cam.xml", nullptr)), "File:cam.xml");
    EXPECT_EQ(Url(*std::make_shared<SoftDevice>("d", std::string(600, 'x').c_str(), nullptr)).size(), 511U);

    std::unique_ptr<unsigned char[]> xml(new unsigned char[1000]);
    std::memset(xml.get(), 'q', 1000);
    auto device = std::make_shared<SoftDevice>("d", "cam.xml", std::move(xml), 1000, nullptr);
    EXPECT_EQ(Url(*device), "Local:cam.xml;81000000;3e8");
    EXPECT_EQ(device->GetXmlUrlAddr(), 0x80000000LL);
    const auto description = device->GetXmlData();
    ASSERT_NE(description, nullptr);
    EXPECT_EQ(description->GetXmlDataSize(), 1000U);
    EXPECT_EQ(description->GetXmlData()[999], 'q');
    unsigned char bytes[8];
    EXPECT_EQ(device->ReadPort(0x81000000 + 996, bytes, 4), 4);
    EXPECT_EQ(device->ReadPort(0x81000000 + 996, bytes, 5), Status::NotFound);
    EXPECT_EQ(device->WritePort(0x81000000, bytes, 4), Status::NotFound);
}

TEST(SoftDevice, ServesWholeRangesOfItsRegionsOnly) {
    auto device = std::make_shared<SoftDevice>("d", "cam.xml", nullptr);
    unsigned char first[16] = {1, 2, 3, 4};
    unsigned char second[16] = {9, 9, 9, 9};
    std::vector<unsigned int> written;
    std::vector<StructRegDesc> regions{{first, 16, 0x100}, {second, 16, 0x108}, {second, 4, 0x80000200}};
    EXPECT_EQ(device->SetRegRwParams(regions,
                                     [&](unsigned int address, unsigned int value) {
                                         written.push_back(address);
                                         EXPECT_EQ(value, 0U);
                                         EXPECT_EQ(Read(*device, address), 0x04030201U)
                                             << "a callback may read";
                                     }),
              Status::Ok);
    unsigned char bytes[32]{};
    EXPECT_EQ(device->ReadPort(0x108, bytes, 8), 8);
    EXPECT_EQ(bytes[0], 0) << "the first region that holds the range";
    EXPECT_EQ(device->ReadPort(0x10C, bytes, 8), 8);
    EXPECT_EQ(bytes[0], 0);
    EXPECT_EQ(device->ReadPort(0x108, bytes, 16), 16);
    EXPECT_EQ(bytes[0], 9);
    for (const unsigned long long address :
         {0xFFULL, 0x110ULL + 8, 0x0ULL, 0x800001FEULL, 0xFFFFFFFFFFFFFFFFULL})
        EXPECT_EQ(device->ReadPort(address, bytes, 4), Status::NotFound) << std::hex << address;
    EXPECT_EQ(device->ReadPort(0x100, bytes, 0xFFFFFFFFU), Status::NotFound);
    EXPECT_EQ(device->WritePort(0x80000000, bytes, 4), Status::NotFound);
    EXPECT_TRUE(written.empty());
    EXPECT_EQ(Write(*device, 0x104, 0x04030201U), 4);
    EXPECT_EQ(written, std::vector<unsigned int>{0x104});
    EXPECT_EQ(first[4], 1);
}

TEST(VirtualDevice, HasItsRegisterMapAndFollowsIt) {
    auto device = std::make_shared<VirtualDevice>("Virtual Device #1", "./VirtualCamera01.xml", nullptr);
    EXPECT_EQ(device->TypeId(), 0x30001U);
    char texts[128];
    ASSERT_EQ(device->ReadPort(0x40, reinterpret_cast<unsigned char*>(texts), 128), 128);
    EXPECT_STREQ(texts, "Vendor unknown");
    EXPECT_STREQ(texts + 32, "Test Device");
    EXPECT_STREQ(texts + 64, "Version 1.00");
    EXPECT_STREQ(texts + 96, "123456789013456");
    EXPECT_EQ(Read(*device, 0x01000000), 400U);
    EXPECT_EQ(Read(*device, 0x01000004), 400U);
    EXPECT_EQ(Read(*device, 0x01000008), 200U);

    ASSERT_EQ(device->Connect(), Status::Ok);
    ASSERT_EQ(device->StreamCnt(), 1U);
    IStream* stream = device->GetStream(0);
    EXPECT_EQ(stream->Name(), "SoftStream #1");
    EXPECT_EQ(stream->PayloadSize(), 160000U);
    Write(*device, 0x01000000, 640);
    EXPECT_EQ(stream->PayloadSize(), 640U * 400);
    Write(*device, 0x01000004, 480);
    EXPECT_EQ(stream->PayloadSize(), 640U * 480);
    const std::uint32_t all[] = {100, 100, 5};
    unsigned char bytes[12];
    std::memcpy(bytes, all, 12);
    EXPECT_EQ(device->WritePort(0x01000000, bytes, 12), 12);
    EXPECT_EQ(stream->PayloadSize(), 100U * 480) << "only the start address counts";
    EXPECT_EQ(Read(*device, 0x01000004), 100U) << "but every byte is stored";
    EXPECT_EQ(Write(*device, 0x0100000C, 1), Status::NotFound);
}
