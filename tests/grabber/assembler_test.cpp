// Frames put together from segments, from memory.
#include "grabber/KdBlockAssembler.h"
#include "support/LogCapture.h"

#include <cstring>
#include <gtest/gtest.h>
#include <vector>

namespace VX3::Test {
namespace {

constexpr std::uint32_t Size = 32 * 6;

class KdBlockAssemblerTest : public testing::Test {
protected:
    void SetUp() override {
        ImageInfo header;
        header.width = 32;
        header.height = 6;
        header.pixelFormat = Mono8;
        assembler.Start(header, ImagePoolFactory::DefaultImagePool());
    }
    static KdSegment Segment(std::uint32_t block, std::uint16_t number, std::uint16_t count,
                             std::uint32_t length = Size / 3) {
        KdSegment segment;
        segment.blockId = block;
        segment.number = number;
        segment.count = count;
        segment.length = length;
        segment.timestampHigh = 7;
        segment.timestampLow = 8;
        segment.status = 9;
        return segment;
    }
    // As a stream does, with bytes that tell block and segment.
    StatusCode Give(const KdSegment& segment) {
        const KdBlockAssembler::Place place = assembler.Accept(segment);
        drained += place.drain ? 1 : 0;
        if (!Failed(place.status)) {
            std::memset(place.target, static_cast<int>(10 * segment.blockId + segment.number),
                        segment.length);
            assembler.Arrived();
        }
        return place.status;
    }
    const ImageInfo& Info(std::size_t i) const { return *images.at(i)->GetImageInfo(); }
    std::vector<unsigned int> Pixels(std::size_t i) const {
        const unsigned char* pixels = images.at(i)->GetImageBuff();
        return {pixels[0], pixels[Size / 3], pixels[Size - 1]};
    }

    LogCapture log;
    std::vector<std::unique_ptr<IImage>> images;
    KdBlockAssembler assembler{
        [this](std::unique_ptr<IImage>&& image) { images.push_back(std::move(image)); }};
    int drained = 0;
};

TEST_F(KdBlockAssemblerTest, SegmentsInOrderAreOneImage) {
    for (const std::uint16_t number : {0, 1, 2})
        EXPECT_EQ(Give(Segment(5, number, 3)), Status::Ok);
    EXPECT_EQ(Give(Segment(6, 0, 1, Size)), Status::Ok);
    EXPECT_EQ(Give(Segment(7, 0, 0, Size)), Status::Ok) << "no count is one";
    ASSERT_EQ(images.size(), 3U);
    EXPECT_EQ(Pixels(0), (std::vector<unsigned int>{50, 51, 52}));
    EXPECT_EQ(Pixels(1), (std::vector<unsigned int>{60, 60, 60}));
    const ImageInfo& info = Info(0);
    EXPECT_EQ(info.blockId, 5U);
    EXPECT_EQ(info.imageType, 1);
    EXPECT_EQ(info.timestampHigh, 7U);
    EXPECT_EQ(info.timestampLow, 8U);
    EXPECT_EQ(info.statusA, 9U);
    EXPECT_EQ(info.lostPackets, 0U);
    EXPECT_EQ(assembler.NextBlockId(), 8U);
    EXPECT_EQ(assembler.LastGap(), 0U) << "the first block opens none";
}

TEST_F(KdBlockAssemblerTest, AMissingSegmentIsCounted) {
    EXPECT_EQ(Give(Segment(1, 0, 3)), Status::Ok);
    EXPECT_EQ(Give(Segment(1, 2, 3)), Status::WrongState);
    ASSERT_EQ(images.size(), 1U);
    EXPECT_EQ(Info(0).lostPackets, 1U);
    EXPECT_EQ(drained, 1);
    EXPECT_TRUE(log.Has("Waiting for Segment 0x1-1 but 0x1-2 received!"));

    EXPECT_EQ(Give(Segment(2, 0, 4)), Status::Ok);
    EXPECT_EQ(Give(Segment(9, 3, 4)), Status::WrongState) << "of another block, and not its first";
    EXPECT_EQ(Info(1).lostPackets, 3U);
    EXPECT_EQ(Info(1).blockId, 2U);
    EXPECT_EQ(Give(Segment(10, 0, 2)), Status::Ok);
    EXPECT_EQ(Give(Segment(10, 1, 3)), Status::WrongState) << "another count";
    EXPECT_EQ(images.size(), 3U);
    EXPECT_EQ(Info(2).lostPackets, 1U);
}

TEST_F(KdBlockAssemblerTest, AMissingLastSegmentCostsItsOwnFrameOnly) {
    for (const std::uint16_t number : {0, 1})
        EXPECT_EQ(Give(Segment(1, number, 3)), Status::Ok);
    for (const std::uint16_t number : {0, 1, 2})
        EXPECT_EQ(Give(Segment(2, number, 3)), Status::Ok);
    ASSERT_EQ(images.size(), 2U);
    EXPECT_EQ(Info(0).lostPackets, 1U);
    EXPECT_EQ(Info(0).blockId, 1U);
    EXPECT_EQ(Info(1).lostPackets, 0U);
    EXPECT_EQ(Pixels(1), (std::vector<unsigned int>{20, 21, 22}));
    EXPECT_EQ(drained, 0);
    EXPECT_EQ(assembler.LastGap(), 0U);
}

TEST_F(KdBlockAssemblerTest, WhatCannotBeginIsDrained) {
    EXPECT_EQ(Give(Segment(1, 1, 3)), Status::WrongState);
    EXPECT_TRUE(log.Has("Segment 1-1 received, 0-indexed segmentNo expected!"));
    EXPECT_EQ(Give(Segment(0, 0, 3)), Status::WrongState);
    EXPECT_TRUE(log.Has("block id 0 received(invalid)!"));
    EXPECT_EQ(Give(Segment(2, 0, 1, Size + 1)), Status::WrongState);
    EXPECT_EQ(Give(Segment(2, 0, 3, 0xFFFFFFFF)), Status::WrongState);
    EXPECT_TRUE(log.Has("does not fit"));
    EXPECT_EQ(drained, 4);
    EXPECT_TRUE(images.empty());
    // Within a block: it ends there.
    EXPECT_EQ(Give(Segment(3, 0, 2, Size - 10)), Status::Ok);
    EXPECT_EQ(Give(Segment(3, 1, 2, 11)), Status::WrongState);
    ASSERT_EQ(images.size(), 1U);
    EXPECT_EQ(Info(0).lostPackets, 1U);
}

TEST_F(KdBlockAssemblerTest, GapsOfBlockIds) {
    for (const std::uint32_t id : {1U, 2U, 5U})
        EXPECT_EQ(Give(Segment(id, 0, 1)), Status::Ok);
    EXPECT_EQ(assembler.LastGap(), 2U);
    EXPECT_EQ(assembler.NextBlockId(), 6U);
    EXPECT_EQ(Give(Segment(1, 0, 1)), Status::Ok);
    EXPECT_EQ(assembler.LastGap(), 2U) << "ids begin anew";
    EXPECT_EQ(assembler.NextBlockId(), 2U);
    EXPECT_EQ(Give(Segment(0xFFFFFFFF, 0, 1)), Status::Ok);
    EXPECT_EQ(assembler.NextBlockId(), 0x100000000U);
    EXPECT_EQ(Give(Segment(1, 0, 1)), Status::Ok);
    EXPECT_EQ(assembler.NextBlockId(), 2U);
}

TEST_F(KdBlockAssemblerTest, BytesThatDoNotArrive) {
    (void)assembler.Accept(Segment(1, 0, 3));
    assembler.NotArrived();
    EXPECT_TRUE(images.empty()) << "nothing of it is there";
    EXPECT_EQ(Give(Segment(2, 0, 3)), Status::Ok);
    (void)assembler.Accept(Segment(2, 1, 3));
    assembler.NotArrived();
    ASSERT_EQ(images.size(), 1U);
    EXPECT_EQ(Info(0).lostPackets, 2U);
}

class NoPool : public IImagePool {
public:
    std::string Name() const override { return {}; }
    std::uint64_t ObjID() const override { return 0; }
    bool IsConfigurable() const override { return false; }
    IConfigurer* GetConfigurer() override { return nullptr; }
    unsigned int ObjType() const override { return 0; }
    std::list<std::pair<std::string, std::string>> GetInfo() const override { return {}; }
    unsigned int TypeId() const override { return 0; }
    std::unique_ptr<IImage> Create(const ImageInfo*, const unsigned char*, unsigned int) override {
        return nullptr;
    }
    unsigned int Release(std::unique_ptr<IImage>&&) override { return 0; }
    unsigned int PoolType() const override { return 0; }
    std::uint64_t PoolSize() const override { return 0; }
};

TEST_F(KdBlockAssemblerTest, WithoutAnImageNothingIsRead) {
    ImageInfo header;
    header.width = 32;
    header.height = 6;
    header.pixelFormat = Mono8;
    assembler.Start(header, std::make_shared<NoPool>());
    EXPECT_EQ(Give(Segment(1, 0, 1)), Status::NoBuffer);
    EXPECT_EQ(drained, 0);
    header.width = 0xFFFFFFFF;
    header.height = 0xFFFFFFFF;
    assembler.Start(header, ImagePoolFactory::DefaultImagePool());
    EXPECT_EQ(Give(Segment(1, 0, 1)), Status::WrongState) << "sizes that wrap";
    assembler.Start({}, ImagePoolFactory::DefaultImagePool());
    EXPECT_EQ(Give(Segment(1, 0, 1)), Status::WrongState);
}

} // namespace
} // namespace VX3::Test
