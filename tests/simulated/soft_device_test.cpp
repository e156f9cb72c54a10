#include "simulated/SoftDevice.h"
#include "simulated/VirtualDevice.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace VX3::Test {
namespace {

constexpr unsigned int UrlAt = 0x80000000;
constexpr unsigned int SizeAt = 0x01000000; // width, height, frame time

std::string Url(SoftDevice& device) {
    unsigned char text[SoftDevice::UrlSize];
    EXPECT_EQ(device.ReadPort(UrlAt, text, sizeof(text)), 512);
    EXPECT_EQ(text[511], 0);
    return reinterpret_cast<const char*>(text);
}

std::uint32_t Read(IGenIObj& device, unsigned long long address) {
    std::uint32_t value = 0;
    EXPECT_EQ(device.ReadPort(address, reinterpret_cast<unsigned char*>(&value), 4), 4);
    return value;
}

StatusCode Write(IGenIObj& device, unsigned long long address, std::uint32_t value) {
    return device.WritePort(address, reinterpret_cast<const unsigned char*>(&value), 4);
}

TEST(SoftDevice, PublishesWhereItsDescriptionIs) {
    for (const char* path : {"/a/b/cam.xml", "C:\\dir\\cam.xml", "cam.xml"})
        EXPECT_EQ(Url(*std::make_shared<SoftDevice>("d", path, nullptr)), "File:cam.xml");
    EXPECT_EQ(Url(*std::make_shared<SoftDevice>("d", std::string(600, 'x').c_str(), nullptr)).size(), 511U);

    std::unique_ptr<unsigned char[]> xml(new unsigned char[1000]);
    std::memset(xml.get(), 'q', 1000);
    auto device = std::make_shared<SoftDevice>("d", "cam.xml", std::move(xml), 1000, nullptr);
    EXPECT_EQ(Url(*device), "Local:cam.xml;81000000;3e8");
    EXPECT_EQ(device->GetXmlUrlAddr(), 0x80000000LL);
    const auto description = device->GetXmlData();
    ASSERT_NE(description, nullptr);
    EXPECT_EQ(std::pair(description->GetXmlDataSize(), description->GetXmlData()[999]),
              std::pair(1000U, static_cast<unsigned char>('q')));
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
    const auto onWrite = [&](unsigned int address, unsigned int value) {
        written.push_back(address);
        EXPECT_EQ(value, 0U);
        EXPECT_EQ(Read(*device, address), 0x04030201U) << "a callback may read";
    };
    EXPECT_EQ(device->SetRegRwParams(regions, onWrite), Status::Ok);
    unsigned char bytes[32]{};
    const struct {
        unsigned long long address;
        unsigned int length;
        StatusCode status;
        int byte;
    } reads[] = {{0x108, 8, 8, 0},
                 {0x10C, 8, 8, 0},
                 {0x108, 16, 16, 9}, // the first region that holds the range
                 {0xFF, 4, Status::NotFound, 9},
                 {0x118, 4, Status::NotFound, 9},
                 {0, 4, Status::NotFound, 9},
                 {0x800001FE, 4, Status::NotFound, 9},
                 {0xFFFFFFFFFFFFFFFF, 4, Status::NotFound, 9},
                 {0x100, 0xFFFFFFFF, Status::NotFound, 9}};
    for (const auto& read : reads) {
        EXPECT_EQ(device->ReadPort(read.address, bytes, read.length), read.status)
            << std::hex << read.address;
        EXPECT_EQ(bytes[0], read.byte) << std::hex << read.address;
    }
    EXPECT_EQ(device->WritePort(UrlAt, bytes, 4), Status::NotFound);
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
    EXPECT_EQ(std::string(texts) + "|" + (texts + 32) + "|" + (texts + 64) + "|" + (texts + 96),
              "Vendor unknown|Test Device|Version 1.00|123456789013456");
    EXPECT_EQ(Read(*device, SizeAt + 8), 200U);
    ASSERT_EQ(device->Connect(), Status::Ok);
    ASSERT_EQ(device->StreamCnt(), 1U);
    IStream* stream = device->GetStream(0);
    EXPECT_EQ(stream->Name(), "SoftStream #1");
    EXPECT_EQ(stream->PayloadSize(), 400U * 400);
    Write(*device, SizeAt, 640);
    EXPECT_EQ(stream->PayloadSize(), 640U * 400);
    Write(*device, SizeAt + 4, 480);
    EXPECT_EQ(stream->PayloadSize(), 640U * 480);
    const std::uint32_t all[] = {100, 100, 5};
    EXPECT_EQ(device->WritePort(SizeAt, reinterpret_cast<const unsigned char*>(all), 12), 12);
    EXPECT_EQ(stream->PayloadSize(), 100U * 480) << "only the start address counts";
    EXPECT_EQ(Read(*device, SizeAt + 4), 100U) << "but every byte is stored";
    EXPECT_EQ(Write(*device, SizeAt + 12, 1), Status::NotFound);
}

} // namespace
} // namespace VX3::Test
